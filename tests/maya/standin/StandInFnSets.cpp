// Stand-in function sets and iterators over the scripted scene.
#include <maya/MColor.h>
#include <maya/MColorArray.h>
#include <maya/MDagPath.h>
#include <maya/MDagPathArray.h>
#include <maya/MDoubleArray.h>
#include <maya/MEulerRotation.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MFnBlinnShader.h>
#include <maya/MFnCamera.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnMesh.h>
#include <maya/MFnPhongShader.h>
#include <maya/MFnSet.h>
#include <maya/MFnSkinCluster.h>
#include <maya/MFnSpotLight.h>
#include <maya/MFnTransform.h>
#include <maya/MIntArray.h>
#include <maya/MItDependencyGraph.h>
#include <maya/MItDependencyNodes.h>
#include <maya/MItGeometry.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MMatrix.h>
#include <maya/MObjectArray.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>
#include <maya/MPointArray.h>
#include <maya/MStringArray.h>
#include <maya/MVector.h>

#include <algorithm>
#include <deque>

#include "StandInScene.h"

using standin::Scene;
using standin::SNode;

namespace
{
const SNode& NodeOf(int id)
{
    static const SNode kNone;
    return id >= 0 && id < static_cast<int>(Scene().nodes.size()) ? Scene().nodes[id] : kNone;
}

MStatus Fail(MStatus* status)
{
    if (status)
        *status = MStatus(MStatus::kFailure);
    return MStatus(MStatus::kFailure);
}
} // namespace

MFnBase::MFnBase() = default;
MFnBase::~MFnBase() = default;
MFn::Type MFnBase::type() const { return MFn::kBase; }
MObject MFnBase::object(MStatus*) const { return m_object; }

void MFnBase::StandInAttach(const MObject& object, MFn::Type required, MStatus* status)
{
    const bool ok = !object.isNull() && object.StandInItems() == nullptr && object.hasFn(required);
    m_object = ok ? object : MObject();
    m_chain.clear();
    if (ok && Scene().HasFn(object.StandInId(), MFn::kDagNode))
    {
        MDagPath path;
        MDagPath::getAPathTo(object, path);
        m_chain = path.StandInChain();
    }
    if (status)
        *status = ok ? MStatus() : MStatus(MStatus::kInvalidParameter);
}

void MFnBase::StandInAttach(const MDagPath& path, MFn::Type required, MStatus* status)
{
    StandInAttach(path.node(), required, status);
    if (!m_object.isNull())
        m_chain = path.StandInChain();
}

#define STANDIN_FN_SET_BODY(Cls, Required)                                                                           \
    Cls::Cls() = default;                                                                                            \
    Cls::Cls(MObject& object, MStatus* status) { StandInAttach(object, Required, status); }                          \
    Cls::Cls(const MObject& object, MStatus* status) { StandInAttach(object, Required, status); }                    \
    Cls::~Cls() = default;                                                                                           \
    MFn::Type Cls::type() const { return Required; }                                                                 \
    const char* Cls::className() { return #Cls; }
#define STANDIN_DAG_FN_SET_BODY(Cls, Required)                                                                       \
    STANDIN_FN_SET_BODY(Cls, Required)                                                                               \
    Cls::Cls(const MDagPath& path, MStatus* status) { StandInAttach(path, Required, status); }

STANDIN_FN_SET_BODY(MFnDependencyNode, MFn::kBase)
STANDIN_FN_SET_BODY(MFnSet, MFn::kSet)
STANDIN_FN_SET_BODY(MFnGeometryFilter, MFn::kGeometryFilt)
STANDIN_FN_SET_BODY(MFnSkinCluster, MFn::kSkinClusterFilter)
STANDIN_FN_SET_BODY(MFnLambertShader, MFn::kLambert)
STANDIN_FN_SET_BODY(MFnReflectShader, MFn::kReflect)
STANDIN_FN_SET_BODY(MFnBlinnShader, MFn::kBlinn)
STANDIN_FN_SET_BODY(MFnPhongShader, MFn::kPhong)
STANDIN_DAG_FN_SET_BODY(MFnDagNode, MFn::kDagNode)
STANDIN_DAG_FN_SET_BODY(MFnTransform, MFn::kTransform)
STANDIN_DAG_FN_SET_BODY(MFnMesh, MFn::kMesh)
STANDIN_DAG_FN_SET_BODY(MFnLight, MFn::kLight)
STANDIN_DAG_FN_SET_BODY(MFnNonAmbientLight, MFn::kNonAmbientLight)
STANDIN_DAG_FN_SET_BODY(MFnNonExtendedLight, MFn::kNonExtendedLight)
STANDIN_DAG_FN_SET_BODY(MFnSpotLight, MFn::kSpotLight)
STANDIN_DAG_FN_SET_BODY(MFnCamera, MFn::kCamera)

MString MFnDependencyNode::name(MStatus*) const { return MString(NodeOf(StandInNode()).name.c_str()); }
MPlug MFnDependencyNode::findPlug(const MString& attribute, bool, MStatus* status) const
{
    if (NodeOf(StandInNode()).attributes.count(attribute.asChar()) == 0)
    {
        Fail(status);
        return MPlug();
    }
    if (status)
        *status = MStatus();
    return MPlug(StandInNode(), attribute.asChar());
}

unsigned int MFnDagNode::parentCount(MStatus*) const { return static_cast<unsigned int>(NodeOf(StandInNode()).parents.size()); }
MObject MFnDagNode::parent(unsigned int i, MStatus*) const { return MObject::StandInNode(NodeOf(StandInNode()).parents.at(i)); }
unsigned int MFnDagNode::childCount(MStatus*) const { return static_cast<unsigned int>(NodeOf(StandInNode()).children.size()); }
MObject MFnDagNode::child(unsigned int i, MStatus*) const { return MObject::StandInNode(NodeOf(StandInNode()).children.at(i)); }
MString MFnDagNode::fullPathName(MStatus*) const { return dagPath().fullPathName(); }
MDagPath MFnDagNode::dagPath(MStatus*) const
{
    MDagPath path;
    path.StandInSetChain(m_chain);
    return path;
}
MMatrix MFnDagNode::transformationMatrix(MStatus*) const { return Scene().LocalMatrix(StandInNode()); }
bool MFnDagNode::isIntermediateObject(MStatus*) const { return NodeOf(StandInNode()).intermediate; }
MStatus MFnDagNode::getConnectedSetsAndMembers(unsigned int, MObjectArray& sets, MObjectArray& comps, bool) const
{
    const standin::SMesh& mesh = NodeOf(StandInNode()).mesh;
    if (mesh.groupsFail)
        return MStatus(MStatus::kFailure);
    for (const standin::SMesh::SGroup& group : mesh.groups)
    {
        sets.append(MObject::StandInNode(group.set));
        comps.append(group.faces.empty() ? MObject()
                                         : MObject::StandInComponent(StandInNode(), MFn::kMeshPolygonComponent, group.faces));
    }
    return MStatus();
}

MStatus MFnTransform::getScale(double scale[3]) const
{
    const SNode& n = NodeOf(StandInNode());
    const char* channels[3] = {"sx", "sy", "sz"};
    for (int i = 0; i < 3; ++i)
        scale[i] = Scene().Channel(StandInNode(), channels[i], n.scale[i]);
    return MStatus();
}
MStatus MFnTransform::getRotation(MEulerRotation& rotation) const
{
    const SNode& n = NodeOf(StandInNode());
    rotation = MEulerRotation(Scene().Channel(StandInNode(), "rx", n.rotate[0]), Scene().Channel(StandInNode(), "ry", n.rotate[1]),
                              Scene().Channel(StandInNode(), "rz", n.rotate[2]),
                              static_cast<MEulerRotation::RotationOrder>(n.rotateOrder));
    return MStatus();
}

int MFnMesh::numUVs(const MString& set, MStatus* status) const
{
    for (const auto& uvSet : NodeOf(StandInNode()).mesh.uvSets)
        if (uvSet.name == set.asChar())
        {
            int count = 0;
            for (const auto& face : uvSet.uvs)
                count += static_cast<int>(face.size());
            return count;
        }
    Fail(status);
    return 0;
}
MStatus MFnMesh::getNormals(MFloatVectorArray& normals, MSpace::Space) const
{
    for (const standin::Vec3& n : NodeOf(StandInNode()).mesh.normals)
        normals.append(MFloatVector(float(n[0]), float(n[1]), float(n[2])));
    return MStatus();
}
MStatus MFnMesh::getUVSetNames(MStringArray& names) const
{
    for (const auto& uvSet : NodeOf(StandInNode()).mesh.uvSets)
        names.append(MString(uvSet.name.c_str()));
    return MStatus();
}
MStatus MFnMesh::getVertexColors(MColorArray& colours, const MString* set, const MColor*)
{
    const standin::SMesh& mesh = NodeOf(StandInNode()).mesh;
    const auto found = mesh.colourSets.find(set ? set->asChar() : mesh.currentColourSet);
    if (found == mesh.colourSets.end())
        return MStatus(MStatus::kFailure);
    for (const MColor& c : found->second)
        colours.append(c);
    return MStatus();
}

MItMeshPolygon::MItMeshPolygon(const MDagPath& path, MObject& component, MStatus*) : m_node(path.node().StandInId())
{
    if (component.StandInItems())
        m_faces = *component.StandInItems();
    else
        for (int f = 0; f < Scene().FacesOf(m_node); ++f)
            m_faces.push_back(f);
}
MItMeshPolygon::~MItMeshPolygon() = default;
int MItMeshPolygon::Face() const { return m_faces[m_at]; }
bool MItMeshPolygon::isDone(MStatus*) { return m_at >= m_faces.size(); }
MStatus MItMeshPolygon::next()
{
    ++m_at;
    return MStatus();
}
MStatus MItMeshPolygon::reset()
{
    m_at = 0;
    return MStatus();
}
unsigned int MItMeshPolygon::index(MStatus*) { return static_cast<unsigned int>(Face()); }
void MItMeshPolygon::getPoints(MPointArray& points, MSpace::Space, MStatus*)
{
    const standin::SMesh& mesh = NodeOf(m_node).mesh;
    for (int v : mesh.faces[Face()])
        points.append(MPoint(mesh.points[v][0], mesh.points[v][1], mesh.points[v][2]));
}
MStatus MItMeshPolygon::getNormal(unsigned int vertexIndex, MVector& normal, MSpace::Space) const
{
    const standin::SMesh& mesh = NodeOf(m_node).mesh;
    const std::vector<int>& face = mesh.faces[Face()];
    if (vertexIndex >= face.size() || mesh.normals.empty())
        return MStatus(MStatus::kFailure);
    const standin::Vec3& n = mesh.normals[face[vertexIndex]];
    normal = MVector(n[0], n[1], n[2]);
    return MStatus();
}
MStatus MItMeshPolygon::getUV(int vertexId, float2& uv, const MString* set) const
{
    for (const auto& uvSet : NodeOf(m_node).mesh.uvSets)
        if (set && uvSet.name == set->asChar() && Face() < static_cast<int>(uvSet.uvs.size()) && vertexId >= 0 &&
            vertexId < static_cast<int>(uvSet.uvs[Face()].size()))
        {
            uv[0] = uvSet.uvs[Face()][vertexId][0];
            uv[1] = uvSet.uvs[Face()][vertexId][1];
            return MStatus();
        }
    return MStatus(MStatus::kFailure);
}
MStatus MItMeshPolygon::getColor(MColor& colour, int vertexIndex)
{
    const standin::SMesh& mesh = NodeOf(m_node).mesh;
    const auto found = mesh.colourSets.find(mesh.currentColourSet);
    const std::vector<int>& face = mesh.faces[Face()];
    if (found == mesh.colourSets.end() || vertexIndex < 0 || vertexIndex >= static_cast<int>(face.size()))
        return MStatus(MStatus::kFailure);
    colour = found->second.at(face[vertexIndex]);
    return MStatus();
}
bool MItMeshPolygon::hasValidTriangulation(MStatus*) const { return NodeOf(m_node).mesh.badTriangulation.count(Face()) == 0; }
MStatus MItMeshPolygon::numTriangles(int& count) const
{
    count = std::max(0, static_cast<int>(NodeOf(m_node).mesh.faces[Face()].size()) - 2);
    return MStatus();
}
MStatus MItMeshPolygon::getTriangle(int t, MPointArray& points, MIntArray& vertices, MSpace::Space) const
{
    const standin::SMesh& mesh = NodeOf(m_node).mesh;
    const std::vector<int>& face = mesh.faces[Face()];
    if (mesh.failingTriangles.count(Face()) || t < 0 || t + 2 >= static_cast<int>(face.size()))
        return MStatus(MStatus::kFailure);
    points.clear();
    vertices.clear();
    for (int v : {face[0], face[t + 1], face[t + 2]})
    {
        points.append(MPoint(mesh.points[v][0], mesh.points[v][1], mesh.points[v][2]));
        vertices.append(v);
    }
    return MStatus();
}

MItGeometry::MItGeometry(const MDagPath& path, MStatus* status) : m_node(path.node().StandInId())
{
    if (!Scene().HasFn(m_node, MFn::kMesh))
        Fail(status);
    else
        m_count = static_cast<int>(NodeOf(m_node).mesh.points.size());
}
MItGeometry::~MItGeometry() = default;
bool MItGeometry::isDone(MStatus*) const { return m_at >= m_count; }
MStatus MItGeometry::next()
{
    ++m_at;
    return MStatus();
}
MStatus MItGeometry::reset()
{
    m_at = 0;
    return MStatus();
}
int MItGeometry::index(MStatus*) const { return m_at; }
int MItGeometry::count(MStatus*) const { return m_count; }
MObject MItGeometry::currentItem(MStatus*) const
{
    return MObject::StandInComponent(m_node, MFn::kMeshVertComponent, {m_at});
}

unsigned int MFnGeometryFilter::numOutputConnections(MStatus*) const
{
    return static_cast<unsigned int>(NodeOf(StandInNode()).outputs.size());
}
// Plug indices are the connection numbers plus 10, so code that mixes the two up goes wrong.
unsigned int MFnGeometryFilter::indexForOutputConnection(unsigned int i, MStatus*) const { return i + 10; }
MStatus MFnGeometryFilter::getPathAtIndex(unsigned int index, MDagPath& path) const
{
    const std::vector<int>& outputs = NodeOf(StandInNode()).outputs;
    if (index < 10 || index - 10 >= outputs.size())
        return MStatus(MStatus::kInvalidParameter);
    return MDagPath::getAPathTo(MObject::StandInNode(outputs[index - 10]), path);
}
unsigned int MFnSkinCluster::influenceObjects(MDagPathArray& paths, MStatus*) const
{
    for (int joint : NodeOf(StandInNode()).influences)
    {
        MDagPath path;
        MDagPath::getAPathTo(MObject::StandInNode(joint), path);
        paths.append(path);
    }
    return paths.length();
}
MStatus MFnSkinCluster::getWeights(const MDagPath& path, const MObject& component, MDoubleArray& weights,
                                   unsigned int& influenceCount) const
{
    ++Scene().weightReads;
    const SNode& skin = NodeOf(StandInNode());
    const auto found = skin.weights.find(path.node().StandInId());
    const std::vector<int>* items = component.StandInItems();
    if (found == skin.weights.end() || !items || component.apiType() != MFn::kMeshVertComponent)
        return MStatus(MStatus::kInvalidParameter);
    weights.clear();
    influenceCount = static_cast<unsigned int>(skin.influences.size());
    for (int vertex : *items)
        for (unsigned int j = 0; j < influenceCount; ++j)
            weights.append(j < found->second.at(vertex).size() ? found->second.at(vertex)[j] : 0.0);
    return MStatus();
}

MColor MFnLambertShader::color(MStatus*) const { return NodeOf(StandInNode()).colour; }
MColor MFnLambertShader::transparency(MStatus*) const { return NodeOf(StandInNode()).transparency; }
MColor MFnLambertShader::ambientColor(MStatus*) const { return NodeOf(StandInNode()).ambient; }
float MFnLambertShader::diffuseCoeff(MStatus*) const { return NodeOf(StandInNode()).diffuseCoeff; }
MColor MFnReflectShader::specularColor(MStatus*) const { return NodeOf(StandInNode()).specular; }
float MFnBlinnShader::specularRollOff(MStatus*) const { return NodeOf(StandInNode()).rollOff; }
float MFnPhongShader::cosPower(MStatus*) const { return NodeOf(StandInNode()).cosPower; }

MColor MFnLight::color(MStatus*) const { return NodeOf(StandInNode()).colour; }
short MFnNonAmbientLight::decayRate(MStatus*) const { return NodeOf(StandInNode()).decay; }
double MFnSpotLight::coneAngle(MStatus*) const { return NodeOf(StandInNode()).cone; }
bool MFnCamera::isOrtho(MStatus*) const { return NodeOf(StandInNode()).ortho; }
double MFnCamera::nearClippingPlane(MStatus*) const { return NodeOf(StandInNode()).nearPlane; }
double MFnCamera::farClippingPlane(MStatus*) const { return NodeOf(StandInNode()).farPlane; }
double MFnCamera::verticalFieldOfView(MStatus*) const { return NodeOf(StandInNode()).verticalFov; }

MDGContext MDGContext::fsNormal;
MDGContext::MDGContext() = default;

MPlug::MPlug() : m_node(-1) {}
MPlug::MPlug(const MPlug&) = default;
MPlug::~MPlug() = default;
MPlug& MPlug::operator=(const MPlug&) = default;
bool MPlug::isNull(MStatus*) const { return m_node < 0; }
MString MPlug::name(MStatus*) const { return MString((NodeOf(m_node).name + "." + m_attribute).c_str()); }
MObject MPlug::node(MStatus*) const { return MObject::StandInNode(m_node); }
bool MPlug::connectedTo(MPlugArray& plugs, bool asDst, bool asSrc, MStatus* status) const
{
    plugs.clear();
    for (const standin::SConnection& c : Scene().connections)
    {
        if (asDst && c.dstNode == m_node && c.dstAttr == m_attribute)
            plugs.append(MPlug(c.srcNode, c.srcAttr));
        if (asSrc && c.srcNode == m_node && c.srcAttr == m_attribute)
            plugs.append(MPlug(c.dstNode, c.dstAttr));
    }
    if (status)
        *status = MStatus();
    return plugs.length() > 0;
}
MStatus MPlug::getValue(MString& value, MDGContext&) const
{
    const auto& strings = NodeOf(m_node).strings;
    const auto found = strings.find(m_attribute);
    if (found == strings.end())
        return MStatus(MStatus::kFailure);
    value = found->second.c_str();
    return MStatus();
}
MString MPlug::asString(MDGContext& context, MStatus*) const
{
    MString value;
    getValue(value, context);
    return value;
}
bool MPlug::operator==(const MPlug& o) const { return m_node == o.m_node && m_attribute == o.m_attribute; }

MItDependencyNodes::MItDependencyNodes(MFn::Type filter, MStatus*) { reset(filter); }
MItDependencyNodes::~MItDependencyNodes() = default;
void MItDependencyNodes::Skip()
{
    while (!isDone() && m_filter != MFn::kInvalid && !Scene().HasFn(m_at, m_filter))
        ++m_at;
}
MStatus MItDependencyNodes::reset(MFn::Type filter)
{
    m_filter = filter;
    m_at = 1; // the world is not a dependency node of the scene
    Skip();
    return MStatus();
}
bool MItDependencyNodes::isDone(MStatus*) const { return m_at >= static_cast<int>(Scene().nodes.size()); }
MStatus MItDependencyNodes::next()
{
    ++m_at;
    Skip();
    return MStatus();
}
MObject MItDependencyNodes::thisNode(MStatus*) const { return MObject::StandInNode(m_at); }

MItDependencyGraph::MItDependencyGraph(MObject& root, MFn::Type filter, Direction, Traversal, Level, MStatus*)
    : m_roots{root.StandInId()}, m_filter(filter)
{
}
// From a plug, the walk starts at the nodes feeding it.
MItDependencyGraph::MItDependencyGraph(MPlug& root, MFn::Type filter, Direction, Traversal, Level, MStatus*)
    : m_filter(filter)
{
    MPlugArray sources;
    root.connectedTo(sources, true, false);
    for (unsigned int i = 0; i < sources.length(); ++i)
        m_roots.push_back(sources[i].StandInNode());
}
MItDependencyGraph::~MItDependencyGraph() = default;
// Breadth first upstream; with pruning, nodes that fail the filter are not walked through.
void MItDependencyGraph::Build()
{
    m_items.clear();
    std::set<int> seen(m_roots.begin(), m_roots.end());
    std::deque<int> queue(m_roots.begin(), m_roots.end());
    while (!queue.empty())
    {
        const int node = queue.front();
        queue.pop_front();
        const bool passes = m_filter == MFn::kInvalid || Scene().HasFn(node, m_filter);
        if (passes)
            m_items.push_back(node);
        if (!passes && m_pruning)
            continue;
        for (const standin::SConnection& c : Scene().connections)
            if (c.dstNode == node && seen.insert(c.srcNode).second)
                queue.push_back(c.srcNode);
    }
    m_built = true;
    m_at = 0;
}
bool MItDependencyGraph::isDone(MStatus*)
{
    if (!m_built)
        Build();
    return m_at >= m_items.size();
}
MStatus MItDependencyGraph::next()
{
    ++m_at;
    return MStatus();
}
MStatus MItDependencyGraph::reset()
{
    m_built = false;
    return MStatus();
}
MObject MItDependencyGraph::currentItem(MStatus* status)
{
    if (isDone())
    {
        Fail(status);
        return MObject();
    }
    return MObject::StandInNode(m_items[m_at]);
}
MStatus MItDependencyGraph::disablePruningOnFilter()
{
    m_pruning = false;
    m_built = false;
    return MStatus();
}
