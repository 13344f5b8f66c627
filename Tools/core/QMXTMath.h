// Single-precision matrix, vector, quaternion and bounding-box helpers.
//
// QMXTMATRIXf is row-major with the translation in elements 12, 13 and 14. Points are row vectors,
// so in QMXTMatrixMultiplyF(out, A, B) = A x B the transform A is applied first. Every function
// fills its first argument and returns it; the output may alias any input.
#pragma once

#include <cstdint>

struct QMXTVECTOR2f
{
    float x, y;
};

struct QMXTVECTOR3f
{
    float x, y, z;
};

struct QMXTVECTOR4f
{
    float x, y, z, w;
};

struct QMXTQUATERNIONf
{
    float x, y, z, w;
};

struct QMXTMATRIXf
{
    float f[16];

    float& operator[](int i) { return f[i]; }
    const float& operator[](int i) const { return f[i]; }
    // Element at row r, column c.
    float& operator()(int r, int c) { return f[r * 4 + c]; }
    const float& operator()(int r, int c) const { return f[r * 4 + c]; }
};

// Axis-aligned box kept as its eight corner points; corner 0 is the minimum, corner 7 the maximum,
// corner i takes x from the maximum when bit 0 of i is set, y when bit 1 is set, z when bit 2 is set.
struct QMXTBOUNDINGBOXf
{
    QMXTVECTOR3f Point[8];
};

QMXTMATRIXf& QMXTMatrixIdentityF(QMXTMATRIXf& out);
QMXTMATRIXf& QMXTMatrixMultiplyF(QMXTMATRIXf& out, const QMXTMATRIXf& a, const QMXTMATRIXf& b);
QMXTMATRIXf& QMXTMatrixTranslationF(QMXTMATRIXf& out, float x, float y, float z);
QMXTMATRIXf& QMXTMatrixScalingF(QMXTMATRIXf& out, float x, float y, float z);
// Rotations by an angle in radians, counter-clockwise looking down the axis towards the origin.
QMXTMATRIXf& QMXTMatrixRotationXF(QMXTMATRIXf& out, float angle);
QMXTMATRIXf& QMXTMatrixRotationYF(QMXTMATRIXf& out, float angle);
QMXTMATRIXf& QMXTMatrixRotationZF(QMXTMATRIXf& out, float angle);
QMXTMATRIXf& QMXTMatrixTransposeF(QMXTMATRIXf& out, const QMXTMATRIXf& in);
// Inverse by cofactors; a singular matrix yields the identity. Returns the determinant in *det when given.
QMXTMATRIXf& QMXTMatrixInverseF(QMXTMATRIXf& out, const QMXTMATRIXf& in, float* det = nullptr);
// Inverse by solving in x out = identity column by column with partial pivoting.
// Returns false (and the identity) for a singular matrix.
bool QMXTMatrixInverseExF(QMXTMATRIXf& out, const QMXTMATRIXf& in);
// Solves A x = b for an n x n row-major system (n <= 16) by Gaussian elimination with partial
// pivoting. a and b are overwritten; the solution is left in b. Returns false when singular.
bool QMXTMatrixLinearEqSolveF(float* a, float* b, int n);

QMXTMATRIXf& QMXTMatrixLookAtRHF(QMXTMATRIXf& out, const QMXTVECTOR3f& eye, const QMXTVECTOR3f& at,
                                 const QMXTVECTOR3f& up);
QMXTMATRIXf& QMXTMatrixLookAtLHF(QMXTMATRIXf& out, const QMXTVECTOR3f& eye, const QMXTVECTOR3f& at,
                                 const QMXTVECTOR3f& up);
// Projections. The trailing flag, when set, rotates the result by 90 degrees about the view axis
// (for portrait displays): x' = -y, y' = x.
QMXTMATRIXf& QMXTMatrixPerspectiveFovRHF(QMXTMATRIXf& out, float fovY, float aspect, float zNear, float zFar,
                                         bool rotate = false);
QMXTMATRIXf& QMXTMatrixPerspectiveFovLHF(QMXTMATRIXf& out, float fovY, float aspect, float zNear, float zFar,
                                         bool rotate = false);
QMXTMATRIXf& QMXTMatrixOrthoRHF(QMXTMATRIXf& out, float w, float h, float zNear, float zFar, bool rotate = false);
QMXTMATRIXf& QMXTMatrixOrthoLHF(QMXTMATRIXf& out, float w, float h, float zNear, float zFar, bool rotate = false);

QMXTVECTOR3f& QMXTMatrixVec3LerpF(QMXTVECTOR3f& out, const QMXTVECTOR3f& a, const QMXTVECTOR3f& b, float t);
float QMXTMatrixVec3DotProductF(const QMXTVECTOR3f& a, const QMXTVECTOR3f& b);
QMXTVECTOR3f& QMXTMatrixVec3CrossProductF(QMXTVECTOR3f& out, const QMXTVECTOR3f& a, const QMXTVECTOR3f& b);
float QMXTMatrixVec3LengthF(const QMXTVECTOR3f& v);
// Normalises; a zero vector stays zero.
QMXTVECTOR3f& QMXTMatrixVec3NormalizeF(QMXTVECTOR3f& out, const QMXTVECTOR3f& in);

QMXTQUATERNIONf& QMXTMatrixQuaternionIdentityF(QMXTQUATERNIONf& out);
// Normalises; a zero quaternion becomes the identity.
QMXTQUATERNIONf& QMXTMatrixQuaternionNormalizeF(QMXTQUATERNIONf& out, const QMXTQUATERNIONf& in);
// Hamilton product a * b.
QMXTQUATERNIONf& QMXTMatrixQuaternionMultiplyF(QMXTQUATERNIONf& out, const QMXTQUATERNIONf& a,
                                               const QMXTQUATERNIONf& b);
// Spherical linear interpolation along the shorter arc; falls back to a normalised lerp when the
// two are nearly parallel.
QMXTQUATERNIONf& QMXTMatrixQuaternionSlerpF(QMXTQUATERNIONf& out, const QMXTQUATERNIONf& a,
                                            const QMXTQUATERNIONf& b, float t);
QMXTQUATERNIONf& QMXTMatrixQuaternionRotationAxisF(QMXTQUATERNIONf& out, const QMXTVECTOR3f& axis, float angle);
void QMXTMatrixQuaternionToAxisAngleF(const QMXTQUATERNIONf& q, QMXTVECTOR3f& axis, float& angle);
// The rotation matrix of a unit quaternion, the exact inverse of the matrix-to-quaternion rule of
// the transform extraction: element (r, c) is that of the column-vector rotation of q, so the
// quaternion taken from a row-vector matrix M turns back into M.
QMXTMATRIXf& QMXTMatrixRotationQuaternionF(QMXTMATRIXf& out, const QMXTQUATERNIONf& q);
// The quaternion of a pure rotation matrix by that same rule (the inverse of the function above).
QMXTQUATERNIONf& QMXTMatrixQuaternionRotationMatrixF(QMXTQUATERNIONf& out, const QMXTMATRIXf& m);

// Box around count points spaced stride bytes apart (stride 0 means tightly packed vectors).
QMXTBOUNDINGBOXf& QMXTBoundingBoxCompute(QMXTBOUNDINGBOXf& out, const QMXTVECTOR3f* points, uint32_t count);
// Box around float positions at byte offset within each interleaved vertex of stride bytes.
QMXTBOUNDINGBOXf& QMXTBoundingBoxComputeInterleaved(QMXTBOUNDINGBOXf& out, const void* data, uint32_t count,
                                                    uint32_t offset, uint32_t stride);
// Tests the box against the view frustum of a view-projection matrix. Returns true when any part may
// be visible; needsClipping is set when the box crosses a frustum plane.
bool QMXTBoundingBoxIsVisible(const QMXTBOUNDINGBOXf& box, const QMXTMATRIXf& viewProj, bool& needsClipping);

// Point transforms (w = 1), and the same by the inverse of the matrix.
QMXTVECTOR3f& QMXTTransform(QMXTVECTOR3f& out, const QMXTVECTOR3f& in, const QMXTMATRIXf& m);
QMXTVECTOR3f& QMXTTransformBack(QMXTVECTOR3f& out, const QMXTVECTOR3f& in, const QMXTMATRIXf& m);
void QMXTTransformArray(QMXTVECTOR3f* out, const QMXTVECTOR3f* in, uint32_t count, const QMXTMATRIXf& m);
void QMXTTransformArrayBack(QMXTVECTOR3f* out, const QMXTVECTOR3f* in, uint32_t count, const QMXTMATRIXf& m);
// Transforms count 4-vectors (x, y, z, 1) and keeps the homogeneous result.
void QMXTTransformVec3Array(QMXTVECTOR4f* out, const QMXTVECTOR3f* in, uint32_t count, const QMXTMATRIXf& m);
// Direction transform (w = 0): the upper 3x3 only.
QMXTVECTOR3f& QMXTTransformDirection(QMXTVECTOR3f& out, const QMXTVECTOR3f& in, const QMXTMATRIXf& m);
