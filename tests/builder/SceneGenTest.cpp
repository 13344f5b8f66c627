// GenA, GenB and GenC: content to scene model, node order, index resolution, materials, animation.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Log.h"
#include "SceneFixtures.h"
#include "TVOSceneEx.h"

namespace
{
bool Build(CTVOSceneEx& scene, const SContent& content, const SBuilderSettings& s = SBuilderSettings())
{
    if (!scene.GenA(&content, s) || !scene.GenB())
        return false;
    scene.GenC(s);
    return true;
}

// One field of every node, in node order.
template <typename T> std::vector<T> Each(const CTVOSceneEx& scene, T STVONode::*field)
{
    std::vector<T> values;
    for (uint32_t i = 0; i < scene.nNumNode; ++i)
        values.push_back(scene.pNode[i].*field);
    return values;
}

std::vector<std::string> Names(const CTVOSceneEx& scene)
{
    std::vector<std::string> names;
    for (char* name : Each(scene, &STVONode::pszName))
        names.push_back(name);
    return names;
}

using VS = std::vector<std::string>;
using VI = std::vector<int32_t>;
} // namespace

TEST(SceneGen, NodeSplitByMaterialHangsUnderAPlainNodeOfItsName)
{
    CRecordingLogSink sink;
    SContent content;
    content.materials.resize(6);
    CNode box = MeshNode("Box", CubeGeometry(5, 2));
    box.tm.pos[0] = 10.0f;
    const int boxIndex = content.AddNode(box);
    CNode child;
    child.name = "Handle";
    child.parent = boxIndex;
    content.AddNode(child);
    CTVOSceneEx scene;
    ASSERT_TRUE(Build(scene, content));
    ASSERT_EQ(scene.nNumMaterial, 6u);

    EXPECT_TRUE(sink.Has(eLogWarning,
                         "Warning: 'Box' has been split up into 2 meshes as it uses multiple materials."));
    EXPECT_EQ(Names(scene), (VS{"Box-submesh0", "Box-submesh1", "Handle", "Box"}));
    EXPECT_EQ(scene.nNumMeshNode, 2u);
    EXPECT_EQ(Each(scene, &STVONode::nIdxMaterial), (VI{2, 5, -1, -1})); // ascending material id
    EXPECT_EQ(scene.pNode[3].nIdx, -1);
    // Content children follow the node that keeps the name.
    EXPECT_EQ(Each(scene, &STVONode::nIdxParent), (VI{3, 3, 3, -1}));
    // The transform stays on Box; the sub-meshes must not apply it a second time.
    EXPECT_EQ(scene.pNode[3].pfAnimPosition[0], 10.0f);
    EXPECT_EQ(scene.pNode[0].pfAnimPosition[0], 0.0f);
    ASSERT_EQ(scene.nNumMesh, 2u);
    EXPECT_EQ(scene.pMesh[scene.pNode[0].nIdx].nNumFaces, 6u);
    EXPECT_EQ(scene.pMesh[scene.pNode[1].nIdx].nNumFaces, 6u);

    // A node never names a material that is not written: an id past the list, or materials off.
    for (bool materials : {true, false})
    {
        SContent one;
        one.materials.resize(1);
        const int id = materials ? 3 : 0; // past the list; or valid, but nothing is written
        one.AddNode(MeshNode("Odd", CubeGeometry(id, id)));
        SBuilderSettings settings;
        settings.bExportMaterials = materials;
        CTVOSceneEx built;
        ASSERT_TRUE(Build(built, one, settings));
        EXPECT_EQ(built.nNumMaterial, materials ? 1u : 0u);
        EXPECT_EQ(built.pNode[0].nIdxMaterial, -1);
    }
}

TEST(SceneGen, IdenticalNodesShareOneMeshAndTexturesAreShared)
{
    CRecordingLogSink sink;
    SContent content;
    content.AddNode(MeshNode("A", CubeGeometry()));
    CNode b = MeshNode("B", CubeGeometry());
    b.tm.pos[1] = 3.0f;
    content.AddNode(b);
    content.AddNode(MeshNode("C", CubeGeometry(0, 0, 2.0f)));
    SMaterial m1, m2;
    m1.opacity = m2.opacity = 1.0f;
    m1.textures[0] = "wood.png";
    m2.textures[0] = "stone.png";
    m2.textures[4] = "wood.png";
    content.materials = {m1, m2};
    CTVOSceneEx scene;
    ASSERT_TRUE(Build(scene, content));
    ASSERT_EQ(scene.nNumMesh, 2u);
    EXPECT_EQ(Each(scene, &STVONode::nIdx), (VI{0, 0, 1}));
    EXPECT_EQ(sink.Count("Instancing mesh"), 1);
    ASSERT_EQ(scene.nNumTexture, 2u);
    EXPECT_STREQ(scene.pTexture[0].pszName, "wood.png");
    EXPECT_EQ(scene.pMaterial[1].nIdxTexture[0], 1);
    EXPECT_EQ(scene.pMaterial[1].nIdxTexture[4], 0);
    EXPECT_EQ(scene.pMaterial[1].nIdxTexture[1], -1);
    EXPECT_TRUE(sink.Has(eLogDetail, "Instancing texture 0\n"));
}

TEST(SceneGen, NodeOrderLightsCamerasAndTargets)
{
    SContent content;
    CNode cam;
    cam.name = "Cam";
    cam.type = eNodeCamera;
    cam.camera.fov = 0.7f;
    CNode light;
    light.name = "Lamp";
    light.type = eNodeLight;
    light.light.lightType = eTVOLightSpot;
    CNode target;
    target.name = "Target";
    const int camIndex = content.AddNode(cam);
    content.AddNode(light);
    const int targetIndex = content.AddNode(target);
    content.AddNode(MeshNode("Mesh", CubeGeometry()));
    CNode hidden = MeshNode("Hidden", CubeGeometry());
    hidden.type = eNodeJoint; // a joint without bone geometry export is a plain node
    content.AddNode(hidden);
    content.nodes[1].light.target = targetIndex;
    content.nodes[camIndex].camera.target = 77; // names nothing exported: kept as it is

    CTVOSceneEx scene;
    ASSERT_TRUE(Build(scene, content));
    // Mesh nodes, then lights, then cameras, then the rest.
    EXPECT_EQ(Names(scene), (VS{"Mesh", "Lamp", "Cam", "Target", "Hidden"}));
    EXPECT_EQ(scene.nNumMeshNode, 1u);
    EXPECT_EQ(Each(scene, &STVONode::nIdx), (VI{0, 0, 0, -1, -1}));
    ASSERT_EQ(scene.nNumLight, 1u);
    EXPECT_EQ(scene.pLight[0].nIdxTarget, 3);
    EXPECT_EQ(scene.pLight[0].eType, unsigned(eTVOLightSpot));
    ASSERT_EQ(scene.nNumCamera, 1u);
    EXPECT_EQ(scene.pCamera[0].nIdxTarget, 77);
    EXPECT_EQ(scene.pCamera[0].fFOV, 0.7f);

    SBuilderSettings bones;
    bones.bExportBoneGeometry = true;
    CTVOSceneEx withBones;
    ASSERT_TRUE(Build(withBones, content, bones));
    EXPECT_EQ(withBones.nNumMeshNode, 2u);
    EXPECT_EQ(Names(withBones)[1], "Hidden");

    SBuilderSettings noGeometry;
    noGeometry.bExportGeometry = false;
    CTVOSceneEx bare;
    ASSERT_TRUE(Build(bare, content, noGeometry));
    EXPECT_EQ(Names(bare), (VS{"Lamp", "Cam", "Target", "Hidden"})); // the mesh node is dropped entirely
    EXPECT_EQ(bare.nNumMeshNode + bare.nNumMesh, 0u);
}

TEST(SceneGen, FrameCountAndRate)
{
    SContent content;
    content.info.startFrame = 2;
    content.info.endFrame = 11;
    content.info.fps = 25;
    CNode moving;
    moving.name = "m";
    moving.frames.resize(7);
    content.AddNode(moving);
    content.AddNode(CNode());

    SBuilderSettings still; // no animation, model space: no frames
    CTVOSceneEx a;
    ASSERT_TRUE(Build(a, content, still));
    EXPECT_EQ(a.nNumFrame, 0u);
    EXPECT_EQ(a.nFPS, 30u);

    SBuilderSettings anim;
    anim.bExportAnimations = true;
    CTVOSceneEx b;
    ASSERT_TRUE(Build(b, content, anim));
    EXPECT_EQ(b.nNumFrame, 7u); // lowered to the shortest frames list
    EXPECT_EQ(b.nFPS, 25u);
}

TEST(SceneGen, TransparentMaterialsBlendSourceAlpha)
{
    SContent content;
    SMaterial opaque, half, nan;
    opaque.name = "opaque";
    opaque.opacity = 1.0f;
    opaque.blendSrcRGB = 0x0306;
    half.opacity = 0.5f;
    half.userData = {1, 2};
    nan.opacity = std::numeric_limits<float>::quiet_NaN();
    content.materials = {opaque, half, nan};
    CTVOSceneEx scene;
    ASSERT_TRUE(Build(scene, content));
    ASSERT_EQ(scene.nNumMaterial, 3u);
    const STVOMaterial& o = scene.pMaterial[0];
    EXPECT_STREQ(o.pszName, "opaque");
    EXPECT_EQ(o.eBlendSrcRGB, 0x0306u);
    EXPECT_EQ(o.eBlendDstRGB, 0u);
    EXPECT_EQ(o.nFlags, 0u);
    const STVOMaterial& h = scene.pMaterial[1];
    ASSERT_NE(h.pszName, nullptr);
    EXPECT_STREQ(h.pszName, "");
    EXPECT_EQ(h.nFlags & 1u, 1u);
    const std::vector<uint32_t> blend = {h.eBlendSrcRGB, h.eBlendSrcA, h.eBlendDstRGB, h.eBlendDstA,
                                         h.eBlendOpRGB};
    EXPECT_EQ(blend, (std::vector<uint32_t>{770, 770, 771, 771, 0x8006}));
    ASSERT_EQ(h.nUserDataSize, 2u);
    EXPECT_EQ(h.pUserData[1], 2);
    EXPECT_EQ(scene.pMaterial[2].eBlendDstA, 771u);
}

TEST(SceneGen, SkinWithMissingVerticesIsIgnoredAndBadIndicesFail)
{
    CRecordingLogSink sink;
    SContent content;
    CNode cube = MeshNode("Cube", CubeGeometry());
    SModifier skin;
    skin.vertices.resize(3); // not one a position
    cube.modifiers = {skin};
    content.AddNode(cube);
    CTVOSceneEx scene;
    ASSERT_TRUE(Build(scene, content));
    EXPECT_TRUE(sink.Has(eLogWarning,
                         "Warning: Ignoring skinning information as some/all vertices do not have data."));
    EXPECT_EQ(scene.pMesh[0].sBoneIdx.n, 0u);

    content.nodes[0].geom.faces[3].normal[1] = 1000;
    CTVOSceneEx bad;
    EXPECT_FALSE(bad.GenA(&content, SBuilderSettings()));
    EXPECT_TRUE(sink.Has(eLogError, "Error: 'Cube' has geometry indices out of range."));
    SBuilderSettings noNormals;
    noNormals.formats[COptionsData::eVcOptNor].SetOption(CVectorOpt::eExport,
                                                         false); // the bad normal index is not read then
    CTVOSceneEx fine;
    EXPECT_TRUE(fine.GenA(&content, noNormals));
    content.nodes[0].geom.channels[0].faces.pop_back();
    CTVOSceneEx badUV;
    EXPECT_FALSE(badUV.GenA(&content, noNormals));
}
