// Studio profiles: option sets a studio hands every artist as options text files in one folder,
// named by the environment variable OSTREX_STUDIO_PROFILES. Every file with the extension cfg, txt,
// tvo or cpp there becomes a read-only profile captioned with the file's name without extension, in
// name order. Files are data: the settings that start a program after export keep their defaults. A
// file that holds no options is skipped with a warning in the log.
#pragma once

#include <QString>

#include <vector>

#include "OptionsData.h"

struct SStudioProfile
{
    QString sCaption;
    QString sPath;
    COptionsData options;
};

// The folder named by OSTREX_STUDIO_PROFILES, or an empty string.
QString StudioProfilesFolder();
std::vector<SStudioProfile> ReadStudioProfiles(const QString& folder);
