#include "HostWindows.h"

#include "OptionsWindow.h"
#include "Output.h"
#include "RecentFiles.h"

bool ShowExportOptions(COptions& options, bool launchedFromMel)
{
    static char programName[] = "Ostrex.mll";
    char* argv[] = {programName, nullptr};
    return DisplayOptionsDialog(options, 1, argv, launchedFromMel);
}

void OpenExportLog()
{
    CDlgOutput& output = CDlgOutput::Instance();
    output.AddRef();
    output.ClearText();
    output.Show("Ostrex");
}

void CloseExportLog()
{
    CDlgOutput::Instance().HandleEvents();
    CDlgOutput::Instance().DelRef();
}
