// COptionsProfiles: the user's export-option profiles as a plain list, stored with CProfileStore.
// What the command line uses, and what tests reach without a window; the options window keeps its
// own list items and calls CProfileStore the same way. Failures to load a profile go to the log as
// warnings.
#pragma once

#include <vector>

#include "OptionsData.h"
#include "ProfileStore.h"

class COptionsProfiles
{
  public:
    struct SProfile
    {
        CQMXTString sCaption;
        COptionsData options;
    };

    // Stores the list (in order) under prefix and saves the store.
    bool Save(CQMXPreferences& prefs, const char* prefix);
    // Replaces the list by the stored profiles; returns how many were loaded.
    int Load(CQMXPreferences& prefs, const char* prefix);
    // The first profile with this caption, or null.
    const SProfile* Find(const char* caption) const;

    std::vector<SProfile> m_profiles;
    CProfileStore m_store; // with the last import and export directories
};
