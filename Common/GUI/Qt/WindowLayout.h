// Window state and geometry of a main window in the preferences, under "Maya/Window/State/<suffix>"
// and "Maya/Window/Geometry/<suffix>" (binary values). A missing or unreadable value leaves the
// window as it is.
#pragma once

#include <QString>

class QMainWindow;
class CQMXPreferences;

void LoadWindowLayout(QMainWindow& window, CQMXPreferences& prefs, const QString& suffix);
void SaveWindowLayout(const QMainWindow& window, CQMXPreferences& prefs, const QString& suffix);
