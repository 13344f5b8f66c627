// Index lists for the geometry tests: structured meshes (grids, fans, strips) and random ones with
// shared and non-manifold edges, duplicate triangles, flipped windings and disconnected pieces.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace geomtest
{
struct SIndexMesh
{
    uint32_t nVertexNum = 0;
    std::vector<uint32_t> idx;
    uint32_t TriNum() const { return uint32_t(idx.size() / 3); }
};

// w x h quads, each split into two triangles (the diagonal alternating when checker is set).
SIndexMesh Grid(uint32_t w, uint32_t h, bool checker = false);
// A fan of n triangles around vertex 0; closed joins the last rim vertex back to the first.
SIndexMesh Fan(uint32_t n, bool closed = false);
// A strip of n triangles written as a list with alternating winding.
SIndexMesh Strip(uint32_t n);
// Random triangles over a pool of vertices; pieces are separate vertex pools. Triangles may repeat
// (also flipped), share edges with many others and, when degenerate is set, repeat an index.
SIndexMesh Random(std::mt19937& rng, uint32_t nTri, uint32_t nVertexPool, uint32_t nPieces, bool degenerate);
// A grid with random holes, shuffled triangle order, random flips and some duplicated triangles.
SIndexMesh DamagedGrid(std::mt19937& rng, uint32_t w, uint32_t h);
// Several meshes side by side as one (vertex numbers offset), triangle order optionally shuffled.
SIndexMesh Concatenate(const std::vector<SIndexMesh>& parts, std::mt19937* shuffle);

// A varied set of small meshes for the equality tests, reproducible from the seed.
std::vector<SIndexMesh> MeshZoo(uint32_t seed, uint32_t nRandom, uint32_t nMaxTri);
} // namespace geomtest
