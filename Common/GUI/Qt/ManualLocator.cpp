#include "ManualLocator.h"

#include <QDir>
#include <QFileInfo>

QStringList ManualCandidates(const QString& programDir)
{
    static const char* const folders[] = {"/../../../Documentation/", "/../../Documentation/", "/../share/doc/ostrex/"};
    static const char* const names[] = {"Ostrex.User Manual.pdf", "Ostrex.User Manual.html", "UserManual.md"};
    QStringList candidates;
    for (const char* name : names)
        for (const char* folder : folders)
            candidates.append(QDir::cleanPath(programDir + folder + name));
    return candidates;
}

QString FindManual(const QString& programDir)
{
    for (const QString& candidate : ManualCandidates(programDir))
        if (QFileInfo(candidate).isFile())
            return candidate;
    return QString();
}
