// Vertex-cache triangle order: reorders an indexed triangle list into blocks that each touch at most a
// given number of vertices and hold at most a given number of triangles, so that a small
// post-transform vertex cache is reused well; optionally renumbers the vertices by first use.
//
// The triangles are split into connected meshes (by shared vertices). Blocks are grown greedily from
// a start vertex: each step adds the candidate triangle (with the triangles it closes) that gives the
// best triangles-per-vertex ratio, then the most closed edges, then the most triangles. Large meshes
// are eaten from vertices with one triangle left (the best such block wins); pieces that fit in a
// block whole are packed together. Triangles that repeat an index are kept and written last.
//
// Cost: about O(T) model building; block growth is bounded by the block limits and local vertex
// valences, so the whole sort is near-linear in the triangle count.
#pragma once

#include <cstdint>

enum : uint32_t
{
    eQMXTGeometrySortReorder = 1,    // reorder the triangles
    eQMXTGeometrySortKeepVertices = 2 // do not renumber the vertices
};

// Arguments, in order: the vertex data (nStride bytes a vertex, rewritten in place when renumbering;
// may be null with eQMXTGeometrySortKeepVertices), the index list (three 32-bit indices a triangle,
// rewritten in place), the stride, the vertex count, the triangle count, the block vertex limit (at
// least 4), the block triangle limit (at least 1) and the flags above.
// Renumbering gives vertices new numbers in order of first use in the index list and moves their
// records accordingly; records of vertices that no triangle uses are not kept (the tail of the vertex
// data then holds stale records).
// When pnBlockNum is given, the number of blocks written is stored there and, when pnBlockTri is also
// given (room for one entry a triangle), the triangle count of each block in output order.
// Returns 0, or 1 (nothing changed) for an index past the vertex count, a missing array, a limit too
// small or an allocation failure.
int QMXTGeometrySort(void* pVertices, uint32_t* pnIdx, uint32_t nStride, uint32_t nVertexNum, uint32_t nTriNum,
                     uint32_t nBlockVertexMax, uint32_t nBlockTriMax, uint32_t nFlags, uint32_t* pnBlockNum = nullptr,
                     uint32_t* pnBlockTri = nullptr);
