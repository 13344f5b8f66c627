// ostrex in build pipelines: the dependency file, the JSON report (against the keys the manual
// documents and the file written), --strict, and batches of scenes.
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <algorithm>
#include <regex>
#include <set>

#include "DependencyFile.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";
const std::string kBox = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/BoxTextured-glTF/";

class Pipeline : public ::testing::Test
{
  protected:
    SRun Run(const std::vector<std::string>& args) { return RunOstrex(m_dir, args); }
    CTempDir m_work;
    const std::string m_dir = m_work.Path();
};

QJsonObject Json(const std::string& text)
{
    return QJsonDocument::fromJson(QByteArray(text.data(), static_cast<int>(text.size()))).object();
}

// Every key of every object in a JSON text (a key follows '{' or ',', a string's quotes are escaped).
std::set<std::string> Keys(const std::string& json)
{
    std::set<std::string> keys;
    const std::regex key("[{,]\\s*\"(\\w+)\":");
    for (std::sregex_iterator it(json.begin(), json.end(), key), end; it != end; ++it)
        keys.insert((*it)[1]);
    return keys;
}

} // namespace

// The depfile names the output and, escaped, the scene, its buffer, its texture and the options
// file, even where the names hold spaces, '#' and non-ASCII letters; a texture URI is decoded.
TEST_F(Pipeline, DepfileNamesEverythingTheExportRead)
{
    const std::string models = m_dir + "/models ü";
    fs::create_directory(models);
    fs::copy_file(kBox + "BoxTextured0.bin", models + "/BoxTextured0.bin");
    fs::copy_file(kBox + "CesiumLogoFlat.png", models + "/logo ü.png");
    std::string gltf = ReadAll(kBox + "BoxTextured.gltf"); // glTF names files by URI: percent-encoded
    gltf.replace(gltf.find("CesiumLogoFlat.png"), 18, "logo%20%C3%BC.png");
    std::ofstream(models + "/BoxTextured.gltf") << gltf;
    std::ofstream(m_dir + "/opts #1.txt") << "bExportMappingChannels=1\n";
    const SRun run =
        Run({models + "/BoxTextured.gltf", "out ü.tvo", "--config", "opts #1.txt", "--depfile", "out ü.d"});
    ASSERT_EQ(run.code, 0) << run.err;
    std::string dir;
    for (char c : m_dir)
        dir += c == ' ' ? std::string("\\ ") : std::string(1, c);
    EXPECT_EQ(ReadAll(m_dir + "/out ü.d"),
              "out\\ ü.tvo: \\\n  " + dir + "/models\\ ü/BoxTextured.gltf \\\n  " + dir +
                  "/models\\ ü/BoxTextured0.bin \\\n  " + dir + "/models\\ ü/logo\\ ü.png \\\n  " + dir +
                  "/opts\\ \\#1.txt\n");
    CQMXTModelTVO scene;
    ASSERT_EQ(scene.ReadFromFile((m_dir + "/out ü.tvo").c_str()), 0);
    ASSERT_EQ(scene.nNumTexture, 1u);
    EXPECT_STREQ(scene.pTexture[0].pszName, "logo ü.png");

    std::string escaped;
    ASSERT_TRUE(EscapeDependencyPath("a$b\\ c\\d", escaped));
    EXPECT_EQ(escaped, "a$$b\\\\\\ c\\d");
    EXPECT_FALSE(EscapeDependencyPath("line\nbreak", escaped));
}

// The report carries exactly the keys docs/pipelines.md documents, the counts of the file written,
// and position errors within what the file's compact type and unpack matrix allow.
TEST_F(Pipeline, ReportMatchesTheManualAndTheFile)
{
    const SRun run = Run({kSample, "byte.tvo", "--report-json", "-", "--set", "sVcOptPos.eType=13", "--set",
                          "bUnpackMatrix=1", "--set", "sVcOptNor.eType=8"});
    ASSERT_EQ(run.code, 0) << run.err;
    const QJsonObject report = Json(run.out);
    ASSERT_FALSE(report.isEmpty()) << run.out;

    std::set<std::string> documented, reported;
    std::ifstream manual(OSTREX_DOCS_DIR "/pipelines.md");
    for (std::string line; std::getline(manual, line);) // table rows: "| `key` | type | meaning |"
        if (line.rfind("| `", 0) == 0 && line.find("` |") != std::string::npos)
            documented.insert(line.substr(3, line.find("` |") - 3));
    reported = Keys(run.out);
    reported.insert({"subject", "message"}); // only in a failed export's report, checked below
    EXPECT_EQ(reported, documented);

    EXPECT_TRUE(report["ok"].toBool());
    EXPECT_EQ(report["bytes"].toInteger(), static_cast<qint64>(fs::file_size(m_dir + "/byte.tvo")));
    CQMXTModelTVO scene;
    ASSERT_EQ(scene.ReadFromFile((m_dir + "/byte.tvo").c_str()), 0);
    EXPECT_EQ(report["nodes"].toInt(), static_cast<int>(scene.nNumNode));
    const QJsonArray meshes = report["meshDetails"].toArray();
    ASSERT_EQ(meshes.size(), static_cast<qsizetype>(scene.nNumMesh));
    double worst = 0.0; // byte positions of a cylinder lose something
    for (qsizetype m = 0; m < meshes.size(); ++m)
    {
        const QJsonObject mesh = meshes[m].toObject();
        EXPECT_EQ(mesh["vertices"].toInt(), static_cast<int>(scene.pMesh[m].nNumVertex));
        EXPECT_EQ(mesh["vertexFormat"].toArray()[0].toObject()["type"].toString(), "byte");
        // Rounding to the stored step loses at most half a step along each axis of the unpack matrix.
        const QJsonObject error = mesh["quantisationError"].toObject();
        const float* unpack = scene.pMesh[m].mUnpackMatrix;
        EXPECT_LE(error["positions"].toDouble(), 0.50001 * std::hypot(unpack[0], unpack[5], unpack[10])) << m;
        worst = std::max(worst, error["positions"].toDouble());
        EXPECT_TRUE(error["normals"].isDouble() && error["normals"].toDouble() < 0.002) << m;
    }
    EXPECT_GT(worst, 0.0);
}

// --strict fails on a warning before anything is written; the report says why, as it does for
// refused options.
TEST_F(Pipeline, StrictAndRefusedOptionsFailWithAReport)
{
    std::ofstream(m_dir + "/launch.txt") << "sClPostTarget=true\n";
    ASSERT_EQ(Run({kSample, "lenient.tvo", "--config", "launch.txt"}).code, 0);
    const SRun run =
        Run({kSample, "strict.tvo", "--config", "launch.txt", "--strict", "--report-json", "r.json"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.err.find("ostrex: error: strict.tvo: --strict: 1 warning, so nothing was written\n"),
              std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(m_dir + "/strict.tvo"));
    const QJsonObject report = Json(ReadAll(m_dir + "/r.json"));
    EXPECT_FALSE(report["ok"].toBool());
    EXPECT_EQ(report["error"].toObject()["subject"].toString(), "strict.tvo");
    ASSERT_EQ(report["warnings"].toArray().size(), 1);
    EXPECT_TRUE(
        report["warnings"][0].toString().startsWith("Warning: 'launch.txt' carries a post-export command"));

    EXPECT_EQ(Run({kSample, "refused.tvo", "--set", "nope=1", "--report-json", "r.json"}).code, 2);
    EXPECT_EQ(Json(ReadAll(m_dir + "/r.json"))["error"].toObject()["subject"].toString(), "options");
}

// A batch writes every good scene whatever the others do, one line each and a count; the bytes are
// those of a single export from any folder, whose history names the input by its file name and has a
// date only from SOURCE_DATE_EPOCH.
TEST_F(Pipeline, BatchIsolatesScenesAndBytesAreTheSameFromAnyFolder)
{
    std::ofstream(m_dir + "/broken.gltf") << "{ not a scene";
    const std::string crate = std::string(OSTREX_SAMPLES_DIR) + "/pipeline/crate ü.obj";
    const SRun run =
        Run({"--out-dir", "out", "-j", "4", kSample, kBox + "BoxTextured.gltf", "broken.gltf", crate});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 5) << run.err;
    EXPECT_NE(run.err.find("ostrex: error: broken.gltf: "), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("Wrote out/crate ü.tvo: "), std::string::npos) << run.err;
    const std::string last = "ostrex: 1 of 4 scenes failed; 3 written to out\n";
    EXPECT_EQ(run.err.substr(run.err.size() - std::min(run.err.size(), last.size())), last);
    EXPECT_EQ(Run({"--out-dir", "twice", kSample, kSample}).code, 2);
    EXPECT_FALSE(fs::exists(m_dir + "/twice"));

    auto history = [&](const std::string& path)
    {
        CQMXTModelTVO scene;
        char text[512] = "";
        EXPECT_EQ(scene.ReadFromFile(path.c_str(), nullptr, 0, text, sizeof text - 1), 0);
        return std::string(text);
    };
    CTempDir other;
    fs::create_directory(other / "deeper");
    ASSERT_EQ(
        RunOstrex(other / "deeper", {fs::relative(kSample, other / "deeper").string(), "../b.tvo"}).code, 0);
    EXPECT_TRUE(ReadAll(m_dir + "/out/sample.tvo") == ReadAll(other / "b.tvo")) << "the two exports differ";
    EXPECT_EQ(history(other / "b.tvo"), "Exported by ostrex from 'sample.gltf'");
    ASSERT_EQ(RunOstrex(m_dir, {kSample, "c.tvo"}, "SOURCE_DATE_EPOCH=86400").code, 0);
    EXPECT_EQ(history(m_dir + "/c.tvo"), "Exported by ostrex from 'sample.gltf' on 1970-01-02 00:00:00 UTC");
}
