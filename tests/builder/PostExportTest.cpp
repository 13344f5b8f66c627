// Post-export actions through a recording shell: the command lines built, their order, and what is
// logged for each shell result. (EndToEnd.PostExportRunsAfterAWriteWhenAsked runs the real shell.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Log.h"
#include "PostExport.h"

namespace
{
std::vector<std::string> g_commands;
int g_status = 0;
int RecordingShell(const char* command)
{
    g_commands.push_back(command);
    return g_status;
}

struct SRow
{
    const char* target;
    const char* args;
    const char* cwd;
    bool view;
    uint32_t format;
    int status; // what the shell returns, -1 when it cannot start
    std::vector<std::string> commands;
    std::vector<std::string> messages;
};
} // namespace

TEST(PostExport, CommandsQuotingViewerAndFailures)
{
    const std::string viewer = "/opt/viewer \"/out/my scene.tvo\"";
    const std::string failed = "Error: Unable to perform post-export options.";
    const std::string cannotOpen = "Error: Failed to open '/out/my scene.tvo' in '/opt/viewer'.";
    const SRow rows[] = {
        {"mark.sh", "one 'two three'", "/d", false, 0, 0, {"\"/d/mark.sh\" one 'two three'"}, {}},
        {"mark.sh", "x", "/d/", false, 0, 0, {"\"/d/mark.sh\" x"}, {}},
        {"mark.sh", "x", "/d/pre\\", false, 0, 0, {"\"/d/pre\\mark.sh\" x"}, {}},
        {"echo", "hi > 'f'", "", false, 0, 0, {"echo hi > 'f'"}, {}},
        {"", "; touch f", "/d", false, 0, 0, {}, {}}, // nothing runs without a target
        {"false", "", "", false, 0, 1, {"false "}, {failed}},
        {"", "", "", true, 1, 0, {}, {}}, // a header is not opened in the viewer
        {"", "", "", true, 0, 0, {viewer}, {"Opening '/out/my scene.tvo' in '/opt/viewer'."}},
        {"tool", "-x", "", true, 0, -1, {"tool -x", viewer}, {failed, cannotOpen}},
    };
    const PostExportShell previous = SetPostExportShell(RecordingShell);
    for (const SRow& row : rows)
    {
        SPostExportSettings s;
        s.sClPostTarget = row.target;
        s.sClPostArgs = row.args;
        s.sClPostCWD = row.cwd;
        s.bDisplayInDravik = row.view;
        s.sPathToDravik = "/opt/viewer";
        s.eExpFormat = row.format;
        s.sOutputPath = "/out/my scene.tvo";
        g_commands.clear();
        g_status = row.status;
        CRecordingLogSink sink;
        RunPostExportActions(s);
        EXPECT_EQ(g_commands, row.commands) << row.target << row.cwd;
        std::vector<std::string> messages;
        for (const CRecordingLogSink::SEntry& e : sink.entries)
            messages.push_back(e.text);
        EXPECT_EQ(messages, row.messages) << row.target << row.cwd;
    }
    SetPostExportShell(previous);
}
