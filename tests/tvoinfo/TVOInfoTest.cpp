// tvoinfo as a user meets it: the binary run on files written here, its exit status, its lines and
// its JSON.
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "QMXTModelTVO.h"
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
    // The rich scene, its second camera renamed with bytes JSON must escape (and one that is no UTF-8).
    std::string WriteRich(const char* name, const char* options, const char* history)
    {
        CQMXTModelTVO s;
        tvotest::MakeRichScene(s);
        std::free(s.pNode[6].pszName);
        s.pNode[6].pszName = tvotest::Str("q\"uote\\ tab\t nl\n \x01 caf\xc3\xa9 bad\xff");
        const std::string path = m_dir / name;
        EXPECT_EQ(s.SaveTVO(path.c_str(), options, history), 0);
        return path;
    }

    CTempDir m_dir;
};

QJsonObject Json(const std::string& text)
{
    QJsonParseError error;
    const QJsonDocument doc =
        QJsonDocument::fromJson(QByteArray(text.data(), static_cast<int>(text.size())), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return doc.object();
}

// Compares output with tests/data/NAME past its leading '#' lines, the file's path written as FILE;
// with OSTREX_WRITE_GOLDEN=1 in the environment rewrites the golden file instead.
void ExpectGolden(std::string text, const std::string& path, const std::string& name)
{
    for (size_t at; (at = text.find(path)) != std::string::npos;)
        text.replace(at, path.size(), "FILE");
    const std::string golden = std::string(OSTREX_TEST_DATA_DIR "/") + name, old = ReadAll(golden);
    std::string header;
    for (size_t at = 0; at < old.size() && old[at] == '#'; at = header.size())
        header = old.substr(0, old.find('\n', at) + 1);
    if (std::getenv("OSTREX_WRITE_GOLDEN"))
        WriteAll(golden, header + text);
    EXPECT_EQ(text, old.substr(header.size())) << name;
}
} // namespace

// The summary and the JSON (parsed, in Qt's compact form) of a file holding every block, as recorded,
// and the start of its block tree.
TEST_F(TVOInfo, SummaryJsonAndBlocksOfEveryBlockKind)
{
    const std::string path =
        WriteRich("info-rich.tvo", "bOpt=1\nfScale=2\n", "exported\x1b[2Ja test"); // ESC: shown, not acted on
    SRun r = RunTvoinfo(path);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    ExpectGolden(r.out, path, "tvoinfo-rich.txt");
    r = RunTvoinfo("--json " + path);
    ASSERT_EQ(r.status, 0) << r.err;
    ExpectGolden(QJsonDocument(Json(r.out)).toJson(QJsonDocument::Compact).toStdString() + "\n", path,
                 "tvoinfo-rich.json");
    EXPECT_EQ(RunTvoinfo("--options " + path).out, "bOpt=1\nfScale=2\n");

    r = RunTvoinfo("--blocks " + path);
    ASSERT_EQ(r.status, 0) << r.err;
    for (const char* line : {"\n         0  1000 version, 11 bytes\n        27  1002 options, 17 bytes\n",
                             "\n        95  1001 scene\n       103    2000 clear colour, 12 bytes\n"})
        EXPECT_NE(r.out.find(line), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\n      2304      6014 interleaved data, 264 bytes\n"), std::string::npos) << r.out;
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
        EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << mode << r.err; // one line
        EXPECT_EQ(r.err.rfind("tvoinfo: " + path + ": byte ", 0), 0u) << r.err;
        EXPECT_NE(r.err.find("block 2013 (node) in 1001 (scene): unexpected end of data"), std::string::npos);
    }
    EXPECT_EQ(RunTvoinfo(path).out, "");

    const SRun missing = RunTvoinfo(m_dir / "info-missing.tvo");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err.find('\n'), missing.err.size() - 1) << missing.err;
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
