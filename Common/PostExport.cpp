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
} // namespace

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

    if (s.bDisplayInDravik && s.eExpFormat == 0 && !s.sPathToDravik.empty())
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
