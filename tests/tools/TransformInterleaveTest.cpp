// Interleaving, de-interleaving and de-indexing of meshes.
#include <gtest/gtest.h>

#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

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
            ASSERT_EQ(QMXTModelTVOToggleInterleaved(m, alignment), 0); // and back
            EXPECT_EQ(m.pInterleaved, nullptr);
            EXPECT_EQ(ReadVertex(m, m.sNormals, 1), (Vec4{0, 1, 0, 1}));
            EXPECT_EQ(ReadVertex(m, m.psUVW[0], 1), (Vec4{9, 10, 0, 1}));
        }
}

// De-indexing with its values is drawn by the viewer's cube test; here the refusals.
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
