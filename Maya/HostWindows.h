// What the plug-in takes from the Qt windows library, kept behind one seam so that the scene code
// never includes Qt (tests supply their own versions):
//  - ShowExportOptions: the options window (DisplayOptionsDialog with the program name
//    "Ostrex.mll" for a Qt application it may have to create); false when the user cancels. Never
//    called when a configuration file is named, so batch exports (mayapy, mayabatch) open no window.
//  - OpenExportLog / CloseExportLog: the output log window around an export started from Maya's
//    File menu; it stays on screen after the export for the user to read.
//  - SaveToRegistry: puts an exported path first in the recent-files list of the preferences.
#pragma once

#include "Options.h"

bool ShowExportOptions(COptions& options, bool launchedFromMel);
void OpenExportLog();
void CloseExportLog();
bool SaveToRegistry(const char* exportedPath);
