// Vertex and triangle stores, face assembly and finalising into scene model streams.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "TVOMeshEx.h"

namespace
{
SOneVertex Vtx(float x, float y, float z, int group = 0)
{
    SOneVertex v;
    v.position[0] = x;
    v.position[1] = y;
    v.position[2] = z;
    v.group = group;
    return v;
}

// A quad of two triangles, one uv channel, all indices shared.
SGeomData Quad()
{
    SGeomData g;
    g.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    g.normals = {{0, 0, 1}};
    g.colours = {{1.5f, -0.2f, 0.5f, 1.0f}};
    SFace a, b;
    a.pos[0] = 0, a.pos[1] = 1, a.pos[2] = 2;
    b.pos[0] = 0, b.pos[1] = 2, b.pos[2] = 3;
    g.faces = {a, b};
    SMappingChannel ch;
    ch.uvw = {{0, 0, 0}, {1, 0, 0}, {1, 0.25f, 0}, {0, 1, 0}};
    ch.faces = {CTriIdx{{0, 1, 2}}, CTriIdx{{0, 2, 3}}};
    g.channels = {ch};
    return g;
}
} // namespace

TEST(VertexStore, FloatRulesGroupsAndBones)
{
    CVertex store;
    store.Init(0);
    const SOneVertex zero = Vtx(0.0f, 1.0f, 2.0f);
    const SOneVertex negZero = Vtx(-0.0f, 1.0f, 2.0f);
    EXPECT_EQ(store.FindOrCreate(&zero, true), 0u);
    EXPECT_EQ(store.FindOrCreate(&negZero, true), 0u); // 0 and -0 are equal floats

    const SOneVertex nan = Vtx(std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f);
    EXPECT_EQ(store.FindOrCreate(&nan, true), 1u);
    EXPECT_EQ(store.FindOrCreate(&nan, true), 2u); // a NaN never equals, not even itself

    const SOneVertex otherGroup = Vtx(0.0f, 1.0f, 2.0f, 5);
    EXPECT_EQ(store.FindOrCreate(&otherGroup, true), 3u);

    SOneVertex skinnedA = Vtx(3, 3, 3), skinnedB = Vtx(3, 3, 3);
    skinnedA.boneIndices = {1, 2};
    skinnedA.boneWeights = {0.5f, 0.5f};
    skinnedB.boneIndices = {7};
    skinnedB.boneWeights = {1.0f};
    EXPECT_EQ(store.FindOrCreate(&skinnedA, true), 4u);
    EXPECT_EQ(store.FindOrCreate(&skinnedB, true), 4u); // bones are not part of identity
    ASSERT_EQ(store.InfluenceCount(4), 2u);             // the first vertex keeps its own
    EXPECT_EQ(store.BoneIndices(4)[1], 2);
    EXPECT_EQ(store.MaxInfluences(), 2u);
}

TEST(MeshAssembly, FacesBecomeWeldedStreams)
{
    SGeomData g = Quad();
    SFace degenerate;
    degenerate.pos[0] = 2, degenerate.pos[1] = 2, degenerate.pos[2] = 3;
    g.faces.push_back(degenerate);
    g.channels[0].faces.push_back(CTriIdx{{0, 0, 0}});
    g.faces.push_back(g.faces[0]); // a repeated triangle
    g.channels[0].faces.push_back(g.channels[0].faces[0]);
    g.faces[1].colour[2] = 0; // corner 2 of face 1 (position 3) has a colour

    SBuilderSettings s;
    s.formats[COptionsData::eVcOptCol].SetOption(CVectorOpt::eExport, true);
    CTVOMeshEx m;
    m.Init(static_cast<uint32_t>(g.faces.size()), 1);
    for (uint32_t f = 0; f < g.faces.size(); ++f)
        m.AddFace(f, &g, nullptr, s);
    ASSERT_TRUE(m.Finalise(s));
    const STVOMesh& mesh = m.mesh;
    ASSERT_EQ(mesh.nNumVertex, 4u);
    ASSERT_EQ(mesh.nNumFaces, 2u); // the degenerate and the repeated face are dropped
    EXPECT_EQ(mesh.sFaces.eType, EQMXTDataUnsignedInt);
    EXPECT_EQ(mesh.sFaces.n, 1u);
    const uint32_t* idx = reinterpret_cast<const uint32_t*>(mesh.sFaces.pData);
    const uint32_t expectedIdx[6] = {0, 1, 2, 0, 2, 3};
    EXPECT_EQ(std::memcmp(idx, expectedIdx, sizeof expectedIdx), 0);
    EXPECT_EQ(mesh.sVertex.n, 3u);
    EXPECT_EQ(reinterpret_cast<const float*>(mesh.sVertex.pData)[6], 1.0f); // vertex 2 x
    EXPECT_EQ(mesh.sNormals.n, 3u);
    EXPECT_EQ(reinterpret_cast<const float*>(mesh.sNormals.pData)[11], 1.0f);
    ASSERT_EQ(mesh.nNumUVW, 1u);
    EXPECT_EQ(mesh.psUVW[0].n, 3u);
    EXPECT_EQ(reinterpret_cast<const float*>(mesh.psUVW[0].pData)[7], 0.25f); // no flip by default
    // Colour 1.5 packs as 255 and -0.2 as 0: alpha 255, blue 127, green 0, red 255.
    ASSERT_EQ(mesh.sVtxColours.eType, EQMXTDataARGB);
    ASSERT_EQ(mesh.sVtxColours.n, 1u);
    const uint32_t* col = reinterpret_cast<const uint32_t*>(mesh.sVtxColours.pData);
    EXPECT_EQ(col[3], 0xff7f00ffu);
    EXPECT_EQ(col[0], 0xffffffffu); // vertices without colour are opaque white
}

TEST(MeshAssembly, VIsFlippedWhenExactlyOneOfDirectXAndFlipHolds)
{
    const SGeomData g = Quad();
    for (int cs = 1; cs <= 2; ++cs)
        for (int flip = 0; flip <= 1; ++flip)
        {
            SBuilderSettings s;
            s.eCoordSystem = static_cast<ECoordSystem>(cs);
            s.bFlipTextureV = flip != 0;
            s.formats[COptionsData::eVcOptNor].SetOption(CVectorOpt::eExport, false);
            CTVOMeshEx m;
            m.Init(2, 1);
            m.AddFace(0, &g, nullptr, s);
            m.AddFace(1, &g, nullptr, s);
            ASSERT_TRUE(m.Finalise(s));
            const bool flipped = (cs == 1) != (flip != 0);
            EXPECT_EQ(reinterpret_cast<const float*>(m.mesh.psUVW[0].pData)[7], flipped ? 0.75f : 0.25f);
            EXPECT_EQ(m.mesh.sNormals.n, 0u);
            EXPECT_EQ(m.mesh.sNormals.pData, nullptr);
        }
}

TEST(MeshAssembly, GroupsSplitVerticesAndSkinsFillBoneStreams)
{
    SGeomData g = Quad();
    g.faces[1].group = 3; // shares positions 0 and 2 with face 0, but in another group
    std::vector<SBonedVtx> skin(4);
    skin[0].weights = {{2, 0.25f}, {5, 0.75f}};
    skin[1].weights = {{2, 1.0f}};
    skin[2].weights = {{5, 1.0f}};
    skin[3].weights = {{9, 0.5f}, {2, 0.25f}, {5, 0.25f}};
    SBuilderSettings s;
    CTVOMeshEx m;
    m.Init(2, 1);
    m.AddFace(0, &g, skin.data(), s);
    m.AddFace(1, &g, skin.data(), s);
    ASSERT_TRUE(m.Finalise(s));
    EXPECT_EQ(m.mesh.nNumVertex, 6u);
    ASSERT_EQ(m.mesh.sBoneIdx.n, 3u);
    ASSERT_EQ(m.mesh.sBoneWeight.n, 3u);
    const float* bi = reinterpret_cast<const float*>(m.mesh.sBoneIdx.pData);
    const float* bw = reinterpret_cast<const float*>(m.mesh.sBoneWeight.pData);
    EXPECT_EQ(bi[0], 2.0f);
    EXPECT_EQ(bi[1], 5.0f);
    EXPECT_EQ(bi[2], 0.0f); // padding slot
    EXPECT_EQ(bw[2], 0.0f);
    EXPECT_EQ(bi[5 * 3 + 0], 9.0f); // vertex 5 is position 3
    EXPECT_EQ(bw[5 * 3 + 2], 0.25f);
}
