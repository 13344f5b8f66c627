// Transform samples rebuild every local matrix from position, rotation and scale, or report why
// not; bone influences beyond four are dropped and the rest renormalised.
#include <gtest/gtest.h>

#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>

#include <cmath>
#include <cstring>

#include "AssimpInternal.h"
#include "BoneInfluences.h"
#include "NodeTransform.h"
#include "TestSupport.h"

// Scaled, mirrored and flattened axes (zero scales are completed from the other axes) all rebuild.
TEST(NodeTransform, RebuildsScaledRotatedTranslatedMirroredAndFlattenedMatrices)
{
    const aiQuaternion q(aiVector3D(-0.2f, 1, 0.4f).Normalize(), 2.5f);
    const aiVector3D scales[] = {{1, 1, 1}, {0.5f, 3, 7}, {-1, 1, 1}, {2, -3, -0.5f}, {-1, -1, -1},
                                 {0, 1, 2}, {3, 0, 1},    {1, 2, 0},  {0, 0, 2},      {0, 0, 0}};
    for (const aiVector3D& s : scales)
    {
        const QMXTMATRIXf local = RowLayout(AssimpCompose(s, q, {4, -5, 6}));
        SNodeTM tm;
        ASSERT_EQ(NodeTMFromMatrix(tm, local), eNodeTMExact) << s.x << " " << s.y << " " << s.z;
        ExpectMatrixNear(MatrixFromNodeTM(tm), local, 2e-5f * 7, "rebuilt");
        EXPECT_EQ(std::memcmp(tm.matrix, local.f, sizeof local.f), 0);
        const QMXTVECTOR3f size = {std::fabs(tm.scale[0]), std::fabs(tm.scale[1]), std::fabs(tm.scale[2])};
        if (s.x * s.y * s.z != 0)
            ExpectVecNear(size, {std::fabs(s.x), std::fabs(s.y), std::fabs(s.z)}, 1e-5f, "scale sizes");
    }
}

TEST(NodeTransform, ShearAndNonFiniteValuesAreReported)
{
    aiMatrix4x4 shear; // x' = x + 0.5 y
    shear.a2 = 0.5f;
    SNodeTM tm;
    EXPECT_EQ(NodeTMFromMatrix(tm, RowLayout(shear)), eNodeTMSheared);
    QMXTMATRIXf bad;
    QMXTMatrixIdentityF(bad);
    bad[13] = NAN;
    EXPECT_EQ(NodeTMFromMatrix(tm, bad), eNodeTMNonFinite);
    EXPECT_EQ(tm, SNodeTM());
}

TEST(BoneInfluences, ToleranceZeroWeightsAndEmptyVertices)
{
    CInfluenceLimiter limiter;
    limiter.Add(0, 0.5f);
    limiter.Add(1, 0.499995f); // total within 1e-5 of 1: kept as is
    SBonedVtx v = limiter.Finish();
    EXPECT_EQ(v.weights[1].weight, 0.499995f);
    limiter.Add(2, 0.45f);
    limiter.Add(3, 0.45f);
    limiter.Add(4, 0.0f);
    limiter.Add(5, -1.0f);
    v = limiter.Finish();
    ASSERT_EQ(v.weights.size(), 2u);
    EXPECT_FLOAT_EQ(v.weights[0].weight, 0.5f);
    EXPECT_TRUE(limiter.Finish().weights.empty());
    EXPECT_FALSE(limiter.Dropped());
}
