#include "StudioProfiles.h"

#include <QDir>
#include <QFileInfo>

#include "CommonGUIStrings.h"
#include "Log.h"
#include "Options.h"
#include "OptionsRules.h"

namespace
{
// More files than any studio keeps; a folder pointing somewhere huge is not read whole.
constexpr int kMaxStudioProfiles = 200;
} // namespace

QString StudioProfilesFolder()
{
    return qEnvironmentVariable("OSTREX_STUDIO_PROFILES");
}

std::vector<SStudioProfile> ReadStudioProfiles(const QString& folder)
{
    std::vector<SStudioProfile> profiles;
    if (folder.isEmpty())
        return profiles;
    const QDir dir(folder);
    const QFileInfoList files =
        dir.entryInfoList({"*.cfg", "*.txt", "*.tvo", "*.cpp"}, QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo& file : files)
    {
        if (static_cast<int>(profiles.size()) >= kMaxStudioProfiles)
            break;
        COptions options;
        const COptions defaults;
        if (options.ReadConfig(file.filePath().toUtf8().constData()) == 0)
        {
            Log(eLogWarning, "%s",
                CCommonGUIStrings::QtText(CCommonGUIStrings::eStrReadOptionsFailed)
                    .arg(file.filePath())
                    .toUtf8()
                    .constData());
            continue;
        }
        KeepProgramLaunchesOf(defaults, options);
        profiles.push_back({file.completeBaseName(), file.filePath(), options});
    }
    return profiles;
}
