// The readable and the JSON summary of a scene that has been read.
#pragma once

#include <cstdint>
#include <string>

#include "QMXTModelTVO.h"

struct STVOFileFacts
{
    std::string sPath;
    uint32_t nSize = 0;
    bool bHasOptions = false, bHasHistory = false;
    std::string sOptions, sHistory;
};

// Scene counts, frames, then per node, mesh (with its streams), material, texture, light and camera
// one line each (streams indented under their mesh), then the count of option lines and the history text.
std::string TVOSummaryText(const CQMXTModelTVO& scene, const STVOFileFacts& facts);
// The same facts as one JSON object.
std::string TVOSummaryJson(const CQMXTModelTVO& scene, const STVOFileFacts& facts);
// Kind of node i by its place in the node array: "mesh", "light", "camera" or "other".
const char* TVONodeKind(const STVOScene& scene, uint32_t i);
