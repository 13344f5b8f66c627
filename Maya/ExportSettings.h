// Where the plug-in's export options come from and where they go, apart from the options window.
//
// ReadExportConfig reads the configuration file named to Ostrex_Export. A text options file is the
// user's own settings and is taken whole. Options embedded in an exported file (.tvo, .h or .cpp)
// are somebody's data: they never start a program or source a script, so the post-export command,
// viewer launch and user-data script keep the values they had before the file was read (one warning
// says so when the file asked for any). A missing file leaves the options as they were; the result
// is the number of options read.
//
// StoreLastExportOptions keeps the options of an export as the current settings of the preferences
// store ("Ostrex", under "Profiles/[Current]"), which the options window and a one-argument
// Ostrex_Export start from.
#pragma once

#include "Options.h"

extern const char* const kMayaPreferencesName;
extern const char* const kCurrentOptionsPrefix;

// True for files whose embedded options are data, never commands.
bool IsEmbeddedOptionsFile(const char* path);
int ReadExportConfig(COptions& options, const char* path);
// Puts back bExportUserData and sScriptFile as they were in before; true when options had been
// changed so as to source a script.
bool KeepUserScriptOf(const COptionsData& before, COptionsData& options);

bool StoreLastExportOptions(const COptions& options);
