// The Assimp scene filler: walks the node tree and fills the scene content.
#include "AssimpContent.h"

#include <cmath>
#include <new>

#include "AssimpInternal.h"
#include "Log.h"
#include "NodeTransform.h"

namespace
{
enum ENodeState
{
    eDropped = 0, // outside the selection
    ePlain = 1,   // an ancestor of the selection, kept as a plain transform
    eFull = 2     // exported with everything it holds
};

// Lights and cameras placed at one node.
struct SBinding
{
    std::vector<const aiLight*> lights;
    std::vector<const aiCamera*> cameras;
    int Count() const { return static_cast<int>(lights.size() + cameras.size()); }
};

// A light or camera node whose target is looked up once every node exists.
struct SPendingTarget
{
    int contentNode;
    std::string targetName;
    bool isCamera;
    float distance; // for a camera without a target node: how far ahead to put one
};

class CFiller
{
  public:
    CFiller(const aiScene& scene, const SAssimpFillSettings& settings, SContent& content,
            SAssimpFillResult& result)
        : m_scene(scene), m_settings(settings), m_content(content), m_result(result),
          m_materials(scene, content, settings.texturePrefix), m_quirks(AssimpQuirksOf(scene))
    {
    }

    bool Run();

  private:
    bool Fail(const std::string& error)
    {
        m_result.error = error;
        return false;
    }
    bool Select();
    void BindLightsAndCameras();
    void MarkJoints();
    void AddNode(int g);
    SNodeTM Sample(const QMXTMATRIXf& local, const std::string& name, bool& warned);
    void SampleNode(CNode& node, int g, const QMXTMATRIXf* view);
    int AddViewChild(int parent, const std::string& name, int kind, const QMXTMATRIXf& view);
    void PlaceLight(CNode& node, const aiLight& light);
    void PlaceCamera(CNode& node, const aiCamera& camera);
    void ResolveTargets();
    void ResolveSkins();
    bool HasSomethingToExport() const;

    const aiScene& m_scene;
    const SAssimpFillSettings& m_settings;
    SContent& m_content;
    SAssimpFillResult& m_result;
    CAssimpMaterials m_materials;
    SAssimpQuirks m_quirks;
    CAssimpGraph m_graph;
    CAssimpSampler m_sampler;
    std::vector<aiMatrix4x4> m_globals0;
    std::vector<int> m_state;
    std::vector<bool> m_joint;
    std::vector<SBinding> m_bindings;
    std::vector<int> m_contentOf; // content index per graph node, -1 when not exported
    std::vector<SPendingTarget> m_targets;
};

// Every list the scene counts entries in is there (the importer's own check ensures it for files).
bool ListsPresent(const aiScene& s)
{
    return (!s.mNumMeshes || s.mMeshes) && (!s.mNumMaterials || s.mMaterials) &&
           (!s.mNumLights || s.mLights) && (!s.mNumCameras || s.mCameras) &&
           (!s.mNumAnimations || s.mAnimations) && (!s.mNumTextures || s.mTextures);
}

bool CFiller::Run()
{
    m_content = SContent();
    std::string error;
    if (!ListsPresent(m_scene))
        return Fail("the scene is malformed (a list it counts entries in is missing)");
    if (!m_graph.Build(m_scene, error))
        return Fail(error);
    m_result.animation = ChooseAssimpAnimation(m_scene, m_settings.animation, error);
    if (m_result.animation == -2)
        return Fail(error);
    const aiAnimation* anim = m_result.animation >= 0 ? m_scene.mAnimations[m_result.animation] : nullptr;
    if (!m_sampler.Init(m_graph, anim, m_settings.fps, error))
        return Fail(error);
    if (!Select())
        return false;
    m_sampler.Globals(0, m_globals0);
    BindLightsAndCameras();
    MarkJoints();

    SSceneInfo& info = m_content.info;
    info.name = m_settings.sceneName;
    info.startFrame = 0;
    info.endFrame = anim ? m_sampler.FrameCount() - 1 : 0;
    info.fps = m_sampler.Fps();
    m_contentOf.assign(m_graph.Count(), -1);
    // Room for every node, light, camera and camera target, so the list never copies its nodes.
    m_content.nodes.reserve(static_cast<size_t>(m_graph.Count()) + m_scene.mNumLights +
                            2u * m_scene.mNumCameras);
    for (int g = 0; g < m_graph.Count(); ++g)
        if (m_state[g] != eDropped)
            AddNode(g);
    ResolveTargets();
    ResolveSkins();
    m_result.sources.resize(m_content.nodes.size(), nullptr);
    for (int g = 0; g < m_graph.Count(); ++g)
        if (m_contentOf[g] >= 0)
            m_result.sources[m_contentOf[g]] = &m_graph.Node(g);
    if (!HasSomethingToExport())
        return Fail(m_settings.selection.empty()
                        ? "nothing to export: the scene holds no triangles, lights or cameras"
                        : "nothing to export: the selection holds no triangles, lights or cameras");
    m_result.textures = std::move(m_materials.Textures());
    Log(eLogDetail, "Scene: %zu nodes, %zu materials, %d frames at %d frames per second.",
        m_content.nodes.size(), m_content.materials.size(), m_content.FrameCount(), info.fps);
    return true;
}

// Marks the selected nodes and their descendants for export and their ancestors as plain transforms.
bool CFiller::Select()
{
    const int count = m_graph.Count();
    m_state.assign(count, m_settings.selection.empty() ? eFull : eDropped);
    for (const std::string& name : m_settings.selection)
    {
        bool found = false;
        for (int g = 0; g < count; ++g)
        {
            if (name != m_graph.Node(g).mName.C_Str())
                continue;
            found = true;
            m_state[g] = eFull;
            for (int a = m_graph.Parent(g); a >= 0 && m_state[a] == eDropped; a = m_graph.Parent(a))
                m_state[a] = ePlain;
        }
        if (!found)
            return Fail("no node named '" + name + "' in the scene");
    }
    for (int g = 0; g < count; ++g) // parents come first, so a whole subtree follows its root
        if (m_graph.Parent(g) >= 0 && m_state[m_graph.Parent(g)] == eFull)
            m_state[g] = eFull;
    return true;
}

void CFiller::BindLightsAndCameras()
{
    m_bindings.assign(m_graph.Count(), SBinding());
    for (unsigned i = 0; i < m_scene.mNumLights; ++i)
    {
        const aiLight* light = m_scene.mLights[i];
        if (!light)
            continue;
        if (light->mType == aiLightSource_AMBIENT)
        {
            const aiColor3D& c = light->mColorAmbient.IsBlack() ? light->mColorDiffuse : light->mColorAmbient;
            m_content.info.ambient[0] += c.r;
            m_content.info.ambient[1] += c.g;
            m_content.info.ambient[2] += c.b;
            continue;
        }
        SLightData probe;
        const int g = m_graph.Find(light->mName.C_Str());
        if (!FillAssimpLight(*light, m_quirks, probe))
            Log(eLogWarning,
                "Warning: Light '%s' is an area light or of an unknown kind; it is not exported.",
                light->mName.C_Str());
        else if (g < 0)
            Log(eLogWarning, "Warning: Light '%s' has no node; it is not exported.", light->mName.C_Str());
        else if (m_state[g] == eFull)
            m_bindings[g].lights.push_back(light);
    }
    for (unsigned i = 0; i < m_scene.mNumCameras; ++i)
    {
        const aiCamera* camera = m_scene.mCameras[i];
        if (!camera)
            continue;
        const int g = m_graph.Find(camera->mName.C_Str());
        if (camera->mOrthographicWidth > 0.0f)
            Log(eLogWarning, "Warning: Camera '%s' is orthographic; it is not exported.",
                camera->mName.C_Str());
        else if (g < 0)
            Log(eLogWarning, "Warning: Camera '%s' has no node; it is not exported.", camera->mName.C_Str());
        else if (m_state[g] == eFull)
            m_bindings[g].cameras.push_back(camera);
    }
}

// Nodes that bones of exported meshes name become joints.
void CFiller::MarkJoints()
{
    m_joint.assign(m_graph.Count(), false);
    for (int g = 0; g < m_graph.Count(); ++g)
    {
        const aiNode& n = m_graph.Node(g);
        if (m_state[g] != eFull || !n.mMeshes)
            continue;
        for (unsigned i = 0; i < n.mNumMeshes; ++i)
        {
            const aiMesh* mesh = n.mMeshes[i] < m_scene.mNumMeshes ? m_scene.mMeshes[n.mMeshes[i]] : nullptr;
            for (unsigned b = 0; mesh && mesh->mBones && b < mesh->mNumBones; ++b)
            {
                const int joint = mesh->mBones[b] ? m_graph.Find(mesh->mBones[b]->mName.C_Str()) : -1;
                if (joint >= 0)
                    m_joint[joint] = true;
            }
        }
    }
}

SNodeTM CFiller::Sample(const QMXTMATRIXf& local, const std::string& name, bool& warned)
{
    SNodeTM tm;
    const ENodeTMFit fit = NodeTMFromMatrix(tm, local);
    if (fit != eNodeTMExact && !warned)
    {
        warned = true;
        if (fit == eNodeTMNonFinite)
            Log(eLogWarning, "Warning: '%s' has a transform with non-finite values; the identity is used.",
                name.c_str());
        else
            Log(eLogDetail,
                "\"%s\": sheared transform; position, rotation and scale keep its nearest unsheared form.",
                name.c_str());
    }
    return tm;
}

// The static transform (frame 0) and, for an animated node, one sample a frame. view, when given,
// is put before the node's own matrix (a light or camera that is the node itself).
void CFiller::SampleNode(CNode& node, int g, const QMXTMATRIXf* view)
{
    bool warned = false;
    auto localAt = [&](int frame)
    {
        QMXTMATRIXf local = AssimpRowMatrix(m_sampler.Local(g, frame));
        if (view)
            QMXTMatrixMultiplyF(local, *view, local);
        return local;
    };
    node.tm = Sample(localAt(0), node.name, warned);
    node.frames.clear();
    if (m_result.animation < 0 || !m_sampler.IsAnimated(g))
        return;
    node.frames.reserve(m_sampler.FrameCount());
    for (int f = 0; f < m_sampler.FrameCount(); ++f)
        node.frames.push_back(Sample(localAt(f), node.name, warned));
}

void CFiller::AddNode(int g)
{
    const aiNode& source = m_graph.Node(g);
    const SBinding& binding = m_bindings[g];
    const bool full = m_state[g] == eFull;
    const bool hasMeshes = full && source.mNumMeshes > 0;

    // Filled in place: a node's geometry can be large and CNode copies rather than moves.
    const int index = static_cast<int>(m_content.nodes.size());
    CNode& node = m_content.nodes.emplace_back();
    node.index = index;
    node.parent = m_graph.Parent(g) >= 0 ? m_contentOf[m_graph.Parent(g)] : -1;
    node.name = source.mName.C_Str();
    node.type = hasMeshes ? eNodeMesh : (full && m_joint[g] ? eNodeJoint : eNodePlain);
    // A leaf holding just one light or camera becomes that light or camera itself.
    const bool isView =
        full && !hasMeshes && !m_joint[g] && m_graph.Children(g).empty() && binding.Count() == 1;
    QMXTMATRIXf view;
    if (isView && !binding.lights.empty())
    {
        const aiLight& l = *binding.lights[0];
        view = AssimpViewFrame(l.mPosition, l.mDirection, l.mUp);
        PlaceLight(node, l);
    }
    else if (isView)
    {
        const aiCamera& c = *binding.cameras[0];
        view = AssimpViewFrame(AssimpCameraPosition(c, m_quirks), c.mLookAt, c.mUp);
        PlaceCamera(node, c);
    }
    SampleNode(node, g, isView ? &view : nullptr);
    if (hasMeshes)
    {
        FillAssimpGeometry(node, g, m_scene, m_graph, m_globals0, m_materials, m_settings.streams);
        if (node.geom.faces.empty())
        {
            node.type = eNodePlain;
            Log(eLogWarning, "Warning: Mesh '%s' has no triangles. Exporting as a dummy node.",
                node.name.c_str());
        }
    }
    m_contentOf[g] = index;
    const std::string targetName = node.name + ".Target"; // node is not used below: the list may grow
    if (isView)
    {
        if (binding.cameras.empty())
            m_targets.push_back({index, targetName, false, 0.0f});
        else
            m_targets.push_back({index, targetName, true, binding.cameras[0]->mLookAt.Length()});
        return;
    }
    for (const aiLight* l : binding.lights)
    {
        const int child = AddViewChild(index, l->mName.C_Str(), eNodeLight,
                                       AssimpViewFrame(l->mPosition, l->mDirection, l->mUp));
        PlaceLight(m_content.nodes[child], *l);
        m_targets.push_back({child, std::string(l->mName.C_Str()) + ".Target", false, 0.0f});
    }
    for (const aiCamera* c : binding.cameras)
    {
        const int child =
            AddViewChild(index, c->mName.C_Str(), eNodeCamera,
                         AssimpViewFrame(AssimpCameraPosition(*c, m_quirks), c->mLookAt, c->mUp));
        PlaceCamera(m_content.nodes[child], *c);
        m_targets.push_back({child, std::string(c->mName.C_Str()) + ".Target", true, c->mLookAt.Length()});
    }
}

// A still child node carrying a light's or camera's view frame.
int CFiller::AddViewChild(int parent, const std::string& name, int kind, const QMXTMATRIXf& view)
{
    CNode node;
    node.parent = parent;
    node.name = name;
    node.type = kind;
    bool warned = false;
    node.tm = Sample(view, name, warned);
    return m_content.AddNode(node);
}

void CFiller::PlaceLight(CNode& node, const aiLight& light)
{
    node.type = eNodeLight;
    FillAssimpLight(light, m_quirks, node.light);
}

void CFiller::PlaceCamera(CNode& node, const aiCamera& camera)
{
    node.type = eNodeCamera;
    SCameraData& data = node.camera;
    data.cameraType = 0;
    data.fov = AssimpVerticalFov(camera, m_quirks);
    data.nearPlane = camera.mClipPlaneNear;
    data.farPlane = camera.mClipPlaneFar;
    data.target = -1;
    if (m_result.animation >= 0)
        data.fovFrames.assign(m_sampler.FrameCount(), data.fov);
}

// Targets: an exported node named after the light or camera plus ".Target"; a camera without one
// gets a new target node ahead of it along its view, at the distance of its look-at vector.
void CFiller::ResolveTargets()
{
    for (const SPendingTarget& pending : m_targets)
    {
        const int g = m_graph.Find(pending.targetName);
        int target = g >= 0 ? m_contentOf[g] : -1;
        if (target < 0 && pending.isCamera)
        {
            CNode node;
            node.parent = pending.contentNode;
            node.name = pending.targetName;
            const float distance =
                pending.distance > 0.0f && std::isfinite(pending.distance) ? pending.distance : 1.0f;
            QMXTMATRIXf local;
            QMXTMatrixTranslationF(local, 0.0f, -distance, 0.0f); // the camera looks along -y of its frame
            NodeTMFromMatrix(node.tm, local);
            target = m_content.AddNode(node);
        }
        CNode& owner = m_content.nodes[pending.contentNode];
        (pending.isCamera ? owner.camera.target : owner.light.target) = target;
    }
}

// Bones were recorded as graph nodes; a skin naming a node that is not exported is dropped.
void CFiller::ResolveSkins()
{
    for (CNode& node : m_content.nodes)
    {
        for (size_t m = 0; m < node.modifiers.size();)
        {
            bool complete = true;
            for (SBonedVtx& vertex : node.modifiers[m].vertices)
                for (CBoneWeight& w : vertex.weights)
                {
                    w.bone = w.bone >= 0 && w.bone < m_graph.Count() ? m_contentOf[w.bone] : -1;
                    complete = complete && w.bone >= 0;
                }
            if (complete)
            {
                ++m;
                continue;
            }
            Log(eLogDetail, "\"%s\": skin left out, as some of its joints are not exported.",
                node.name.c_str());
            node.modifiers.erase(node.modifiers.begin() + static_cast<long>(m));
        }
    }
}

bool CFiller::HasSomethingToExport() const
{
    for (const CNode& node : m_content.nodes)
        if ((node.type == eNodeMesh && !node.geom.faces.empty()) || node.type == eNodeLight ||
            node.type == eNodeCamera)
            return true;
    return false;
}
} // namespace

SAssimpFillResult FillContentFromAssimp(const aiScene& scene, const SAssimpFillSettings& settings,
                                        SContent& content)
{
    SAssimpFillResult result;
    try
    {
        CFiller filler(scene, settings, content, result);
        result.ok = filler.Run();
    }
    catch (const std::bad_alloc&)
    {
        result.ok = false;
        result.error = "out of memory while reading the scene";
    }
    if (!result.ok)
    {
        content = SContent();
        result.textures.clear();
        result.sources.clear();
    }
    return result;
}
