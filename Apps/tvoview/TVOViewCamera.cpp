#include "TVOViewCamera.h"

#include <algorithm>
#include <cmath>

#include "TVOMeshLayout.h"

namespace
{
QMXTVECTOR3f Add(const QMXTVECTOR3f& a, const QMXTVECTOR3f& b, float s = 1.0f)
{
    return {a.x + s * b.x, a.y + s * b.y, a.z + s * b.z};
}

void Grow(SSceneBounds& b, const QMXTVECTOR3f& p)
{
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
        return;
    if (b.bEmpty)
        b.vMin = b.vMax = p;
    b.bEmpty = false;
    b.vMin = {std::min(b.vMin.x, p.x), std::min(b.vMin.y, p.y), std::min(b.vMin.z, p.z)};
    b.vMax = {std::max(b.vMax.x, p.x), std::max(b.vMax.y, p.y), std::max(b.vMax.z, p.z)};
}

QMXTMATRIXf ViewProj(const QMXTVECTOR3f& eye, const QMXTVECTOR3f& at, const QMXTVECTOR3f& up, float fovY,
                     float aspect, float zNear, float zFar)
{
    QMXTMATRIXf view, projection, out;
    QMXTMatrixLookAtRHF(view, eye, at, up);
    QMXTMatrixPerspectiveFovRHF(projection, fovY, aspect, zNear, zFar);
    return QMXTMatrixMultiplyF(out, view, projection);
}
} // namespace

QMXTVECTOR3f SSceneBounds::Centre() const
{
    return {0.5f * (vMin.x + vMax.x), 0.5f * (vMin.y + vMax.y), 0.5f * (vMin.z + vMax.z)};
}

float SSceneBounds::Radius() const
{
    const QMXTVECTOR3f d = {vMax.x - vMin.x, vMax.y - vMin.y, vMax.z - vMin.z};
    return std::max(0.5f * std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z), 1e-3f);
}

SSceneBounds TVOSceneBounds(CQMXTModelTVO& scene)
{
    SSceneBounds bounds;
    QMXTMATRIXf unpack;
    for (uint32_t i = 0; i < scene.nNumMeshNode && i < scene.nNumNode; ++i)
    {
        const STVONode& node = scene.pNode[i];
        const STVOMesh& mesh = scene.pMesh[node.nIdx];
        if (!TVOStreamPresent(mesh, mesh.sVertex))
            continue;
        std::copy(mesh.mUnpackMatrix, mesh.mUnpackMatrix + 16, unpack.f);
        QMXTMATRIXf world;
        QMXTMatrixMultiplyF(world, unpack, scene.GetWorldMatrix(node));
        for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
        {
            float p[4];
            QMXTVertexRead(p, TVOStreamElement(mesh, mesh.sVertex, v), mesh.sVertex.eType, mesh.sVertex.n);
            QMXTVECTOR3f w;
            Grow(bounds, QMXTTransform(w, {p[0], p[1], p[2]}, world));
        }
    }
    return bounds;
}

SCameraView TVOOrbitView(const SSceneBounds& bounds, const SOrbit& orbit, float aspect)
{
    const float fov = 0.785398f;
    const QMXTVECTOR3f centre = bounds.Centre();
    const float radius = bounds.Radius();
    // Far enough for the bounding sphere to fit the narrower of the two angles.
    const float half = aspect < 1.0f ? std::atan(std::tan(fov * 0.5f) * aspect) : fov * 0.5f;
    const float distance = orbit.fZoom * radius / std::sin(half) * 1.05f;
    const QMXTVECTOR3f dir = {std::cos(orbit.fPitch) * std::sin(orbit.fYaw), std::sin(orbit.fPitch),
                              std::cos(orbit.fPitch) * std::cos(orbit.fYaw)};
    SCameraView view;
    view.vEye = Add(centre, dir, distance);
    const float zNear = std::max(distance - 2.0f * radius, distance * 0.01f);
    view.mViewProj = ViewProj(view.vEye, centre, {0, 1, 0}, fov, aspect, zNear, distance + 2.0f * radius);
    return view;
}

SCameraView TVOFileCameraView(CQMXTModelTVO& scene, uint32_t cameraIdx, const SSceneBounds& bounds,
                              float aspect)
{
    QMXTVECTOR3f from, to, up;
    float fov = scene.GetCamera(from, to, up, cameraIdx);
    if (!(fov > 0.001f && fov < 3.1f))
        fov = 0.785398f;
    const STVOCamera& camera =
        scene.pCamera[scene.pNode[scene.nNumMeshNode + scene.nNumLight + cameraIdx].nIdx];
    float zNear = camera.fNear, zFar = camera.fFar;
    if (!(zNear > 0.0f && zFar > zNear && std::isfinite(zFar)))
    {
        const QMXTVECTOR3f d = Add(bounds.Centre(), from, -1.0f);
        const float distance = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
        zFar = distance + 2.0f * bounds.Radius();
        zNear = std::max(distance - 2.0f * bounds.Radius(), zFar * 1e-3f);
    }
    SCameraView view;
    view.vEye = from;
    view.mViewProj = ViewProj(from, to, up, fov, aspect, zNear, zFar);
    return view;
}

int TVOFindCamera(const STVOScene& scene, const std::string& name)
{
    for (uint32_t c = 0; c < scene.nNumCamera; ++c)
        if (TVOCameraName(scene, c) == name)
            return static_cast<int>(c);
    return -1;
}

std::string TVOCameraName(const STVOScene& scene, uint32_t cameraIdx)
{
    const char* name = scene.pNode[scene.nNumMeshNode + scene.nNumLight + cameraIdx].pszName;
    return name ? name : "";
}
