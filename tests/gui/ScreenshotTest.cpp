// Grabs each tab of the options window into PNG files under the build folder and checks that they
// show a window, not an empty or one-colour picture. (OstrexGuiTest grabs the output log.)
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

void CGuiTest::optionsTabs()
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
}
