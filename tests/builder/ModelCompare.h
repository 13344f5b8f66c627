// Comparison of two scene models by the file each writes, for tests that export a scene two ways.
#pragma once

#include <string>

#include "QMXTModelTVO.h"

// Empty when both scenes write the same .tvo bytes; otherwise where the written files part.
std::string DescribeModelDifference(const STVOScene& a, const STVOScene& b);
