#include "PostExport.h"

#include <cstdlib>

#include "Log.h"
#include "TVOBuilderStrings.h"

namespace
{
int SystemShell(const char* command)
{
    return std::system(command);
}

PostExportShell g_pShell = SystemShell;
std::string g_sDefaultViewer;

// The path quoted for the shell, so that no character in it means anything to the shell.
std::string ShellQuoted(const std::string& path)
{
    std::string quoted = "'";
    for (char c : path)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}
} // namespace

void SetDefaultViewer(const std::string& path)
{
    g_sDefaultViewer = path;
}

const std::string& DefaultViewer()
{
    return g_sDefaultViewer;
}

bool OpenInViewer(const std::string& path)
{
    if (g_sDefaultViewer.empty())
    {
        Log(eLogError, "Error: no viewer to open '%s' in.", path.c_str());
        return false;
    }
    // In the background: the export is done and the viewer's window may stay open for long. The
    // shell's status says whether the viewer exists; the viewer itself is not waited for.
    const std::string viewer = ShellQuoted(g_sDefaultViewer);
    const std::string command = "command -v " + viewer + " >/dev/null && { " + viewer + " " + ShellQuoted(path) +
                                " >/dev/null 2>&1 & }";
    if (g_pShell(command.c_str()) != 0)
    {
        Log(eLogError, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eFailedToOpenIn), path.c_str(),
            g_sDefaultViewer.c_str());
        return false;
    }
    Log(eLogInfo, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eOpeningIn), path.c_str(),
        g_sDefaultViewer.c_str());
    return true;
}

PostExportShell SetPostExportShell(PostExportShell shell)
{
    const PostExportShell previous = g_pShell;
    g_pShell = shell ? shell : SystemShell;
    return previous;
}

std::string PostExportCommand(const SPostExportSettings& s)
{
    if (s.sClPostTarget.empty())
        return std::string();
    std::string command;
    if (!s.sClPostCWD.empty())
    {
        const char last = s.sClPostCWD.back();
        command = "\"" + s.sClPostCWD;
        if (last != '/' && last != '\\')
            command += "/";
        command += s.sClPostTarget + "\"";
    }
    else
        command = s.sClPostTarget;
    return command + " " + s.sClPostArgs;
}

std::string ViewerCommand(const SPostExportSettings& s)
{
    return s.sPathToDravik + " \"" + s.sOutputPath + "\"";
}

void RunPostExportActions(const SPostExportSettings& s)
{
    const std::string command = PostExportCommand(s);
    if (!command.empty() && g_pShell(command.c_str()) != 0)
        Log(eLogError, "%s", CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eUnablePostExport));

    if (s.bDisplayInDravik && s.eExpFormat == 0 && s.sPathToDravik.empty() && !g_sDefaultViewer.empty())
        OpenInViewer(s.sOutputPath);
    else if (s.bDisplayInDravik && s.eExpFormat == 0 && !s.sPathToDravik.empty())
    {
        const int result = g_pShell(ViewerCommand(s).c_str());
        if (result == -1)
            Log(eLogError, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eFailedToOpenIn),
                s.sOutputPath.c_str(), s.sPathToDravik.c_str());
        else
            Log(eLogInfo, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eOpeningIn), s.sOutputPath.c_str(),
                s.sPathToDravik.c_str());
    }
}
