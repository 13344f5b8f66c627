// Vertex-cache triangle order: golden output digests, bad arguments and a huge triangle limit.
#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "GeometryTestMeshes.h"
#include "GoldenDigests.h"
#include "QMXTGeometrySort.h"

using namespace geomtest;

namespace
{
constexpr uint32_t kStride = 8;

// Vertex records that name their original vertex: (number, number x 7 + 1).
std::vector<uint8_t> TaggedVertices(uint32_t n)
{
    std::vector<uint8_t> data(size_t(n) * kStride);
    for (uint32_t v = 0; v < n; ++v)
    {
        const uint32_t rec[2] = {v, v * 7 + 1};
        std::memcpy(&data[size_t(v) * kStride], rec, kStride);
    }
    return data;
}

struct SSorted
{
    int nResult;
    std::vector<uint32_t> idx;
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> blocks;
};

SSorted Sort(const SIndexMesh& m, uint32_t nVtxMax, uint32_t nTriMax, uint32_t flags)
{
    SSorted s{0, m.idx, TaggedVertices(m.nVertexNum), std::vector<uint32_t>(m.TriNum() + 1)};
    uint32_t nBlocks = 0;
    s.nResult = QMXTGeometrySort(s.vertices.data(), s.idx.data(), kStride, m.nVertexNum, m.TriNum(), nVtxMax,
                                 nTriMax, flags, &nBlocks, s.blocks.data());
    s.blocks.resize(nBlocks);
    return s;
}

} // namespace

// Mesh zoos and "books" (pages on one spine edge, some doubled with the other winding, tied back to
// the grid, so that a candidate closes several triangles at once) under small and large block limits.
TEST(GeometrySort, MatchesGoldenDigests)
{
    CGoldenDigests golden(
        "geometry-sort.txt",
        "# Digests of QMXTGeometrySort output (indices, block sizes, used vertex records) for the\n"
        "# meshes of tests/tools/GeometrySortTest.cpp, one line a mesh. Written by the test with\n"
        "# OSTREX_WRITE_GOLDEN=1 from the code at 6d1b907, whose output equalled the former\n"
        "# quadratic reference implementation on these meshes.\n");
    struct SCase
    {
        uint32_t nVtx, nTri, flags;
    };
    const SCase zooCases[] = {{32, 64, 1}, {4, 1, 3}, {6, 5, 1}, {8, 12, 3}, {12, 7, 1}, {16, 30, 3}};
    const SCase bookCases[] = {{32, 64, 3}, {6, 3, 1}, {8, 5, 3}, {12, 2, 3}, {5, 7, 3}};
    auto digest = [&](const SIndexMesh& m, const SCase& c)
    {
        const SSorted s = Sort(m, c.nVtx, c.nTri, c.flags);
        ASSERT_EQ(s.nResult, 0);
        golden.Add(s.idx);
        golden.Add(s.blocks);
        if (!(c.flags & 2)) // only the records of used vertices are defined after renumbering
            golden.Add(s.vertices.data(), std::set<uint32_t>(s.idx.begin(), s.idx.end()).size() * kStride);
    };
    for (uint32_t seed = 1; seed <= 3; ++seed)
    {
        const std::vector<SIndexMesh> zoo = MeshZoo(seed, 60, 80);
        for (size_t i = 0; i < zoo.size(); ++i)
        {
            for (size_t k = 0; k < 6; ++k)
                if (k == 0 || (i + k + seed) % 3 != 0)
                    digest(zoo[i], zooCases[k]);
            golden.EndLine(std::to_string(seed) + "/" + std::to_string(i));
        }
    }
    std::mt19937 rng(17);
    for (uint32_t pages : {2u, 3u, 5u, 9u})
    {
        SIndexMesh book = Grid(6, 5);
        const uint32_t spineA = 8, spineB = 9, anchor = 15; // a grid edge and a vertex near it
        for (uint32_t k = 0; k < pages; ++k)
        {
            const uint32_t tip = book.nVertexNum++;
            book.idx.insert(book.idx.end(), {spineA, spineB, tip});
            if (k % 2)
                book.idx.insert(book.idx.end(), {spineB, spineA, tip});
            book.idx.insert(book.idx.end(), {tip, spineB, anchor});
        }
        for (const SIndexMesh& m : {book, Concatenate({book, Fan(6 + pages, true), Grid(2, pages)}, &rng)})
            for (const SCase& c : bookCases)
                digest(m, c);
        golden.EndLine("book" + std::to_string(pages));
    }
    golden.Check();
}

TEST(GeometrySort, RejectsBadArgumentsButTakesAnyTriangleLimit)
{
    SIndexMesh m = Grid(2, 2);
    std::vector<uint8_t> vtx = TaggedVertices(m.nVertexNum);
    std::vector<uint32_t> idx = m.idx;
    idx[4] = m.nVertexNum; // past the vertices
    EXPECT_EQ(QMXTGeometrySort(vtx.data(), idx.data(), kStride, m.nVertexNum, m.TriNum(), 32, 64, 1), 1);
    EXPECT_EQ(idx[4], m.nVertexNum);
    EXPECT_EQ(idx[0], m.idx[0]);
    EXPECT_EQ(vtx, TaggedVertices(m.nVertexNum));
    idx = m.idx;
    EXPECT_EQ(QMXTGeometrySort(vtx.data(), idx.data(), kStride, m.nVertexNum, m.TriNum(), 3, 64, 3), 1);
    EXPECT_EQ(QMXTGeometrySort(vtx.data(), idx.data(), kStride, m.nVertexNum, m.TriNum(), 32, 0, 3), 1);
    EXPECT_EQ(QMXTGeometrySort(vtx.data(), nullptr, kStride, m.nVertexNum, m.TriNum(), 32, 64, 3), 1);
    EXPECT_EQ(QMXTGeometrySort(nullptr, idx.data(), kStride, m.nVertexNum, m.TriNum(), 32, 64, 1), 1);
    EXPECT_EQ(idx, m.idx);
    // Without renumbering the vertex data is not needed; no triangles is fine.
    EXPECT_EQ(QMXTGeometrySort(nullptr, idx.data(), 0, m.nVertexNum, m.TriNum(), 32, 64, 3), 0);
    EXPECT_EQ(QMXTGeometrySort(nullptr, nullptr, kStride, 0, 0, 32, 64, 3), 0);
    // A limit far beyond the mesh needs no memory by that limit.
    const SIndexMesh big = Grid(40, 30);
    EXPECT_EQ(Sort(big, 32, UINT32_MAX, 3).idx, Sort(big, 32, big.TriNum(), 3).idx);
}
