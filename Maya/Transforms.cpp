// Transforms to SNodeTM records, sampled once a frame; lights and perspective cameras to nodes.
#include "Ostrex.h"

#include <maya/MAnimControl.h>
#include <maya/MColor.h>
#include <maya/MDagPath.h>
#include <maya/MEulerRotation.h>
#include <maya/MFnCamera.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnLight.h>
#include <maya/MFnNonAmbientLight.h>
#include <maya/MFnSpotLight.h>
#include <maya/MFnTransform.h>
#include <maya/MMatrix.h>
#include <maya/MTime.h>

#include <algorithm>
#include <cmath>

#include "Log.h"
#include "QMXTModelTVO.h"

namespace
{
// A quarter turn about X, put in front of the local matrix of lights and cameras.
const MMatrix& XRot90()
{
    static const float Xrot90deg[4][4] = {{1, 0, 0, 0}, {0, 0, 1, 0}, {0, -1, 0, 0}, {0, 0, 0, 1}};
    static const MMatrix MMXrot90deg = [] {
        MMatrix m;
        for (unsigned int r = 0; r < 4; ++r)
            for (unsigned int c = 0; c < 4; ++c)
                m[r][c] = Xrot90deg[r][c];
        return m;
    }();
    return MMXrot90deg;
}

// Rotation from Euler angles, for matrices too degenerate to take it from.
QMXTQUATERNIONf QuaternionFromEuler(const MEulerRotation& e)
{
    const double cx = std::cos(e.x / 2), cy = std::cos(e.y / 2), cz = std::cos(e.z / 2);
    const double sx = std::sin(e.x / 2), sy = std::sin(e.y / 2), sz = std::sin(e.z / 2);
    return QMXTQUATERNIONf{float(cx * sy * sz - sx * cy * cz), float(sx * cy * sz - cx * sy * cz),
                           float(-cx * cy * sz - sx * sy * cz), float(sx * sy * sz + cx * cy * cz)};
}

// The conjugate of Maya's rotation for its row-vector matrices, as the file format expects.
QMXTQUATERNIONf QuaternionFromMatrix(MMatrix m, double det)
{
    if (std::fabs(det) <= 0.9999999999 || std::fabs(det) >= 1.00001)
        for (unsigned int r = 0; r < 3; ++r)
        {
            const double length = std::sqrt(m[r][0] * m[r][0] + m[r][1] * m[r][1] + m[r][2] * m[r][2]);
            for (unsigned int c = 0; c < 3 && length > 0.0; ++c)
                m[r][c] /= length;
        }
    const double t = m[0][0] + m[1][1] + m[2][2];
    double x, y, z, w;
    if (t > 1e-8)
    {
        const double s = 0.5 / std::sqrt(t + 1);
        w = 0.25 / s;
        x = (m[2][1] - m[1][2]) * s;
        y = (m[0][2] - m[2][0]) * s;
        z = (m[1][0] - m[0][1]) * s;
    }
    else if (m[0][0] > m[1][1] && m[0][0] > m[2][2])
    {
        const double k = 2 * std::sqrt(1 + m[0][0] - m[1][1] - m[2][2]);
        x = 0.25 * k;
        y = (m[1][0] + m[0][1]) / k;
        z = (m[2][0] + m[0][2]) / k;
        w = (m[2][1] - m[1][2]) / k;
    }
    else if (m[1][1] > m[2][2])
    {
        const double k = 2 * std::sqrt(1 + m[1][1] - m[0][0] - m[2][2]);
        x = (m[1][0] + m[0][1]) / k;
        y = 0.25 * k;
        z = (m[2][1] + m[1][2]) / k;
        w = (m[0][2] - m[2][0]) / k;
    }
    else
    {
        const double k = 2 * std::sqrt(1 + m[2][2] - m[0][0] - m[1][1]);
        x = (m[2][0] + m[0][2]) / k;
        y = (m[2][1] + m[1][2]) / k;
        z = 0.25 * k;
        w = (m[1][0] - m[0][1]) / k;
    }
    return QMXTQUATERNIONf{float(x), float(y), float(z), float(w)};
}

bool IsCameraOrLight(const CNode& node)
{
    return node.type == eNodeCamera || node.type == eNodeLight;
}
} // namespace

void Ostrex::CopyTransform(SNodeTM& tm, MFnTransform& transform, MSpace::Space space, bool isCameraOrLight)
{
    MMatrix m = space == MSpace::kWorld ? transform.dagPath().inclusiveMatrix() : transform.transformationMatrix();
    if (isCameraOrLight)
        m = XRot90() * m;
    for (unsigned int r = 0; r < 4; ++r)
        for (unsigned int c = 0; c < 4; ++c)
            tm.matrix[r * 4 + c] = static_cast<float>(m(r, c));
    const double det = m.det3x3();
    QMXTQUATERNIONf rotation;
    if (std::fabs(det) <= 1e-6)
    {
        if (!m_bSingularMatrixWarned)
            Log(eLogWarning, "Warning: One or more Singular transformation matrices detected.\n\t Calculating the rotation "
                             "from the Euler angles instead.");
        m_bSingularMatrixWarned = true;
        MEulerRotation euler;
        transform.getRotation(euler);
        rotation = QuaternionFromEuler(euler);
    }
    else
        rotation = QuaternionFromMatrix(m, det);
    QMXTQUATERNIONf normalised;
    QMXTMatrixQuaternionNormalizeF(normalised, rotation);
    tm.rot[0] = normalised.x;
    tm.rot[1] = normalised.y;
    tm.rot[2] = normalised.z;
    tm.rot[3] = normalised.w;
    for (unsigned int i = 0; i < 3; ++i)
        tm.pos[i] = static_cast<float>(m(3, i));
    double scale[3] = {1.0, 1.0, 1.0};
    transform.getScale(scale);
    for (unsigned int i = 0; i < 3; ++i)
        tm.scale[i] = static_cast<float>(scale[i]);
    std::fill(tm.stretch, tm.stretch + 4, 0.0f);
}

bool Ostrex::AddAnimation(CNode* node, MFnTransform& transform)
{
    const SSceneInfo& info = m_pContent->info;
    for (int frame = info.startFrame; frame <= info.endFrame; ++frame)
    {
        MAnimControl::setCurrentTime(MTime(frame, MTime::uiUnit()));
        SNodeTM sample;
        CopyTransform(sample, transform, MSpace::kObject, IsCameraOrLight(*node));
        node->frames.push_back(sample);
    }
    MAnimControl::setCurrentTime(MTime(info.startFrame, MTime::uiUnit()));
    return true;
}

bool Ostrex::ValidateAnimationData()
{
    const SSceneInfo& info = m_pContent->info;
    if (info.startFrame == 0 && info.endFrame == 0)
        return true;
    const size_t frames = static_cast<size_t>(std::max(info.endFrame - info.startFrame + 1, 0));
    for (CNode& node : m_pContent->nodes)
        node.frames.resize(frames, node.tm);
    return true;
}

CNode Ostrex::StartNode(const MFnDagNode& dagNode, MFnTransform& transform, int parentIndex, ENodeKind kind)
{
    CNode node;
    node.index = static_cast<int>(m_pContent->nodes.size());
    const MString path = dagNode.fullPathName();
    if (path.length() > 0)
        ExecuteScriptCommand(node.userData, "DefineNodeUserData %s", path.asChar());
    node.name = transform.name().asChar();
    node.parent = parentIndex;
    node.type = kind;
    CopyTransform(node.tm, transform, MSpace::kObject, IsCameraOrLight(node));
    return node;
}

int Ostrex::ConvertLight(MFnLight& light, MFnTransform& transform, int parentIndex, MFn::Type type)
{
    if (light.isIntermediateObject())
        return parentIndex;
    CNode node = StartNode(light, transform, parentIndex, eNodeLight);
    const MColor colour = light.color();
    node.light.colour[0] = colour.r;
    node.light.colour[1] = colour.g;
    node.light.colour[2] = colour.b;
    if (type == MFn::kDirectionalLight)
        node.light.lightType = eTVOLightDirectional;
    else
    {
        const MDagPath lightPath = light.dagPath();
        node.light.lightType = type == MFn::kSpotLight ? eTVOLightSpot : eTVOLightPoint;
        if (type == MFn::kSpotLight)
            node.light.falloffAngle = static_cast<float>(MFnSpotLight(lightPath).coneAngle());
        const int decay = std::clamp<int>(MFnNonAmbientLight(lightPath).decayRate(), 0, 2);
        node.light.constantAttenuation = decay == 0 ? 1.0f : 0.0f;
        node.light.linearAttenuation = decay == 1 ? 1.0f : 0.0f;
        node.light.quadraticAttenuation = decay == 2 ? 1.0f : 0.0f;
    }
    AddAnimation(&node, transform);
    return m_pContent->AddNode(node);
}

int Ostrex::ConvertCamera(MFnCamera& camera, MFnTransform& transform, int parentIndex, int targetIndex)
{
    if (camera.isIntermediateObject() || camera.isOrtho())
        return parentIndex;
    CNode node = StartNode(camera, transform, parentIndex, eNodeCamera);
    node.camera.target = targetIndex;
    node.camera.farPlane = static_cast<float>(camera.farClippingPlane());
    node.camera.nearPlane = static_cast<float>(camera.nearClippingPlane());
    node.camera.fov = static_cast<float>(camera.verticalFieldOfView());
    AddAnimation(&node, transform);
    return m_pContent->AddNode(node);
}
