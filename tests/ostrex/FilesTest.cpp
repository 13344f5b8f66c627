// The scene filler over every model of the Assimp test collection and the sample: each one the
// importer loads is filled without a crash into content that the builder builds (or is refused as
// holding nothing to export), and the world matrices of still scenes are the importer's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "AssimpContent.h"
#include "Log.h"
#include "TVO.h"
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

// Counts the files filled and the still ones among them.
void CheckFile(const std::string& file, int& exported, int& still)
{
    Assimp::Importer importer;
    const aiScene* scene = LoadLikeTheCommandLine(importer, file);
    if (!scene)
        return;
    CRecordingLogSink log;
    SContent content;
    const SAssimpFillResult fill = FillContentFromAssimp(*scene, SAssimpFillSettings(), content);
    if (!fill.ok)
    {
        ASSERT_EQ(fill.error.rfind("nothing to export", 0), 0u) << file << ": " << fill.error;
        return;
    }
    ++exported;
    COptions options;
    options.SetFromString("bExportAnimations=1\nbExportSkin=1\n");
    CTVO builder; // content it cannot take fails here (an index out of range shows to the sanitizers)
    EXPECT_TRUE(builder.Process(content, options)) << file;
    if (fill.animation < 0)
    {
        CheckWorlds(content, fill, file);
        ++still;
    }
}
} // namespace

TEST(AssimpFiles, EveryLoadableModelFillsBuildsAndMatchesTheImporter)
{
    std::vector<std::string> files = ModelFiles();
    ASSERT_GT(files.size(), 300u)
        << "the Assimp test models are missing (scripts/install-deps installs them)";
    files.push_back(std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf");
    int exported = 0, still = 0;
    for (const std::string& file : files)
    {
        CheckFile(file, exported, still);
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(exported, 200);
    EXPECT_GT(still, 150);
}
