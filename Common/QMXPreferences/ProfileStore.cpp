#include "ProfileStore.h"

#include "QMXPreferences.h"

namespace
{
CQMXTString Key(const char* prefix, const char* rest)
{
    return CQMXTString(prefix) + rest;
}

CQMXTString SubtreeKey(const char* prefix, const CQMXTString& entry)
{
    return Key(prefix, "/Custom/") + entry;
}
} // namespace

CQMXTString CProfileStore::EntryName(int position, const CQMXTString& caption)
{
    return QMXTStringFromFormattedStr("%i:%s", position, caption.c_str());
}

CQMXTString CProfileStore::CaptionOf(const CQMXTString& entry)
{
    const size_t colon = entry.find(':');
    return colon == CQMXTString::npos ? entry : entry.substr(colon + 1);
}

bool CProfileStore::SaveProfile(CQMXPreferences& prefs, const char* prefix, const CQMXTString& entry,
                                const CQMXPrefsStorable& options)
{
    return options.Save(prefs, SubtreeKey(prefix, entry).c_str());
}

bool CProfileStore::LoadProfile(CQMXPreferences& prefs, const char* prefix, const CQMXTString& entry,
                                CQMXPrefsStorable& options)
{
    const CQMXTString key = SubtreeKey(prefix, entry);
    return prefs.KeyExists(key.c_str()) && options.Load(prefs, key.c_str());
}

bool CProfileStore::Save(CQMXPreferences& prefs, const char* prefix, const std::vector<SProfileRef>& profiles)
{
    bool ok = prefs.SetValue(Key(prefix, "/LastImportPath/").c_str(), m_sLastImportPath) == eQMXPrefSuccess;
    ok = prefs.SetValue(Key(prefix, "/LastExportPath/").c_str(), m_sLastExportPath) == eQMXPrefSuccess && ok;
    const int cleared = prefs.ClearKey(Key(prefix, "/Custom/").c_str());
    ok = (cleared == eQMXPrefSuccess || cleared == eQMXPrefNoValue) && ok;

    std::vector<CQMXTString> list;
    for (const SProfileRef& profile : profiles)
    {
        if (profile.bBuiltIn || !profile.pOptions)
            continue;
        const CQMXTString entry = EntryName(static_cast<int>(list.size()), profile.sCaption);
        list.push_back(entry);
        ok = SaveProfile(prefs, prefix, entry, *profile.pOptions) && ok;
    }
    ok = prefs.SetValue(Key(prefix, "/Custom/List/").c_str(), list) == eQMXPrefSuccess && ok;
    return prefs.Save(false) && ok;
}

int CProfileStore::Load(CQMXPreferences& prefs, const char* prefix, const FAddProfile& addProfile,
                        const FMessage& message)
{
    prefs.GetValue(Key(prefix, "/LastImportPath/").c_str(), m_sLastImportPath, m_sLastImportPath);
    prefs.GetValue(Key(prefix, "/LastExportPath/").c_str(), m_sLastExportPath, m_sLastExportPath);

    std::vector<CQMXTString> list;
    prefs.GetValue(Key(prefix, "/Custom/List/").c_str(), list);
    int loaded = 0;
    for (const CQMXTString& entry : list)
    {
        const CQMXTString caption = CaptionOf(entry);
        if (!prefs.KeyExists(SubtreeKey(prefix, entry).c_str()))
        {
            if (message)
                message(CQMXTString("Failed to load profile ") + caption + ". Entry does not exist");
            continue;
        }
        CQMXPrefsStorable* options = addProfile ? addProfile(caption) : nullptr;
        if (options && LoadProfile(prefs, prefix, entry, *options))
            ++loaded;
    }
    return loaded;
}
