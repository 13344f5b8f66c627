// Interleaving, de-interleaving and de-indexing of meshes.
#include <gtest/gtest.h>

#include <random>

#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

namespace
{
const uint32_t kVertices = 5;

struct SStreamKind
{
    uint32_t type, n;
    float lo, hi; // values to draw, inside what the type stores
};

// Nine streams of mixed element sizes: positions, normals, tangents, binormals, two UVW sets,
// colours, bone indices, bone weights.
const SStreamKind kKinds[9] = {
    {EQMXTDataFloat, 3, -10, 10}, {EQMXTDataShortNorm, 3, -1, 1},      {EQMXTDataByteNorm, 3, -1, 1},
    {EQMXTDataDEC3N, 1, -1, 1},   {EQMXTDataUnsignedShort, 2, 0, 900}, {EQMXTDataUnsignedByte, 3, 0, 200},
    {EQMXTDataRGBA, 1, 0, 1},     {EQMXTDataUnsignedByte, 4, 0, 20},   {EQMXTDataUnsignedByteNorm, 3, 0, 1},
};

std::vector<CTVOData*> Streams(STVOMesh& m)
{
    return {&m.sVertex,  &m.sNormals,    &m.sTangents, &m.sBinormals, &m.psUVW[0],
            &m.psUVW[1], &m.sVtxColours, &m.sBoneIdx,  &m.sBoneWeight};
}

// Fills the streams whose bit is set in mask with random values; returns each stream's bytes.
std::vector<std::vector<uint8_t>> FillMesh(STVOMesh& m, unsigned mask, std::mt19937& rng)
{
    m.nNumVertex = kVertices;
    m.nNumUVW = 2;
    m.psUVW = static_cast<CTVOData*>(std::calloc(2, sizeof(CTVOData)));
    std::vector<std::vector<uint8_t>> bytes(9);
    for (int s = 0; s < 9; ++s)
    {
        if (!(mask & (1u << s)))
            continue;
        std::uniform_real_distribution<float> value(kKinds[s].lo, kKinds[s].hi);
        std::vector<Vec4> values(kVertices);
        for (Vec4& v : values)
            v = {value(rng), value(rng), value(rng), value(rng)};
        CTVOData d = MakeStream(kKinds[s].type, kKinds[s].n, values);
        *Streams(m)[s] = d;
        bytes[s].assign(d.pData, d.pData + kVertices * d.nStride);
    }
    return bytes;
}
} // namespace

TEST(TransformInterleave, RoundTripIsLosslessForEveryStreamSetAndAlignment)
{
    std::mt19937 rng(7);
    for (uint32_t alignment : {0u, 1u, 2u, 4u, 8u})
        for (unsigned mask = 1; mask < 512; ++mask)
        {
            SCOPED_TRACE("alignment " + std::to_string(alignment) + " streams " + std::to_string(mask));
            SMeshHolder h;
            STVOMesh& m = h.mesh();
            const auto original = FillMesh(m, mask, rng);
            std::vector<std::vector<Vec4>> values(9);
            for (int s = 0; s < 9; ++s)
                for (uint32_t v = 0; (mask >> s & 1) && v < kVertices; ++v)
                    values[s].push_back(ReadVertex(m, *Streams(m)[s], v));

            ASSERT_EQ(QMXTModelTVOToggleInterleaved(m, alignment), 0);
            ASSERT_NE(m.pInterleaved, nullptr);
            for (int s = 0; s < 9; ++s)
            {
                if (!(mask >> s & 1))
                    continue;
                const CTVOData& d = *Streams(m)[s];
                const uint32_t offset = QMXTModelTVODataOffset(d), size = QMXTModelTVODataStride(d);
                if (alignment)
                {
                    EXPECT_EQ(offset % alignment, 0u) << "stream " << s;
                }
                ASSERT_LE(offset + size, d.nStride);
                for (uint32_t v = 0; v < kVertices; ++v)
                    EXPECT_EQ(ReadVertex(m, d, v), values[s][v]) << "stream " << s << " vertex " << v;
            }

            ASSERT_EQ(QMXTModelTVOToggleInterleaved(m, alignment), 0);
            EXPECT_EQ(m.pInterleaved, nullptr);
            for (int s = 0; s < 9; ++s)
            {
                const CTVOData& d = *Streams(m)[s];
                if (!(mask >> s & 1))
                {
                    EXPECT_EQ(d.n, 0u);
                    continue;
                }
                EXPECT_EQ(d.nStride, QMXTModelTVODataStride(d));
                EXPECT_EQ(std::vector<uint8_t>(d.pData, d.pData + kVertices * d.nStride), original[s]);
            }
        }
}

// Positions and normals (float x 3) and one UVW set of unsigned short x 2 give a 28-byte vertex with
// the UVW set at 24; a colour of three bytes follows, padded to 4 bytes, or not at all for alignment 0.
TEST(TransformInterleave, PaddingFollowsAlignmentAndLargestElementsComeFirst)
{
    for (bool colour : {false, true})
        for (uint32_t alignment : {4u, 0u})
        {
            SMeshHolder h;
            STVOMesh& m = h.mesh();
            m.nNumVertex = 2;
            m.nNumUVW = 1;
            m.psUVW = static_cast<CTVOData*>(std::calloc(1, sizeof(CTVOData)));
            m.sVertex = MakeStream(EQMXTDataFloat, 3, {{1, 2, 3}, {4, 5, 6}});
            m.psUVW[0] = MakeStream(EQMXTDataUnsignedShort, 2, {{7, 8}, {9, 10}});
            m.sNormals = MakeStream(EQMXTDataFloat, 3, {{0, 0, 1}, {0, 1, 0}});
            if (colour)
                m.sVtxColours = MakeStream(EQMXTDataUnsignedByte, 3, {{1, 2, 3}, {4, 5, 6}});
            ASSERT_EQ(QMXTModelTVOToggleInterleaved(m, alignment), 0);
            EXPECT_EQ(m.sVertex.nStride, colour ? (alignment ? 32u : 31u) : 28u);
            EXPECT_EQ(QMXTModelTVODataOffset(m.sNormals), 12u);
            EXPECT_EQ(QMXTModelTVODataOffset(m.psUVW[0]), 24u);
            if (colour)
            {
                EXPECT_EQ(QMXTModelTVODataOffset(m.sVtxColours), 28u);
                EXPECT_EQ(ReadVertex(m, m.sVtxColours, 1), (Vec4{4, 5, 6, 1}));
            }
            if (colour && alignment)
            {
                EXPECT_EQ(m.pInterleaved[32 + 31], 0); // padding is zero
            }
            EXPECT_EQ(ReadVertex(m, m.psUVW[0], 1), (Vec4{9, 10, 0, 1}));
        }
}

TEST(TransformDeIndex, EveryCornerGetsACopyOfItsVertex)
{
    for (bool interleave : {false, true})
        for (bool strips : {false, true})
        {
            SCOPED_TRACE(std::string(interleave ? "interleaved" : "arrays") + (strips ? " strips" : " list"));
            SMeshHolder h;
            STVOMesh& m = h.mesh();
            m.nNumVertex = 4;
            m.sVertex = MakeStream(EQMXTDataFloat, 3, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
            m.sVtxColours = MakeStream(EQMXTDataUnsignedByte, 4, {{1}, {2}, {3}, {4}});
            const std::vector<uint32_t> idx =
                strips ? std::vector<uint32_t>{0, 1, 3, 2} : std::vector<uint32_t>{0, 1, 2, 2, 3, 0, 3, 3, 1};
            m.sFaces = MakeIndices(strips ? EQMXTDataUnsignedInt : EQMXTDataUnsignedShort, idx);
            m.nNumFaces = strips ? 2 : 3;
            if (strips)
            {
                m.nNumStrips = 1;
                m.pnStripLength = HeapCopy(std::vector<uint32_t>{2});
            }
            if (interleave)
            {
                ASSERT_EQ(QMXTModelTVOToggleInterleaved(m, 4), 0);
            }
            std::vector<Vec4> pos, col;
            for (uint32_t v = 0; v < 4; ++v)
            {
                pos.push_back(ReadVertex(m, m.sVertex, v));
                col.push_back(ReadVertex(m, m.sVtxColours, v));
            }

            ASSERT_EQ(QMXTModelTVODeIndex(m), 0);
            EXPECT_EQ(m.nNumVertex, idx.size());
            EXPECT_EQ(m.sFaces.pData, nullptr);
            EXPECT_EQ(m.nNumStrips, strips ? 1u : 0u);
            for (size_t k = 0; k < idx.size(); ++k)
            {
                EXPECT_EQ(ReadVertex(m, m.sVertex, k), pos[idx[k]]) << "corner " << k;
                EXPECT_EQ(ReadVertex(m, m.sVtxColours, k), col[idx[k]]) << "corner " << k;
            }
        }
}

TEST(TransformDeIndex, BadMeshesFailAndAreLeftAsTheyWere)
{
    SMeshHolder h;
    STVOMesh& m = h.mesh();
    m.nNumVertex = 2;
    m.nNumFaces = 1;
    m.sVertex = MakeStream(EQMXTDataFloat, 3, {{1}, {2}});
    m.sFaces = MakeIndices(EQMXTDataUnsignedShort, {0, 1, 2}); // an index outside the vertices
    EXPECT_EQ(QMXTModelTVODeIndex(m), 1);
    EXPECT_EQ(m.nNumVertex, 2u);
    EXPECT_EQ(ReadIndices(m), (std::vector<uint32_t>{0, 1, 2}));
    m.sNormals.eType = EQMXTDataFloat;
    m.sNormals.n = 3; // present but without data: cannot be interleaved
    EXPECT_EQ(QMXTModelTVOToggleInterleaved(m, 4), 1);
    EXPECT_EQ(m.pInterleaved, nullptr);
    EXPECT_EQ(ReadVertex(m, m.sVertex, 1)[0], 2.0f);
}
