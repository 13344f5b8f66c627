#include "StandInScene.h"

#include <cmath>

namespace standin
{
namespace
{
// The stand-in's type tree: each type's parent type.
MFn::Type ParentType(MFn::Type type)
{
    switch (type)
    {
    case MFn::kJoint:
    case MFn::kLookAt:
        return MFn::kTransform;
    case MFn::kTransform:
    case MFn::kShape:
    case MFn::kWorld:
        return MFn::kDagNode;
    case MFn::kMesh:
    case MFn::kCamera:
    case MFn::kLocator:
    case MFn::kLight:
    case MFn::kPlane:
        return MFn::kShape;
    case MFn::kSketchPlane:
    case MFn::kGroundPlane:
    case MFn::kOrthoGrid:
        return MFn::kPlane;
    case MFn::kAmbientLight:
    case MFn::kNonAmbientLight:
        return MFn::kLight;
    case MFn::kNonExtendedLight:
        return MFn::kNonAmbientLight;
    case MFn::kPointLight:
    case MFn::kDirectionalLight:
    case MFn::kSpotLight:
        return MFn::kNonExtendedLight;
    case MFn::kBlinn:
    case MFn::kPhong:
        return MFn::kReflect;
    case MFn::kReflect:
        return MFn::kLambert;
    case MFn::kShadingEngine:
        return MFn::kSet;
    case MFn::kSkinClusterFilter:
        return MFn::kGeometryFilt;
    case MFn::kDependencyNode:
    case MFn::kInvalid:
        return MFn::kInvalid;
    default:
        return MFn::kDependencyNode;
    }
}

MMatrix Translation(const Vec3& v, double sign = 1.0)
{
    MMatrix m;
    for (unsigned int i = 0; i < 3; ++i)
        m[3][i] = sign * v[i];
    return m;
}

MMatrix Axis(int axis, double angle)
{
    MMatrix m;
    const double c = std::cos(angle), s = std::sin(angle);
    const int a = (axis + 1) % 3, b = (axis + 2) % 3;
    m[a][a] = c;
    m[a][b] = s;
    m[b][a] = -s;
    m[b][b] = c;
    return m;
}

CScene* g_scene = nullptr;
} // namespace

double SCurve::At(double frame) const
{
    if (frame <= keys.front().first)
        return keys.front().second;
    for (size_t i = 1; i < keys.size(); ++i)
        if (frame <= keys[i].first)
        {
            const double t = (frame - keys[i - 1].first) / (keys[i].first - keys[i - 1].first);
            return keys[i - 1].second + t * (keys[i].second - keys[i - 1].second);
        }
    return keys.back().second;
}

CScene::CScene()
{
    Add(MFn::kWorld, "world", -1);
}

int CScene::Add(MFn::Type type, const std::string& name, int parent)
{
    SNode node;
    node.type = type;
    node.name = name;
    {
        static const std::map<MFn::Type, std::set<std::string>> kAttributes = {
            {MFn::kShadingEngine, {"surfaceShader"}},
            {MFn::kLambert, {"color", "ambientColor", "normalCamera", "transparency", "outColor"}},
            {MFn::kBlinn, {"color", "ambientColor", "normalCamera", "transparency", "outColor"}},
            {MFn::kPhong, {"color", "ambientColor", "normalCamera", "transparency", "outColor"}},
            {MFn::kFileTexture, {"fileTextureName", "outColor"}}};
        const auto found = kAttributes.find(type);
        if (found != kAttributes.end())
            node.attributes = found->second;
    }
    const int id = static_cast<int>(nodes.size());
    if (parent >= 0)
    {
        node.parents.push_back(parent);
        nodes[parent].children.push_back(id);
    }
    nodes.push_back(node);
    return id;
}

void CScene::Connect(int src, const std::string& srcAttr, int dst, const std::string& dstAttr)
{
    nodes[src].attributes.insert(srcAttr);
    nodes[dst].attributes.insert(dstAttr);
    connections.push_back(SConnection{src, srcAttr, dst, dstAttr});
}

bool CScene::HasFn(int node, MFn::Type type) const
{
    if (node < 0 || node >= static_cast<int>(nodes.size()))
        return false;
    if (type == MFn::kBase)
        return true;
    for (MFn::Type t = nodes[node].type; t != MFn::kInvalid; t = ParentType(t))
        if (t == type)
            return true;
    return false;
}

double CScene::Channel(int node, const char* channel, double still) const
{
    const auto found = nodes[node].curves.find(channel);
    return found == nodes[node].curves.end() || found->second.keys.empty() ? still : found->second.At(currentFrame);
}

MMatrix CScene::LocalMatrix(int node) const
{
    if (!HasFn(node, MFn::kTransform))
        return MMatrix();
    const SNode& n = nodes[node];
    const Vec3 t{Channel(node, "tx", n.translate[0]), Channel(node, "ty", n.translate[1]), Channel(node, "tz", n.translate[2])};
    const Vec3 r{Channel(node, "rx", n.rotate[0]), Channel(node, "ry", n.rotate[1]), Channel(node, "rz", n.rotate[2])};
    MMatrix s;
    s[0][0] = Channel(node, "sx", n.scale[0]);
    s[1][1] = Channel(node, "sy", n.scale[1]);
    s[2][2] = Channel(node, "sz", n.scale[2]);
    static const int kOrders[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 2, 1}, {1, 0, 2}, {2, 1, 0}};
    const int* order = kOrders[n.rotateOrder];
    const MMatrix rotation = Axis(order[0], r[order[0]]) * Axis(order[1], r[order[1]]) * Axis(order[2], r[order[2]]);
    return Translation(n.scalePivot, -1) * s * Translation(n.scalePivot) * Translation(n.rotatePivot, -1) * rotation *
           Translation(n.rotatePivot) * Translation(t);
}

CScene& Scene()
{
    if (!g_scene)
        g_scene = new CScene;
    return *g_scene;
}

void ResetScene()
{
    delete g_scene;
    g_scene = new CScene;
}

double FramesPerSecond(MTime::Unit unit)
{
    switch (unit)
    {
    case MTime::kSeconds:
        return 1.0;
    case MTime::kMilliseconds:
        return 1000.0;
    case MTime::kGames:
        return 15.0;
    case MTime::kPALFrame:
        return 25.0;
    case MTime::kNTSCFrame:
        return 30.0;
    case MTime::kNTSCField:
        return 60.0;
    default:
        return 24.0;
    }
}
} // namespace standin
