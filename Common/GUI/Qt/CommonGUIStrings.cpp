#include "CommonGUIStrings.h"

#include "QMXTStringTable.h"

namespace
{
const char g_szBlock[] =
    "Export bone geometry\0"
    "Write the geometry bound to joints as meshes of the joints\0"
    "Ostrex Options\0"
    "Ostrex - Output\0"
    "Recent Files\0"
    "(none)\0"
    "Check for Updates\0"
    "No update program is configured. Set one under the key \"Updates/Program\" in the preferences file %1.\0"
    "The update program '%1' could not be started.\0"
    "About Ostrex\0"
    "<h3>Ostrex %1</h3><p>Exports scenes as compact binary .tvo scene files for small GPUs.</p><p>Built with Qt %2 (LGPL v3), TinyXML (zlib licence), libb64 (public domain) and, in ostrex-gui, Assimp (BSD 3-clause licence).</p>\0"
    "Feedback\0"
    "Please send this text with your feedback, so we know which build you use:\0"
    "Copy\0"
    "The user manual was not found. Looked for:\n%1\0"
    "The user manual %1 could not be opened with xdg-open. Choose a program to view it?\0"
    "Choose a program to view the manual\0"
    "read-only\0"
    "A studio profile from %1: it can be used and exported, not renamed or deleted.\0"
    "No export options could be read from '%1'.\0"
    "Options read from '%1' asked to run a program after export; that part was not taken. Set it in the User Options tab to allow it.\0"
    "Open a scene\0"
    "Export the scene\0"
    "Open a scene first (File > Open...).\0"
    "The scene '%1' cannot be read: %2\0"
    "The viewer tvoview was not found next to this program (%1).\0"
    "Open in viewer\0"
    "Scene:";

using CTable = CQMXTStringTable<CCommonGUIStrings::eNumStrings>;
CTable g_table(g_szBlock, sizeof g_szBlock);
QString g_qsTexts[CTable::kEntries]; // the texts as QStrings, made on first use

void Initialise()
{
    g_table.Initialise(0);
    for (int i = 0; i < CTable::kEntries; ++i)
        g_qsTexts[i] = QString::fromUtf8(g_table.At(i));
}
} // namespace

const QString& CCommonGUIStrings::QtText(int n)
{
    static const QString empty;
    if (!g_table.IsInitialised())
        Initialise();
    const int i = g_table.Entry(n);
    return i < 0 ? empty : g_qsTexts[i];
}
