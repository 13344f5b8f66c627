// Defaults and deep-copy independence of the scene content records.
#include <gtest/gtest.h>

#include "Content.h"

TEST(Content, DefaultNodeIsAnUnparentedPlainNodeWithIdentityTransform)
{
    const CNode node;
    EXPECT_EQ(node.index, -1);
    EXPECT_EQ(node.parent, -1);
    EXPECT_EQ(node.type, eNodePlain);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(node.tm.matrix[i], (i % 5 == 0) ? 1.0f : 0.0f) << i;
    EXPECT_EQ(node.tm.scale[0], 1.0f);
    EXPECT_EQ(node.tm.scale[2], 1.0f);
    EXPECT_EQ(node.tm.rot[3], 1.0f);
    for (float s : node.tm.stretch)
        EXPECT_EQ(s, 0.0f);
    EXPECT_TRUE(node.geom.faces.empty());
    EXPECT_TRUE(node.frames.empty());
    EXPECT_TRUE(node.modifiers.empty());
    EXPECT_TRUE(node.userData.empty());
    EXPECT_EQ(node.camera.target, -1);
    EXPECT_TRUE(node.camera.fovFrames.empty());
}

TEST(Content, DefaultLightAndFace)
{
    const SLightData light;
    EXPECT_EQ(light.target, -1);
    EXPECT_EQ(light.constantAttenuation, 1.0f);
    EXPECT_EQ(light.linearAttenuation, 0.0f);
    EXPECT_EQ(light.quadraticAttenuation, 0.0f);
    EXPECT_EQ(light.falloffAngle, 3.14159274f);

    SFace face;
    face.pos[0] = 1;
    face.pos[1] = 2;
    face.pos[2] = 1;
    EXPECT_TRUE(face.IsDegenerate());
    face.pos[2] = 3;
    EXPECT_FALSE(face.IsDegenerate());
    EXPECT_EQ(SSceneInfo().fps, 30);
}

TEST(Content, MaterialBlendsOneZeroAddAndCopiesIndependently)
{
    SMaterial m;
    EXPECT_EQ(m.blendSrcRGB, 1);
    EXPECT_EQ(m.blendSrcA, 1);
    EXPECT_EQ(m.blendDstRGB, 0);
    EXPECT_EQ(m.blendDstA, 0);
    EXPECT_EQ(m.blendOpRGB, 0x8006);
    EXPECT_EQ(m.blendOpA, 0x8006);
    EXPECT_EQ(m.flags, 0);

    m.name = "wood";
    m.textures[4] = "bump.png";
    m.userData = {1, 2, 3};
    m.diffuse[1] = 0.5f;
    SMaterial copy(m);
    copy.name[0] = 'W';
    copy.textures[4] = "other.png";
    copy.userData[0] = 9;
    copy.diffuse[1] = 0.25f;
    EXPECT_EQ(m.name, "wood");
    EXPECT_EQ(m.textures[4], "bump.png");
    EXPECT_EQ(m.userData[0], 1);
    EXPECT_EQ(m.diffuse[1], 0.5f);

    SMaterial assigned;
    assigned = m;
    EXPECT_EQ(assigned.textures[4], "bump.png");
    EXPECT_EQ(assigned.userData.size(), 3u);
}

TEST(Content, CopyingContentCopiesEveryNodeDeeply)
{
    SContent content;
    content.info.endFrame = 4;
    CNode mesh;
    mesh.name = "Box";
    mesh.type = eNodeMesh;
    mesh.geom.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    SFace f;
    f.pos[1] = 1;
    f.pos[2] = 2;
    mesh.geom.faces.push_back(f);
    SMappingChannel ch;
    ch.uvw = {{0, 0, 0}};
    ch.faces.resize(1);
    mesh.geom.channels.push_back(ch);
    mesh.frames.resize(5);
    SModifier skin;
    skin.vertices.resize(3);
    skin.vertices[0].weights.push_back({1, 0.5f});
    mesh.modifiers.push_back(skin);
    EXPECT_EQ(content.AddNode(mesh), 0);
    CNode joint;
    joint.type = eNodeJoint;
    joint.parent = 0;
    EXPECT_EQ(content.AddNode(joint), 1);
    EXPECT_EQ(content.nodes[1].index, 1);
    EXPECT_EQ(content.FrameCount(), 5);

    SContent copy = content;
    copy.nodes[0].geom.positions[1].x = 42.0f;
    copy.nodes[0].geom.channels[0].uvw[0].y = 3.0f;
    copy.nodes[0].frames[2].pos[0] = 7.0f;
    copy.nodes[0].modifiers[0].vertices[0].weights[0].weight = 0.0f;
    copy.nodes[1].name = "changed";

    const CNode& src = content.nodes[0];
    EXPECT_EQ(src.geom.positions[1].x, 1.0f);
    EXPECT_EQ(src.geom.channels[0].uvw[0].y, 0.0f);
    EXPECT_EQ(src.frames[2].pos[0], 0.0f);
    EXPECT_EQ(src.modifiers[0].vertices[0].weights[0].weight, 0.5f);
    EXPECT_TRUE(content.nodes[1].name.empty());
    EXPECT_TRUE(copy.nodes[0].frames[1] == src.frames[1]);
    EXPECT_TRUE(copy.nodes[0].frames[2] != src.frames[2]);
}
