#include <QProgressBar>
#include <QTextEdit>
#include <QtTest>

#include "GuiTests.h"
#include "Output.h"

void CGuiTest::levelColours_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("html");
    QTest::newRow("success") << 0 << "<font color=\"Dark Green\">m</font>";
    QTest::newRow("information") << 1 << "<font color=\"Black\">m</font>";
    QTest::newRow("warning") << 2 << "<font color=\"Chocolate\">m</font>";
    QTest::newRow("error") << 3 << "<font color=\"red\"><b>m</b></font>";
    QTest::newRow("detail") << 4 << QString();
}

void CGuiTest::levelColours()
{
    QFETCH(int, level);
    QFETCH(QString, html);
    EOutputType type;
    const bool shown = OutputTypeForLevel(level, type);
    QCOMPARE(shown, !html.isEmpty());
    if (shown)
        QCOMPARE(OutputHtml("m", type), html);
}

void CGuiTest::messagesReachTheWindow()
{
    CDlgOutput& out = CDlgOutput::Instance();
    QVERIFY(out.Show("log"));
    out.ClearText();
    QTextEdit* view = out.Window()->outputWidget()->textView();
    Log(eLogError, "before AddRef");
    QCOMPARE(view->toPlainText(), QString());

    out.AddRef();
    Log(eLogError, "failed");
    Log(eLogDetail, "detail");
    QCOMPARE(view->toPlainText(), QString("failed"));
    QVERIFY(view->toHtml().contains("font-weight:700"));
    out.DelRef();
    QCOMPARE(out.RefCount(), 0);
    out.Close();
}

void CGuiTest::progressBar_data()
{
    QTest::addColumn<int>("percent");
    QTest::addColumn<bool>("visible");
    QTest::newRow("start") << 0 << true;
    QTest::newRow("done") << 100 << false;
}

void CGuiTest::progressBar()
{
    QFETCH(int, percent);
    QFETCH(bool, visible);
    CDlgOutput& out = CDlgOutput::Instance();
    out.AddRef();
    out.Show("log");
    ProgressUpdate(percent, "step %i", percent);
    QProgressBar* bar = out.Window()->outputWidget()->progressBar();
    QCOMPARE(bar->value(), percent);
    QCOMPARE(bar->isVisible(), visible);
    QVERIFY(
        out.Window()->outputWidget()->textView()->toPlainText().endsWith(QString("step %1").arg(percent)));
    out.DelRef();
    out.Close();
}
