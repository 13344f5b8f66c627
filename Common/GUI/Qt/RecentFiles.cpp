#include "RecentFiles.h"

#include <vector>

#include "GuiPreferences.h"
#include "QMXPreferences.h"

namespace
{
const char* const kRecentFilesKey = "RecentFiles/List/";
}

void CRecentFiles::Load(CQMXPreferences& prefs)
{
    std::vector<CQMXTString> stored;
    m_files.clear();
    if (prefs.GetValue(kRecentFilesKey, stored) != eQMXPrefSuccess)
        return;
    for (const CQMXTString& path : stored)
        if (path.c_str()[0] != '\0' && !m_files.contains(QString::fromUtf8(path.c_str())) &&
            m_files.size() < kMaxRecentFiles)
            m_files.append(QString::fromUtf8(path.c_str()));
}

bool CRecentFiles::Save(CQMXPreferences& prefs) const
{
    std::vector<CQMXTString> stored;
    for (const QString& path : m_files)
        stored.emplace_back(path.toUtf8().constData());
    if (prefs.SetValue(kRecentFilesKey, stored) != eQMXPrefSuccess)
        return false;
    return prefs.Save();
}

void CRecentFiles::Add(const QString& path)
{
    if (path.isEmpty())
        return;
    m_files.removeAll(path);
    m_files.prepend(path);
    while (m_files.size() > kMaxRecentFiles)
        m_files.removeLast();
}

bool SaveToRegistry(const char* exportedPath)
{
    if (!exportedPath || !*exportedPath)
        return false;
    CQMXPreferences& prefs = GuiPreferences();
    CRecentFiles recent;
    recent.Load(prefs);
    recent.Add(QString::fromUtf8(exportedPath));
    return recent.Save(prefs);
}
