// Lists to strips and back, and refused corner orders (the DirectX export checks a reversed winding).
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

namespace
{
void SetList(STVOMesh& m, const std::vector<uint32_t>& idx, uint32_t type = EQMXTDataUnsignedShort)
{
    m.nNumVertex = 1 + *std::max_element(idx.begin(), idx.end());
    m.nNumFaces = static_cast<uint32_t>(idx.size() / 3);
    m.sFaces = MakeIndices(type, idx);
}

std::vector<uint32_t> Lengths(const STVOMesh& m)
{
    return std::vector<uint32_t>(m.pnStripLength, m.pnStripLength + m.nNumStrips);
}

// A list that strips well: a zig-zag band of quads, written as the hardware draws a strip.
std::vector<uint32_t> Band(uint32_t triangles)
{
    std::vector<uint32_t> idx;
    for (uint32_t k = 0; k < triangles; ++k)
    {
        const Tri t = k % 2 ? Tri{k + 1, k, k + 2} : Tri{k, k + 1, k + 2};
        idx.insert(idx.end(), t.begin(), t.end());
    }
    return idx;
}
} // namespace

TEST(TransformStrips, ListBecomesStripsThatDrawEveryTriangleWithItsWinding)
{
    std::mt19937 rng(3);
    for (int round = 0; round < 50; ++round)
    {
        // Bands (which strip) broken up by random triangles (which mostly do not).
        std::vector<uint32_t> idx = Band(1 + rng() % 9);
        for (int extra = rng() % 4; extra > 0; --extra)
        {
            const std::vector<uint32_t> more = Band(1 + rng() % 5);
            for (uint32_t i : more)
                idx.push_back(i + 20);
            for (int c = 0; c < 3; ++c)
                idx.push_back(rng() % 30);
        }
        SMeshHolder h;
        STVOMesh& m = h.mesh();
        SetList(m, idx, round % 2 ? EQMXTDataUnsignedInt : EQMXTDataUnsignedShort);
        ASSERT_EQ(QMXTModelTVOToggleStrips(m), 0);
        const std::vector<uint32_t> strips = ReadIndices(m);
        EXPECT_EQ(HardwareStripTriangles(strips, Lengths(m)), ListTriangles(idx));
        EXPECT_EQ(strips.size(), m.nNumFaces + 2 * m.nNumStrips);
    }
}

TEST(TransformStrips, AStripNeverCrossesABoneBatch)
{
    SMeshHolder h;
    STVOMesh& m = h.mesh();
    SetList(m, Band(6));
    CQMXTBoneBatches& b = m.sBoneBatch;
    b.nBatchCnt = 3;
    b.nBatchBoneMax = 1;
    b.pnBatches = HeapCopy(std::vector<uint32_t>{0, 0, 0});
    b.pnBatchBoneCnt = HeapCopy(std::vector<uint32_t>{1, 1, 1});
    b.pnBatchOffset = HeapCopy(std::vector<uint32_t>{0, 2, 5});
    ASSERT_EQ(QMXTModelTVOToggleStrips(m), 0);
    EXPECT_EQ(Lengths(m), (std::vector<uint32_t>{2, 3, 1}));
    EXPECT_EQ(HardwareStripTriangles(ReadIndices(m), Lengths(m)), ListTriangles(Band(6)));
    // Back to a list in the fixed corner order: a strip's first triangle as stored, every later one
    // with its first two corners swapped.
    ASSERT_EQ(QMXTModelTVOToggleStrips(m), 0);
    EXPECT_EQ(m.pnStripLength, nullptr);
    EXPECT_EQ(ReadIndices(m), (std::vector<uint32_t>{0, 1, 2, 2, 1, 3, 2, 3, 4, 4, 3, 5, 5, 4, 6, 6, 5, 7}));
}

TEST(TransformStrips, BadInputAndCornerOrdersThatAreNoPermutationFail)
{
    SMeshHolder h;
    STVOMesh& m = h.mesh();
    m.nNumFaces = 2;
    EXPECT_EQ(QMXTModelTVOToggleStrips(m), 1); // no indices
    SetList(m, {0, 1, 2, 3, 4, 5});
    EXPECT_EQ(QMXTModelTVOReorderFaces(m, 0, 0, 1), 1);
    EXPECT_EQ(QMXTModelTVOReorderFaces(m, 0, 1, 3), 1);
    m.nNumStrips = 1;
    m.pnStripLength = HeapCopy(std::vector<uint32_t>{3}); // three triangles claimed, two present
    EXPECT_EQ(QMXTModelTVOToggleStrips(m), 1);
    EXPECT_EQ(ReadIndices(m), (std::vector<uint32_t>{0, 1, 2, 3}));
}
