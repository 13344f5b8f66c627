// CQMXPrefsStorable: something that stores itself in the preferences store under a key prefix.
// The export options implement it; the profile storage keeps any number of them without knowing
// their type.
#pragma once

class CQMXPreferences;

class CQMXPrefsStorable
{
  public:
    // Writes every value as prefix + its own path. False when the store refused a value.
    virtual bool Save(CQMXPreferences& prefs, const char* prefix) const = 0;
    // Reads every value from prefix + its own path; an absent value keeps the current one. False
    // only when the store could not be read at all.
    virtual bool Load(CQMXPreferences& prefs, const char* prefix) = 0;
    virtual ~CQMXPrefsStorable() = default;
};
