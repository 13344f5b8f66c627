// Tangent space of an indexed triangle mesh: a tangent and a binormal for every vertex.
//
// Every triangle corner gets the frame of its triangle (QMXTVertexTangentBitangent). A vertex groups
// the triangles that use it, in triangle order: a triangle joins the first group in which, against
// every member, both the dot product of the tangents and that of the bitangents are above the split
// difference, else it opens a new group. Each group becomes one output vertex (a copy of the input
// record with the normalised sums of the group's tangents and bitangents written into it), and the
// group's corners are redirected to it. Output vertices follow input order, one per group; vertices
// that no triangle uses are dropped.
//
// Cost: O(T + V) time, O(T + V) memory; a vertex is limited to 32 triangles (so at most 32 groups).
#pragma once

#include <cstdint>

#include "QMXTMath.h"
#include "QMXTVertexData.h"

// Writes tangents and binormals into a copy of an interleaved vertex block, splitting vertices where
// the triangles that share them disagree. Arguments, in order:
//   pnOutVtxNum, ppOutVtx: the output vertex count and block (malloc'ed, nStride bytes a vertex), for
//     the caller to free;
//   pnIdx: three 32-bit indices a triangle, rewritten to the output vertices;
//   nVertexNum, pVertices, nStride: the input block (not changed);
//   position, normal and UV offsets and types (each read with three components; u and v are the UV's
//     first two), and the tangent and binormal offsets and types (each written with three);
//   nTriNum: triangles in pnIdx; fSplitDifference: the dot-product limit (-1..1) below which two
//     frames are different.
// Returns 0 on success; 1 for a triangle with two equal indices, a vertex used by more than 32
// triangles, more output vertices than three times the input count, an index past the vertices, a
// component outside the stride, a missing array or an allocation failure. On failure nothing is
// written to the caller's arguments.
int QMXTVertexGenerateTangentSpace(uint32_t* pnOutVtxNum, uint8_t** ppOutVtx, uint32_t* pnIdx, uint32_t nVertexNum,
                                   const uint8_t* pVertices, uint32_t nStride, uint32_t nOffsetPos,
                                   EQMXTDataType eTypePos, uint32_t nOffsetNor, EQMXTDataType eTypeNor,
                                   uint32_t nOffsetUV, EQMXTDataType eTypeUV, uint32_t nOffsetTan,
                                   EQMXTDataType eTypeTan, uint32_t nOffsetBin, EQMXTDataType eTypeBin,
                                   uint32_t nTriNum, float fSplitDifference);

// The frame at corner 0 of a triangle whose other corners are 1 and 2: the tangent follows the
// direction of increasing u and the bitangent that of increasing v, both made perpendicular to the
// normal (and the bitangent to the tangent) and normalised. Where the UVs give no direction (a zero
// UV area) or the result vanishes, the tangent follows edge 0-1 and the bitangent is normal x tangent,
// so the result is always finite for finite input.
void QMXTVertexTangentBitangent(QMXTVECTOR3f& tangent, QMXTVECTOR3f& bitangent, const QMXTVECTOR3f& normal,
                                const QMXTVECTOR3f& p0, const QMXTVECTOR3f& p1, const QMXTVECTOR3f& p2,
                                const QMXTVECTOR3f& uv0, const QMXTVECTOR3f& uv1, const QMXTVECTOR3f& uv2);
