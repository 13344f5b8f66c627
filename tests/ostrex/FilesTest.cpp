// The scene filler over every model of the Assimp test collection: each one the importer loads is
// filled without a crash into consistent content whose world matrices, triangle corners (skinning
// applied), lights and cameras match the importer's at frame 0, and whose node matrices match the
// importer's animation at later frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>

#include "AssimpContent.h"
#include "Log.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

std::vector<std::string> ModelFiles()
{
    std::vector<std::string> files;
    Assimp::Importer importer;
    for (const auto& entry : fs::recursive_directory_iterator(OSTREX_ASSIMP_MODELS))
    {
        const std::string path = entry.path().string();
        if (!entry.is_regular_file() || path.find("/invalid/") != std::string::npos)
            continue;
        if (importer.IsExtensionSupported(entry.path().extension().string()))
            files.push_back(path);
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Reference sampling of the importer's animation, kept apart from the filler's: a linear search.
template <class Key, class Value, class Blend>
Value AtTime(const Key* keys, unsigned count, double t, const Value& fallback, Blend blend)
{
    if (count == 0)
        return fallback;
    if (t <= keys[0].mTime)
        return keys[0].mValue;
    for (unsigned i = 1; i < count; ++i)
        if (t < keys[i].mTime)
            return blend(keys[i - 1].mValue, keys[i].mValue,
                         static_cast<float>((t - keys[i - 1].mTime) / (keys[i].mTime - keys[i - 1].mTime)));
    return keys[count - 1].mValue;
}

// A channel's keys, in time order (some importers deliver them unordered).
struct SKeys
{
    std::vector<aiVectorKey> pos, scale;
    std::vector<aiQuatKey> rot;
    explicit SKeys(const aiNodeAnim& ch)
        : pos(ch.mPositionKeys, ch.mPositionKeys + ch.mNumPositionKeys),
          scale(ch.mScalingKeys, ch.mScalingKeys + ch.mNumScalingKeys),
          rot(ch.mRotationKeys, ch.mRotationKeys + ch.mNumRotationKeys)
    {
        auto earlier = [](const auto& a, const auto& b) { return a.mTime < b.mTime; };
        std::stable_sort(pos.begin(), pos.end(), earlier);
        std::stable_sort(scale.begin(), scale.end(), earlier);
        std::stable_sort(rot.begin(), rot.end(), earlier);
    }
};

aiMatrix4x4 ReferenceLocal(const aiNode* node, const SKeys* ch, double t)
{
    if (!ch)
        return node->mTransformation;
    aiVector3D s, p;
    aiQuaternion r;
    node->mTransformation.Decompose(s, r, p);
    auto lerp = [](const aiVector3D& a, const aiVector3D& b, float f) { return a + (b - a) * f; };
    auto slerp = [](const aiQuaternion& a, const aiQuaternion& b, float f) {
        aiQuaternion out;
        aiQuaternion::Interpolate(out, a, b, f);
        return out.Normalize();
    };
    p = AtTime(ch->pos.data(), static_cast<unsigned>(ch->pos.size()), t, p, lerp);
    r = AtTime(ch->rot.data(), static_cast<unsigned>(ch->rot.size()), t, r, slerp);
    s = AtTime(ch->scale.data(), static_cast<unsigned>(ch->scale.size()), t, s, lerp);
    aiMatrix4x4 translation, scaling;
    aiMatrix4x4::Translation(p, translation);
    aiMatrix4x4::Scaling(s, scaling);
    return translation * aiMatrix4x4(r.GetMatrix()) * scaling;
}

// Global transforms of every node at time t of an animation (a channel drives the first node of
// its name), or of the still scene.
class CReference
{
  public:
    CReference(const aiScene& scene, const aiAnimation* anim) : m_scene(scene)
    {
        for (unsigned c = 0; anim && c < anim->mNumChannels; ++c)
            if (const aiNode* n = FindNode(scene, anim->mChannels[c]->mNodeName.C_Str()))
                if (!m_channels.count(n)) // the first channel of a node wins
                    m_channels.emplace(n, SKeys(*anim->mChannels[c]));
    }
    void At(double t)
    {
        m_globals.clear();
        Walk(m_scene.mRootNode, aiMatrix4x4(), t);
    }
    const aiMatrix4x4& Global(const aiNode* node) const { return m_globals.at(node); }
    const aiMatrix4x4& Global(const std::string& name) const { return Global(FindNode(m_scene, name)); }

  private:
    void Walk(const aiNode* node, const aiMatrix4x4& parent, double t)
    {
        const auto ch = m_channels.find(node);
        const aiMatrix4x4 global = parent * ReferenceLocal(node, ch == m_channels.end() ? nullptr : &ch->second, t);
        m_globals[node] = global;
        for (unsigned i = 0; i < node->mNumChildren; ++i)
            Walk(node->mChildren[i], global, t);
    }

    const aiScene& m_scene;
    std::map<const aiNode*, SKeys> m_channels;
    std::map<const aiNode*, aiMatrix4x4> m_globals;
};

float MaxAbs(const QMXTMATRIXf& m)
{
    float largest = 0.0f;
    for (float f : m.f)
        largest = std::max(largest, std::fabs(f));
    return largest;
}

// Index and list invariants the builder relies on.
void ExpectConsistent(const SContent& c, const std::string& file)
{
    const int nodes = static_cast<int>(c.nodes.size());
    const int materials = static_cast<int>(c.materials.size());
    const size_t frames = static_cast<size_t>(c.FrameCount());
    for (int i = 0; i < nodes; ++i)
    {
        const CNode& n = c.nodes[i];
        const std::string where = file + ": node " + std::to_string(i) + " '" + n.name + "'";
        ASSERT_EQ(n.index, i) << where;
        ASSERT_TRUE(n.parent >= -1 && n.parent < i) << where; // parents come first
        ASSERT_TRUE(n.frames.empty() || n.frames.size() == frames) << where;
        for (float f : n.tm.pos)
            ASSERT_TRUE(std::isfinite(f)) << where;
        const SGeomData& g = n.geom;
        if (n.type == eNodeMesh)
        {
            ASSERT_FALSE(g.faces.empty()) << where;
        }
        for (const SFace& f : g.faces)
            for (int k = 0; k < 3; ++k)
            {
                ASSERT_TRUE(f.pos[k] >= 0 && f.pos[k] < static_cast<int>(g.positions.size())) << where;
                ASSERT_TRUE(f.normal[k] >= 0 && f.normal[k] < static_cast<int>(g.normals.size())) << where;
                ASSERT_LT(f.colour[k], static_cast<int>(g.colours.size())) << where;
                ASSERT_TRUE(f.material >= -1 && f.material < materials) << where;
            }
        ASSERT_LE(g.channels.size(), 8u) << where;
        for (const SMappingChannel& ch : g.channels)
        {
            ASSERT_EQ(ch.faces.size(), g.faces.size()) << where;
            for (const CTriIdx& t : ch.faces)
                for (int idx : t.idx)
                    ASSERT_TRUE(idx >= 0 && idx < static_cast<int>(ch.uvw.size())) << where;
        }
        for (const QMXTVECTOR3f& normal : g.normals)
            ASSERT_NEAR(QMXTMatrixVec3LengthF(normal), 1.0f, 1e-3f) << where;
        for (const SModifier& m : n.modifiers)
        {
            ASSERT_EQ(m.vertices.size(), g.positions.size()) << where;
            for (const SBonedVtx& v : m.vertices)
            {
                ASSERT_TRUE(!v.weights.empty() && v.weights.size() <= 4) << where;
                float total = 0.0f;
                for (const CBoneWeight& w : v.weights)
                {
                    ASSERT_TRUE(w.bone >= 0 && w.bone < nodes) << where;
                    total += w.weight;
                }
                ASSERT_NEAR(total, 1.0f, 1e-4f) << where;
            }
        }
        if (n.type == eNodeCamera)
        {
            ASSERT_TRUE(n.camera.target >= -1 && n.camera.target < nodes) << where;
            ASSERT_TRUE(n.camera.fovFrames.empty() || n.camera.fovFrames.size() == frames) << where;
        }
        if (n.type == eNodeLight)
        {
            ASSERT_TRUE(n.light.target >= -1 && n.light.target < nodes) << where;
        }
    }
}

struct SStats
{
    int loaded = 0, exported = 0, nothing = 0;
    long corners = 0, skinnedCorners = 0, lights = 0, cameras = 0, animatedChecks = 0;
    double worstCorner = 0.0; // relative to the scene's size
};

// The world positions of a node's triangle corners at frame 0 by the importer: its global transform,
// or its skinning (global bone x offset, weighted) for skinned meshes. Corners of vertices with more
// than four influences are marked unusable (NaN), as the content keeps only four.
std::vector<aiVector3D> ReferenceCorners(const aiScene& scene, const aiNode& node, const CReference& ref)
{
    std::vector<aiVector3D> corners;
    const aiMatrix4x4& global = ref.Global(&node);
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
            const aiMatrix4x4 m = ref.Global(bone.mName.C_Str()) * bone.mOffsetMatrix;
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

void CheckFrameZero(const aiScene& scene, const SContent& content, const SAssimpFillResult& fill,
                    CContentModel& model, CReference& ref, float size, const std::string& file, SStats& stats)
{
    ref.At(0.0);
    for (size_t i = 0; i < content.nodes.size(); ++i)
    {
        const CNode& n = content.nodes[i];
        const int index = static_cast<int>(i);
        const std::string where = file + ": '" + n.name + "'";
        if (fill.sources[i])
        {
            const QMXTMATRIXf want = RowLayout(ref.Global(fill.sources[i]));
            const QMXTMATRIXf got = model.World(index);
            for (int e = 0; e < 16 && n.type != eNodeLight && n.type != eNodeCamera; ++e)
            {
                ASSERT_NEAR(got[e], want[e], 1e-4f * (1.0f + MaxAbs(want))) << where << " element " << e;
            }
        }
        if (n.type == eNodeMesh && fill.sources[i])
        {
            const std::vector<aiVector3D> want = ReferenceCorners(scene, *fill.sources[i], ref);
            ASSERT_EQ(want.size(), n.geom.positions.size()) << where;
            const QMXTMATRIXf world = model.World(index);
            for (size_t c = 0; c < want.size(); ++c)
            {
                if (std::isnan(want[c].x))
                    continue;
                QMXTVECTOR3f p;
                QMXTTransform(p, n.geom.positions[c], world);
                const double d = (aiVector3D(p.x, p.y, p.z) - want[c]).Length() / size;
                stats.worstCorner = std::max(stats.worstCorner, d);
                ASSERT_LT(d, 1e-4) << where << " corner " << c;
                ++stats.corners;
                stats.skinnedCorners += n.modifiers.empty() ? 0 : 1;
            }
        }
        if (n.type == eNodeLight)
        {
            const aiLight* light = nullptr;
            for (unsigned l = 0; l < scene.mNumLights && !light; ++l)
                if (n.name == scene.mLights[l]->mName.C_Str())
                    light = scene.mLights[l];
            ASSERT_NE(light, nullptr) << where;
            const aiMatrix4x4& g = ref.Global(n.name);
            QMXTVECTOR3f pos, dir;
            model.Model().GetLight(pos, dir, static_cast<uint32_t>(model.LightNumber(index)));
            const aiVector3D wantPos = g * light->mPosition;
            ASSERT_LT((aiVector3D(pos.x, pos.y, pos.z) - wantPos).Length(), 1e-4f * size) << where;
            const aiVector3D wantDir = (aiMatrix3x3(g) * light->mDirection).Normalize();
            if (light->mDirection.Length() > 0)
            {
                ASSERT_GT(aiVector3D(dir.x, dir.y, dir.z).Normalize() * wantDir, 0.99999f) << where;
            }
            ++stats.lights;
        }
        if (n.type == eNodeCamera)
        {
            const aiCamera* camera = nullptr;
            for (unsigned k = 0; k < scene.mNumCameras && !camera; ++k)
                if (n.name == scene.mCameras[k]->mName.C_Str())
                    camera = scene.mCameras[k];
            ASSERT_NE(camera, nullptr) << where;
            const aiMatrix4x4& g = ref.Global(n.name);
            QMXTVECTOR3f from, to, up;
            model.Model().GetCamera(from, to, up, static_cast<uint32_t>(model.CameraNumber(index)));
            ASSERT_LT((aiVector3D(from.x, from.y, from.z) - g * camera->mPosition).Length(), 1e-4f * size) << where;
            const aiVector3D view = (aiVector3D(to.x, to.y, to.z) - aiVector3D(from.x, from.y, from.z)).Normalize();
            ASSERT_GT(view * (aiMatrix3x3(g) * camera->mLookAt).Normalize(), 0.99999f) << where;
            ++stats.cameras;
        }
    }
}

// Node world matrices at a few later frames against the importer's animation at the frame's time.
void CheckLaterFrames(const aiScene& scene, const SContent& content, const SAssimpFillResult& fill,
                      CContentModel& model, CReference& ref, const std::string& file, SStats& stats)
{
    const aiAnimation& anim = *scene.mAnimations[fill.animation];
    const double tps = anim.mTicksPerSecond > 0 ? anim.mTicksPerSecond : 25.0;
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
    const int count = content.FrameCount();
    for (int frame : {count / 3, (2 * count) / 3, count - 1})
    {
        ref.At(std::min(frame * tps / content.info.fps, last));
        for (size_t i = 0; i < content.nodes.size(); ++i)
        {
            if (!fill.sources[i] || content.nodes[i].type == eNodeLight || content.nodes[i].type == eNodeCamera)
                continue;
            const QMXTMATRIXf want = RowLayout(ref.Global(fill.sources[i]));
            const QMXTMATRIXf got = model.World(static_cast<int>(i), static_cast<float>(frame));
            for (int e = 0; e < 16; ++e)
                ASSERT_NEAR(got[e], want[e], 1e-4f * (1.0f + MaxAbs(want)))
                    << file << ": '" << content.nodes[i].name << "' frame " << frame << " element " << e;
        }
        ++stats.animatedChecks;
    }
}

void CheckFile(const std::string& file, SStats& stats)
{
    Assimp::Importer importer;
    const aiScene* scene = LoadLikeTheCommandLine(importer, file);
    if (!scene)
        return;
    ++stats.loaded;
    CRecordingLogSink log;
    SContent content;
    const SAssimpFillResult fill = FillContentFromAssimp(*scene, SAssimpFillSettings(), content);
    if (!fill.ok)
    {
        ASSERT_EQ(fill.error.rfind("nothing to export", 0), 0u) << file << ": " << fill.error;
        ++stats.nothing;
        return;
    }
    ++stats.exported;
    ExpectConsistent(content, file);
    CContentModel model(content);
    CReference ref(*scene, fill.animation >= 0 ? scene->mAnimations[fill.animation] : nullptr);
    CheckFrameZero(*scene, content, fill, model, ref, SceneSize(*scene), file, stats);
    if (fill.animation >= 0 && content.FrameCount() > 3)
        CheckLaterFrames(*scene, content, fill, model, ref, file, stats);
}
} // namespace

TEST(AssimpFiles, EveryLoadableModelFillsAndMatchesTheImporter)
{
    const std::vector<std::string> files = ModelFiles();
    ASSERT_GT(files.size(), 300u) << "the Assimp test models are missing (scripts/install-deps installs them)";
    SStats stats;
    for (const std::string& file : files)
    {
        CheckFile(file, stats);
        if (HasFatalFailure())
            return;
    }
    std::cout << "[ models   ] " << files.size() << " files, " << stats.loaded << " loaded by Assimp, "
              << stats.exported << " filled, " << stats.nothing << " with nothing to export\n"
              << "[ checked  ] " << stats.corners << " corners (" << stats.skinnedCorners << " skinned), "
              << stats.lights << " lights, " << stats.cameras << " cameras, " << stats.animatedChecks
              << " animated frames; worst corner error " << stats.worstCorner << " of the scene size\n";
    EXPECT_GT(stats.exported, 200);
    EXPECT_GT(stats.skinnedCorners, 0);
    EXPECT_GT(stats.animatedChecks, 0);
    RecordProperty("models_filled", stats.exported);
}
