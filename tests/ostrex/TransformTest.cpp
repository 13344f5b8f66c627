// Transform samples: the scene model rebuilds every local matrix from position, rotation and scale,
// and the stored rotation is the conjugate of the importer's quaternion.
#include <gtest/gtest.h>

#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>

#include <cmath>
#include <cstring>

#include "AssimpInternal.h"
#include "BoneInfluences.h"
#include "NodeTransform.h"
#include "TestSupport.h"

TEST(NodeTransform, RotationIsTheConjugateOfTheImportersQuaternion)
{
    const aiQuaternion q(aiVector3D(1, 2, 3).Normalize(), 0.7f);
    SNodeTM tm;
    ASSERT_EQ(NodeTMFromMatrix(tm, RowLayout(AssimpCompose({1, 1, 1}, q, {0, 0, 0}))), eNodeTMExact);
    const float sign = tm.rot[3] * q.w >= 0 ? 1.0f : -1.0f; // q and -q are the same rotation
    EXPECT_NEAR(sign * tm.rot[0], -q.x, 1e-6f);
    EXPECT_NEAR(sign * tm.rot[1], -q.y, 1e-6f);
    EXPECT_NEAR(sign * tm.rot[2], -q.z, 1e-6f);
    EXPECT_NEAR(sign * tm.rot[3], q.w, 1e-6f);
    // And the scene model's rotation matrix of it, used on row vectors, turns points like the importer.
    QMXTMATRIXf r;
    QMXTMatrixRotationQuaternionF(r, {tm.rot[0], tm.rot[1], tm.rot[2], tm.rot[3]});
    QMXTVECTOR3f p;
    QMXTTransform(p, {0.3f, -2.0f, 5.0f}, r);
    ExpectVecNear(p, q.Rotate(aiVector3D(0.3f, -2.0f, 5.0f)), 1e-5f, "rotated point");
}

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
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(tm.stretch[i], 0.0f);
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

TEST(BoneInfluences, KeepsTheFourLargestAndRenormalises)
{
    CInfluenceLimiter limiter;
    // Six influences: 0.1, 0.3, 0.05, 0.2, 0.25, 0.1. The fifth replaces 0.05, the sixth (0.1)
    // replaces nothing bigger than the first-found smallest (0.1) and is dropped.
    const float weights[] = {0.1f, 0.3f, 0.05f, 0.2f, 0.25f, 0.1f};
    for (int b = 0; b < 6; ++b)
        limiter.Add(b, weights[b]);
    const SBonedVtx v = limiter.Finish();
    ASSERT_EQ(v.weights.size(), 4u);
    EXPECT_TRUE(limiter.Dropped());
    const int bones[] = {0, 1, 4, 3};
    const float total = 0.1f + 0.3f + 0.25f + 0.2f;
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(v.weights[i].bone, bones[i]);
        EXPECT_NEAR(v.weights[i].weight, weights[bones[i]] / total, 1e-6f);
    }
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
