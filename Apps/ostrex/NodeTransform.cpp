#include "NodeTransform.h"

#include <cmath>

#include <assimp/types.h>

namespace
{
// Axes are worked on in double with the importer's own vector operations (- difference, * dot
// product or scaling, ^ cross product).
using SVec = aiVector3t<double>;

// Relative length below which an axis counts as flattened.
const double kTinyAxis = 1e-9;

// Any unit vector perpendicular to a unit vector.
SVec Perpendicular(const SVec& a)
{
    const SVec helper = std::fabs(a.x) < 0.9 ? SVec(1, 0, 0) : SVec(0, 1, 0);
    const SVec p = a ^ helper;
    return p * (1.0 / p.Length());
}

// Orthonormal right-handed rows from the axes marked valid; the others are completed.
void Orthonormalise(SVec axis[3], bool valid[3])
{
    int count = 0;
    for (int i = 0; i < 3; ++i)
    {
        if (!valid[i])
            continue;
        for (int j = 0; j < i; ++j)
            if (valid[j])
                axis[i] = axis[i] - axis[j] * (axis[i] * axis[j]);
        const double len = axis[i].Length();
        valid[i] = len > kTinyAxis;
        if (valid[i])
        {
            axis[i] = axis[i] * (1.0 / len);
            ++count;
        }
    }
    if (count == 0)
    {
        axis[0] = SVec(1, 0, 0);
        axis[1] = SVec(0, 1, 0);
        axis[2] = SVec(0, 0, 1);
        return;
    }
    if (count == 1)
    {
        const int i = valid[0] ? 0 : (valid[1] ? 1 : 2);
        axis[(i + 1) % 3] = Perpendicular(axis[i]);
        valid[(i + 1) % 3] = true;
    }
    // Two valid axes: the third is their cross product in cyclic order, keeping the frame right-handed.
    for (int i = 0; i < 3; ++i)
        if (!valid[i])
            axis[i] = axis[(i + 1) % 3] ^ axis[(i + 2) % 3];
}

bool IsFinite(const QMXTMATRIXf& m)
{
    for (float f : m.f)
        if (!std::isfinite(f))
            return false;
    return true;
}
} // namespace

ENodeTMFit NodeTMFromMatrix(SNodeTM& tm, const QMXTMATRIXf& local)
{
    tm = SNodeTM();
    if (!IsFinite(local))
        return eNodeTMNonFinite;
    for (int i = 0; i < 16; ++i)
        tm.matrix[i] = local[i];

    SVec axis[3];
    double scale[3];
    bool valid[3];
    double largest = 0.0;
    for (int r = 0; r < 3; ++r)
    {
        axis[r] = SVec(local(r, 0), local(r, 1), local(r, 2));
        scale[r] = axis[r].Length();
        largest = std::fmax(largest, scale[r]);
    }
    const bool mirrored = axis[0] * (axis[1] ^ axis[2]) < 0.0;
    for (int r = 0; r < 3; ++r)
    {
        if (mirrored)
            scale[r] = -scale[r];
        valid[r] = std::fabs(scale[r]) > kTinyAxis * std::fmax(largest, 1.0);
        if (valid[r])
            axis[r] = axis[r] * (1.0 / scale[r]);
    }
    Orthonormalise(axis, valid);

    QMXTMATRIXf rotation;
    QMXTMatrixIdentityF(rotation);
    for (int r = 0; r < 3; ++r)
    {
        rotation(r, 0) = static_cast<float>(axis[r].x);
        rotation(r, 1) = static_cast<float>(axis[r].y);
        rotation(r, 2) = static_cast<float>(axis[r].z);
    }
    QMXTQUATERNIONf q;
    QMXTMatrixQuaternionRotationMatrixF(q, rotation);
    QMXTMatrixQuaternionNormalizeF(q, q);
    tm.rot[0] = q.x;
    tm.rot[1] = q.y;
    tm.rot[2] = q.z;
    tm.rot[3] = q.w;
    for (int i = 0; i < 3; ++i)
    {
        tm.scale[i] = static_cast<float>(scale[i]);
        tm.pos[i] = local(3, i);
    }

    // The axes are perpendicular when the rebuilt matrix matches the given one.
    const QMXTMATRIXf rebuilt = MatrixFromNodeTM(tm);
    const double tolerance = 1e-4 * std::fmax(largest, 1e-30);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            if (std::fabs(rebuilt(r, c) - local(r, c)) > tolerance)
                return eNodeTMSheared;
    return eNodeTMExact;
}

QMXTMATRIXf MatrixFromNodeTM(const SNodeTM& tm)
{
    QMXTMATRIXf s, r, t, out;
    QMXTMatrixScalingF(s, tm.scale[0], tm.scale[1], tm.scale[2]);
    const QMXTQUATERNIONf q = {tm.rot[0], tm.rot[1], tm.rot[2], tm.rot[3]};
    QMXTMatrixRotationQuaternionF(r, q);
    QMXTMatrixTranslationF(t, tm.pos[0], tm.pos[1], tm.pos[2]);
    QMXTMatrixMultiplyF(out, s, r);
    return QMXTMatrixMultiplyF(out, out, t);
}
