// Rules shared by the .tvo writer and reader (internal to the file layer).
#pragma once

#include <cstdint>
#include <vector>

#include "QMXTModelTVO.h"

class CSink;

// Writes a scene record as a .tvo file into a sink (CQMXTModelTVO::SaveTVO for any STVOScene).
int QMXTTVOWriteScene(const STVOScene& scene, CSink& sink, const char* options, const char* history);

// Floats a node channel holds in the file: one key when the channel is static (or the scene has no
// frames), else one key a frame, or with an index array the largest index + the key size. Computed
// in 64 bits so a corrupt index cannot wrap around.
uint64_t QMXTTVOChannelFloats(const uint32_t* pIdx, bool animated, uint32_t frameCount, uint32_t keySize);

// The present streams (component count nonzero) of a mesh in file order (positions, normals, tangents,
// binormals, vertex colours, bone indices, bone weights, then each UVW stream), sorted by their
// interleaved offset with a stable bubble sort.
std::vector<const CTVOData*> QMXTTVOInterleavedStreams(const STVOMesh& mesh);

// Whether the interleaved layout of a mesh is sound: every present stream has a 1-, 2- or 4-byte type
// and lies inside the vertex (the position stream's stride) without overlapping the next one.
bool QMXTTVOInterleavedLayoutValid(const STVOMesh& mesh);

// Converts the 2- and 4-byte components of every stream of an interleaved block between little-endian
// and the other byte order, in place. The reader calls it on big-endian hosts only.
void QMXTTVOSwapInterleaved(STVOMesh& mesh);
