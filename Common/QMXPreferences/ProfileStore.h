// CProfileStore: named option sets (profiles) in the preferences store, without any widget.
//
// Layout under a key prefix P:
//   P/LastImportPath/  string        last directory a profile was imported from
//   P/LastExportPath/  string        last directory a profile was exported to
//   P/Custom/List/     string array  one entry "%i:%s" per profile: its position and its caption
//   P/Custom/<entry>/  subtree       the profile's values (CQMXPrefsStorable::Save)
// A caption may hold ":" (only the first ":" of an entry ends the number) and even "/" (the subtree
// then nests one level deeper, and is still found by the same entry).
//
// Save rewrites the whole P/Custom/ subtree from the given list in order, leaving out built-in
// entries, and saves the store (not forced). Load reads the directories (absent ones stay), then
// hands every listed profile whose subtree exists to the caller to be created and read; a listed
// profile without a subtree is reported as "Failed to load profile <caption>. Entry does not exist"
// and skipped. An entry without ":" is taken whole as the caption.
#pragma once

#include <functional>
#include <vector>

#include "QMXPrefsStorable.h"
#include "QMXTString.h"

class CQMXPreferences;

struct SProfileRef
{
    CQMXTString sCaption;
    const CQMXPrefsStorable* pOptions = nullptr;
    bool bBuiltIn = false; // the current and default options: shown, never stored
};

class CProfileStore
{
  public:
    // Creates a profile with this caption and returns where its values are to be read into; null
    // skips the profile.
    using FAddProfile = std::function<CQMXPrefsStorable*(const CQMXTString& caption)>;
    using FMessage = std::function<void(const CQMXTString& message)>;

    // True when every value was stored and the store was saved.
    bool Save(CQMXPreferences& prefs, const char* prefix, const std::vector<SProfileRef>& profiles);
    // Returns how many profiles were loaded.
    int Load(CQMXPreferences& prefs, const char* prefix, const FAddProfile& addProfile, const FMessage& message);

    // One profile's subtree: P/Custom/<entry>. LoadProfile is false when the subtree is missing.
    static bool SaveProfile(CQMXPreferences& prefs, const char* prefix, const CQMXTString& entry,
                            const CQMXPrefsStorable& options);
    static bool LoadProfile(CQMXPreferences& prefs, const char* prefix, const CQMXTString& entry,
                            CQMXPrefsStorable& options);
    // "%i:%s", and the caption back from such an entry.
    static CQMXTString EntryName(int position, const CQMXTString& caption);
    static CQMXTString CaptionOf(const CQMXTString& entry);

    CQMXTString m_sLastImportPath;
    CQMXTString m_sLastExportPath;
};
