// Matrix, quaternion and vector helpers against hand-computed values.
#include <gtest/gtest.h>

#include <cmath>

#include "QMXTMath.h"

namespace
{
const float kPi = 3.14159265f;

void ExpectMatrixNear(const QMXTMATRIXf& a, const QMXTMATRIXf& b, float tol = 1e-5f)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(a[i], b[i], tol) << "element " << i;
}

QMXTVECTOR3f Apply(const QMXTMATRIXf& m, QMXTVECTOR3f p)
{
    QMXTVECTOR3f r;
    return QMXTTransform(r, p, m);
}
} // namespace

TEST(Math, ProductAppliesTheLeftFactorFirst)
{
    QMXTMATRIXf t, r, tr, rt;
    QMXTMatrixTranslationF(t, 1, 0, 0);
    QMXTMatrixRotationZF(r, kPi / 2);
    QMXTMatrixMultiplyF(tr, t, r); // translate, then rotate
    QMXTMatrixMultiplyF(rt, r, t); // rotate, then translate
    const QMXTVECTOR3f a = Apply(tr, {0, 0, 0});
    EXPECT_NEAR(a.x, 0.0f, 1e-6f);
    EXPECT_NEAR(a.y, 1.0f, 1e-6f);
    const QMXTVECTOR3f b = Apply(rt, {1, 0, 0});
    EXPECT_NEAR(b.x, 1.0f, 1e-6f);
    EXPECT_NEAR(b.y, 1.0f, 1e-6f);
    EXPECT_NEAR(tr[12], 0.0f, 1e-6f);
    EXPECT_NEAR(tr[13], 1.0f, 1e-6f);
}

TEST(Math, AxisRotationsTurnCounterClockwise)
{
    QMXTMATRIXf m;
    QMXTVECTOR3f p = Apply(QMXTMatrixRotationXF(m, kPi / 2), {0, 1, 0});
    EXPECT_NEAR(p.z, 1.0f, 1e-6f);
    p = Apply(QMXTMatrixRotationYF(m, kPi / 2), {0, 0, 1});
    EXPECT_NEAR(p.x, 1.0f, 1e-6f);
    p = Apply(QMXTMatrixRotationZF(m, kPi / 2), {1, 0, 0});
    EXPECT_NEAR(p.y, 1.0f, 1e-6f);
}

TEST(Math, InversesUndoTheTransform)
{
    QMXTMATRIXf s, r, t, m, tmp;
    QMXTMatrixScalingF(s, 2, 3, 4);
    QMXTMatrixRotationYF(r, 0.7f);
    QMXTMatrixTranslationF(t, 5, -6, 7);
    QMXTMatrixMultiplyF(m, QMXTMatrixMultiplyF(tmp, s, r), t);

    QMXTMATRIXf inv, invEx, prod, id;
    float det = 0;
    QMXTMatrixInverseF(inv, m, &det);
    EXPECT_NEAR(det, 24.0f, 1e-4f);
    ASSERT_TRUE(QMXTMatrixInverseExF(invEx, m));
    QMXTMatrixIdentityF(id);
    ExpectMatrixNear(QMXTMatrixMultiplyF(prod, m, inv), id);
    ExpectMatrixNear(invEx, inv);
    const QMXTVECTOR3f p = {1, 2, 3};
    QMXTVECTOR3f q, back;
    QMXTTransform(q, p, m);
    QMXTTransformBack(back, q, m);
    EXPECT_NEAR(back.x, 1.0f, 1e-5f);
    EXPECT_NEAR(back.z, 3.0f, 1e-5f);

    QMXTMATRIXf singular;
    QMXTMatrixScalingF(singular, 1, 0, 1);
    EXPECT_FALSE(QMXTMatrixInverseExF(invEx, singular));
    ExpectMatrixNear(invEx, id, 0.0f);
    ExpectMatrixNear(QMXTMatrixInverseF(inv, singular), id, 0.0f);
}

TEST(Math, QuaternionOfAMatrixGivesTheMatrixBackInEveryBranch)
{
    // One matrix for each branch of the rule: positive trace, and the x, y, z dominant cases
    // (half turns about each axis have trace -1).
    QMXTMATRIXf m[4];
    QMXTMATRIXf a, b;
    QMXTMatrixMultiplyF(m[0], QMXTMatrixRotationXF(a, 0.3f), QMXTMatrixRotationYF(b, -0.5f));
    QMXTMatrixMultiplyF(m[1], QMXTMatrixRotationXF(a, kPi), QMXTMatrixRotationZF(b, 0.2f));
    QMXTMatrixMultiplyF(m[2], QMXTMatrixRotationYF(a, kPi), QMXTMatrixRotationXF(b, 0.2f));
    QMXTMatrixMultiplyF(m[3], QMXTMatrixRotationZF(a, kPi), QMXTMatrixRotationYF(b, 0.2f));
    const float traces[4] = {m[0][0] + m[0][5] + m[0][10], m[1][0] + m[1][5] + m[1][10],
                             m[2][0] + m[2][5] + m[2][10], m[3][0] + m[3][5] + m[3][10]};
    EXPECT_GT(traces[0], 1e-8f);
    EXPECT_GT(m[1](0, 0), m[1](1, 1));
    EXPECT_GT(m[1](0, 0), m[1](2, 2));
    EXPECT_GT(m[2](1, 1), m[2](2, 2));
    EXPECT_GE(m[3](2, 2), m[3](1, 1));
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_LE(i == 0 ? -1.0f : traces[i], 1e-8f);
        QMXTQUATERNIONf q;
        QMXTMatrixQuaternionRotationMatrixF(q, m[i]);
        QMXTMATRIXf back;
        ExpectMatrixNear(QMXTMatrixRotationQuaternionF(back, q), m[i]);
    }
}

TEST(Math, QuaternionFromAxisIsTheConjugateOfTheRowVectorRotation)
{
    // The quaternion of a row-vector rotation by +angle is the axis quaternion of -angle.
    QMXTQUATERNIONf q;
    QMXTMatrixQuaternionRotationAxisF(q, {0, 0, 1}, -0.8f);
    QMXTMATRIXf fromQ, rz;
    QMXTMatrixRotationQuaternionF(fromQ, q);
    ExpectMatrixNear(fromQ, QMXTMatrixRotationZF(rz, 0.8f));

    QMXTVECTOR3f axis;
    float angle;
    QMXTMatrixQuaternionToAxisAngleF(q, axis, angle);
    EXPECT_NEAR(angle, 0.8f, 1e-5f);
    EXPECT_NEAR(axis.z, -1.0f, 1e-5f);
}

TEST(Math, SlerpFollowsTheShortArcAtConstantSpeed)
{
    QMXTQUATERNIONf a, b, r;
    QMXTMatrixQuaternionIdentityF(a);
    QMXTMatrixQuaternionRotationAxisF(b, {0, 1, 0}, kPi / 2);
    QMXTMatrixQuaternionSlerpF(r, a, b, 0.5f);
    EXPECT_NEAR(r.y, std::sin(kPi / 8), 1e-6f);
    EXPECT_NEAR(r.w, std::cos(kPi / 8), 1e-6f);
    // -b is the same rotation; slerp must take the short way and land on the same rotation.
    const QMXTQUATERNIONf nb = {-b.x, -b.y, -b.z, -b.w};
    QMXTQUATERNIONf r2;
    QMXTMatrixQuaternionSlerpF(r2, a, nb, 0.5f);
    QMXTMATRIXf m1, m2;
    ExpectMatrixNear(QMXTMatrixRotationQuaternionF(m1, r), QMXTMatrixRotationQuaternionF(m2, r2));

    QMXTMatrixQuaternionSlerpF(r, a, b, 0.25f);
    EXPECT_NEAR(r.y, std::sin(kPi / 16), 1e-6f);

    QMXTMatrixQuaternionMultiplyF(r, b, b);
    EXPECT_NEAR(r.y, 1.0f, 1e-6f); // two quarter turns are a half turn
    EXPECT_NEAR(r.w, 0.0f, 1e-6f);
}

TEST(Math, VectorsAndBoxes)
{
    QMXTVECTOR3f c;
    QMXTMatrixVec3CrossProductF(c, {1, 0, 0}, {0, 1, 0});
    EXPECT_EQ(c.z, 1.0f);
    EXPECT_EQ(QMXTMatrixVec3DotProductF({1, 2, 3}, {4, 5, 6}), 32.0f);
    EXPECT_EQ(QMXTMatrixVec3LengthF({3, 4, 0}), 5.0f);
    QMXTMatrixVec3NormalizeF(c, {0, 0, 0});
    EXPECT_EQ(c.x, 0.0f);
    QMXTMatrixVec3LerpF(c, {0, 0, 0}, {2, 4, 6}, 0.25f);
    EXPECT_EQ(c.y, 1.0f);

    const QMXTVECTOR3f pts[3] = {{1, -2, 3}, {-4, 5, 0}, {0, 0, 9}};
    QMXTBOUNDINGBOXf box;
    QMXTBoundingBoxCompute(box, pts, 3);
    EXPECT_EQ(box.Point[0].x, -4.0f);
    EXPECT_EQ(box.Point[0].y, -2.0f);
    EXPECT_EQ(box.Point[7].y, 5.0f);
    EXPECT_EQ(box.Point[7].z, 9.0f);
    EXPECT_EQ(box.Point[1].x, 1.0f);
    EXPECT_EQ(box.Point[1].y, -2.0f);

    // Positions at offset 4 of 16-byte vertices.
    float inter[8] = {99, 1, 2, 3, 99, -1, 7, 0};
    QMXTBoundingBoxComputeInterleaved(box, inter, 2, 4, 16);
    EXPECT_EQ(box.Point[0].x, -1.0f);
    EXPECT_EQ(box.Point[7].y, 7.0f);

    QMXTMATRIXf view, proj, vp;
    QMXTMatrixLookAtRHF(view, {0, 0, 10}, {0, 0, 0}, {0, 1, 0});
    QMXTMatrixPerspectiveFovRHF(proj, kPi / 3, 1.0f, 1.0f, 100.0f);
    QMXTMatrixMultiplyF(vp, view, proj);
    bool clip = true;
    QMXTBOUNDINGBOXf unit;
    const QMXTVECTOR3f u[2] = {{-1, -1, -1}, {1, 1, 1}};
    QMXTBoundingBoxCompute(unit, u, 2);
    EXPECT_TRUE(QMXTBoundingBoxIsVisible(unit, vp, clip));
    EXPECT_FALSE(clip);
    const QMXTVECTOR3f behind[2] = {{-1, -1, 20}, {1, 1, 22}};
    QMXTBoundingBoxCompute(unit, behind, 2);
    EXPECT_FALSE(QMXTBoundingBoxIsVisible(unit, vp, clip));
}
