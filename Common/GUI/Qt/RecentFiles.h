// The recent-files list: exported paths, most recent first, at most kMaxRecentFiles, a path added
// again moves to the top. Stored in the preferences as the string array "RecentFiles/List/".
#pragma once

#include <QStringList>

class CQMXPreferences;

class CRecentFiles
{
  public:
    static constexpr int kMaxRecentFiles = 10;

    void Load(CQMXPreferences& prefs);
    bool Save(CQMXPreferences& prefs) const;
    void Add(const QString& path);
    const QStringList& Files() const { return m_files; }

  private:
    QStringList m_files;
};

// Adds an exported path to the list in the shared preferences and saves them; what the hosts call
// after every export.
bool SaveToRegistry(const char* exportedPath);
