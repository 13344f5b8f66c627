// The ostrex program as a user meets it: where its options come from, exit codes and one-line errors
// that leave an existing output untouched, what it prints, which streams the options let through,
// and option files that never start programs. (Reproducible bytes: Pipeline.)
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "ExportOptions.h"
#include "OptionsProfiles.h"
#include "QMXPreferences.h"
#include "QMXTModelTVO.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";
const std::string kBox = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/BoxTextured-glTF/BoxTextured.gltf";

// Runs the program in a fresh folder.
class CliTest : public ::testing::Test
{
  protected:
    SRun Run(const std::vector<std::string>& args, const std::string& env = "")
    {
        return RunOstrex(m_dir, args, env);
    }
    std::vector<std::string> Entries() const { return m_work.Entries(); }

    CTempDir m_work;
    const std::string m_dir = m_work.Path();
};

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
        mobile.options.SetOption(COptionsData::eBoneLimit, 7u);
        mobile.options.SetOption(COptionsData::eTangentSpace, true);
        mobile.options.SetOption(COptionsData::eExportSkin, true);
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

// What cannot be exported (bad input, arguments, option files or option sets, a failing build, every
// model of the importer's collection of broken ones) exits 1, or 2 for a usage error, with one error
// line naming the subject and the reason, and leaves an existing output as it was. (malformed2.obj is
// not among them: the importer repairs it into a plain cube.)
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
        {{kSample, "--set", "bNoSuchOption=1"},
         "ostrex: usage error: --set bNoSuchOption=1 sets nothing (no option 'bNoSuchOption', or a value it "
         "refuses)" +
             usage},
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

// UVs only with bExportMappingChannels, materials only with bExportMaterials (then no node names a
// material); off a terminal an export prints one line, the summary, whose counts are the file's; -v
// shows the stages.
TEST_F(CliTest, StreamsFollowTheOptionsAndTheSummaryCountsTheFile)
{
    const std::string out = m_dir + "/box.tvo";
    const struct
    {
        std::string setting;
        uint32_t uvw, stride, materials;
    } rows[] = {
        {"bExportMappingChannels=0", 0, 24, 1},
        {"bExportMappingChannels=1", 1, 32, 1},
        {"bExportMaterials=0", 0, 24, 0},
    };
    for (const auto& row : rows)
    {
        const SRun run = Run({kBox, out, "--set", row.setting});
        ASSERT_EQ(run.code, 0) << row.setting;
        CQMXTModelTVO scene;
        ASSERT_EQ(scene.ReadFromFile(out.c_str()), 0);
        ASSERT_EQ(scene.nNumMesh, 1u);
        const STVOMesh& m = scene.pMesh[0];
        EXPECT_EQ((std::vector<uint32_t>{m.nNumUVW, m.sVertex.nStride, scene.nNumMaterial}),
                  (std::vector<uint32_t>{row.uvw, row.stride, row.materials}))
            << row.setting;
        for (uint32_t i = 0; i < scene.nNumNode; ++i)
            EXPECT_LT(scene.pNode[i].nIdxMaterial, static_cast<int32_t>(scene.nNumMaterial)) << row.setting;
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
    EXPECT_NE(run.err.find("\nWrote " + out + ": "), std::string::npos) << run.err;
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
