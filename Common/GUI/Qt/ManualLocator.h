// Where the user manual is looked for: relative to the folder of the running program, first the
// installed layout "../../../Documentation/" (and the build tree's "../../Documentation/", and
// "../share/doc/ostrex/"), each for "Ostrex.User Manual.pdf", then the HTML and Markdown forms
// ("Ostrex.User Manual.html", "UserManual.md") in the same folders.
#pragma once

#include <QString>
#include <QStringList>

QStringList ManualCandidates(const QString& programDir);
// The first candidate that exists, or an empty string.
QString FindManual(const QString& programDir);
