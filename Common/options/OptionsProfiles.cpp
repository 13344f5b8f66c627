#include "OptionsProfiles.h"

#include <memory>

#include "Log.h"

bool COptionsProfiles::Save(CQMXPreferences& prefs, const char* prefix)
{
    std::vector<SProfileRef> refs;
    for (const SProfile& profile : m_profiles)
        refs.push_back({profile.sCaption, &profile.options, false});
    return m_store.Save(prefs, prefix, refs);
}

int COptionsProfiles::Load(CQMXPreferences& prefs, const char* prefix)
{
    // The store reads into each new profile before the next is made: keep them at stable addresses.
    std::vector<std::unique_ptr<SProfile>> loaded;
    const int count = m_store.Load(
        prefs, prefix,
        [&](const CQMXTString& caption) -> CQMXPrefsStorable* {
            loaded.push_back(std::make_unique<SProfile>());
            loaded.back()->sCaption = caption;
            return &loaded.back()->options;
        },
        [](const CQMXTString& message) { Log(eLogWarning, "%s", message.c_str()); });
    m_profiles.clear();
    for (const auto& profile : loaded)
        m_profiles.push_back(*profile);
    return count;
}

const COptionsProfiles::SProfile* COptionsProfiles::Find(const char* caption) const
{
    for (const SProfile& profile : m_profiles)
        if (profile.sCaption == caption)
            return &profile;
    return nullptr;
}
