// The ostrex program as a user meets it: exit codes and one-line errors that leave an existing
// output untouched, the output kinds, what it prints, which streams the options let through,
// reproducible bytes, option files that never start programs, and options refused up front.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

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

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    size_t begin = 0;
    for (size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(text.substr(begin, end - begin));
    return lines;
}
} // namespace

TEST_F(CliTest, HelpListingAndUsageErrors)
{
    SRun run = Run({"--help"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out.rfind("Usage: ostrex INPUT OUTPUT", 0), 0u);
    EXPECT_TRUE(run.err.empty());
    run = Run({"in.obj", "out.tvo", "--bogus"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "ostrex: usage error: unknown option '--bogus'\nTry 'ostrex --help' for more information.\n");
    run = Run({"--list-options", "--set", "uiBoneLimit=5"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("\nuiBoneLimit=5 "), std::string::npos);
    EXPECT_EQ(run.out.rfind("bFlipTextureV=0 ", 0), 0u);
    EXPECT_TRUE(Entries().empty());
}

// Inputs that cannot be exported fail with one line naming the input and the reason, and create
// nothing.
TEST_F(CliTest, RefusedInputsGiveOneErrorLine)
{
    const std::string skin = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/simple_skin/simple_skin.gltf";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{m_dir + "/missing.gltf"}, "cannot open: No such file or directory"},
        {{skin, "--select", "NoSuchNode", "--quiet"}, "no node named 'NoSuchNode' in the scene"},
        {{skin, "--animation", "7"}, "no animation '7' (the file has 1 animation: 0 '')"},
    };
    for (const auto& [args, reason] : cases)
    {
        std::vector<std::string> line = {args[0], m_dir + "/out.tvo"};
        line.insert(line.end(), args.begin() + 1, args.end());
        const SRun run = Run(line);
        EXPECT_EQ(run.code, 1) << args[0];
        EXPECT_EQ(run.err, "ostrex: error: " + args[0] + ": " + reason + "\n");
    }
    EXPECT_TRUE(Entries().empty());
}

// Every file of the importer's collection of broken models fails the same way and leaves an existing
// output as it was. (malformed2.obj is not among them: the importer repairs it into a plain cube, as
// it does the missing material of OBJ/box.obj.)
TEST_F(CliTest, BrokenModelsFailCleanlyAndLeaveTheOutputUntouched)
{
    const std::string out = m_dir + "/out.tvo";
    int checked = 0;
    for (const auto& entry : fs::directory_iterator(std::string(OSTREX_ASSIMP_MODELS) + "/invalid"))
    {
        const std::string file = entry.path().string();
        if (entry.path().filename() == "malformed2.obj")
            continue;
        std::ofstream(out) << "keep";
        const SRun run = Run({file, out});
        EXPECT_EQ(run.code, 1) << file << "\n" << run.err;
        const std::string prefix = "ostrex: error: " + file + ": ";
        EXPECT_EQ(run.err.rfind(prefix, 0), 0u) << run.err;
        EXPECT_GT(run.err.size(), prefix.size() + 1) << "no reason given: " << run.err;
        EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << "more than one line: " << run.err;
        EXPECT_EQ(ReadAll(out), "keep") << file;
        EXPECT_EQ(Entries(), std::vector<std::string>{"out.tvo"}) << file;
        ++checked;
    }
    EXPECT_GE(checked, 13);
}

// A real scene exports to each output kind: the binary replaces the old file and carries the
// options text; the header and source wrap the scene for the memory file system.
TEST_F(CliTest, ExportsBinaryHeaderAndSourceByExtension)
{
    const std::string tvo = m_dir + "/box.tvo";
    std::ofstream(tvo) << "old";
    const SRun run = Run({kBox, tvo, "--quiet"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");
    CQMXTModelTVO scene;
    char options[4096] = "";
    ASSERT_EQ(scene.ReadFromFile(tvo.c_str(), options, sizeof options - 1), 0);
    EXPECT_NE(std::string(options).find("bIndexed="), std::string::npos);

    for (const char* name : {"box.h", "box.cpp"})
    {
        ASSERT_EQ(Run({kBox, name, "--quiet"}).code, 0) << name;
        const std::string text = ReadAll(m_dir + "/" + name);
        EXPECT_NE(text.find("\tExpOpt{\n"), std::string::npos) << name;
        EXPECT_NE(text.find("static CQMXTMemoryFileSystem RegisterFile_box_tvo(\"box.tvo\", _box_tvo, "),
                  std::string::npos)
            << name;
    }
    EXPECT_EQ(Entries(), (std::vector<std::string>{"box.cpp", "box.h", "box.tvo"}));
}

// A failing build (a one-bone palette for a tube whose triangles span two bones) reports the
// builder's message and one error line, keeps the old output and leaves no temporary file behind.
TEST_F(CliTest, FailedExportKeepsTheOldOutput)
{
    const std::string out = m_dir + "/sample.tvo";
    std::ofstream(out) << "keep";
    const SRun run = Run({kSample, out, "--quiet", "--set", "bExportSkin=1", "--set", "uiBoneLimit=1"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.err.find("Bone batch generation failed."), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("ostrex: error: " + out + ": the scene could not be built"), std::string::npos)
        << run.err;
    EXPECT_EQ(ReadAll(out), "keep");
    EXPECT_EQ(Entries(), std::vector<std::string>{"sample.tvo"});
}

// Off a terminal a default export prints one line, the summary, whose counts are the file's; -v
// shows the stages.
TEST_F(CliTest, DefaultOutputIsTheSummaryLine)
{
    const std::string out = m_dir + "/a.tvo";
    SRun run = Run({kSample, out, "--set", "bExportAnimations=1"});
    ASSERT_EQ(run.code, 0) << run.err;
    CQMXTModelTVO scene;
    ASSERT_EQ(scene.ReadFromFile(out.c_str()), 0);
    uint64_t triangles = 0, vertices = 0;
    for (uint32_t i = 0; i < scene.nNumMesh; ++i)
    {
        triangles += scene.pMesh[i].nNumFaces;
        vertices += scene.pMesh[i].nNumVertex;
    }
    const std::string counts = std::to_string(scene.nNumNode) + " nodes, " + std::to_string(scene.nNumMesh) +
                               " meshes, " + std::to_string(triangles) + " triangles, " +
                               std::to_string(vertices) + " vertices, " + std::to_string(scene.nNumMaterial) +
                               " materials, " + std::to_string(scene.nNumFrame) + " frames in ";
    const std::vector<std::string> lines = Lines(run.err);
    ASSERT_EQ(lines.size(), 1u) << run.err;
    EXPECT_EQ(
        lines[0].rfind("Wrote " + out + ": " + std::to_string(fs::file_size(out)) + " bytes, " + counts, 0),
        0u)
        << lines[0];
    EXPECT_GT(scene.nNumFrame, 1u);

    run = Run({kSample, out, "-v"});
    EXPECT_NE(run.err.find("[ 75%] Final export stage\n"), std::string::npos) << run.err;
    EXPECT_EQ(Lines(run.err).back().rfind("Wrote ", 0), 0u);
}

// UVs only with bExportMappingChannels, materials only with bExportMaterials; with materials off
// no node names a material.
TEST_F(CliTest, StreamsAndMaterialsFollowTheOptions)
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
        ASSERT_EQ(Run({kBox, out, "--set", row.setting}).code, 0) << row.setting;
        CQMXTModelTVO scene;
        ASSERT_EQ(scene.ReadFromFile(out.c_str()), 0);
        ASSERT_EQ(scene.nNumMesh, 1u);
        EXPECT_EQ(scene.pMesh[0].nNumUVW, row.uvw) << row.setting;
        EXPECT_EQ(scene.pMesh[0].sVertex.nStride, row.stride) << row.setting;
        EXPECT_EQ(scene.nNumMaterial, row.materials) << row.setting;
        for (uint32_t i = 0; i < scene.nNumNode; ++i)
            EXPECT_LT(scene.pNode[i].nIdxMaterial, static_cast<int32_t>(scene.nNumMaterial)) << row.setting;
    }
}

// The same input and options give the same bytes from any folder; the history names the input by
// its file name and carries a date only from SOURCE_DATE_EPOCH.
TEST_F(CliTest, SameInputsGiveTheSameBytes)
{
    auto history = [&](const char* name)
    {
        CQMXTModelTVO scene;
        char text[512] = "";
        EXPECT_EQ(scene.ReadFromFile((m_dir + "/" + name).c_str(), nullptr, 0, text, sizeof text - 1), 0);
        return std::string(text);
    };
    CTempDir other;
    fs::create_directory(other / "deeper");
    ASSERT_EQ(Run({kSample, "a.tvo"}).code, 0);
    const std::string relative = fs::relative(kSample, other / "deeper").string();
    ASSERT_EQ(RunOstrex(other / "deeper", {relative, "../b.tvo"}).code, 0);
    EXPECT_TRUE(ReadAll(m_dir + "/a.tvo") == ReadAll(other / "b.tvo")) << "the two exports differ";
    EXPECT_EQ(history("a.tvo"), "Exported by ostrex from 'sample.gltf'");

    ASSERT_EQ(Run({kSample, "c.tvo"}, "SOURCE_DATE_EPOCH=86400").code, 0);
    EXPECT_EQ(history("c.tvo"), "Exported by ostrex from 'sample.gltf' on 1970-01-02 00:00:00 UTC");
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

// An option set that cannot give a file fails at once, naming the option, with nothing written.
TEST_F(CliTest, ImpossibleOptionsAreRefusedBeforeAnyWork)
{
    const SRun run = Run({kSample, "out.tvo", "-v", "--set", "bAlignData=1", "--set", "uiPadDataTo=9"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err,
              "ostrex: error: options: uiPadDataTo=9 is no alignment (a power of two from 1 to 256); "
              "or set bAlignData=0\n");
    EXPECT_TRUE(Entries().empty());
}
