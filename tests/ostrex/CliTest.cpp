// The ostrex program end to end: exit codes, usage errors, and bad input giving one error line
// while an existing output file stays untouched.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
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

struct SRun
{
    int code = -1;
    std::string out, err;
};

std::string Quoted(const std::string& s)
{
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

// Runs the program in a fresh directory; its streams are captured outside that directory.
class CliTest : public ::testing::Test
{
  protected:
    SRun Run(const std::vector<std::string>& args)
    {
        std::string command = Quoted(OSTREX_EXECUTABLE);
        for (const std::string& a : args)
            command += " " + Quoted(a);
        const std::string out = m_streams / "stdout", err = m_streams / "stderr";
        command += " >" + Quoted(out) + " 2>" + Quoted(err) + " </dev/null";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(out), ReadAll(err)};
    }
    std::vector<std::string> Entries() const { return m_work.Entries(); }

    CTempDir m_work, m_streams;
    const std::string m_dir = m_work.Path();
};
} // namespace

TEST_F(CliTest, HelpAndUsageErrors)
{
    SRun run = Run({"--help"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out.rfind("Usage: ostrex INPUT OUTPUT", 0), 0u);
    EXPECT_TRUE(run.err.empty());
    run = Run({"in.obj", "out.tvo", "--bogus"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "ostrex: usage error: unknown option '--bogus'\nTry 'ostrex --help' for more information.\n");
    run = Run({"in.obj", "out.tvo", "--set", "bNoSuchOption=1"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err.rfind("ostrex: usage error: --set bNoSuchOption=1 sets nothing", 0), 0u) << run.err;
    EXPECT_TRUE(Entries().empty());
}

TEST_F(CliTest, ListOptionsPrintsTheOptionsAfterSettings)
{
    const SRun run = Run({"--list-options", "--set", "uiBoneLimit=5", "--set", "bExportSkin=1"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("\nuiBoneLimit=5 "), std::string::npos);
    EXPECT_NE(run.out.find("\nbExportSkin=1 "), std::string::npos);
    EXPECT_EQ(run.out.rfind("bFlipTextureV=0 ", 0), 0u);
    EXPECT_TRUE(run.err.empty()) << run.err;
}

// Inputs that cannot be exported fail with one line naming the input and the reason, and create
// nothing.
TEST_F(CliTest, RefusedInputsGiveOneErrorLine)
{
    const std::string models = OSTREX_ASSIMP_MODELS;
    const std::string skin = models + "/glTF2/simple_skin/simple_skin.gltf";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{m_dir + "/missing.gltf"}, "cannot open: No such file or directory"},
        {{models + "/OBJ/testpoints.obj", "--quiet"},
         "nothing to export: the scene holds no triangles, lights or cameras"},
        {{skin, "--select", "NoSuchNode"}, "no node named 'NoSuchNode' in the scene"},
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

// A real scene exports to each output kind: the binary reads back with its meshes, materials and
// the options text; the header and source wrap the same scene for the memory file system.
TEST_F(CliTest, ExportsBinaryHeaderAndSourceByExtension)
{
    const std::string input = std::string(OSTREX_ASSIMP_MODELS) + "/glTF2/BoxTextured-glTF/BoxTextured.gltf";
    const std::string tvo = m_dir + "/box.tvo";
    std::ofstream(tvo) << "old";
    const SRun run = Run({input, tvo, "--quiet"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");

    CQMXTModelTVO scene;
    char options[4096] = "";
    ASSERT_EQ(scene.ReadFromFile(tvo.c_str(), options, sizeof options - 1), 0);
    EXPECT_NE(std::string(options).find("bIndexed="), std::string::npos);
    ASSERT_EQ(scene.ReadFromFile(tvo.c_str()), 0);
    ASSERT_EQ(scene.nNumMesh, 1u);
    EXPECT_EQ(scene.pMesh[0].nNumFaces, 12u);
    EXPECT_EQ(scene.pMesh[0].nNumVertex, 24u); // a cube with normals and UVs welds to 24 corners
    ASSERT_GE(scene.nNumMaterial, 1u);
    ASSERT_GE(scene.nNumTexture, 1u);
    EXPECT_STREQ(scene.pTexture[0].pszName, "CesiumLogoFlat.png");

    for (const char* name : {"box.h", "box.cpp"})
    {
        const std::string path = m_dir + "/" + name;
        ASSERT_EQ(Run({input, path, "--quiet"}).code, 0) << name;
        const std::string text = ReadAll(path);
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
    const std::string input = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";
    const std::string out = m_dir + "/sample.tvo";
    std::ofstream(out) << "keep";
    const SRun run = Run({input, out, "--quiet", "--set", "bExportSkin=1", "--set", "uiBoneLimit=1"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.err.find("Bone batch generation failed."), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("ostrex: error: " + out + ": the scene could not be built"), std::string::npos)
        << run.err;
    EXPECT_EQ(ReadAll(out), "keep");
    EXPECT_EQ(Entries(), std::vector<std::string>{"sample.tvo"});
}
