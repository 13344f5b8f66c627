#include "WindowLayout.h"

#include <QMainWindow>

#include <cstdlib>

#include "QMXPreferences.h"

namespace
{
QByteArray ReadBinary(CQMXPreferences& prefs, const QString& key)
{
    uint8_t* data = nullptr;
    uint32_t length = 0;
    QByteArray bytes;
    if (prefs.GetValue(key.toUtf8().constData(), data, length) == eQMXPrefSuccess)
        bytes = QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(length));
    std::free(data);
    return bytes;
}

void WriteBinary(CQMXPreferences& prefs, const QString& key, const QByteArray& bytes)
{
    prefs.SetValue(key.toUtf8().constData(), bytes.constData(), static_cast<uint32_t>(bytes.size()));
}
} // namespace

void LoadWindowLayout(QMainWindow& window, CQMXPreferences& prefs, const QString& suffix)
{
    const QByteArray geometry = ReadBinary(prefs, "Maya/Window/Geometry/" + suffix);
    if (!geometry.isEmpty())
        window.restoreGeometry(geometry);
    const QByteArray state = ReadBinary(prefs, "Maya/Window/State/" + suffix);
    if (!state.isEmpty())
        window.restoreState(state);
}

void SaveWindowLayout(const QMainWindow& window, CQMXPreferences& prefs, const QString& suffix)
{
    WriteBinary(prefs, "Maya/Window/Geometry/" + suffix, window.saveGeometry());
    WriteBinary(prefs, "Maya/Window/State/" + suffix, window.saveState());
}
