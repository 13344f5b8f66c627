// Bone batching: golden output digests and argument failures.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "GeometryTestMeshes.h"
#include "GoldenDigests.h"
#include "QMXTBoneBatches.h"
#include "QMXTVertexData.h"

using namespace geomtest;

namespace
{
// One skinned vertex layout: a 4-byte tag, the weights, the indices.
struct SLayout
{
    uint32_t eTypeWeight, eTypeIdx, nBonesPerVtx;
    uint32_t nOffsetWeight = 4;
    uint32_t nOffsetIdx = nOffsetWeight + QMXTModelTVODataElementBytes(eTypeWeight, nBonesPerVtx);
    uint32_t nStride = nOffsetIdx + QMXTModelTVODataElementBytes(eTypeIdx, nBonesPerVtx) + 2;
};

// Vertices tagged with their number; each influence a bone of the pool, some with zero weight.
std::vector<uint8_t> MakeSkin(std::mt19937& rng, uint32_t nVertex, const SLayout& l, uint32_t nBones,
                              uint32_t zeroPct)
{
    std::vector<uint8_t> vertices(size_t(nVertex) * l.nStride, 0xAB);
    std::uniform_int_distribution<uint32_t> bone(0, nBones - 1), pct(0, 99);
    for (uint32_t v = 0; v < nVertex; ++v)
    {
        uint8_t* rec = &vertices[size_t(v) * l.nStride];
        std::memcpy(rec, &v, 4);
        float w[4] = {0, 0, 0, 0}, b[4] = {0, 0, 0, 0};
        for (uint32_t k = 0; k < l.nBonesPerVtx; ++k)
        {
            b[k] = float(bone(rng));
            w[k] = pct(rng) < zeroPct ? 0.0f : 0.25f + 0.25f * float(k % 3);
        }
        QMXTVertexWrite(rec + l.nOffsetWeight, l.eTypeWeight, l.nBonesPerVtx, w);
        QMXTVertexWrite(rec + l.nOffsetIdx, l.eTypeIdx, l.nBonesPerVtx, b);
    }
    return vertices;
}

// Batches one skin and adds the result, indices, vertices and batch table to the digest.
void DigestBatches(CGoldenDigests& golden, const std::vector<uint8_t>& vertices, uint32_t nVertex,
                   std::vector<uint32_t> idx, const SLayout& l, uint32_t limit)
{
    CQMXTBoneBatches b;
    uint8_t* out = nullptr;
    uint32_t n = 0;
    const int result =
        b.Create(&n, &out, idx.data(), nVertex, vertices.data(), l.nStride, l.nOffsetWeight, l.eTypeWeight,
                 l.nOffsetIdx, l.eTypeIdx, uint32_t(idx.size() / 3), limit, l.nBonesPerVtx);
    golden.AddValue(uint64_t(result) << 32 | n);
    golden.Add(idx);
    if (result == 0)
    {
        golden.Add(out, size_t(n) * l.nStride);
        golden.Add(b.pnBatches, size_t(b.nBatchCnt) * b.nBatchBoneMax * 4);
        golden.Add(b.pnBatchBoneCnt, b.nBatchCnt * 4);
        golden.Add(b.pnBatchOffset, b.nBatchCnt * 4);
    }
    EXPECT_EQ(b.pnBatches == nullptr, result != 0); // a failure leaves no table
    std::free(out);
    b.Release();
}
} // namespace

TEST(BoneBatch, MatchesGoldenDigests)
{
    CGoldenDigests golden(
        "bone-batch.txt",
        "# Digests of CQMXTBoneBatches output (result, indices, vertices, batch table) for the\n"
        "# skinned meshes of tests/tools/BoneBatchTest.cpp, one line per eight meshes. Written by\n"
        "# the test with OSTREX_WRITE_GOLDEN=1 from the code at 6d1b907, whose output equalled\n"
        "# the former quadratic reference implementation on these meshes.\n");
    const SLayout layouts[] = {{EQMXTDataFloat, EQMXTDataFloat, 4},
                               {EQMXTDataUnsignedByteNorm, EQMXTDataUBYTE4, 3},
                               {EQMXTDataFloat, EQMXTDataUnsignedShort, 2},
                               {EQMXTDataUnsignedShortNorm, EQMXTDataUnsignedByte, 1}};
    std::mt19937 rng(41);
    for (uint32_t seed = 41; seed <= 44; ++seed)
    {
        const std::vector<SIndexMesh> zoo = MeshZoo(seed, 150, 80);
        for (size_t i = 0; i < zoo.size(); ++i)
        {
            const SIndexMesh& m = zoo[i];
            const SLayout& l = layouts[rng() % 4];
            const uint32_t nBones = 3 + rng() % 28, limit = 4 + rng() % 9;
            const std::vector<uint8_t> s = MakeSkin(rng, m.nVertexNum, l, nBones, rng() % 40);
            DigestBatches(golden, s, m.nVertexNum, m.idx, l, limit);
            if (i % 8 == 7 || i + 1 == zoo.size())
                golden.EndLine(std::to_string(seed) + "/" + std::to_string(i / 8));
        }
    }
    golden.Check();
}

TEST(BoneBatch, RejectsBadArgumentsWithoutTouchingTheIndices)
{
    const SLayout l{EQMXTDataFloat, EQMXTDataFloat, 2};
    std::mt19937 rng(5);
    const std::vector<uint8_t> s = MakeSkin(rng, 4, l, 4, 0);
    std::vector<uint8_t> neg = s; // a negative bone index with a weight cannot be placed
    const float negative[2] = {-1.0f, 2.0f};
    QMXTVertexWrite(&neg[l.nOffsetIdx], l.eTypeIdx, 2, negative);
    const std::vector<uint32_t> tri = {0, 1, 2, 2, 1, 3}, outside = {0, 1, 4};
    // Refused: the result says so and the indices, count and output are as they were.
    auto refused = [&](const std::vector<uint8_t>& skin, std::vector<uint32_t> idx, uint32_t nOffsetIdx,
                       uint32_t eTypeWeight, uint32_t nBonesPerVtx)
    {
        CQMXTBoneBatches b;
        uint32_t n = 77;
        uint8_t* out = nullptr;
        const std::vector<uint32_t> before = idx;
        const int result =
            b.Create(&n, &out, idx.data(), 4, skin.data(), l.nStride, l.nOffsetWeight, eTypeWeight,
                     nOffsetIdx, l.eTypeIdx, uint32_t(idx.size() / 3), 9, nBonesPerVtx);
        return result == CQMXTBoneBatches::eFailed && idx == before && n == 77 && out == nullptr;
    };
    EXPECT_TRUE(refused(s, tri, l.nOffsetIdx, l.eTypeWeight, 0));
    EXPECT_TRUE(refused(s, tri, l.nOffsetIdx, l.eTypeWeight, 5));
    EXPECT_TRUE(refused(s, outside, l.nOffsetIdx, l.eTypeWeight, 2));
    // The index component would reach past the record.
    EXPECT_TRUE(refused(s, tri, l.nStride - 4, l.eTypeWeight, 2));
    EXPECT_TRUE(refused(s, tri, l.nOffsetIdx, 0, 2));
    EXPECT_TRUE(refused(neg, tri, l.nOffsetIdx, l.eTypeWeight, 2));
}
