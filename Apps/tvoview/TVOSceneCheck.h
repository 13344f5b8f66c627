// Checks of a scene that the file reader leaves to its users, made before anything reaches the GPU:
// a hostile file must give a message, never a crash, a hang or an out-of-range GPU read.
//
// The reader has already checked sizes, index values against the vertex count and strip lengths
// against the face count. This adds: node parents in range and free of loops, node indices into
// meshes and cameras, bone batch offsets and bone tables, bone indices of every drawn vertex
// below its batch's bone count (or the node count without batches), and vertex streams of one to four
// components with a position stream on every drawn mesh.
#pragma once

#include <string>

#include "QMXTModelTVO.h"

// Empty when the scene is safe to draw; otherwise one line saying what is wrong and where.
std::string TVOCheckSceneForDrawing(const STVOScene& scene);
