#include "GuiPreferences.h"

#include "Log.h"
#include "QMXPreferences.h"

const char* const kGuiPreferencesName = "Ostrex";
const char* const kGuiProfilesPrefix = "Profiles";
const char* const kGuiCurrentOptionsPrefix = "Profiles/[Current]";

CQMXPreferences& GuiPreferences()
{
    static CQMXPreferences prefs(kGuiPreferencesName);
    if (!prefs.IsLoaded())
    {
        CQMXTString errors;
        if (!prefs.Load(errors, true))
            Log(eLogWarning, "Warning: the preferences file %s cannot be read: %s", prefs.GetFilePath().c_str(),
                errors.c_str());
    }
    return prefs;
}
