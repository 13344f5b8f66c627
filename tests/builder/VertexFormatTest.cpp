// The vertex-format pass: index width, data types and component masks. (The coordinate mirror is
// checked on whole exports by EndToEnd.DirectXMirrorsZReversesWindingAndFlipsV.)
#include <gtest/gtest.h>

#include <cstring>

#include "SceneFixtures.h"
#include "TVOMeshEx.h"
#include "TVOMeshPasses.h"

namespace
{
// A finalised two-triangle mesh with normals, two uv sets and colours.
void BuildQuad(CTVOMeshEx& m, const SBuilderSettings& s)
{
    SGeomData g;
    const QMXTVECTOR3f a[3] = {{0, 0, 1}, {2, 0, 1}, {2, 2, 1}};
    const QMXTVECTOR3f b[3] = {{0, 0, 1}, {2, 2, 1}, {0, 2, 1}};
    AddCornerTriangle(g, a, {0, 0, 1});
    AddCornerTriangle(g, b, {0, 0, 1});
    g.channels.push_back(g.channels[0]);
    g.colours = {{1.0f, 0.0f, 0.0f, 1.0f}};
    for (SFace& f : g.faces)
        f.colour[0] = f.colour[1] = f.colour[2] = 0;
    m.Init(2, 2);
    m.AddFace(0, &g, nullptr, s);
    m.AddFace(1, &g, nullptr, s);
    ASSERT_TRUE(m.Finalise(s));
}

const float* Floats(const CTVOData& d)
{
    return reinterpret_cast<const float*>(d.pData);
}
} // namespace

TEST(VertexFormat, DefaultsGiveShortIndicesTwoUVComponentsAndDropUnwrittenSets)
{
    SBuilderSettings s;
    CTVOMeshEx m;
    BuildQuad(m, s);
    VertexFormatPass(m.mesh, s);
    const STVOMesh& mesh = m.mesh;
    EXPECT_EQ(mesh.sFaces.eType, EQMXTDataUnsignedShort);
    EXPECT_EQ(reinterpret_cast<const uint16_t*>(mesh.sFaces.pData)[5], 3u);
    EXPECT_EQ(Floats(mesh.sVertex)[2], 1.0f);
    ASSERT_EQ(mesh.nNumUVW, 1u); // set 1 is not written by default
    EXPECT_EQ(mesh.psUVW[0].n, 2u);
    EXPECT_EQ(Floats(mesh.psUVW[0])[2], 2.0f); // vertex 1: u = x = 2
    EXPECT_EQ(mesh.sVtxColours.n, 0u);         // colours are off by default
    EXPECT_EQ(mesh.pInterleaved, nullptr);
}

TEST(VertexFormat, TypesMasksAndQuantisedPositions)
{
    SBuilderSettings s;
    s.formats[COptionsData::eVcOptNor] = CVectorOpt(true, EQMXTDataShortNorm, 0x84); // z only
    s.formats[COptionsData::eVcOptCol] =
        CVectorOpt(true, EQMXTDataFloat, 0x09); // components 0 and 3 of the packed colour
    s.formats[COptionsData::eVcOptUVW1] = CVectorOpt(true, EQMXTDataUnsignedByte, 0x02);
    s.formats[COptionsData::eVcOptPos] = CVectorOpt(true, EQMXTDataUnsignedShort, 0x87);
    s.bUnpackMatrix = true;
    CTVOMeshEx m;
    BuildQuad(m, s);
    VertexFormatPass(m.mesh, s);
    const STVOMesh& mesh = m.mesh;
    ASSERT_EQ(mesh.sNormals.eType, EQMXTDataShortNorm);
    ASSERT_EQ(mesh.sNormals.n, 1u);
    EXPECT_EQ(reinterpret_cast<const int16_t*>(mesh.sNormals.pData)[0], 32767);
    ASSERT_EQ(mesh.sVtxColours.eType, EQMXTDataFloat);
    ASSERT_EQ(mesh.sVtxColours.n, 2u);
    // ARGB element 0xff0000ff read back: component 0 is bits 16-23 (0), component 3 alpha (1).
    EXPECT_EQ(Floats(mesh.sVtxColours)[0], 0.0f);
    EXPECT_EQ(Floats(mesh.sVtxColours)[1], 1.0f);
    ASSERT_EQ(mesh.nNumUVW, 2u);
    ASSERT_EQ(mesh.psUVW[1].eType, EQMXTDataUnsignedByte);
    EXPECT_EQ(mesh.psUVW[1].n, 1u);
    EXPECT_EQ(mesh.psUVW[1].pData[2], 2u); // vertex 2: v = y = 2
    ASSERT_EQ(mesh.sVertex.eType, EQMXTDataUnsignedShort);
    EXPECT_EQ(reinterpret_cast<const uint16_t*>(mesh.sVertex.pData)[3], 65535u); // vertex 1 x = max
    EXPECT_FLOAT_EQ(mesh.mUnpackMatrix[0] * 65535.0f, 2.0f); // unpack scales back to 2 units
}

// 16-bit indices reach exactly 65536 vertices (0 to 65535); one vertex more needs 32 bits.
TEST(VertexFormat, SixteenBitIndicesUpToExactly65536Vertices)
{
    const SBuilderSettings s;
    for (bool oneMore : {false, true})
    {
        SGeomData g = GridGeometry(255); // 256 x 256 = 65536 welded vertices
        if (oneMore)
            g.faces.back().group = 1; // its three corners become vertices of their own
        CTVOMeshEx m;
        m.Init(static_cast<uint32_t>(g.faces.size()), 1);
        for (uint32_t f = 0; f < g.faces.size(); ++f)
            m.AddFace(f, &g, nullptr, s);
        ASSERT_TRUE(m.Finalise(s));
        ASSERT_EQ(m.mesh.nNumVertex, oneMore ? 65539u : 65536u);
        VertexFormatPass(m.mesh, s);
        EXPECT_EQ(m.mesh.sFaces.eType, oneMore ? EQMXTDataUnsignedInt : EQMXTDataUnsignedShort);
    }
}
