// The scene walk: frame range, user-data script, roots of the DAG, and the recursive descent that
// decides per Maya node whether and how it becomes a CNode.
#include "Ostrex.h"

#include <maya/MAnimControl.h>
#include <maya/MDagPath.h>
#include <maya/MFnCamera.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MFnLight.h>
#include <maya/MFnMesh.h>
#include <maya/MFnSkinCluster.h>
#include <maya/MFnTransform.h>
#include <maya/MGlobal.h>
#include <maya/MItDependencyNodes.h>
#include <maya/MColor.h>
#include <maya/MSelectionList.h>
#include <maya/MTime.h>

#include <algorithm>
#include <utility>

#include "Log.h"

namespace
{
MDagPath PathOf(const MObject& node)
{
    MDagPath path;
    MDagPath::getAPathTo(node, path);
    return path;
}

// A node directly under the world, with no other parent (instanced nodes are not started as roots).
bool IsRoot(const MObject& node)
{
    MFnDagNode dag(node);
    return dag.parentCount() == 1 && dag.parent(0).apiType() == MFn::kWorld;
}

bool IsPlane(MFn::Type type)
{
    return type == MFn::kPlane || type == MFn::kSketchPlane || type == MFn::kGroundPlane || type == MFn::kOrthoGrid;
}

bool IsExportedLight(MFn::Type type)
{
    return type == MFn::kDirectionalLight || type == MFn::kPointLight || type == MFn::kSpotLight;
}

// A time value truncated to a frame number, kept within a range whose frame count fits an int.
int FrameNumber(double value)
{
    const double limit = 1e8;
    return static_cast<int>(value != value ? 0.0 : std::max(-limit, std::min(limit, value)));
}

// Puts the scene's current time back when an export ends, however it ends.
class CTimeKeeper
{
  public:
    CTimeKeeper() : m_time(MAnimControl::currentTime()) {}
    ~CTimeKeeper() { MAnimControl::setCurrentTime(m_time); }
    CTimeKeeper(const CTimeKeeper&) = delete;
    CTimeKeeper& operator=(const CTimeKeeper&) = delete;

  private:
    MTime m_time;
};
} // namespace

bool Ostrex::DoConversion()
{
    m_matches.clear();
    CTimeKeeper keepTime;
    MItDependencyNodes it(MFn::kInvalid);
    ReadFrameRange();
    MAnimControl::setCurrentTime(MTime(m_pContent->info.startFrame, MTime::uiUnit()));
    ShowSelection();
    LoadUserScript();
    ExecuteScriptCommand(m_pContent->userData, "DefineSceneUserData");

    for (; !it.isDone(); it.next())
    {
        MObject node = it.thisNode();
        const MFn::Type type = node.apiType();
        if (type == MFn::kJoint || type == MFn::kTransform)
        {
            const eExportType exportType = Exportable(node);
            if (exportType == eNotExported || !IsRoot(node))
                continue;
            if (type == MFn::kJoint)
                AddJoint(node, exportType, -1);
            else
            {
                MFnTransform transform(PathOf(node));
                AddTransform(transform, exportType, -1);
            }
        }
        else if (type == MFn::kLookAt)
        {
            // A rig inside a group is reached through the group; only top-level rigs start here, so
            // no rig is exported twice.
            const eExportType exportType = Exportable(node);
            if (exportType != eNotExported && IsRoot(node))
            {
                MFnTransform lookAt(PathOf(node));
                AddLookAt(lookAt, exportType, -1);
            }
        }
        else if (type == MFn::kAmbientLight)
        {
            MFnLight light(node);
            const MColor colour = light.color();
            m_pContent->info.ambient[0] = colour.r;
            m_pContent->info.ambient[1] = colour.g;
            m_pContent->info.ambient[2] = colour.b;
        }
        else if (type == MFn::kSkinClusterFilter)
        {
            MFnSkinCluster skin(node);
            ConvertSkin(skin);
        }
    }
    ValidateAnimationData();
    return true;
}

void Ostrex::ReadFrameRange()
{
    const MTime minTime = MAnimControl::minTime(), maxTime = MAnimControl::maxTime();
    SSceneInfo& info = m_pContent->info;
    info.startFrame = FrameNumber(minTime.value());
    info.endFrame = FrameNumber(maxTime.value());
    const double duration = maxTime.as(MTime::kSeconds) - minTime.as(MTime::kSeconds);
    // The +1 is kept as the file format expects it (24 frames at 24 fps give 25); the small bias
    // keeps a whole rate whole despite rounding in the seconds. A range of one frame has no
    // duration: the scene's own rate is used.
    if (duration > 0.0)
        info.fps = static_cast<int>((info.endFrame - info.startFrame + 1) / duration + 1e-6);
    else
        info.fps = static_cast<int>(1.0 / MTime(1.0, MTime::uiUnit()).as(MTime::kSeconds) + 0.5);
}

void Ostrex::ShowSelection()
{
    MSelectionList selection;
    MGlobal::getActiveSelectionList(selection);
    for (unsigned int i = 0; i < selection.length(); ++i)
    {
        MObject node;
        selection.getDependNode(i, node);
        MFnDependencyNode fn(node);
        MGlobal::displayInfo(fn.name());
    }
}

void Ostrex::LoadUserScript()
{
    const CQMXTString script = m_options.GetOption(COptionsData::eScriptFile);
    m_bUserScriptLoaded = !script.empty() && m_options.GetOption(COptionsData::eExportUserData) &&
                          MGlobal::sourceFile(MString(script.c_str())) == MStatus::kSuccess;
}

eExportType Ostrex::Exportable(const MObject& node)
{
    if (!m_bExportSelection || IsSelected(node))
        return eExportedFull;
    return AreChildrenSelected(node) ? eExportedAncestor : eNotExported;
}

bool Ostrex::IsSelected(const MObject& node)
{
    MSelectionList selection;
    MGlobal::getActiveSelectionList(selection);
    for (unsigned int i = 0; i < selection.length(); ++i)
    {
        MObject selected;
        if (selection.getDependNode(i, selected) == MStatus::kSuccess && selected == node)
            return true;
    }
    return false;
}

bool Ostrex::AreChildrenSelected(const MObject& node)
{
    MStatus status;
    MFnDagNode dag(node, &status);
    if (!status)
        return false;
    for (unsigned int i = 0; i < dag.childCount(); ++i)
    {
        const MObject child = dag.child(i);
        if (IsSelected(child) || AreChildrenSelected(child))
            return true;
    }
    return false;
}

int Ostrex::GetObjectIDByPath(MString path) const
{
    for (const SMatch& match : m_matches)
        if (match.path == path)
            return match.index;
    return -1;
}

bool Ostrex::AddChild(MObject& node, MFnTransform& parentTransform, eExportType type, int parentIndex)
{
    const MFn::Type nodeType = node.apiType();
    if (nodeType == MFn::kTransform || nodeType == MFn::kLookAt || nodeType == MFn::kJoint)
    {
        const eExportType childType = Exportable(node);
        if (childType == eNotExported)
            return true;
        if (nodeType == MFn::kJoint)
        {
            AddJoint(node, childType, parentIndex);
            return true;
        }
        MFnTransform transform(PathOf(node));
        if (nodeType == MFn::kTransform)
            AddTransform(transform, childType, parentIndex);
        else
            AddLookAt(transform, childType, -1); // rigs hang at the top level
        return true;
    }
    if (nodeType == MFn::kCamera)
    {
        MFnCamera camera(PathOf(node));
        AddCamera(camera, parentTransform, type, parentIndex, -1);
        return true;
    }
    if (nodeType == MFn::kLocator)
    {
        AddLocator(node, parentTransform, type, parentIndex);
        return true;
    }
    if (IsPlane(nodeType))
        return true;
    if (nodeType == MFn::kMesh)
    {
        MFnMesh mesh(PathOf(node));
        if (mesh.isIntermediateObject())
            return false;
        AddMesh(mesh, parentTransform, type, parentIndex);
        return true;
    }
    if (IsExportedLight(nodeType))
    {
        MFnLight light(PathOf(node));
        AddLight(light, parentTransform, type, parentIndex, nodeType);
        return true;
    }
    if (nodeType == MFn::kSkinClusterFilter)
    {
        MFnSkinCluster skin(node);
        ConvertSkin(skin);
        return true;
    }
    Log(eLogWarning, "Unknown type %s", node.apiTypeStr());
    return false;
}

bool Ostrex::AddTransform(MFnTransform& transform, eExportType type, int parentIndex)
{
    if (transform.isIntermediateObject() || transform.childCount() == 0)
        return true;
    bool handled = false;
    if (type != eExportedAncestor)
    {
        // The first shape that converts stands for the transform; further shapes are ignored.
        for (unsigned int i = 0; i < transform.childCount() && !handled; ++i)
        {
            MObject child = transform.child(i);
            if (!child.hasFn(MFn::kTransform))
                handled = AddChild(child, transform, type, parentIndex);
        }
    }
    if (!handled)
        AddLocator(transform.object(), transform, type, parentIndex);
    return true;
}

int Ostrex::NewNode(MFnTransform& transform, ENodeKind kind, eExportType type, int parentIndex)
{
    if (transform.isIntermediateObject() || type == eNotExported)
        return -1;
    CNode node = StartNode(transform, transform, parentIndex, kind);
    AddAnimation(&node, transform);
    m_matches.push_back(SMatch{transform.fullPathName(), node.index});
    return m_pContent->AddNode(node);
}

void Ostrex::AddTransformChildren(MFnTransform& transform, const MObject& except, int parentIndex)
{
    for (unsigned int i = 0; i < transform.childCount(); ++i)
    {
        MObject child = transform.child(i);
        if (child == except || !child.hasFn(MFn::kTransform))
            continue;
        const eExportType childType = Exportable(child);
        if (childType != eNotExported)
            AddChild(child, transform, childType, parentIndex);
    }
}

int Ostrex::AddLocator(const MObject& node, MFnTransform& transform, eExportType type, int parentIndex)
{
    const int index = NewNode(transform, eNodePlain, type, parentIndex);
    if (index < 0)
        return parentIndex;
    AddTransformChildren(transform, node, index);
    return index;
}

int Ostrex::AddJoint(const MObject& node, eExportType type, int parentIndex)
{
    MFnTransform joint(PathOf(node));
    const int index = NewNode(joint, eNodeJoint, type, parentIndex);
    if (index < 0)
        return parentIndex;
    for (unsigned int i = 0; i < joint.childCount(); ++i)
    {
        MObject child = joint.child(i);
        const eExportType childType = Exportable(child);
        if (childType != eNotExported)
            AddChild(child, joint, childType, index);
    }
    return index;
}

bool Ostrex::AddLookAt(const MFnTransform& lookAt, eExportType type, int parentIndex)
{
    if (lookAt.childCount() < 2)
        return true;
    MObject cameraObject = lookAt.child(0), aimObject = lookAt.child(1);
    {
        MFnDagNode aim(aimObject);
        if (aim.childCount() > 0 && aim.child(0).apiType() != MFn::kLocator)
            std::swap(cameraObject, aimObject);
    }
    int targetIndex = -1;
    MFnTransform aim(PathOf(aimObject));
    const eExportType aimType = type == eExportedFull ? eExportedFull : Exportable(aimObject);
    if (aimType != eNotExported)
    {
        const MObject aimShape = aim.childCount() > 0 ? aim.child(0) : MObject::kNullObj;
        targetIndex = AddLocator(aimShape, aim, aimType, parentIndex);
    }
    MFnTransform cameraTransform(PathOf(cameraObject));
    if (cameraTransform.childCount() > 0 && cameraTransform.child(0).apiType() == MFn::kCamera)
    {
        const eExportType cameraType = type == eExportedFull ? eExportedFull : Exportable(cameraObject);
        MFnCamera camera(PathOf(cameraTransform.child(0)));
        AddCamera(camera, cameraTransform, cameraType, parentIndex, targetIndex);
    }
    return true;
}

void Ostrex::AddMesh(MFnMesh& mesh, MFnTransform& transform, eExportType type, int parentIndex)
{
    const int index = type == eExportedFull ? ConvertMesh(mesh, transform, parentIndex) : parentIndex;
    AddTransformChildren(transform, mesh.object(), index);
}

void Ostrex::AddLight(MFnLight& light, MFnTransform& transform, eExportType type, int parentIndex, MFn::Type lightType)
{
    if (light.isIntermediateObject())
        return;
    const int index = type == eExportedFull ? ConvertLight(light, transform, parentIndex, lightType) : parentIndex;
    AddTransformChildren(transform, light.object(), index);
}

void Ostrex::AddCamera(MFnCamera& camera, MFnTransform& transform, eExportType type, int parentIndex, int targetIndex)
{
    if (camera.isIntermediateObject())
        return;
    const int index = type == eExportedFull ? ConvertCamera(camera, transform, parentIndex, targetIndex) : parentIndex;
    AddTransformChildren(transform, camera.object(), index);
}
