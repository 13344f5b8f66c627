#include "ExportSettings.h"

#include <algorithm>
#include <cctype>

#include "Log.h"
#include "OptionsRules.h"
#include "QMXPreferences.h"

const char* const kMayaPreferencesName = "Ostrex";
const char* const kCurrentOptionsPrefix = "Profiles/[Current]";

namespace
{
std::string LowerExtension(const char* path)
{
    const std::string p(path);
    const size_t slash = p.rfind('/');
    const size_t dot = p.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return std::string();
    std::string e = p.substr(dot + 1);
    std::transform(e.begin(), e.end(), e.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return e;
}

bool LoadStore(CQMXPreferences& prefs)
{
    CQMXTString errors;
    return prefs.Load(errors);
}
} // namespace

bool IsEmbeddedOptionsFile(const char* path)
{
    const std::string e = LowerExtension(path);
    return e == "tvo" || e == "h" || e == "cpp";
}

bool KeepUserScriptOf(const COptionsData& before, COptionsData& options)
{
    const bool runs = options.GetOption(COptionsData::eExportUserData) && !options.GetOption(COptionsData::eScriptFile).empty();
    const bool changed = options.GetOption(COptionsData::eExportUserData) != before.GetOption(COptionsData::eExportUserData) ||
                         options.GetOption(COptionsData::eScriptFile) != before.GetOption(COptionsData::eScriptFile);
    options.SetOption(COptionsData::eExportUserData, before.GetOption(COptionsData::eExportUserData));
    options.SetOption(COptionsData::eScriptFile, before.GetOption(COptionsData::eScriptFile));
    return changed && runs;
}

int ReadExportConfig(COptions& options, const char* path)
{
    const COptions before = options;
    const int count = options.ReadConfig(path);
    if (count == 0 || !IsEmbeddedOptionsFile(path))
        return count;
    const bool launches = KeepProgramLaunchesOf(before, options);
    if (KeepUserScriptOf(before, options) || launches)
        Log(eLogWarning,
            "Warning: '%s' carries a post-export command, viewer launch or user-data script, which was not run; "
            "name an options text file to run them.",
            path);
    return count;
}

bool StoreLastExportOptions(const COptions& options)
{
    CQMXPreferences prefs(kMayaPreferencesName);
    return LoadStore(prefs) && options.Save(prefs, kCurrentOptionsPrefix) && prefs.Save();
}
