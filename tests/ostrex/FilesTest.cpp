// The scene filler over every model of the Assimp test collection and the sample: each one the
// importer loads is filled without a crash into consistent content (or refused as holding nothing to
// export), and the world matrices of still scenes are the importer's.
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

bool Within(int value, int end)
{
    return value >= 0 && value < end;
}

// Index and list invariants the builder relies on.
void ExpectConsistent(const SContent& c, const std::string& file)
{
    const int nodes = static_cast<int>(c.nodes.size());
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
        ASSERT_TRUE(n.type != eNodeMesh || !g.faces.empty()) << where;
        for (const SFace& f : g.faces)
            for (int k = 0; k < 3; ++k)
            {
                ASSERT_TRUE(Within(f.pos[k], static_cast<int>(g.positions.size()))) << where;
                ASSERT_TRUE(Within(f.normal[k], static_cast<int>(g.normals.size()))) << where;
                ASSERT_LT(f.colour[k], static_cast<int>(g.colours.size())) << where;
                ASSERT_TRUE(Within(f.material + 1, static_cast<int>(c.materials.size()) + 1)) << where;
            }
        ASSERT_LE(g.channels.size(), 8u) << where;
        for (const SMappingChannel& ch : g.channels)
        {
            ASSERT_EQ(ch.faces.size(), g.faces.size()) << where;
            for (const CTriIdx& t : ch.faces)
                for (int idx : t.idx)
                    ASSERT_TRUE(Within(idx, static_cast<int>(ch.uvw.size()))) << where;
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
                    ASSERT_TRUE(Within(w.bone, nodes)) << where;
                    total += w.weight;
                }
                ASSERT_NEAR(total, 1.0f, 1e-4f) << where;
            }
        }
        const int target = n.type == eNodeCamera  ? n.camera.target
                           : n.type == eNodeLight ? n.light.target
                                                  : -1;
        ASSERT_TRUE(Within(target + 1, nodes + 1)) << where;
        ASSERT_TRUE(n.type != eNodeCamera || n.camera.fovFrames.empty() ||
                    n.camera.fovFrames.size() == frames)
            << where;
    }
}

struct SStats
{
    int loaded = 0, exported = 0, nothing = 0, still = 0;
};

// Still scenes: world matrices of every node with a source (lights and cameras aside) against the
// importer's global transforms.
void CheckWorlds(const SContent& content, const SAssimpFillResult& fill, const std::string& file)
{
    for (size_t i = 0; i < content.nodes.size(); ++i)
    {
        const CNode& n = content.nodes[i];
        if (!fill.sources[i] || n.type == eNodeLight || n.type == eNodeCamera)
            continue;
        const QMXTMATRIXf want = RowLayout(GlobalOf(fill.sources[i]));
        const float largest = std::fabs(*std::max_element(
            want.f, want.f + 16, [](float a, float b) { return std::fabs(a) < std::fabs(b); }));
        const QMXTMATRIXf got = ContentWorld(content, static_cast<int>(i));
        for (int e = 0; e < 16; ++e)
            ASSERT_NEAR(got[e], want[e], 1e-4f * (1.0f + largest))
                << file << ": '" << n.name << "' element " << e;
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
    if (fill.animation < 0 && !::testing::Test::HasFatalFailure())
    {
        CheckWorlds(content, fill, file);
        ++stats.still;
    }
}
} // namespace

TEST(AssimpFiles, EveryLoadableModelFillsAndMatchesTheImporter)
{
    std::vector<std::string> files = ModelFiles();
    ASSERT_GT(files.size(), 300u)
        << "the Assimp test models are missing (scripts/install-deps installs them)";
    files.push_back(std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf");
    SStats stats;
    for (const std::string& file : files)
    {
        CheckFile(file, stats);
        if (HasFatalFailure())
            return;
    }
    std::cout << "[ models   ] " << files.size() << " files, " << stats.loaded << " loaded by Assimp, "
              << stats.exported << " filled (" << stats.still
              << " still ones matched the importer's world matrices), " << stats.nothing
              << " with nothing to export\n";
    EXPECT_GT(stats.exported, 200);
    EXPECT_GT(stats.still, 150);
}
