// Animation queries of the scene model: channel sampling, world matrices, lights and cameras (bone
// matrices are checked through flattening).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "QMXTModelTVO.h"
#include "TransformFixtures.h"

namespace
{
// Allocates n zeroed nodes without names, all roots.
void MakeNodes(CQMXTModelTVO& s, uint32_t n)
{
    s.nNumNode = n;
    s.pNode = static_cast<STVONode*>(std::calloc(n, sizeof(STVONode)));
    for (uint32_t i = 0; i < n; ++i)
        s.pNode[i].nIdxParent = -1;
}

const float kPi = 3.14159265f;
} // namespace

TEST(ModelTVO, SetFrameBlendsKeysAndSaturatesOutsideTheIntegerRange)
{
    CQMXTModelTVO s;
    MakeNodes(s, 1);
    s.pNode[0].nAnimationFlags = eTVOHasPositionAnimation;
    s.pNode[0].pfAnimPosition = HeapCopy<float>({0, 0, 0, 10, 0, 0, 20, 0, 0});
    ASSERT_EQ(s.InitImpl(), 0);
    QMXTVECTOR3f v;
    s.nNumFrame = 3;
    s.SetFrame(1.25f);
    s.GetTranslation(v, s.pNode[0]);
    EXPECT_FLOAT_EQ(v.x, 12.5f);
    s.SetFrame(5.0e9f); // found by fuzzing: undefined conversion to the integer frame
    s.GetTranslation(v, s.pNode[0]);
    EXPECT_EQ(v.x, 20.0f); // the last key
    s.SetFrame(-2.0f);     // integer frame 0: the keys read are the first ones
    EXPECT_EQ(s.GetFrame(), -2.0f);
    s.GetTranslation(v, s.pNode[0]);
    EXPECT_EQ(v.y, 0.0f);
}

TEST(ModelTVO, WorldMatrixThroughParentChainAtFractionalFrames)
{
    // Parent: a quarter turn about z and a scale 1 -> 3 on x over frames 0..1; child at (1, 0, 0).
    CQMXTModelTVO s;
    MakeNodes(s, 2);
    s.nNumFrame = 2;
    STVONode& parent = s.pNode[0];
    parent.nAnimationFlags = eTVOHasRotationAnimation | eTVOHasScaleAnimation;
    const float h = std::sin(kPi / 4);
    // The stored quaternion of a row-vector rotation by +90 degrees about z is the axis quaternion of -90.
    parent.pfAnimRotation = HeapCopy<float>({0, 0, 0, 1, 0, 0, -h, h});
    parent.pfAnimScale = HeapCopy<float>({1, 1, 1, 0, 0, 0, 0, 3, 1, 1, 9, 9, 9, 9});
    parent.pfAnimPosition = HeapCopy<float>({0, 0, 5});
    STVONode& child = s.pNode[1];
    child.nIdxParent = 0;
    child.nAnimationFlags = eTVOHasPositionAnimation;
    child.pnAnimPositionIdx = HeapCopy<uint32_t>({0, 0});
    child.pfAnimPosition = HeapCopy<float>({1, 0, 0});
    ASSERT_EQ(s.InitImpl(), 0);

    // Frame 0.5: scale x = 2, rotation 45 degrees: (1,0,0) -> (2,0,0) -> (sqrt2, sqrt2, 0) + (0,0,5).
    s.SetFrame(0.5f);
    const QMXTMATRIXf& world = s.GetWorldMatrix(child);
    const QMXTVECTOR3f o = {world[12], world[13], world[14]};
    EXPECT_NEAR(o.x, std::sqrt(2.0f), 1e-5f);
    EXPECT_NEAR(o.y, std::sqrt(2.0f), 1e-5f);
    EXPECT_NEAR(o.z, 5.0f, 1e-6f);
    EXPECT_NEAR(s.GetWorldMatrixNoCache(child)[12], o.x, 1e-6f);

    // A matrix channel replaces the decomposed channels and is not interpolated.
    child.nAnimationFlags |= eTVOHasMatrixAnimation;
    child.pfAnimMatrix = HeapCopy<float>({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 7, 0, 1, //
                                          1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 9, 0, 1});
    s.SetFrame(0.75f);
    QMXTMATRIXf local;
    s.GetTransformationMatrix(local, child);
    EXPECT_EQ(local[13], 7.0f);
}

TEST(ModelTVO, LightsAndCamerasSitAtTheirNodesInOrder)
{
    // Nodes: 1 mesh node, 1 light node, 1 camera node.
    CQMXTModelTVO s;
    MakeNodes(s, 3);
    s.nNumMeshNode = 1;
    s.nNumLight = 1;
    s.nNumCamera = 1;
    s.nNumFrame = 2;
    s.pLight = static_cast<STVOLight*>(std::calloc(1, sizeof(STVOLight)));
    s.pCamera = static_cast<STVOCamera*>(std::calloc(1, sizeof(STVOCamera)));
    s.pCamera[0].pfAnimFOV = HeapCopy<float>({1.0f, 2.0f});
    // Light: rotated a quarter turn about X (row vectors): row 1 becomes (0, 0, 1).
    s.pNode[1].pfAnimPosition = HeapCopy<float>({1, 2, 3});
    const float h = std::sin(kPi / 4);
    s.pNode[1].pfAnimRotation = HeapCopy<float>({-h, 0, 0, h});
    ASSERT_EQ(s.InitImpl(), 0);

    QMXTVECTOR3f pos, dir;
    s.GetLight(pos, dir, 0);
    EXPECT_NEAR(pos.z, 3.0f, 1e-6f);
    EXPECT_NEAR(dir.y, 0.0f, 1e-6f);
    EXPECT_NEAR(dir.z, -1.0f, 1e-6f);

    // The camera's place and aim are checked by the viewer's file camera test; here its animated view.
    QMXTVECTOR3f from, to, up;
    s.SetFrame(0.25f);
    EXPECT_FLOAT_EQ(s.GetCamera(from, to, up, 0), 1.25f);
}
