// Field-by-field comparison of two scene models, for tests that export a scene two ways.
#pragma once

#include <string>

#include "QMXTModelTVO.h"

// Empty when equal; otherwise a description of the first difference found.
std::string DescribeModelDifference(const STVOScene& a, const STVOScene& b);
