// Scenes built by hand for the file tests, the fuzz seeds and the benchmark.
#pragma once

#include <cstdint>

#include "QMXTModelTVO.h"

namespace tvotest
{
// malloc'ed copies, as the scene model wants them.
char* Str(const char* s);
float* Floats(uint32_t count, float first, float step);

// Both builders finish with InitImpl, so the scene owns its arrays and Destroy frees them.
// Every block the file knows: an interleaved list mesh with two UVW sets and bone batches, a strip
// mesh of separate streams with an unpack matrix, an empty mesh; nodes with plain, indexed and matrix
// animation and user data; three kinds of light; an animated and a static camera; two materials, two
// textures; scene user data. Four frames at 25 fps.
void MakeRichScene(CQMXTModelTVO& s);
// One mesh of vertexCount vertices (float positions and normals, one unsigned short UVW stream) and
// about as many triangles, one node; interleaved or not.
void MakeBigScene(CQMXTModelTVO& s, uint32_t vertexCount, bool interleaved);
} // namespace tvotest
