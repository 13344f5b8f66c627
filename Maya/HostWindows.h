// The windows of an interactive export, kept behind one seam so that the scene code never includes
// Qt: the options window (DisplayOptionsDialog of the Qt library, with the program name
// "Ostrex.mll" for a Qt application it may have to create). Returns false when the user cancels.
// Never called when a configuration file is named, so batch exports (mayapy, mayabatch) never open
// a window.
#pragma once

#include "Options.h"

bool ShowExportOptions(COptions& options, bool launchedFromMel);
