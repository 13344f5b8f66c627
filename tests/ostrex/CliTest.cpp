// The ostrex program as a user meets it, from its options to its errors and what it prints, and in
// build pipelines: the dependency file, the JSON report, --strict, batches and reproducible bytes.
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "DependencyFile.h"
#include "ExportOptions.h"
#include "OptionsProfiles.h"
#include "QMXPreferences.h"
#include "QMXTModelTVO.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";
const std::string kBoxDir = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/BoxTextured-glTF/";
const std::string kBox = kBoxDir + "BoxTextured.gltf";

// Runs the program in a fresh folder.
class CliTest : public ::testing::Test
{
  protected:
    SRun Run(const std::vector<std::string>& args) { return RunOstrex(m_dir, args); }
    std::vector<std::string> Entries() const { return m_work.Entries(); }

    CTempDir m_work;
    const std::string m_dir = m_work.Path();
};
using Pipeline = CliTest; // ostrex in build pipelines

QJsonObject Json(const std::string& text)
{
    return QJsonDocument::fromJson(QByteArray(text.data(), static_cast<int>(text.size()))).object();
}

// Every key of every object in a JSON value.
void CollectKeys(const QJsonValue& value, std::set<std::string>& keys)
{
    for (const QJsonValue& item : value.toArray())
        CollectKeys(item, keys);
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it)
    {
        keys.insert(it.key().toStdString());
        CollectKeys(it.value(), keys);
    }
}

} // namespace

// The listing shows every option with its caption, from the defaults, then a profile, then --config,
// then --set, each over the last.
TEST_F(CliTest, HelpAndTheListingOfOptionsFromEverySourceInOrder)
{
    SRun run = Run({"--help"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out.rfind("Usage: ostrex INPUT OUTPUT", 0), 0u);
    EXPECT_TRUE(run.err.empty());

    const CTempHome home; // the preferences file holding the profile
    {
        CQMXPreferences prefs(kOstrexPreferencesName);
        CQMXTString errors;
        ASSERT_TRUE(prefs.Load(errors, false));
        COptionsProfiles profiles;
        COptionsProfiles::SProfile mobile;
        mobile.sCaption = "Mobile";
        mobile.options.SetFromString("uiBoneLimit=7\nbTangentSpace=1\nbExportSkin=1\n");
        profiles.m_profiles.push_back(mobile);
        ASSERT_TRUE(profiles.Save(prefs, kOstrexProfilesPrefix));
    }
    std::ofstream(home / "base.cfg") << "uiBoneLimit=12\nbExportAnimations=1\n";
    run = Run({"--list-options", "--profile", "Mobile", "--config", home / "base.cfg", "--set",
               "uiBoneLimit=20", "--set", "exportSkin=0"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out.rfind("bFlipTextureV=0 ", 0), 0u);
    // From the profile, the file, --set by key (last) and by alias.
    for (const char* line :
         {"\nbTangentSpace=1 ", "\nbExportAnimations=1 ",
          "\nuiBoneLimit=20                      Matrix palette size\n", "\nbExportSkin=0 "})
        EXPECT_NE(run.out.find(line), std::string::npos) << line;
    EXPECT_EQ(
        Run({"--list-options", "--profile", "Desktop"}).err,
        "ostrex: usage error: no profile named 'Desktop' (profiles: 'Mobile')\nTry 'ostrex --help' for more "
        "information.\n");
    EXPECT_TRUE(Entries().empty());
}

// Bad input, arguments, option files or option sets, a failing build and every broken model of the
// importer's collection (but malformed2.obj, which it repairs) exit 1, or 2 for a usage error.
TEST_F(CliTest, RefusalsGiveOneErrorLineAndLeaveTheOutputUntouched)
{
    const std::string skin = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/simple_skin/simple_skin.gltf";
    const std::string missing = m_dir + "/missing.gltf",
                      usage = "\nTry 'ostrex --help' for more information.\n";
    std::ofstream(m_dir + "/notes.txt") << "nothing to see\n";
    // Arguments after the input, and the whole error text or, without a final newline, its start.
    std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{missing}, "ostrex: error: " + missing + ": cannot open: No such file or directory\n"},
        {{skin, "--select", "NoSuchNode", "--quiet"},
         "ostrex: error: " + skin + ": no node named 'NoSuchNode' in the scene\n"},
        {{skin, "--animation", "7"},
         "ostrex: error: " + skin + ": no animation '7' (the file has 1 animation: 0 '')\n"},
        {{kSample, "--bogus"}, "ostrex: usage error: unknown option '--bogus'" + usage},
        {{kSample, "--set", "sVcOptPos.eType=99"},
         "ostrex: usage error: --set sVcOptPos.eType=99 sets nothing (no option 'sVcOptPos.eType', or a "
         "value it refuses)" +
             usage},
        {{kSample, "--config", "missing.cfg"},
         "ostrex: error: missing.cfg: cannot open: No such file or directory\n"},
        {{kSample, "--config", "notes.txt"}, "ostrex: error: notes.txt: holds no export options\n"},
        {{kSample, "-v", "--set", "bAlignData=1", "--set", "uiPadDataTo=9"},
         "ostrex: error: options: uiPadDataTo=9 is no alignment (a power of two from 1 to 256); or set "
         "bAlignData=0\n"},
        {{kSample, "--quiet", "--set", "bExportSkin=1", "--set", "uiBoneLimit=1"},
         "Bone batch generation failed.\nostrex: error: out.tvo: the scene could not be built (see the "
         "messages above)\n"},
    };
    for (const auto& entry : fs::directory_iterator(std::string(OSTREX_ASSIMP_MODELS) + "/invalid"))
        if (entry.path().filename() != "malformed2.obj")
            cases.push_back({{entry.path().string()}, "ostrex: error: " + entry.path().string() + ": "});
    for (const auto& [args, want] : cases)
    {
        std::ofstream(m_dir + "/out.tvo") << "keep";
        std::vector<std::string> line = {args[0], "out.tvo"};
        line.insert(line.end(), args.begin() + 1, args.end());
        const SRun run = Run(line);
        EXPECT_EQ(run.code, want.find("usage error") == std::string::npos ? 1 : 2) << run.err;
        if (want.back() == '\n')
            EXPECT_EQ(run.err, want);
        else // one line with a reason after the start
            EXPECT_TRUE(run.err.rfind(want, 0) == 0 && run.err.find('\n') == run.err.size() - 1 &&
                        run.err.size() > want.size() + 1)
                << run.err;
        EXPECT_EQ(ReadAll(m_dir + "/out.tvo"), "keep") << args[0];
        EXPECT_EQ(Entries(), (std::vector<std::string>{"notes.txt", "out.tvo"})) << args[0];
    }
    EXPECT_GE(cases.size(), 23u);
}

// UVs and materials only when their options say so; off a terminal an export prints one line, the
// summary, whose counts are the file's; -v shows the stages.
TEST_F(CliTest, StreamsFollowTheOptionsAndTheSummaryCountsTheFile)
{
    const std::string out = m_dir + "/box.tvo";
    // The setting, then the UVW channels, vertex stride and materials of the file.
    const std::pair<std::string, std::vector<uint32_t>> rows[] = {{"bExportMappingChannels=0", {0, 24, 1}},
                                                                  {"bExportMappingChannels=1", {1, 32, 1}},
                                                                  {"bExportMaterials=0", {0, 24, 0}}};
    for (const auto& [setting, want] : rows)
    {
        const SRun run = Run({kBox, out, "--set", setting});
        ASSERT_EQ(run.code, 0) << setting;
        CQMXTModelTVO scene;
        ASSERT_EQ(scene.ReadFromFile(out.c_str()), 0);
        ASSERT_EQ(scene.nNumMesh, 1u);
        const STVOMesh& m = scene.pMesh[0];
        EXPECT_EQ((std::vector<uint32_t>{m.nNumUVW, m.sVertex.nStride, scene.nNumMaterial}), want) << setting;
        for (uint32_t i = 0; i < scene.nNumNode; ++i)
            EXPECT_LT(scene.pNode[i].nIdxMaterial, static_cast<int32_t>(scene.nNumMaterial)) << setting;
        const std::string summary = "Wrote " + out + ": " + std::to_string(fs::file_size(out)) + " bytes, " +
                                    std::to_string(scene.nNumNode) + " nodes, 1 meshes, " +
                                    std::to_string(m.nNumFaces) + " triangles, " +
                                    std::to_string(m.nNumVertex) + " vertices, " +
                                    std::to_string(scene.nNumMaterial) + " materials, " +
                                    std::to_string(scene.nNumFrame) + " frames in ";
        EXPECT_EQ(run.err.rfind(summary, 0), 0u) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
    const SRun run = Run({kSample, out, "-v", "--set", "bExportAnimations=1"});
    EXPECT_NE(run.err.find("[ 75%] Final export stage\n"), std::string::npos) << run.err;
    CQMXTModelTVO scene;
    ASSERT_EQ(scene.ReadFromFile(out.c_str()), 0);
    EXPECT_GT(scene.nNumFrame, 1u); // an animated scene reads back with its frames
}

// A post-export command or viewer that an options text, an earlier .tvo or a .h carries runs only
// with --allow-post-export; without it one warning says so. Commands set with --set always run.
TEST_F(CliTest, OptionFilesStartNoProgramUnlessAllowed)
{
    const std::string marker = m_dir + "/marker", viewed = m_dir + "/viewed";
    const std::string text = m_dir + "/options.txt";
    std::ofstream(text) << "sClPostTarget=touch\nsClPostArgs=" << marker
                        << "\nbDisplayInDravik=1\nsPathToDravik=touch " << viewed << "\n";
    std::vector<std::string> carriers = {text};
    for (const char* name : {"carrier.tvo", "carrier.h"})
    {
        ASSERT_EQ(Run({kSample, name, "--set", "sClPostTarget=touch", "--set", "sClPostArgs=" + marker}).code,
                  0);
        ASSERT_TRUE(fs::exists(marker)) << "a command the user sets runs";
        fs::remove(marker);
        carriers.push_back(m_dir + "/" + name);
    }
    for (const std::string& carrier : carriers)
    {
        SRun run = Run({kSample, "out.tvo", "--config", carrier});
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_FALSE(fs::exists(marker) || fs::exists(viewed)) << carrier;
        EXPECT_NE(run.err.find("Warning: '" + carrier +
                               "' carries a post-export command or viewer launch, which was not run; pass "
                               "--allow-post-export to run it.\n"),
                  std::string::npos)
            << run.err;
        run = Run({kSample, "out.tvo", "--config", carrier, "--allow-post-export"});
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_TRUE(fs::exists(marker)) << carrier;
        EXPECT_EQ(fs::exists(viewed), carrier == text);
        fs::remove(marker);
        fs::remove(viewed);
    }
}

// The depfile names the output and, escaped, the scene, its buffer, its texture and the options
// file, even where the names hold spaces, '#' and non-ASCII letters; a texture URI is decoded.
TEST_F(Pipeline, DepfileNamesEverythingTheExportRead)
{
    const std::string models = m_dir + "/models ü";
    fs::create_directory(models);
    fs::copy_file(kBoxDir + "BoxTextured0.bin", models + "/BoxTextured0.bin");
    fs::copy_file(kBoxDir + "CesiumLogoFlat.png", models + "/logo ü.png");
    std::string gltf = ReadAll(kBoxDir + "BoxTextured.gltf"); // glTF names files by URI: percent-encoded
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
// position errors within what the file's compact type and unpack matrix allow, and why an export
// failed: --strict fails on a warning before anything is written, as refused options do.
TEST_F(Pipeline, ReportMatchesTheManualAndTheFileAndSaysWhyAnExportFailed)
{
    const SRun run = Run({kSample, "byte.tvo", "--report-json", "-", "--set", "sVcOptPos.eType=13", "--set",
                          "bUnpackMatrix=1", "--set", "sVcOptNor.eType=8"});
    ASSERT_EQ(run.code, 0) << run.err;
    const QJsonObject report = Json(run.out);
    ASSERT_FALSE(report.isEmpty()) << run.out;
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

    std::ofstream(m_dir + "/launch.txt") << "sClPostTarget=true\n";
    const SRun strict =
        Run({kSample, "strict.tvo", "--config", "launch.txt", "--strict", "--report-json", "r.json"});
    EXPECT_EQ(strict.code, 1);
    EXPECT_NE(strict.err.find("ostrex: error: strict.tvo: --strict: 1 warning, so nothing was written\n"),
              std::string::npos)
        << strict.err;
    EXPECT_FALSE(fs::exists(m_dir + "/strict.tvo"));
    const QJsonObject failed = Json(ReadAll(m_dir + "/r.json"));
    EXPECT_FALSE(failed["ok"].toBool());
    EXPECT_EQ(failed["error"].toObject()["subject"].toString(), "strict.tvo");
    ASSERT_EQ(failed["warnings"].toArray().size(), 1);
    EXPECT_TRUE(
        failed["warnings"][0].toString().startsWith("Warning: 'launch.txt' carries a post-export command"));

    std::set<std::string> documented, reported;
    std::ifstream manual(OSTREX_DOCS_DIR "/pipelines.md");
    for (std::string line; std::getline(manual, line);) // table rows: "| `key` | type | meaning |"
        if (line.rfind("| `", 0) == 0 && line.find("` |") != std::string::npos)
            documented.insert(line.substr(3, line.find("` |") - 3));
    CollectKeys(report, reported);
    CollectKeys(failed, reported);
    EXPECT_EQ(reported, documented);

    EXPECT_EQ(Run({kSample, "refused.tvo", "--set", "nope=1", "--report-json", "r.json"}).code, 2);
    EXPECT_EQ(Json(ReadAll(m_dir + "/r.json"))["error"].toObject()["subject"].toString(), "options");
}

// A batch writes every good scene whatever the others do; the bytes are those of a single export from
// any folder, whose history names the input's file and has a date only from SOURCE_DATE_EPOCH.
TEST_F(Pipeline, BatchIsolatesScenesAndBytesAreTheSameFromAnyFolder)
{
    std::ofstream(m_dir + "/broken.gltf") << "{ not a scene";
    const std::string crate = std::string(OSTREX_SAMPLES_DIR) + "/pipeline/crate ü.obj";
    const SRun run = Run({"--out-dir", "out", "-j", "4", kSample, kBox, "broken.gltf", crate});
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
