// Post-export actions run real (harmless) commands in a temporary directory.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "Log.h"
#include "PostExport.h"
#include "SceneFixtures.h"

namespace
{
class PostExportTest : public ::testing::Test
{
  protected:
    // A program that writes its arguments, one a line, into record.txt in the directory.
    void WriteProgram(const std::string& name)
    {
        const std::string path = m_dir / name;
        std::ofstream(path) << "#!/bin/sh\nfor a in \"$@\"; do echo \"$a\"; done > \"" + dir +
                                   "/record.txt\"\n";
        ::chmod(path.c_str(), 0755);
    }
    std::string Record() const { return ReadAll(m_dir / "record.txt"); }
    bool Recorded() const { return ::access((m_dir / "record.txt").c_str(), F_OK) == 0; }

    CTempDir m_dir;
    const std::string dir = m_dir.Path();
};
} // namespace

TEST_F(PostExportTest, WorkingDirectoryIsQuotedAndJoinedWithASlash)
{
    WriteProgram("mark.sh");
    SPostExportSettings s;
    s.sClPostTarget = "mark.sh";
    s.sClPostArgs = "one 'two three'";
    s.sClPostCWD = dir;
    EXPECT_EQ(PostExportCommand(s), "\"" + dir + "/mark.sh\" one 'two three'");
    CRecordingLogSink sink;
    RunPostExportActions(s);
    EXPECT_EQ(Record(), "one\ntwo three\n");
    EXPECT_TRUE(sink.entries.empty());

    s.sClPostCWD = dir + "/";
    EXPECT_EQ(PostExportCommand(s), "\"" + dir + "/mark.sh\" one 'two three'");
}

TEST_F(PostExportTest, BackslashEndedDirectoryGetsNoSlash)
{
    // The program's file name itself starts with the backslash: it runs only if no "/" is added.
    WriteProgram("pre\\mark.sh");
    SPostExportSettings s;
    s.sClPostTarget = "mark.sh";
    s.sClPostArgs = "x";
    s.sClPostCWD = dir + "/pre\\";
    CRecordingLogSink sink;
    RunPostExportActions(s);
    EXPECT_EQ(Record(), "x\n");
    EXPECT_TRUE(sink.entries.empty());
}

TEST_F(PostExportTest, WithoutDirectoryTheTargetIsUnquotedAndFailuresAreLogged)
{
    SPostExportSettings s;
    s.sClPostTarget = "echo";
    s.sClPostArgs = "hello > '" + dir + "/record.txt'"; // the shell sees the redirection
    CRecordingLogSink sink;
    RunPostExportActions(s);
    EXPECT_EQ(Record(), "hello\n");
    EXPECT_TRUE(sink.entries.empty());

    s.sClPostTarget = "false";
    s.sClPostArgs.clear();
    RunPostExportActions(s);
    EXPECT_TRUE(sink.Has(eLogError, "Error: Unable to perform post-export options."));
}

TEST_F(PostExportTest, NothingRunsWithoutATarget)
{
    SPostExportSettings s;
    s.sClPostArgs = "; touch '" + dir + "/record.txt'";
    s.sClPostCWD = dir;
    CRecordingLogSink sink;
    RunPostExportActions(s);
    EXPECT_FALSE(Recorded());
    EXPECT_TRUE(sink.entries.empty());
}

TEST_F(PostExportTest, ViewerOpensBinaryOutputOnly)
{
    WriteProgram("viewer.sh");
    SPostExportSettings s;
    s.bDisplayInDravik = true;
    s.sPathToDravik = dir + "/viewer.sh";
    s.sOutputPath = dir + "/my scene.tvo";
    s.eExpFormat = 1; // header: no viewer
    CRecordingLogSink sink;
    RunPostExportActions(s);
    EXPECT_FALSE(Recorded());
    EXPECT_TRUE(sink.entries.empty());

    s.eExpFormat = 0;
    RunPostExportActions(s);
    EXPECT_EQ(Record(), dir + "/my scene.tvo\n");
    EXPECT_TRUE(sink.Has(eLogInfo, "Opening '" + dir + "/my scene.tvo' in '" + dir + "/viewer.sh'."));

    s.bDisplayInDravik = false;
    std::remove((dir + "/record.txt").c_str());
    RunPostExportActions(s);
    EXPECT_FALSE(Recorded());
}

namespace
{
std::vector<std::string> g_commands;
int FailingShell(const char* command)
{
    g_commands.push_back(command);
    return -1; // the shell itself could not be started
}
} // namespace

TEST(PostExport, AShellThatCannotStartIsReportedForTheViewer)
{
    g_commands.clear();
    const PostExportShell previous = SetPostExportShell(FailingShell);
    SPostExportSettings s;
    s.sClPostTarget = "tool";
    s.sClPostArgs = "-x";
    s.bDisplayInDravik = true;
    s.sPathToDravik = "/opt/viewer";
    s.sOutputPath = "/out/a.tvo";
    CRecordingLogSink sink;
    RunPostExportActions(s);
    SetPostExportShell(previous);
    ASSERT_EQ(g_commands.size(), 2u);
    EXPECT_EQ(g_commands[0], "tool -x");
    EXPECT_EQ(g_commands[1], "/opt/viewer \"/out/a.tvo\"");
    EXPECT_TRUE(sink.Has(eLogError, "Error: Unable to perform post-export options."));
    EXPECT_TRUE(sink.Has(eLogError, "Error: Failed to open '/out/a.tvo' in '/opt/viewer'."));
    EXPECT_EQ(sink.Count("Opening '/out/a.tvo' in '/opt/viewer'."), 0);
}
