// Triangle strips: golden output digests, strip decoding, the strip list, sparse vertex numbers,
// determinism and independence from the caller's rand() state.
#include <gtest/gtest.h>

#include <cstdlib>

#include "GeometryTestMeshes.h"
#include "GoldenDigests.h"
#include "QMXTTriStrip.h"

using namespace geomtest;

namespace
{
struct SStrips
{
    int nResult;
    std::vector<uint32_t> idx, len;
};

SStrips Strips(const std::vector<uint32_t>& tri)
{
    uint32_t *idx = nullptr, *len = nullptr, n = 0;
    SStrips s;
    s.nResult = QMXTTriStrip(&idx, &len, &n, tri.data(), uint32_t(tri.size() / 3));
    size_t total = 0;
    for (uint32_t k = 0; k < n; ++k)
        total += len[k] + 2;
    if (n)
    {
        s.idx.assign(idx, idx + total);
        s.len.assign(len, len + n);
    }
    std::free(idx);
    std::free(len);
    return s;
}

// Triangles of strips with the usual alternating winding: triangle k of a strip is (k, k+1, k+2)
// when k is even and (k+1, k, k+2) when odd.
std::vector<uint32_t> DecodeStrips(const SStrips& s)
{
    std::vector<uint32_t> tri;
    size_t start = 0;
    for (uint32_t n : s.len)
    {
        for (uint32_t k = 0; k < n; ++k)
        {
            const uint32_t* p = &s.idx[start + k];
            if (k % 2)
                tri.insert(tri.end(), {p[1], p[0], p[2]});
            else
                tri.insert(tri.end(), {p[0], p[1], p[2]});
        }
        start += n + 2;
    }
    return tri;
}
} // namespace

TEST(TriStrip, MatchesGoldenDigests)
{
    CGoldenDigests golden(
        "tri-strip.txt",
        "# Digests of QMXTTriStrip (strip lengths and indices) and QMXTTriStripList output for\n"
        "# the meshes of tests/tools/TriStripTest.cpp, one line per eight meshes. Written by the\n"
        "# test with OSTREX_WRITE_GOLDEN=1 from the code at 6d1b907, whose output equalled the\n"
        "# former quadratic reference implementation on these meshes.\n");
    for (uint32_t seed = 21; seed <= 24; ++seed)
    {
        const std::vector<SIndexMesh> zoo = MeshZoo(seed, 160, 40);
        for (size_t i = 0; i < zoo.size(); ++i)
        {
            const SStrips s = Strips(zoo[i].idx);
            ASSERT_EQ(s.nResult, 0);
            std::vector<uint32_t> list = zoo[i].idx;
            ASSERT_EQ(QMXTTriStripList(list.data(), zoo[i].TriNum()), 0);
            golden.Add(s.len);
            golden.Add(s.idx);
            golden.Add(list);
            if (i % 8 == 7 || i + 1 == zoo.size())
                golden.EndLine(std::to_string(seed) + "/" + std::to_string(i / 8));
        }
    }
    golden.Check();
}

TEST(TriStrip, StripsAndStripListsHoldEveryTriangleWithItsWinding)
{
    std::mt19937 rng(8);
    std::vector<SIndexMesh> meshes = MeshZoo(31, 40, 200);
    meshes.push_back(Grid(30, 20));
    meshes.push_back(Grid(17, 9, true));
    meshes.push_back(DamagedGrid(rng, 25, 25));
    meshes.push_back(Fan(40, true));
    for (const SIndexMesh& m : meshes)
    {
        const SStrips s = Strips(m.idx);
        uint32_t triangles = 0;
        for (uint32_t n : s.len)
            triangles += n;
        EXPECT_EQ(triangles, m.TriNum()) << m.sName;
        EXPECT_EQ(s.idx.size(), m.TriNum() + 2 * s.len.size()) << m.sName;
        // Strips of non-degenerate meshes decode to the input triangles, windings included.
        if (m.sName.find("repeats") == std::string::npos)
        {
            EXPECT_EQ(WindingKeys(DecodeStrips(s)), WindingKeys(m.idx)) << m.sName;
        }
        std::vector<uint32_t> list = m.idx;
        ASSERT_EQ(QMXTTriStripList(list.data(), m.TriNum()), 0);
        EXPECT_EQ(WindingKeys(list), WindingKeys(m.idx)) << m.sName;
    }
}

TEST(TriStrip, SparseVertexNumbersGiveTheSameStrips)
{
    // Renumbering vertices far apart must not change which triangles pair up.
    std::mt19937 rng(14);
    const SIndexMesh m = DamagedGrid(rng, 9, 7);
    std::vector<uint32_t> sparse = m.idx;
    for (uint32_t& i : sparse)
        i = 4000000000u - i * 40000u;
    const SStrips dense = Strips(m.idx), spread = Strips(sparse);
    EXPECT_EQ(spread.len, dense.len);
    ASSERT_EQ(spread.idx.size(), dense.idx.size());
    for (size_t k = 0; k < dense.idx.size(); ++k)
        EXPECT_EQ(spread.idx[k], 4000000000u - dense.idx[k] * 40000u);
}

TEST(TriStrip, IsDeterministicAndLeavesTheCallersRandomSequenceAlone)
{
    std::mt19937 rng(12);
    const SIndexMesh m = DamagedGrid(rng, 12, 9);
    std::srand(77);
    const int expected = std::rand();
    std::srand(77);
    const SStrips first = Strips(m.idx);
    EXPECT_EQ(std::rand(), expected);
    std::srand(5);
    const SStrips second = Strips(m.idx);
    EXPECT_EQ(first.idx, second.idx);
    EXPECT_EQ(first.len, second.len);
}

TEST(TriStrip, RejectsMissingArgumentsAndTakesNoTriangles)
{
    const SStrips none = Strips({});
    EXPECT_EQ(none.nResult, 0);
    EXPECT_TRUE(none.len.empty());
    uint32_t *idx = nullptr, *len = nullptr, n = 0;
    const uint32_t tri[3] = {0, 1, 2};
    EXPECT_EQ(QMXTTriStrip(nullptr, &len, &n, tri, 1), 1);
    EXPECT_EQ(QMXTTriStrip(&idx, &len, &n, nullptr, 1), 1);
    EXPECT_EQ(idx, nullptr);
    EXPECT_EQ(QMXTTriStripList(nullptr, 1), 1);
}
