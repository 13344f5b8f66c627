// The scene filler over every model of the Assimp test collection: each one the importer loads is
// filled without a crash into consistent content whose world matrices, triangle corners (skinning
// applied), lights and cameras match the importer's at frame 0, and whose node matrices match the
// importer's animation at later frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>

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

// World matrices of every node with a source (lights and cameras aside) at a frame against the
// importer's at the pose's time.
void CheckWorlds(const SContent& content, const SAssimpFillResult& fill, CContentModel& model,
                 const CImporterPose& ref, int frame, const std::string& file)
{
    for (size_t i = 0; i < content.nodes.size(); ++i)
    {
        const CNode& n = content.nodes[i];
        if (!fill.sources[i] || n.type == eNodeLight || n.type == eNodeCamera)
            continue;
        const QMXTMATRIXf want = RowLayout(ref.Global(fill.sources[i]));
        const QMXTMATRIXf got = model.World(static_cast<int>(i), static_cast<float>(frame));
        for (int e = 0; e < 16; ++e)
            ASSERT_NEAR(got[e], want[e], 1e-4f * (1.0f + MaxAbs(want)))
                << file << ": '" << n.name << "' frame " << frame << " element " << e;
    }
}

// Frame 0: world matrices, triangle corners (skinning applied), lights and cameras.
void CheckFrameZero(const aiScene& scene, const SContent& content, const SAssimpFillResult& fill,
                    CContentModel& model, CImporterPose& ref, float size, const std::string& file,
                    SStats& stats)
{
    ref.At(0.0);
    CheckWorlds(content, fill, model, ref, 0, file);
    for (size_t i = 0; i < content.nodes.size() && !::testing::Test::HasFatalFailure(); ++i)
    {
        const CNode& n = content.nodes[i];
        const int index = static_cast<int>(i);
        const std::string where = file + ": '" + n.name + "'";
        if (n.type == eNodeMesh && fill.sources[i])
        {
            const std::vector<aiVector3D> want = ImporterCorners(scene, *fill.sources[i], ref);
            ASSERT_EQ(want.size(), 3 * n.geom.faces.size()) << where;
            const QMXTMATRIXf world = model.World(index);
            for (size_t c = 0; c < want.size(); ++c)
            {
                if (std::isnan(want[c].x))
                    continue;
                QMXTVECTOR3f p;
                QMXTTransform(p, n.geom.positions[n.geom.faces[c / 3].pos[c % 3]], world);
                const double d = (aiVector3D(p.x, p.y, p.z) - want[c]).Length() / size;
                stats.worstCorner = std::max(stats.worstCorner, d);
                ASSERT_LT(d, 1e-4) << where << " corner " << c;
                ++stats.corners;
                stats.skinnedCorners += n.modifiers.empty() ? 0 : 1;
            }
        }
        if (n.type == eNodeLight)
        {
            const uint32_t light = static_cast<uint32_t>(model.LightNumber(index));
            ASSERT_EQ(CompareLight(scene, ref, model.Model(), light, n.name, size, true), "") << file;
            ++stats.lights;
        }
        if (n.type == eNodeCamera)
        {
            const uint32_t camera = static_cast<uint32_t>(model.CameraNumber(index));
            ASSERT_EQ(CompareCamera(scene, ref, model.Model(), camera, n.name, size), "") << file;
            ++stats.cameras;
        }
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
    CImporterPose ref(*scene, fill.animation >= 0 ? scene->mAnimations[fill.animation] : nullptr);
    CheckFrameZero(*scene, content, fill, model, ref, SceneSize(*scene), file, stats);
    const int count = content.FrameCount();
    if (::testing::Test::HasFatalFailure() || fill.animation < 0 || count <= 3)
        return;
    // Later frames: node world matrices against the importer's animation at the frame's time.
    for (int frame : {count / 3, (2 * count) / 3, count - 1})
    {
        ref.At(ImporterTime(*scene->mAnimations[fill.animation], frame, content.info.fps));
        CheckWorlds(content, fill, model, ref, frame, file);
        ++stats.animatedChecks;
    }
}
} // namespace

TEST(AssimpFiles, EveryLoadableModelFillsAndMatchesTheImporter)
{
    const std::vector<std::string> files = ModelFiles();
    ASSERT_GT(files.size(), 300u)
        << "the Assimp test models are missing (scripts/install-deps installs them)";
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
