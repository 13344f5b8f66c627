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

// The product applies its left factor first, axis rotations turn counter-clockwise, an inverse
// undoes the transform and a singular matrix inverts to the identity (or is refused by the general one).
TEST(Math, ProductOrderRotationSenseAndInverses)
{
    QMXTMATRIXf t, r, m, inv, prod, id;
    QMXTMatrixTranslationF(t, 1, 0, 0);
    const QMXTVECTOR3f a = Apply(QMXTMatrixMultiplyF(m, t, QMXTMatrixRotationZF(r, kPi / 2)), {0, 0, 0});
    EXPECT_NEAR(a.y, 1.0f, 1e-6f);
    EXPECT_NEAR(Apply(QMXTMatrixRotationXF(r, kPi / 2), {0, 1, 0}).z, 1.0f, 1e-6f);
    EXPECT_NEAR(Apply(QMXTMatrixRotationYF(r, kPi / 2), {0, 0, 1}).x, 1.0f, 1e-6f);
    QMXTMatrixMultiplyF(m, QMXTMatrixScalingF(t, 2, 3, 4), QMXTMatrixRotationYF(r, 0.7f));
    m[13] = -6;
    float det = 0;
    QMXTMatrixInverseF(inv, m, &det);
    EXPECT_NEAR(det, 24.0f, 1e-4f);
    ExpectMatrixNear(QMXTMatrixMultiplyF(prod, m, inv), QMXTMatrixIdentityF(id));
    ASSERT_TRUE(QMXTMatrixInverseExF(prod, m)); // the general inverse agrees
    ExpectMatrixNear(prod, inv);
    QMXTVECTOR3f q, back;
    EXPECT_NEAR(QMXTTransformBack(back, QMXTTransform(q, {1, 2, 3}, m), m).z, 3.0f, 1e-5f);
    EXPECT_FALSE(QMXTMatrixInverseExF(prod, QMXTMatrixScalingF(t, 1, 0, 1)));
    ExpectMatrixNear(QMXTMatrixInverseF(inv, QMXTMatrixScalingF(t, 1, 0, 1)), id, 0.0f);
}

TEST(Math, QuaternionOfAMatrixGivesTheMatrixBackInEveryBranch)
{
    // Positive trace, then half turns about x, y and z (trace -1) for the three dominant-axis cases.
    QMXTMATRIXf m[4], a, b;
    QMXTMatrixMultiplyF(m[0], QMXTMatrixRotationXF(a, 0.3f), QMXTMatrixRotationYF(b, -0.5f));
    QMXTMatrixMultiplyF(m[1], QMXTMatrixRotationXF(a, kPi), QMXTMatrixRotationZF(b, 0.2f));
    QMXTMatrixMultiplyF(m[2], QMXTMatrixRotationYF(a, kPi), QMXTMatrixRotationXF(b, 0.2f));
    QMXTMatrixMultiplyF(m[3], QMXTMatrixRotationZF(a, kPi), QMXTMatrixRotationYF(b, 0.2f));
    for (const QMXTMATRIXf& mi : m)
    {
        QMXTQUATERNIONf q;
        QMXTMatrixQuaternionRotationMatrixF(q, mi);
        ExpectMatrixNear(QMXTMatrixRotationQuaternionF(a, q), mi);
    }
    // The quaternion of a row-vector rotation by +angle is the axis quaternion of -angle.
    QMXTQUATERNIONf q;
    QMXTMatrixQuaternionRotationAxisF(q, {0, 0, 1}, -0.8f);
    ExpectMatrixNear(QMXTMatrixRotationQuaternionF(a, q), QMXTMatrixRotationZF(b, 0.8f));
}

TEST(Math, SlerpFollowsTheShortArcProductsAddAndAxisAngleIsRecovered)
{
    QMXTQUATERNIONf a, b, r, r2;
    QMXTMatrixQuaternionIdentityF(a);
    QMXTMatrixQuaternionRotationAxisF(b, {0, 1, 0}, kPi / 2);
    QMXTMatrixQuaternionSlerpF(r, a, b, 0.25f);
    EXPECT_NEAR(r.y, std::sin(kPi / 16), 1e-6f);
    // -b is the same rotation; slerp must take the short way and land on the same rotation.
    QMXTMatrixQuaternionSlerpF(r2, a, {-b.x, -b.y, -b.z, -b.w}, 0.25f);
    QMXTMATRIXf m1, m2;
    ExpectMatrixNear(QMXTMatrixRotationQuaternionF(m1, r), QMXTMatrixRotationQuaternionF(m2, r2));
    QMXTMatrixQuaternionMultiplyF(r, b, b);
    EXPECT_NEAR(r.y, 1.0f, 1e-6f); // two quarter turns are a half turn
    QMXTVECTOR3f axis;
    float angle;
    QMXTMatrixQuaternionToAxisAngleF(b, axis, angle);
    EXPECT_NEAR(angle, kPi / 2, 1e-5f);
    EXPECT_NEAR(axis.y, 1.0f, 1e-5f);
}

TEST(Math, VectorsAndBoxes)
{
    QMXTVECTOR3f c;
    QMXTMatrixVec3CrossProductF(c, {0, 2, 0}, {0, 0, 3});
    EXPECT_EQ(c.x, 6.0f);
    EXPECT_EQ(QMXTMatrixVec3DotProductF({1, 2, 3}, {4, 5, 6}), 32.0f);
    QMXTMatrixVec3NormalizeF(c, {0, 0, 0});
    EXPECT_EQ(c.x, 0.0f);

    const QMXTVECTOR3f pts[3] = {{1, -2, 3}, {-4, 5, 0}, {0, 0, 9}};
    QMXTBOUNDINGBOXf box;
    QMXTBoundingBoxCompute(box, pts, 3);
    EXPECT_EQ(box.Point[0].y, -2.0f);
    EXPECT_EQ(box.Point[7].z, 9.0f);
    EXPECT_EQ(box.Point[1].x, 1.0f);
    const float inter[8] = {99, 1, 2, 3, 99, -1, 7, 0}; // positions at offset 4 of 16-byte vertices
    QMXTBoundingBoxComputeInterleaved(box, inter, 2, 4, 16);
    EXPECT_EQ(box.Point[7].y, 7.0f);

    // A box ten units in front of the camera is inside the frustum; one behind it is not.
    QMXTMATRIXf view, proj, vp;
    QMXTMatrixLookAtRHF(view, {0, 0, 10}, {0, 0, 0}, {0, 1, 0});
    QMXTMatrixMultiplyF(vp, view, QMXTMatrixPerspectiveFovRHF(proj, kPi / 3, 1.0f, 1.0f, 100.0f));
    const QMXTVECTOR3f inside[2] = {{-1, -1, -1}, {1, 1, 1}}, behind[2] = {{-1, -1, 20}, {1, 1, 22}};
    bool clip = true;
    EXPECT_TRUE(QMXTBoundingBoxIsVisible(QMXTBoundingBoxCompute(box, inside, 2), vp, clip));
    EXPECT_FALSE(clip);
    EXPECT_FALSE(QMXTBoundingBoxIsVisible(QMXTBoundingBoxCompute(box, behind, 2), vp, clip));
}
