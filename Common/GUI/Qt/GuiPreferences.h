// The preferences store shared by the options window, the output log, the profiles and the
// recent-files list: the set "Ostrex" (the command line reads the same set), loaded on first use
// with change tracking, so the plug-in and ostrex-gui see each other's saves.
#pragma once

class CQMXPreferences;

extern const char* const kGuiPreferencesName;
// Key prefix of the profiles; the current (last used) options live under "Profiles/[Current]/".
extern const char* const kGuiProfilesPrefix;
extern const char* const kGuiCurrentOptionsPrefix;

CQMXPreferences& GuiPreferences();
