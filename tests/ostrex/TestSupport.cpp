#include "TestSupport.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

// The importer library of Debian 12 leaks memory while reading some files (AMF, IRR, LWOB, OpenGEX,
// RAW test models leak even in a program that only calls ReadFile). Leaks allocated inside it are
// its own; the leak checker is told to leave them out, everything else is still reported.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libassimp.so\n";
}

namespace
{
template <class T> void Append(T**& array, unsigned& count, T* item)
{
    T** grown = new T*[count + 1];
    for (unsigned i = 0; i < count; ++i)
        grown[i] = array[i];
    grown[count] = item;
    delete[] array;
    array = grown;
    ++count;
}

char* Copy(const std::string& s)
{
    char* p = static_cast<char*>(std::malloc(s.size() + 1));
    std::memcpy(p, s.c_str(), s.size() + 1);
    return p;
}

template <class T> T* CopyArray(const T* data, size_t count)
{
    T* p = static_cast<T*>(std::malloc(count * sizeof(T)));
    std::memcpy(p, data, count * sizeof(T));
    return p;
}
} // namespace

CSceneKit::CSceneKit() : m_scene(new aiScene)
{
    m_scene->mRootNode = new aiNode("Root");
}

aiNode* CSceneKit::AddNode(aiNode* parent, const std::string& name, const aiMatrix4x4& local)
{
    aiNode* node = new aiNode(name);
    node->mTransformation = local;
    node->mParent = parent;
    Append(parent->mChildren, parent->mNumChildren, node);
    return node;
}

unsigned CSceneKit::AddMesh(std::vector<aiVector3D> vertices, std::vector<std::vector<unsigned>> faces,
                            unsigned material)
{
    aiMesh* mesh = new aiMesh;
    mesh->mNumVertices = static_cast<unsigned>(vertices.size());
    mesh->mVertices = new aiVector3D[vertices.size()];
    std::copy(vertices.begin(), vertices.end(), mesh->mVertices);
    mesh->mNumFaces = static_cast<unsigned>(faces.size());
    mesh->mFaces = new aiFace[faces.size()];
    for (size_t f = 0; f < faces.size(); ++f)
    {
        mesh->mFaces[f].mNumIndices = static_cast<unsigned>(faces[f].size());
        mesh->mFaces[f].mIndices = new unsigned[faces[f].size()];
        std::copy(faces[f].begin(), faces[f].end(), mesh->mFaces[f].mIndices);
    }
    mesh->mMaterialIndex = material;
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    Append(m_scene->mMeshes, m_scene->mNumMeshes, mesh);
    return m_scene->mNumMeshes - 1;
}

void CSceneKit::AttachMesh(aiNode* node, unsigned mesh)
{
    unsigned* grown = new unsigned[node->mNumMeshes + 1];
    for (unsigned i = 0; i < node->mNumMeshes; ++i)
        grown[i] = node->mMeshes[i];
    grown[node->mNumMeshes++] = mesh;
    delete[] node->mMeshes;
    node->mMeshes = grown;
}

unsigned CSceneKit::AddMaterial(aiMaterial* material)
{
    Append(m_scene->mMaterials, m_scene->mNumMaterials, material);
    return m_scene->mNumMaterials - 1;
}

aiLight& CSceneKit::AddLight(const std::string& node, aiLightSourceType type)
{
    aiLight* light = new aiLight;
    light->mName = node;
    light->mType = type;
    Append(m_scene->mLights, m_scene->mNumLights, light);
    return *light;
}

aiCamera& CSceneKit::AddCamera(const std::string& node)
{
    aiCamera* camera = new aiCamera;
    camera->mName = node;
    Append(m_scene->mCameras, m_scene->mNumCameras, camera);
    return *camera;
}

aiAnimation& CSceneKit::AddAnimation(const std::string& name, double duration, double ticksPerSecond)
{
    aiAnimation* anim = new aiAnimation;
    anim->mName = name;
    anim->mDuration = duration;
    anim->mTicksPerSecond = ticksPerSecond;
    Append(m_scene->mAnimations, m_scene->mNumAnimations, anim);
    return *anim;
}

aiNodeAnim& CSceneKit::AddChannel(aiAnimation& anim, const std::string& node)
{
    aiNodeAnim* channel = new aiNodeAnim;
    channel->mNodeName = node;
    Append(anim.mChannels, anim.mNumChannels, channel);
    return *channel;
}

void CSceneKit::AddBone(unsigned mesh, const std::string& node, const aiMatrix4x4& offset,
                        std::vector<std::pair<unsigned, float>> weights)
{
    aiBone* bone = new aiBone;
    bone->mName = node;
    bone->mOffsetMatrix = offset;
    bone->mNumWeights = static_cast<unsigned>(weights.size());
    bone->mWeights = new aiVertexWeight[weights.size()];
    for (size_t i = 0; i < weights.size(); ++i)
        bone->mWeights[i] = aiVertexWeight(weights[i].first, weights[i].second);
    aiMesh& m = Mesh(mesh);
    Append(m.mBones, m.mNumBones, bone);
}

aiMatrix4x4 GlobalOf(const aiNode* node)
{
    aiMatrix4x4 global = node->mTransformation;
    for (const aiNode* p = node->mParent; p; p = p->mParent)
        global = p->mTransformation * global;
    return global;
}

QMXTMATRIXf RowLayout(const aiMatrix4x4& m)
{
    QMXTMATRIXf out;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            out(r, c) = m[c][r];
    return out;
}

const aiNode* FindNode(const aiScene& scene, const std::string& name)
{
    return scene.mRootNode ? scene.mRootNode->FindNode(name.c_str()) : nullptr;
}

CContentModel::CContentModel(const SContent& content)
{
    const int count = static_cast<int>(content.nodes.size());
    std::vector<int> order;
    for (int pass = 0; pass < 4; ++pass)
        for (int i = 0; i < count; ++i)
        {
            const int t = content.nodes[i].type;
            const int want = t == eNodeMesh ? 0 : t == eNodeLight ? 1 : t == eNodeCamera ? 2 : 3;
            if (want == pass)
                order.push_back(i);
        }
    m_modelIndex.assign(count, -1);
    for (int i = 0; i < count; ++i)
        m_modelIndex[order[i]] = i;
    for (int i : order)
    {
        if (content.nodes[i].type == eNodeLight)
            m_lights.push_back(i);
        if (content.nodes[i].type == eNodeCamera)
            m_cameras.push_back(i);
    }

    const uint32_t frames = static_cast<uint32_t>(content.FrameCount());
    m_model.nNumNode = count;
    m_model.nNumFrame = frames;
    m_model.nFPS = content.info.fps;
    m_model.pNode = static_cast<STVONode*>(std::calloc(count ? count : 1, sizeof(STVONode)));
    m_model.nNumLight = static_cast<uint32_t>(m_lights.size());
    m_model.pLight = static_cast<STVOLight*>(std::calloc(m_lights.size() + 1, sizeof(STVOLight)));
    m_model.nNumCamera = static_cast<uint32_t>(m_cameras.size());
    m_model.pCamera = static_cast<STVOCamera*>(std::calloc(m_cameras.size() + 1, sizeof(STVOCamera)));
    for (int m = 0; m < count; ++m)
    {
        const CNode& src = content.nodes[order[m]];
        STVONode& n = m_model.pNode[m];
        if (src.type == eNodeMesh)
            ++m_model.nNumMeshNode;
        n.pszName = Copy(src.name);
        n.nIdxParent = src.parent >= 0 ? m_modelIndex[src.parent] : -1;
        n.nIdxMaterial = -1;
        n.nIdx = -1;
        const bool animated = frames > 0 && src.frames.size() >= frames;
        std::vector<float> pos, rot, scale;
        const size_t keys = animated ? frames : 1;
        for (size_t f = 0; f < keys; ++f)
        {
            const SNodeTM& tm = animated ? src.frames[f] : src.tm;
            pos.insert(pos.end(), tm.pos, tm.pos + 3);
            rot.insert(rot.end(), tm.rot, tm.rot + 4);
            scale.insert(scale.end(), tm.scale, tm.scale + 3);
            scale.insert(scale.end(), tm.stretch, tm.stretch + 4);
        }
        n.pfAnimPosition = CopyArray(pos.data(), pos.size());
        n.pfAnimRotation = CopyArray(rot.data(), rot.size());
        n.pfAnimScale = CopyArray(scale.data(), scale.size());
        if (animated)
            n.nAnimationFlags = eTVOHasPositionAnimation | eTVOHasRotationAnimation | eTVOHasScaleAnimation;
    }
    for (size_t l = 0; l < m_lights.size(); ++l)
    {
        const SLightData& src = content.nodes[m_lights[l]].light;
        STVOLight& light = m_model.pLight[l];
        light.nIdxTarget = src.target >= 0 ? m_modelIndex[src.target] : -1;
        std::memcpy(light.pfColour, src.colour, sizeof light.pfColour);
        light.eType = static_cast<uint32_t>(src.lightType);
        light.fFalloffAngle = src.falloffAngle;
        m_model.pNode[m_modelIndex[m_lights[l]]].nIdx = static_cast<int32_t>(l);
    }
    for (size_t c = 0; c < m_cameras.size(); ++c)
    {
        const SCameraData& src = content.nodes[m_cameras[c]].camera;
        STVOCamera& camera = m_model.pCamera[c];
        camera.nIdxTarget = src.target >= 0 ? m_modelIndex[src.target] : -1;
        camera.fFOV = src.fov;
        camera.fNear = src.nearPlane;
        camera.fFar = src.farPlane;
        if (frames > 0 && src.fovFrames.size() >= frames)
            camera.pfAnimFOV = CopyArray(src.fovFrames.data(), frames);
        m_model.pNode[m_modelIndex[m_cameras[c]]].nIdx = static_cast<int32_t>(c);
    }
    m_model.InitImpl();
}

QMXTMATRIXf CContentModel::World(int contentIndex, float frame)
{
    m_model.SetFrame(frame);
    return m_model.GetWorldMatrix(Node(contentIndex));
}

int CContentModel::LightNumber(int contentIndex) const
{
    for (size_t i = 0; i < m_lights.size(); ++i)
        if (m_lights[i] == contentIndex)
            return static_cast<int>(i);
    return -1;
}

int CContentModel::CameraNumber(int contentIndex) const
{
    for (size_t i = 0; i < m_cameras.size(); ++i)
        if (m_cameras[i] == contentIndex)
            return static_cast<int>(i);
    return -1;
}

const aiScene* LoadLikeTheCommandLine(Assimp::Importer& importer, const std::string& path)
{
    return importer.ReadFile(path,
                             aiProcess_Triangulate | aiProcess_SortByPType | aiProcess_ValidateDataStructure);
}

int ContentIndex(const SContent& content, const std::string& name)
{
    for (size_t i = 0; i < content.nodes.size(); ++i)
        if (content.nodes[i].name == name)
            return static_cast<int>(i);
    return -1;
}

namespace
{
void GrowSize(const aiScene& scene, const aiNode* node, const aiMatrix4x4& parent, float& size)
{
    const aiMatrix4x4 global = parent * node->mTransformation;
    for (unsigned i = 0; i < node->mNumMeshes; ++i)
    {
        const aiMesh* mesh = scene.mMeshes[node->mMeshes[i]];
        for (unsigned v = 0; v < mesh->mNumVertices; ++v)
        {
            const float d = (global * mesh->mVertices[v]).Length();
            if (std::isfinite(d) && d > size)
                size = d;
        }
    }
    for (unsigned c = 0; c < node->mNumChildren; ++c)
        GrowSize(scene, node->mChildren[c], global, size);
}
} // namespace

float SceneSize(const aiScene& scene)
{
    float size = 0.0f;
    if (scene.mRootNode)
        GrowSize(scene, scene.mRootNode, aiMatrix4x4(), size);
    return size > 0.0f ? size : 1.0f;
}

namespace
{
// Value of a key track at time t: clamped outside, blended between keys.
template <class Key, class Value, class Blend>
Value AtTime(const std::vector<Key>& keys, double t, const Value& fallback, Blend blend)
{
    if (keys.empty())
        return fallback;
    if (t <= keys[0].mTime)
        return keys[0].mValue;
    for (size_t i = 1; i < keys.size(); ++i)
        if (t < keys[i].mTime)
            return blend(keys[i - 1].mValue, keys[i].mValue,
                         static_cast<float>((t - keys[i - 1].mTime) / (keys[i].mTime - keys[i - 1].mTime)));
    return keys.back().mValue;
}
} // namespace

CImporterPose::CImporterPose(const aiScene& scene, const aiAnimation* anim) : m_scene(scene)
{
    auto earlier = [](const auto& a, const auto& b) { return a.mTime < b.mTime; };
    for (unsigned c = 0; anim && c < anim->mNumChannels; ++c)
    {
        const aiNodeAnim& ch = *anim->mChannels[c];
        const aiNode* n = FindNode(scene, ch.mNodeName.C_Str());
        if (!n || m_channels.count(n)) // the first channel of a node wins
            continue;
        SKeys& keys = m_channels[n];
        keys.pos.assign(ch.mPositionKeys, ch.mPositionKeys + ch.mNumPositionKeys);
        keys.scale.assign(ch.mScalingKeys, ch.mScalingKeys + ch.mNumScalingKeys);
        keys.rot.assign(ch.mRotationKeys, ch.mRotationKeys + ch.mNumRotationKeys);
        std::stable_sort(keys.pos.begin(), keys.pos.end(), earlier);
        std::stable_sort(keys.scale.begin(), keys.scale.end(), earlier);
        std::stable_sort(keys.rot.begin(), keys.rot.end(), earlier);
    }
}

void CImporterPose::At(double t)
{
    m_globals.clear();
    Walk(m_scene.mRootNode, aiMatrix4x4(), t);
}

const aiMatrix4x4& CImporterPose::Global(const std::string& name) const
{
    return Global(FindNode(m_scene, name));
}

void CImporterPose::Walk(const aiNode* node, const aiMatrix4x4& parent, double t)
{
    aiMatrix4x4 local = node->mTransformation;
    const auto it = m_channels.find(node);
    if (it != m_channels.end())
    {
        aiVector3D s, p;
        aiQuaternion r;
        node->mTransformation.Decompose(s, r, p);
        auto lerp = [](const aiVector3D& a, const aiVector3D& b, float f) { return a + (b - a) * f; };
        auto slerp = [](const aiQuaternion& a, const aiQuaternion& b, float f)
        {
            aiQuaternion out;
            aiQuaternion::Interpolate(out, a, b, f);
            return out.Normalize();
        };
        p = AtTime(it->second.pos, t, p, lerp);
        r = AtTime(it->second.rot, t, r, slerp);
        s = AtTime(it->second.scale, t, s, lerp);
        aiMatrix4x4 translation, scaling;
        aiMatrix4x4::Translation(p, translation);
        aiMatrix4x4::Scaling(s, scaling);
        local = translation * aiMatrix4x4(r.GetMatrix()) * scaling;
    }
    const aiMatrix4x4 global = parent * local;
    m_globals[node] = global;
    for (unsigned i = 0; i < node->mNumChildren; ++i)
        Walk(node->mChildren[i], global, t);
}

std::vector<aiVector3D> ImporterCorners(const aiScene& scene, const aiNode& node, const CImporterPose& pose)
{
    std::vector<aiVector3D> corners;
    const aiMatrix4x4& global = pose.Global(&node);
    for (unsigned i = 0; i < node.mNumMeshes; ++i)
    {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
        std::vector<aiVector3D> world(mesh.mNumVertices, aiVector3D());
        std::vector<float> total(mesh.mNumVertices, 0.0f);
        std::vector<int> influences(mesh.mNumVertices, 0);
        bool bonesFound = true;
        for (unsigned b = 0; b < mesh.mNumBones; ++b)
            bonesFound = bonesFound && FindNode(scene, mesh.mBones[b]->mName.C_Str());
        for (unsigned b = 0; bonesFound && b < mesh.mNumBones; ++b)
        {
            const aiBone& bone = *mesh.mBones[b];
            const aiMatrix4x4 m = pose.Global(bone.mName.C_Str()) * bone.mOffsetMatrix;
            for (unsigned w = 0; w < bone.mNumWeights; ++w)
            {
                const aiVertexWeight& vw = bone.mWeights[w];
                if (!(vw.mWeight > 0.0f))
                    continue;
                world[vw.mVertexId] += (m * mesh.mVertices[vw.mVertexId]) * vw.mWeight;
                total[vw.mVertexId] += vw.mWeight;
                ++influences[vw.mVertexId];
            }
        }
        for (unsigned f = 0; f < mesh.mNumFaces; ++f)
        {
            const aiFace& face = mesh.mFaces[f];
            if (face.mNumIndices != 3)
                continue;
            bool finite = true;
            for (int c = 0; c < 3; ++c)
            {
                const aiVector3D& v = mesh.mVertices[face.mIndices[c]];
                finite = finite && std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
            }
            if (!finite)
                continue;
            for (int c = 0; c < 3; ++c)
            {
                const unsigned v = face.mIndices[c];
                if (influences[v] > 4)
                    corners.push_back(aiVector3D(NAN, NAN, NAN));
                else if (total[v] > 0.0f)
                    corners.push_back(world[v] / total[v]);
                else
                    corners.push_back(global * mesh.mVertices[v]);
            }
        }
    }
    return corners;
}

double ImporterTime(const aiAnimation& anim, int frame, int fps)
{
    double last = anim.mDuration;
    for (unsigned c = 0; c < anim.mNumChannels; ++c)
    {
        const aiNodeAnim* ch = anim.mChannels[c];
        for (unsigned k = 0; k < ch->mNumPositionKeys; ++k)
            last = std::max(last, ch->mPositionKeys[k].mTime);
        for (unsigned k = 0; k < ch->mNumRotationKeys; ++k)
            last = std::max(last, ch->mRotationKeys[k].mTime);
        for (unsigned k = 0; k < ch->mNumScalingKeys; ++k)
            last = std::max(last, ch->mScalingKeys[k].mTime);
    }
    const double tps = anim.mTicksPerSecond > 0 ? anim.mTicksPerSecond : 25.0;
    return std::min(frame * tps / fps, last);
}

namespace
{
aiVector3D Vec(const QMXTVECTOR3f& v)
{
    return aiVector3D(v.x, v.y, v.z);
}

std::string Differs(const std::string& what, const aiVector3D& got, const aiVector3D& want)
{
    std::ostringstream s;
    s << what << ": (" << got.x << " " << got.y << " " << got.z << "), the importer's (" << want.x << " "
      << want.y << " " << want.z << ")";
    return s.str();
}
// The first of the importer's lights or cameras with the name, or null.
template <typename T> const T* FindNamed(T* const* items, unsigned count, const std::string& name)
{
    for (unsigned k = 0; k < count; ++k)
        if (name == items[k]->mName.C_Str())
            return items[k];
    return nullptr;
}
} // namespace

std::string CompareLight(const aiScene& scene, const CImporterPose& pose, CQMXTModelTVO& model,
                         uint32_t light, const std::string& name, float size, bool pointDirections)
{
    const aiLight* src = FindNamed(scene.mLights, scene.mNumLights, name);
    if (!src)
        return "the importer has no light '" + name + "'";
    const aiMatrix4x4& g = pose.Global(name);
    QMXTVECTOR3f pos, dir;
    model.GetLight(pos, dir, light);
    const aiVector3D wantPos = g * src->mPosition;
    if (!((Vec(pos) - wantPos).Length() < 1e-4f * size))
        return Differs("light '" + name + "' position", Vec(pos), wantPos);
    const aiVector3D wantDir = (aiMatrix3x3(g) * src->mDirection).Normalize();
    const bool directed =
        src->mDirection.Length() > 0 && (pointDirections || src->mType != aiLightSource_POINT);
    if (directed && !(Vec(dir).Normalize() * wantDir > 0.99999f))
        return Differs("light '" + name + "' direction", Vec(dir).Normalize(), wantDir);
    return "";
}

std::string CompareCamera(const aiScene& scene, const CImporterPose& pose, CQMXTModelTVO& model,
                          uint32_t camera, const std::string& name, float size)
{
    const aiCamera* src = FindNamed(scene.mCameras, scene.mNumCameras, name);
    if (!src)
        return "the importer has no camera '" + name + "'";
    const aiMatrix4x4& g = pose.Global(name);
    QMXTVECTOR3f from, to, up;
    model.GetCamera(from, to, up, camera);
    // glTF 2 puts a camera at its node's origin; the importer repeats the node's translation as the
    // camera's position relative to that node, which the filler leaves out.
    aiString format;
    const bool gltf2 = scene.mMetaData && scene.mMetaData->Get("SourceAsset_Format", format) &&
                       std::string(format.C_Str()) == "glTF2 Importer";
    const aiVector3D wantFrom = g * (gltf2 ? aiVector3D(0, 0, 0) : src->mPosition);
    if (!((Vec(from) - wantFrom).Length() < 1e-4f * size))
        return Differs("camera '" + name + "' position", Vec(from), wantFrom);
    const aiVector3D view = (Vec(to) - Vec(from)).Normalize();
    const aiVector3D wantView = (aiMatrix3x3(g) * src->mLookAt).Normalize();
    if (!(view * wantView > 0.99999f))
        return Differs("camera '" + name + "' view", view, wantView);
    return "";
}

void ExpectMatrixNear(const QMXTMATRIXf& got, const QMXTMATRIXf& want, float tol, const std::string& what)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(got[i], want[i], tol) << what << ", element " << i;
}

void ExpectVecNear(const QMXTVECTOR3f& got, const aiVector3D& want, float tol, const std::string& what)
{
    EXPECT_NEAR(got.x, want.x, tol) << what;
    EXPECT_NEAR(got.y, want.y, tol) << what;
    EXPECT_NEAR(got.z, want.z, tol) << what;
}

