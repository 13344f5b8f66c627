// The scene content records: the transform sample's identity default and equality, node indices,
// frame count, degenerate faces, and the defaults the builder relies on when a host sets none.
// (Copies are the compiler's over standard containers, so they are not tested here.)
#include <gtest/gtest.h>

#include "Content.h"

TEST(Content, TransformSampleDefaultsToIdentityAndComparesEveryField)
{
    const SNodeTM tm;
    const float pos[3] = {0, 0, 0}, rot[4] = {0, 0, 0, 1}, scale[3] = {1, 1, 1}, stretch[4] = {0, 0, 0, 0};
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(tm.pos[i] == pos[i] && tm.scale[i] == scale[i]) << i;
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(tm.rot[i] == rot[i] && tm.stretch[i] == stretch[i]) << i; // stretch is not a quaternion
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(tm.matrix[i], (i % 5 == 0) ? 1.0f : 0.0f) << i;

    EXPECT_TRUE(SNodeTM() == tm);
    for (int f = 0; f < 5; ++f)
    {
        SNodeTM changed;
        float* field[5] = {&changed.pos[2], &changed.rot[3], &changed.scale[2], &changed.stretch[3], &changed.matrix[15]};
        *field[f] += 0.5f;
        EXPECT_TRUE(changed != tm) << "field " << f;
        EXPECT_FALSE(changed == tm) << "field " << f;
    }
}

TEST(Content, NodesFacesAndSceneDefaults)
{
    const CNode node;
    EXPECT_EQ(node.index, -1);
    EXPECT_EQ(node.parent, -1);
    EXPECT_EQ(node.type, eNodePlain);
    EXPECT_EQ(node.camera.target, -1);

    SContent content;
    content.info.startFrame = 2;
    content.info.endFrame = 6;
    EXPECT_EQ(content.FrameCount(), 5);
    CNode stale;
    stale.index = 7;
    EXPECT_EQ(content.AddNode(stale), 0);
    EXPECT_EQ(content.AddNode(stale), 1);
    EXPECT_EQ(content.nodes[1].index, 1); // set to its place, whatever it held
    EXPECT_EQ(SSceneInfo().fps, 30);

    SFace face;
    face.pos[0] = 1;
    face.pos[1] = 2;
    face.pos[2] = 1;
    EXPECT_TRUE(face.IsDegenerate());
    face.pos[2] = 3;
    EXPECT_FALSE(face.IsDegenerate());

    // Lights without attenuation or cone from the host: constant 1, the half-turn cone.
    const SLightData light;
    EXPECT_EQ(light.target, -1);
    EXPECT_EQ(light.constantAttenuation, 1.0f);
    EXPECT_EQ(light.linearAttenuation, 0.0f);
    EXPECT_EQ(light.quadraticAttenuation, 0.0f);
    EXPECT_EQ(light.falloffAngle, 3.14159274f);
    // Materials blend one, zero, add (the OpenGL enumerants) and with blending off.
    const SMaterial m;
    EXPECT_TRUE(m.blendSrcRGB == 1 && m.blendSrcA == 1 && m.blendDstRGB == 0 && m.blendDstA == 0);
    EXPECT_TRUE(m.blendOpRGB == 0x8006 && m.blendOpA == 0x8006 && m.flags == 0);
}
