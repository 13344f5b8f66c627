// Grabs each tab of the options window and the output log into PNG files under the build folder
// and checks that they show a window, not an empty or one-colour picture.
#include <QDir>
#include <QImage>
#include <QSet>
#include <QTabWidget>
#include <QtTest>

#include "GuiPreferences.h"
#include "GuiTests.h"
#include "OptionsWidget.h"
#include "OptionsWindow.h"
#include "ProfilesWidget.h"
#include "Output.h"

namespace
{
void SaveAndCheck(QWidget& widget, const QString& name)
{
    const QImage image = widget.grab().toImage();
    QVERIFY(QDir().mkpath(OSTREX_SCREENSHOT_DIR));
    QVERIFY(image.save(QString(OSTREX_SCREENSHOT_DIR) + "/" + name + ".png"));
    QVERIFY2(image.width() >= 400 && image.height() >= 250, qPrintable(name));
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 3)
        for (int x = 0; x < image.width(); x += 3)
            colours.insert(image.pixel(x, y));
    QVERIFY2(colours.size() >= 8, qPrintable(name));
}
} // namespace

void CGuiTest::optionsTabsAndOutputLog()
{
    COptions options;
    options.SetOption(COptionsData::eExportSkin, true);
    COptionsWindow window(options, GuiPreferences());
    window.profilesWidget()->addItem("Mobile: skinned", options);
    window.profilesWidget()->addItem("Studio console", COptionsData(), CProfileItem::eKindStudio);
    window.profilesWidget()->setCurrentOptions(options);
    window.show();
    QTabWidget* tabs = window.optionsWidget()->tabs();
    for (int i = 0; i < tabs->count(); ++i)
    {
        tabs->setCurrentIndex(i);
        SaveAndCheck(window,
                     QString("options-%1").arg(i) + "-" + tabs->tabText(i).replace(' ', '-').toLower());
    }

    CDlgOutput& out = CDlgOutput::Instance();
    out.AddRef();
    out.Show("Ostrex - Output");
    out.ClearText();
    ProgressUpdate(0, "Export stage 1");
    Log(eLogInfo, "Processing mesh %i", 0);
    Log(eLogWarning, "Warning: '%s' has been split up into %i meshes as it uses multiple materials.", "Body",
        2);
    Log(eLogError, "Error: Failed to open '%s' in '%s'.", "tvoview", "/opt");
    ProgressUpdate(75, "Final export stage");
    Log(eLogSuccess, "Complete");
    SaveAndCheck(*out.Window(), "output-log");
    out.DelRef();
    out.Close();
}
