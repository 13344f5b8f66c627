#include "ExportSettings.h"

#include <algorithm>
#include <cctype>

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

void DropHostActions(COptions& options)
{
    options.SetOption(COptionsData::eUsePostExportCL, false);
    options.SetOption(COptionsData::eClPostTarget, CQMXTString(""));
    options.SetOption(COptionsData::eClPostArgs, CQMXTString(""));
    options.SetOption(COptionsData::eDisplayInDravik, false);
    options.SetOption(COptionsData::eExportUserData, false);
    options.SetOption(COptionsData::eScriptFile, CQMXTString(""));
}

int ReadExportConfig(COptions& options, const char* path)
{
    COptions read(options);
    const int count = read.ReadConfig(path);
    if (count == 0)
        return 0;
    if (IsEmbeddedOptionsFile(path))
        DropHostActions(read);
    options = read;
    return count;
}

bool StoreLastExportOptions(const COptions& options)
{
    CQMXPreferences prefs(kMayaPreferencesName);
    return LoadStore(prefs) && options.Save(prefs, kCurrentOptionsPrefix) && prefs.Save();
}
