#include "HostWindows.h"

#include "OptionsWindow.h"

bool ShowExportOptions(COptions& options, bool launchedFromMel)
{
    static char programName[] = "Ostrex.mll";
    char* argv[] = {programName, nullptr};
    return DisplayOptionsDialog(options, 1, argv, launchedFromMel);
}
