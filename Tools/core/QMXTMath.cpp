// Matrix, vector, quaternion and bounding-box helpers (row vectors, translation in row 3).
#include "QMXTMath.h"

#include <cmath>
#include <cstring>

namespace
{
const QMXTMATRIXf kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

QMXTMATRIXf& Rotate90AboutView(QMXTMATRIXf& m)
{
    // x' = -y, y' = x applied after the projection: column 0 becomes -column 1, column 1 column 0.
    for (int r = 0; r < 4; ++r)
    {
        const float c0 = m(r, 0);
        const float c1 = m(r, 1);
        m(r, 0) = -c1;
        m(r, 1) = c0;
    }
    return m;
}

QMXTMATRIXf& LookAt(QMXTMATRIXf& out, const QMXTVECTOR3f& eye, const QMXTVECTOR3f& at, const QMXTVECTOR3f& up,
                    bool rightHanded)
{
    QMXTVECTOR3f z = rightHanded ? QMXTVECTOR3f{eye.x - at.x, eye.y - at.y, eye.z - at.z}
                                 : QMXTVECTOR3f{at.x - eye.x, at.y - eye.y, at.z - eye.z};
    QMXTMatrixVec3NormalizeF(z, z);
    QMXTVECTOR3f x;
    QMXTMatrixVec3CrossProductF(x, up, z);
    QMXTMatrixVec3NormalizeF(x, x);
    QMXTVECTOR3f y;
    QMXTMatrixVec3CrossProductF(y, z, x);
    out = {{x.x, y.x, z.x, 0, x.y, y.y, z.y, 0, x.z, y.z, z.z, 0, -QMXTMatrixVec3DotProductF(x, eye),
            -QMXTMatrixVec3DotProductF(y, eye), -QMXTMatrixVec3DotProductF(z, eye), 1}};
    return out;
}
} // namespace

QMXTMATRIXf& QMXTMatrixIdentityF(QMXTMATRIXf& out)
{
    out = kIdentity;
    return out;
}

QMXTMATRIXf& QMXTMatrixMultiplyF(QMXTMATRIXf& out, const QMXTMATRIXf& a, const QMXTMATRIXf& b)
{
    QMXTMATRIXf r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            r(i, j) = a(i, 0) * b(0, j) + a(i, 1) * b(1, j) + a(i, 2) * b(2, j) + a(i, 3) * b(3, j);
    out = r;
    return out;
}

QMXTMATRIXf& QMXTMatrixTranslationF(QMXTMATRIXf& out, float x, float y, float z)
{
    out = kIdentity;
    out[12] = x;
    out[13] = y;
    out[14] = z;
    return out;
}

QMXTMATRIXf& QMXTMatrixScalingF(QMXTMATRIXf& out, float x, float y, float z)
{
    out = kIdentity;
    out[0] = x;
    out[5] = y;
    out[10] = z;
    return out;
}

QMXTMATRIXf& QMXTMatrixRotationXF(QMXTMATRIXf& out, float angle)
{
    const float c = std::cos(angle), s = std::sin(angle);
    out = kIdentity;
    out(1, 1) = c;
    out(1, 2) = s;
    out(2, 1) = -s;
    out(2, 2) = c;
    return out;
}

QMXTMATRIXf& QMXTMatrixRotationYF(QMXTMATRIXf& out, float angle)
{
    const float c = std::cos(angle), s = std::sin(angle);
    out = kIdentity;
    out(0, 0) = c;
    out(0, 2) = -s;
    out(2, 0) = s;
    out(2, 2) = c;
    return out;
}

QMXTMATRIXf& QMXTMatrixRotationZF(QMXTMATRIXf& out, float angle)
{
    const float c = std::cos(angle), s = std::sin(angle);
    out = kIdentity;
    out(0, 0) = c;
    out(0, 1) = s;
    out(1, 0) = -s;
    out(1, 1) = c;
    return out;
}

QMXTMATRIXf& QMXTMatrixTransposeF(QMXTMATRIXf& out, const QMXTMATRIXf& in)
{
    QMXTMATRIXf r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            r(i, j) = in(j, i);
    out = r;
    return out;
}

QMXTMATRIXf& QMXTMatrixInverseF(QMXTMATRIXf& out, const QMXTMATRIXf& in, float* det)
{
    const float* m = in.f;
    float inv[16];
    inv[0] = m[5] * m[10] * m[15] - m[5] * m[11] * m[14] - m[9] * m[6] * m[15] + m[9] * m[7] * m[14] +
             m[13] * m[6] * m[11] - m[13] * m[7] * m[10];
    inv[4] = -m[4] * m[10] * m[15] + m[4] * m[11] * m[14] + m[8] * m[6] * m[15] - m[8] * m[7] * m[14] -
             m[12] * m[6] * m[11] + m[12] * m[7] * m[10];
    inv[8] = m[4] * m[9] * m[15] - m[4] * m[11] * m[13] - m[8] * m[5] * m[15] + m[8] * m[7] * m[13] +
             m[12] * m[5] * m[11] - m[12] * m[7] * m[9];
    inv[12] = -m[4] * m[9] * m[14] + m[4] * m[10] * m[13] + m[8] * m[5] * m[14] - m[8] * m[6] * m[13] -
              m[12] * m[5] * m[10] + m[12] * m[6] * m[9];
    inv[1] = -m[1] * m[10] * m[15] + m[1] * m[11] * m[14] + m[9] * m[2] * m[15] - m[9] * m[3] * m[14] -
             m[13] * m[2] * m[11] + m[13] * m[3] * m[10];
    inv[5] = m[0] * m[10] * m[15] - m[0] * m[11] * m[14] - m[8] * m[2] * m[15] + m[8] * m[3] * m[14] +
             m[12] * m[2] * m[11] - m[12] * m[3] * m[10];
    inv[9] = -m[0] * m[9] * m[15] + m[0] * m[11] * m[13] + m[8] * m[1] * m[15] - m[8] * m[3] * m[13] -
             m[12] * m[1] * m[11] + m[12] * m[3] * m[9];
    inv[13] = m[0] * m[9] * m[14] - m[0] * m[10] * m[13] - m[8] * m[1] * m[14] + m[8] * m[2] * m[13] +
              m[12] * m[1] * m[10] - m[12] * m[2] * m[9];
    inv[2] = m[1] * m[6] * m[15] - m[1] * m[7] * m[14] - m[5] * m[2] * m[15] + m[5] * m[3] * m[14] +
             m[13] * m[2] * m[7] - m[13] * m[3] * m[6];
    inv[6] = -m[0] * m[6] * m[15] + m[0] * m[7] * m[14] + m[4] * m[2] * m[15] - m[4] * m[3] * m[14] -
             m[12] * m[2] * m[7] + m[12] * m[3] * m[6];
    inv[10] = m[0] * m[5] * m[15] - m[0] * m[7] * m[13] - m[4] * m[1] * m[15] + m[4] * m[3] * m[13] +
              m[12] * m[1] * m[7] - m[12] * m[3] * m[5];
    inv[14] = -m[0] * m[5] * m[14] + m[0] * m[6] * m[13] + m[4] * m[1] * m[14] - m[4] * m[2] * m[13] -
              m[12] * m[1] * m[6] + m[12] * m[2] * m[5];
    inv[3] = -m[1] * m[6] * m[11] + m[1] * m[7] * m[10] + m[5] * m[2] * m[11] - m[5] * m[3] * m[10] -
             m[9] * m[2] * m[7] + m[9] * m[3] * m[6];
    inv[7] = m[0] * m[6] * m[11] - m[0] * m[7] * m[10] - m[4] * m[2] * m[11] + m[4] * m[3] * m[10] +
             m[8] * m[2] * m[7] - m[8] * m[3] * m[6];
    inv[11] = -m[0] * m[5] * m[11] + m[0] * m[7] * m[9] + m[4] * m[1] * m[11] - m[4] * m[3] * m[9] -
              m[8] * m[1] * m[7] + m[8] * m[3] * m[5];
    inv[15] = m[0] * m[5] * m[10] - m[0] * m[6] * m[9] - m[4] * m[1] * m[10] + m[4] * m[2] * m[9] +
              m[8] * m[1] * m[6] - m[8] * m[2] * m[5];
    const float d = m[0] * inv[0] + m[1] * inv[4] + m[2] * inv[8] + m[3] * inv[12];
    if (det)
        *det = d;
    if (d == 0.0f || !std::isfinite(d))
        return QMXTMatrixIdentityF(out);
    const float invDet = 1.0f / d;
    for (int i = 0; i < 16; ++i)
        out[i] = inv[i] * invDet;
    return out;
}

bool QMXTMatrixLinearEqSolveF(float* a, float* b, int n)
{
    if (n <= 0 || n > 16)
        return false;
    for (int col = 0; col < n; ++col)
    {
        int pivot = col;
        for (int r = col + 1; r < n; ++r)
            if (std::fabs(a[r * n + col]) > std::fabs(a[pivot * n + col]))
                pivot = r;
        if (std::fabs(a[pivot * n + col]) < 1e-30f)
            return false;
        if (pivot != col)
        {
            for (int c = 0; c < n; ++c)
                std::swap(a[col * n + c], a[pivot * n + c]);
            std::swap(b[col], b[pivot]);
        }
        for (int r = col + 1; r < n; ++r)
        {
            const float f = a[r * n + col] / a[col * n + col];
            for (int c = col; c < n; ++c)
                a[r * n + c] -= f * a[col * n + c];
            b[r] -= f * b[col];
        }
    }
    for (int r = n - 1; r >= 0; --r)
    {
        float s = b[r];
        for (int c = r + 1; c < n; ++c)
            s -= a[r * n + c] * b[c];
        b[r] = s / a[r * n + r];
    }
    return true;
}

bool QMXTMatrixInverseExF(QMXTMATRIXf& out, const QMXTMATRIXf& in)
{
    // Solve in x X = I one column of X at a time: in (row-major) times column j of X = e_j.
    QMXTMATRIXf r;
    for (int j = 0; j < 4; ++j)
    {
        float a[16];
        std::memcpy(a, in.f, sizeof a);
        float b[4] = {0, 0, 0, 0};
        b[j] = 1.0f;
        if (!QMXTMatrixLinearEqSolveF(a, b, 4))
        {
            QMXTMatrixIdentityF(out);
            return false;
        }
        for (int i = 0; i < 4; ++i)
            r(i, j) = b[i];
    }
    out = r;
    return true;
}

QMXTMATRIXf& QMXTMatrixLookAtRHF(QMXTMATRIXf& out, const QMXTVECTOR3f& eye, const QMXTVECTOR3f& at,
                                 const QMXTVECTOR3f& up)
{
    return LookAt(out, eye, at, up, true);
}

QMXTMATRIXf& QMXTMatrixLookAtLHF(QMXTMATRIXf& out, const QMXTVECTOR3f& eye, const QMXTVECTOR3f& at,
                                 const QMXTVECTOR3f& up)
{
    return LookAt(out, eye, at, up, false);
}

QMXTMATRIXf& QMXTMatrixPerspectiveFovRHF(QMXTMATRIXf& out, float fovY, float aspect, float zNear, float zFar,
                                         bool rotate)
{
    const float h = 1.0f / std::tan(fovY * 0.5f);
    const float w = h / aspect;
    out = {{w, 0, 0, 0, 0, h, 0, 0, 0, 0, zFar / (zNear - zFar), -1, 0, 0, zNear * zFar / (zNear - zFar), 0}};
    return rotate ? Rotate90AboutView(out) : out;
}

QMXTMATRIXf& QMXTMatrixPerspectiveFovLHF(QMXTMATRIXf& out, float fovY, float aspect, float zNear, float zFar,
                                         bool rotate)
{
    const float h = 1.0f / std::tan(fovY * 0.5f);
    const float w = h / aspect;
    out = {{w, 0, 0, 0, 0, h, 0, 0, 0, 0, zFar / (zFar - zNear), 1, 0, 0, -zNear * zFar / (zFar - zNear), 0}};
    return rotate ? Rotate90AboutView(out) : out;
}

QMXTMATRIXf& QMXTMatrixOrthoRHF(QMXTMATRIXf& out, float w, float h, float zNear, float zFar, bool rotate)
{
    out = {{2.0f / w, 0, 0, 0, 0, 2.0f / h, 0, 0, 0, 0, 1.0f / (zNear - zFar), 0, 0, 0, zNear / (zNear - zFar), 1}};
    return rotate ? Rotate90AboutView(out) : out;
}

QMXTMATRIXf& QMXTMatrixOrthoLHF(QMXTMATRIXf& out, float w, float h, float zNear, float zFar, bool rotate)
{
    out = {{2.0f / w, 0, 0, 0, 0, 2.0f / h, 0, 0, 0, 0, 1.0f / (zFar - zNear), 0, 0, 0, zNear / (zNear - zFar), 1}};
    return rotate ? Rotate90AboutView(out) : out;
}

QMXTVECTOR3f& QMXTMatrixVec3LerpF(QMXTVECTOR3f& out, const QMXTVECTOR3f& a, const QMXTVECTOR3f& b, float t)
{
    out = {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), a.z + t * (b.z - a.z)};
    return out;
}

float QMXTMatrixVec3DotProductF(const QMXTVECTOR3f& a, const QMXTVECTOR3f& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

QMXTVECTOR3f& QMXTMatrixVec3CrossProductF(QMXTVECTOR3f& out, const QMXTVECTOR3f& a, const QMXTVECTOR3f& b)
{
    out = {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    return out;
}

float QMXTMatrixVec3LengthF(const QMXTVECTOR3f& v)
{
    return std::sqrt(QMXTMatrixVec3DotProductF(v, v));
}

QMXTVECTOR3f& QMXTMatrixVec3NormalizeF(QMXTVECTOR3f& out, const QMXTVECTOR3f& in)
{
    const float len = QMXTMatrixVec3LengthF(in);
    if (len > 0.0f)
        out = {in.x / len, in.y / len, in.z / len};
    else
        out = {0.0f, 0.0f, 0.0f};
    return out;
}

QMXTQUATERNIONf& QMXTMatrixQuaternionIdentityF(QMXTQUATERNIONf& out)
{
    out = {0.0f, 0.0f, 0.0f, 1.0f};
    return out;
}

QMXTQUATERNIONf& QMXTMatrixQuaternionNormalizeF(QMXTQUATERNIONf& out, const QMXTQUATERNIONf& in)
{
    const float len = std::sqrt(in.x * in.x + in.y * in.y + in.z * in.z + in.w * in.w);
    if (len > 0.0f && std::isfinite(len))
        out = {in.x / len, in.y / len, in.z / len, in.w / len};
    else
        QMXTMatrixQuaternionIdentityF(out);
    return out;
}

QMXTQUATERNIONf& QMXTMatrixQuaternionMultiplyF(QMXTQUATERNIONf& out, const QMXTQUATERNIONf& a,
                                               const QMXTQUATERNIONf& b)
{
    const QMXTQUATERNIONf r = {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
                               a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
                               a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w,
                               a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
    out = r;
    return out;
}

QMXTQUATERNIONf& QMXTMatrixQuaternionSlerpF(QMXTQUATERNIONf& out, const QMXTQUATERNIONf& a,
                                            const QMXTQUATERNIONf& b, float t)
{
    float cosTheta = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
    float sign = 1.0f;
    if (cosTheta < 0.0f)
    {
        cosTheta = -cosTheta;
        sign = -1.0f;
    }
    float wa, wb;
    if (cosTheta > 0.9995f)
    {
        wa = 1.0f - t;
        wb = t;
    }
    else
    {
        const float theta = std::acos(cosTheta);
        const float sinTheta = std::sin(theta);
        wa = std::sin((1.0f - t) * theta) / sinTheta;
        wb = std::sin(t * theta) / sinTheta;
    }
    wb *= sign;
    const QMXTQUATERNIONf r = {wa * a.x + wb * b.x, wa * a.y + wb * b.y, wa * a.z + wb * b.z, wa * a.w + wb * b.w};
    if (cosTheta > 0.9995f)
        return QMXTMatrixQuaternionNormalizeF(out, r);
    out = r;
    return out;
}

QMXTQUATERNIONf& QMXTMatrixQuaternionRotationAxisF(QMXTQUATERNIONf& out, const QMXTVECTOR3f& axis, float angle)
{
    QMXTVECTOR3f n;
    QMXTMatrixVec3NormalizeF(n, axis);
    const float s = std::sin(angle * 0.5f);
    out = {n.x * s, n.y * s, n.z * s, std::cos(angle * 0.5f)};
    return out;
}

void QMXTMatrixQuaternionToAxisAngleF(const QMXTQUATERNIONf& q, QMXTVECTOR3f& axis, float& angle)
{
    QMXTQUATERNIONf n;
    QMXTMatrixQuaternionNormalizeF(n, q);
    const float w = n.w > 1.0f ? 1.0f : (n.w < -1.0f ? -1.0f : n.w);
    angle = 2.0f * std::acos(w);
    const float s = std::sqrt(1.0f - w * w);
    if (s < 1e-7f)
        axis = {1.0f, 0.0f, 0.0f};
    else
        axis = {n.x / s, n.y / s, n.z / s};
}

QMXTMATRIXf& QMXTMatrixRotationQuaternionF(QMXTMATRIXf& out, const QMXTQUATERNIONf& q)
{
    const float x = q.x, y = q.y, z = q.z, w = q.w;
    out = {{1.0f - 2.0f * (y * y + z * z), 2.0f * (x * y - z * w), 2.0f * (x * z + y * w), 0.0f,
            2.0f * (x * y + z * w), 1.0f - 2.0f * (x * x + z * z), 2.0f * (y * z - x * w), 0.0f,
            2.0f * (x * z - y * w), 2.0f * (y * z + x * w), 1.0f - 2.0f * (x * x + y * y), 0.0f,
            0.0f, 0.0f, 0.0f, 1.0f}};
    return out;
}

QMXTQUATERNIONf& QMXTMatrixQuaternionRotationMatrixF(QMXTQUATERNIONf& out, const QMXTMATRIXf& m)
{
    const float t = m(0, 0) + m(1, 1) + m(2, 2);
    if (t > 1e-8f)
    {
        const float s = 0.5f / std::sqrt(t + 1.0f);
        out.w = 0.25f / s;
        out.x = (m(2, 1) - m(1, 2)) * s;
        out.y = (m(0, 2) - m(2, 0)) * s;
        out.z = (m(1, 0) - m(0, 1)) * s;
    }
    else if (m(0, 0) > m(1, 1) && m(0, 0) > m(2, 2))
    {
        const float k = 2.0f * std::sqrt(1.0f + m(0, 0) - m(1, 1) - m(2, 2));
        out.x = 0.25f * k;
        out.y = (m(1, 0) + m(0, 1)) / k;
        out.z = (m(2, 0) + m(0, 2)) / k;
        out.w = (m(2, 1) - m(1, 2)) / k;
    }
    else if (m(1, 1) > m(2, 2))
    {
        const float k = 2.0f * std::sqrt(1.0f + m(1, 1) - m(0, 0) - m(2, 2));
        out.x = (m(1, 0) + m(0, 1)) / k;
        out.y = 0.25f * k;
        out.z = (m(2, 1) + m(1, 2)) / k;
        out.w = (m(0, 2) - m(2, 0)) / k;
    }
    else
    {
        const float k = 2.0f * std::sqrt(1.0f + m(2, 2) - m(0, 0) - m(1, 1));
        out.x = (m(2, 0) + m(0, 2)) / k;
        out.y = (m(2, 1) + m(1, 2)) / k;
        out.z = 0.25f * k;
        out.w = (m(1, 0) - m(0, 1)) / k;
    }
    return QMXTMatrixQuaternionNormalizeF(out, out);
}

QMXTBOUNDINGBOXf& QMXTBoundingBoxCompute(QMXTBOUNDINGBOXf& out, const QMXTVECTOR3f* points, uint32_t count)
{
    return QMXTBoundingBoxComputeInterleaved(out, points, count, 0, sizeof(QMXTVECTOR3f));
}

QMXTBOUNDINGBOXf& QMXTBoundingBoxComputeInterleaved(QMXTBOUNDINGBOXf& out, const void* data, uint32_t count,
                                                    uint32_t offset, uint32_t stride)
{
    float lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    for (uint32_t i = 0; i < count; ++i)
    {
        float p[3];
        std::memcpy(p, bytes + static_cast<size_t>(i) * stride + offset, sizeof p);
        for (int a = 0; a < 3; ++a)
        {
            if (i == 0 || p[a] < lo[a])
                lo[a] = p[a];
            if (i == 0 || p[a] > hi[a])
                hi[a] = p[a];
        }
    }
    for (int c = 0; c < 8; ++c)
        out.Point[c] = {(c & 1) ? hi[0] : lo[0], (c & 2) ? hi[1] : lo[1], (c & 4) ? hi[2] : lo[2]};
    return out;
}

bool QMXTBoundingBoxIsVisible(const QMXTBOUNDINGBOXf& box, const QMXTMATRIXf& viewProj, bool& needsClipping)
{
    // Clip-space tests: a box is invisible when all corners are outside one plane.
    QMXTVECTOR4f clip[8];
    QMXTTransformVec3Array(clip, box.Point, 8, viewProj);
    int outsideAll = 0;
    bool anyOutside = false;
    for (int plane = 0; plane < 6; ++plane)
    {
        int outside = 0;
        for (const QMXTVECTOR4f& c : clip)
        {
            const float v[3] = {c.x, c.y, c.z};
            const int axis = plane / 2;
            const bool out = (plane % 2 == 0) ? v[axis] < -c.w : v[axis] > c.w;
            if (out)
                ++outside;
        }
        if (outside == 8)
            ++outsideAll;
        if (outside > 0)
            anyOutside = true;
    }
    needsClipping = outsideAll == 0 && anyOutside;
    return outsideAll == 0;
}

QMXTVECTOR3f& QMXTTransform(QMXTVECTOR3f& out, const QMXTVECTOR3f& in, const QMXTMATRIXf& m)
{
    const QMXTVECTOR3f r = {in.x * m[0] + in.y * m[4] + in.z * m[8] + m[12],
                            in.x * m[1] + in.y * m[5] + in.z * m[9] + m[13],
                            in.x * m[2] + in.y * m[6] + in.z * m[10] + m[14]};
    out = r;
    return out;
}

QMXTVECTOR3f& QMXTTransformDirection(QMXTVECTOR3f& out, const QMXTVECTOR3f& in, const QMXTMATRIXf& m)
{
    const QMXTVECTOR3f r = {in.x * m[0] + in.y * m[4] + in.z * m[8], in.x * m[1] + in.y * m[5] + in.z * m[9],
                            in.x * m[2] + in.y * m[6] + in.z * m[10]};
    out = r;
    return out;
}

QMXTVECTOR3f& QMXTTransformBack(QMXTVECTOR3f& out, const QMXTVECTOR3f& in, const QMXTMATRIXf& m)
{
    QMXTMATRIXf inv;
    QMXTMatrixInverseF(inv, m);
    return QMXTTransform(out, in, inv);
}

void QMXTTransformArray(QMXTVECTOR3f* out, const QMXTVECTOR3f* in, uint32_t count, const QMXTMATRIXf& m)
{
    for (uint32_t i = 0; i < count; ++i)
        QMXTTransform(out[i], in[i], m);
}

void QMXTTransformArrayBack(QMXTVECTOR3f* out, const QMXTVECTOR3f* in, uint32_t count, const QMXTMATRIXf& m)
{
    QMXTMATRIXf inv;
    QMXTMatrixInverseF(inv, m);
    QMXTTransformArray(out, in, count, inv);
}

void QMXTTransformVec3Array(QMXTVECTOR4f* out, const QMXTVECTOR3f* in, uint32_t count, const QMXTMATRIXf& m)
{
    for (uint32_t i = 0; i < count; ++i)
    {
        const QMXTVECTOR3f v = in[i];
        out[i] = {v.x * m[0] + v.y * m[4] + v.z * m[8] + m[12], v.x * m[1] + v.y * m[5] + v.z * m[9] + m[13],
                  v.x * m[2] + v.y * m[6] + v.z * m[10] + m[14], v.x * m[3] + v.y * m[7] + v.z * m[11] + m[15]};
    }
}
