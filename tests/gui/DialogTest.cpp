#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include "GuiPreferences.h"
#include "ManualLocator.h"
#include <QDir>
#include <QTemporaryDir>
#include "GuiTests.h"
#include "OptionsWidget.h"
#include "OptionsWindow.h"
#include "QMXPreferences.h"

using O = COptionsData;

namespace
{
// Runs action on the options window once the modal loop has shown it.
void WhenWindowOpens(const std::function<void(COptionsWindow&)>& action)
{
    QTimer::singleShot(0,
                       [action]
                       {
                           for (QWidget* widget : QApplication::topLevelWidgets())
                               if (auto* window = qobject_cast<COptionsWindow*>(widget);
                                   window && window->isVisible())
                                   action(*window);
                       });
}

bool AnyWindowVisible()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible())
            return true;
    return false;
}
} // namespace

void CGuiTest::cancelKeepsAndExportStoresTheOptionsForScriptRuns()
{
    // A run from a script takes the stored options without showing a window.
    COptions stored;
    stored.SetOption(O::eBoneLimit, 33u);
    QVERIFY(stored.Save(GuiPreferences(), kGuiCurrentOptionsPrefix));
    COptions scripted;
    QVERIFY(DisplayOptionsDialog(scripted, 0, nullptr, true));
    QCOMPARE(scripted.GetOption(O::eBoneLimit), 33u);
    QVERIFY(!AnyWindowVisible());

    for (bool exporting : {false, true})
    {
        COptions options;
        WhenWindowOpens(
            [exporting](COptionsWindow& window)
            {
                window.optionsWidget()->alignmentBox()->click();
                (exporting ? window.exportButton() : window.cancelButton())->click();
            });
        QCOMPARE(DisplayOptionsDialog(options, 0, nullptr, false), exporting);
        QCOMPARE(options.GetOption(O::eAlignData), !exporting);
    }
    // The stored options reopen the next window, and a script run takes them.
    COptions next;
    QVERIFY(DisplayOptionsDialog(next, 0, nullptr, true));
    QVERIFY(!next.GetOption(O::eAlignData));
    QCOMPARE(next.GetOption(O::eBoneLimit), 33u);
    QVERIFY(GuiPreferences().KeyExists("Maya/Window/Geometry/Options"));
    QVERIFY(GuiPreferences().KeyExists("Maya/Window/State/Options"));
}

void CGuiTest::manualIsFoundBesideTheProgram()
{
    QTemporaryDir root;
    const QString program = root.filePath("a/b/bin");
    QVERIFY(QDir().mkpath(program));
    QVERIFY(FindManual(program).isEmpty());
    QVERIFY(QDir().mkpath(root.filePath("a/Documentation")));
    QFile markdown(root.filePath("a/Documentation/UserManual.md"));
    QVERIFY(markdown.open(QIODevice::WriteOnly));
    markdown.close();
    QCOMPARE(FindManual(program), markdown.fileName());
    QVERIFY(QDir().mkpath(root.filePath("Documentation")));
    QFile pdf(root.filePath("Documentation/Ostrex.User Manual.pdf"));
    QVERIFY(pdf.open(QIODevice::WriteOnly));
    pdf.close();
    QCOMPARE(FindManual(program), pdf.fileName());
}
