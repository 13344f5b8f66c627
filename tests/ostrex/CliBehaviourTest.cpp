// The ostrex program as a user meets it: what it prints, which streams the options let through,
// reproducible bytes, option files that never start programs, and options refused up front.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "QMXTModelTVO.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

struct SRun
{
    int code = -1;
    std::string err;
};

std::string Quoted(const std::string& s)
{
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";

class CliBehaviour : public ::testing::Test
{
  protected:
    // Runs the program in folder dir with the environment settings given (NAME=VALUE words).
    SRun Run(const std::vector<std::string>& args, const std::string& dir = "", const std::string& env = "")
    {
        std::string command = "cd " + Quoted(dir.empty() ? m_dir : dir) + " && env " + env + " " +
                              Quoted(OSTREX_EXECUTABLE);
        for (const std::string& a : args)
            command += " " + Quoted(a);
        const std::string err = m_streams / "stderr";
        command += " >/dev/null 2>" + Quoted(err) + " </dev/null";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(err)};
    }

    static std::string History(const std::string& path)
    {
        CQMXTModelTVO scene;
        char history[512] = "";
        EXPECT_EQ(scene.ReadFromFile(path.c_str(), nullptr, 0, history, sizeof history - 1), 0);
        return history;
    }

    CTempDir m_work, m_streams;
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

// Off a terminal a default export prints one line, the summary, whose counts are the file's; -v
// shows the stages.
TEST_F(CliBehaviour, DefaultOutputIsTheSummaryLine)
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
    EXPECT_EQ(lines[0].rfind("Wrote " + out + ": " + std::to_string(fs::file_size(out)) + " bytes, " + counts, 0), 0u)
        << lines[0];
    EXPECT_GT(scene.nNumFrame, 1u);

    run = Run({kSample, out, "-v"});
    EXPECT_NE(run.err.find("[ 75%] Final export stage\n"), std::string::npos) << run.err;
    EXPECT_EQ(Lines(run.err).back().rfind("Wrote ", 0), 0u);
}

// UVs only with bExportMappingChannels, materials only with bExportMaterials; with materials off
// no node names a material.
TEST_F(CliBehaviour, StreamsAndMaterialsFollowTheOptions)
{
    const std::string input = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/BoxTextured-glTF/BoxTextured.gltf";
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
        ASSERT_EQ(Run({input, out, "--set", row.setting}).code, 0) << row.setting;
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
TEST_F(CliBehaviour, SameInputsGiveTheSameBytes)
{
    CTempDir other;
    fs::create_directory(other / "deeper");
    ASSERT_EQ(Run({kSample, "a.tvo"}).code, 0);
    const std::string relative = fs::relative(kSample, other / "deeper").string();
    ASSERT_EQ(Run({relative, "../b.tvo"}, other / "deeper").code, 0);
    EXPECT_TRUE(ReadAll(m_dir + "/a.tvo") == ReadAll(other / "b.tvo")) << "the two exports differ";
    EXPECT_EQ(History(m_dir + "/a.tvo"), "Exported by ostrex from 'sample.gltf'");

    ASSERT_EQ(Run({kSample, "c.tvo"}, "", "SOURCE_DATE_EPOCH=86400").code, 0);
    EXPECT_EQ(History(m_dir + "/c.tvo"), "Exported by ostrex from 'sample.gltf' on 1970-01-02 00:00:00 UTC");
}

// A post-export command or viewer that an options text, an earlier .tvo or a .h carries runs only
// with --allow-post-export; without it one warning says so. Commands set with --set always run.
TEST_F(CliBehaviour, OptionFilesStartNoProgramUnlessAllowed)
{
    const std::string marker = m_dir + "/marker", viewed = m_dir + "/viewed";
    const std::string text = m_dir + "/options.txt";
    std::ofstream(text) << "sClPostTarget=touch\nsClPostArgs=" << marker
                        << "\nbDisplayInDravik=1\nsPathToDravik=touch " << viewed << "\n";
    std::vector<std::string> carriers = {text};
    for (const char* name : {"carrier.tvo", "carrier.h"})
    {
        ASSERT_EQ(Run({kSample, name, "--set", "sClPostTarget=touch", "--set", "sClPostArgs=" + marker}).code, 0);
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

// An option set that cannot give a file fails at once, naming the option, with nothing written
// (the rules themselves are checked row by row in OptionsRulesTest).
TEST_F(CliBehaviour, ImpossibleOptionsAreRefusedBeforeAnyWork)
{
    const SRun run = Run({kSample, "out.tvo", "-v", "--set", "bAlignData=1", "--set", "uiPadDataTo=9"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err, "ostrex: error: options: uiPadDataTo=9 is no alignment (a power of two from 1 to 256); "
                       "or set bAlignData=0\n");
    EXPECT_TRUE(m_work.Entries().empty());
}
