// tvoinfo as a user meets it: the binary run on files written here, its exit status, its lines and
// its JSON.
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "QMXTModelTVO.h"
#include "QMXTSink.h"
#include "TVOTestScenes.h"
#include "TempFiles.h"

namespace
{
struct SRun
{
    int status = -1;
    std::string out, err;
};

// Runs tvoinfo on files in a fresh folder; its streams are captured there too.
class TVOInfo : public ::testing::Test
{
  protected:
    SRun RunTvoinfo(const std::string& args)
    {
        const std::string out = m_dir / "stdout", err = m_dir / "stderr";
        const int raw =
            std::system((std::string(TVOINFO_PATH) + " " + args + " >" + out + " 2>" + err).c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadAll(out), ReadAll(err)};
    }
    std::string WriteRich(const char* name, const char* options, const char* history)
    {
        CQMXTModelTVO s;
        tvotest::MakeRichScene(s);
        const std::string path = m_dir / name;
        EXPECT_EQ(s.SaveTVO(path.c_str(), options, history), 0);
        return path;
    }

    CTempDir m_dir;
};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

bool HasLine(const std::string& text, const std::string& line)
{
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

QJsonObject Json(const std::string& text)
{
    QJsonParseError error;
    const QJsonDocument doc =
        QJsonDocument::fromJson(QByteArray(text.data(), static_cast<int>(text.size())), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return doc.object();
}
} // namespace

TEST_F(TVOInfo, SummaryAndJsonNameCountsNodesStreamsMaterialsLightsCamerasAndTexts)
{
    const std::string path = WriteRich("info-rich.tvo", "bOpt=1\nfScale=2\n", "exported by a test");
    const SRun r = RunTvoinfo(path);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const std::string& o = r.out;
    for (const char* line :
         {"scene: 8 nodes (2 mesh nodes), 3 meshes, 2 materials, 2 textures, 3 lights, 2 cameras",
          "frames: 4 at 25 fps",
          "  [0] \"MeshA\" mesh 0, parent 7, material 0, animation position rotation, user data 5 bytes",
          "  [3] \"Sun\" light 1, parent 7, material -1, animation static",
          "  [6] \"Cam2\" camera 1, parent 7, material -1, animation static",
          "  [7] \"Root\" other -1, parent -1, material -1, animation scale",
          "  [0] 6 vertices, 4 faces, triangle list, 0 strips, 2 bone batches (up to 2 bones), 2 UVW, "
          "interleaved, stride 44",
          "      normals: short, normalised x3, stride 44, offset 12",
          "      UVW 1: float x2, stride 44, offset 36",
          "  [1] 5 vertices, 3 faces, triangle strips, 2 strips, 0 bone batches (up to 0 bones), 1 UVW, "
          "separate streams",
          "      binormals: DEC3N x1, stride 4",
          "  [0] \"wood\" opacity 1, textures: diffuse \"wood.png\", bump \"wood_bump.png\", effect "
          "shaders.xef Lit",
          "  [1] directional, colour 1 0.6 0.25, target -1",
          "  [2] spot, colour 1 0.7 0.25, target 7, attenuation 1 0.5 0.25, falloff 0.7 exponent 2",
          "  [0] field of view 0.8 (animated), near 0.5, far 1000, target 7", "  exported by a test"})
        EXPECT_TRUE(HasLine(o, line)) << line << "\n" << o;
    EXPECT_EQ(RunTvoinfo("--options " + path).out, "bOpt=1\nfScale=2\n");
    EXPECT_NE(o.find("\noptions: 2 lines (tvoinfo --options " + path + " prints them)\n"), std::string::npos)
        << o;

    // The same facts as JSON, for scripts.
    const SRun json = RunTvoinfo("--json " + path);
    ASSERT_EQ(json.status, 0) << json.err;
    const QJsonObject j = Json(json.out);
    EXPECT_EQ(j["scene"].toObject()["frames"].toInt(), 4);
    EXPECT_EQ(j["scene"].toObject()["fps"].toInt(), 25);
    const QJsonArray nodes = j["nodes"].toArray();
    ASSERT_EQ(nodes.size(), 8);
    EXPECT_EQ(nodes[0].toObject()["name"].toString(), "MeshA");
    EXPECT_EQ(nodes[0].toObject()["animation"].toArray(), QJsonArray({"position", "rotation"}));
    EXPECT_EQ(nodes[5].toObject()["kind"].toString(), "camera");
    const QJsonObject mesh = j["meshes"].toArray()[0].toObject();
    EXPECT_TRUE(mesh["interleaved"].toBool());
    const QJsonArray streams = mesh["streams"].toArray();
    ASSERT_EQ(streams.size(), 8);
    EXPECT_TRUE(streams[0].toObject()["offset"].isNull()); // faces: no vertex stream
    EXPECT_EQ(streams[4].toObject()["name"].toString(), "UVW 1");
    EXPECT_EQ(streams[4].toObject()["type"].toString(), "float");
    EXPECT_EQ(streams[4].toObject()["offset"].toInt(), 36);
    EXPECT_EQ(j["materials"].toArray()[0].toObject()["textures"].toObject()["bump"].toString(),
              "wood_bump.png");
    EXPECT_EQ(j["lights"].toArray()[2].toObject()["type"].toString(), "spot");
    EXPECT_TRUE(j["cameras"].toArray()[0].toObject()["fovAnimated"].toBool());
    EXPECT_EQ(j["options"].toString(), "bOpt=1\nfScale=2\n");
    EXPECT_EQ(j["history"].toString(), "exported by a test");
}

TEST_F(TVOInfo, JsonStaysValidForAnyNameBytes)
{
    CQMXTModelTVO s;
    tvotest::MakeBigScene(s, 3, false);
    std::free(s.pNode[0].pszName);
    s.pNode[0].pszName = tvotest::Str("q\"uote\\ tab\t nl\n \x01 caf\xc3\xa9 bad\xff");
    const std::string path = m_dir / "info-names.tvo";
    ASSERT_EQ(s.SaveTVO(path.c_str()), 0);
    const SRun r = RunTvoinfo("--json " + path);
    ASSERT_EQ(r.status, 0);
    const QJsonObject j = Json(r.out);
    EXPECT_EQ(j["nodes"].toArray()[0].toObject()["name"].toString(),
              QString::fromUtf8("q\"uote\\ tab\t nl\n \x01 caf\xc3\xa9 bad") + QChar(0xFF));
}

TEST_F(TVOInfo, BlocksListsTheRawTreeWithOffsets)
{
    const std::string path = WriteRich("info-blocks.tvo", "o=1\n", nullptr);
    const SRun r = RunTvoinfo("--blocks " + path);
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<std::string> lines = Lines(r.out);
    ASSERT_GT(lines.size(), 4u);
    EXPECT_EQ(lines[1], "         0  1000 version, 11 bytes");
    EXPECT_EQ(lines[2], "        27  1002 options, 5 bytes");
    EXPECT_EQ(lines[3], "        48  1001 scene");
    EXPECT_EQ(lines[4], "        56    2000 clear colour, 12 bytes");
    EXPECT_TRUE(HasLine(r.out, "      2257      6014 interleaved data, 264 bytes")) << r.out;
}

TEST_F(TVOInfo, InvalidFilesExitOneWithOneLineNamingOffsetAndBlock)
{
    const std::string path = WriteRich("info-bad.tvo", nullptr, nullptr);
    const std::string bytes = ReadAll(path);
    std::ofstream(path, std::ios::binary) << bytes.substr(0, bytes.size() - 100);
    for (const char* mode : {"", "--json ", "--blocks "})
    {
        const SRun r = RunTvoinfo(mode + path);
        EXPECT_EQ(r.status, 1) << mode;
        const std::vector<std::string> err = Lines(r.err);
        ASSERT_EQ(err.size(), 1u) << mode << r.err;
        EXPECT_EQ(err[0].rfind("tvoinfo: " + path + ": byte ", 0), 0u) << err[0];
        EXPECT_NE(err[0].find("block 2013 (node) in 1001 (scene): unexpected end of data"), std::string::npos)
            << err[0];
    }
    EXPECT_EQ(RunTvoinfo(path).out, "");

    const SRun missing = RunTvoinfo(m_dir / "info-missing.tvo");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(Lines(missing.err).size(), 1u);
    // Something that is no .tvo at all says so rather than naming a damaged block.
    for (const std::string& foreign : {std::string("\x89PNG\r\n\x1a\n0123456789abcdefghij", 28),
                                       std::string("bExportGeometry=1\nbIndexed=1\n")})
    {
        std::ofstream(path, std::ios::binary) << foreign;
        const SRun r = RunTvoinfo(path);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(
            r.err,
            "tvoinfo: " + path +
                ": not a .tvo file (bad magic: it does not start with the version block \"AB.TVO.2.0\")\n");
    }
    EXPECT_EQ(RunTvoinfo("").status, 2);
    EXPECT_EQ(RunTvoinfo("--bogus " + path).status, 2);
    EXPECT_EQ(RunTvoinfo(path + " " + path).status, 2);
}
