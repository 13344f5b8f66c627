// ostrex-gui end to end: open the sample, switch to strips, Export; the written file passes tvoinfo,
// carries the strip setting, and the log shows the stages. A missing scene is an error, not a crash.
#include <QComboBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QtTest>

#include "GuiCommandLine.h"
#include "GuiSession.h"
#include "OptionsWidget.h"
#include "OptionsWindow.h"
#include "Output.h"

class COstrexGuiTest : public QObject
{
    Q_OBJECT
  private slots:
    void exportsTheSampleAsStrips();
    void unreadableScenesAreErrors();
    void commandLine();
};

void COstrexGuiTest::exportsTheSampleAsStrips()
{
    QTemporaryDir dir;
    CGuiSession session;
    QStringList errors;
    session.setErrorHandler([&](const QString& message) { errors.append(message); });
    QVERIFY(session.openScene(OSTREX_SAMPLE_SCENE));
    session.setOutputPath(dir.filePath("sample.tvo"));
    QComboBox* primitive = session.window().optionsWidget()->primitiveTypeList();
    primitive->setCurrentIndex(3);
    emit primitive->activated(3);
    session.window().exportButton()->click();
    QVERIFY2(errors.isEmpty(), qPrintable(errors.join("\n")));

    QProcess info;
    info.start(OSTREX_TVOINFO, {dir.filePath("sample.tvo")});
    QVERIFY(info.waitForFinished(30000));
    QCOMPARE(info.exitCode(), 0);
    COptions written;
    QVERIFY(written.ReadConfig(dir.filePath("sample.tvo").toUtf8().constData()) > 0);
    QCOMPARE(written.GetOption(COptionsData::ePrimType), ePrimTriangleStrips);
    const QString log = CDlgOutput::Instance().Window()->outputWidget()->textView()->toPlainText();
    for (const char* stage : {"Export stage 1", "Export stage 2", "Export stage 3", "Final export stage"})
        QVERIFY2(log.contains(stage), stage);
    QVERIFY(
        CDlgOutput::Instance().Window()->grab().save(QString(OSTREX_SCREENSHOT_DIR) + "/ostrex-gui-log.png"));
    CDlgOutput::Instance().Close();
}

void COstrexGuiTest::unreadableScenesAreErrors()
{
    QTemporaryDir dir;
    CGuiSession session;
    QStringList errors;
    session.setErrorHandler([&](const QString& message) { errors.append(message); });
    QVERIFY(!session.openScene(dir.filePath("missing.gltf")));
    QFile garbage(dir.filePath("garbage.gltf"));
    QVERIFY(garbage.open(QIODevice::WriteOnly));
    garbage.write("{ this is not a scene");
    garbage.close();
    QVERIFY(session.openScene(garbage.fileName()));
    session.setOutputPath(dir.filePath("garbage.tvo"));
    QVERIFY(!session.exportScene());
    QCOMPARE(errors.size(), 2);
    QVERIFY(errors[1].contains("garbage.gltf"));
    QVERIFY(!QFile::exists(dir.filePath("garbage.tvo")));
    CDlgOutput::Instance().Close();
}

void COstrexGuiTest::commandLine()
{
    const char* scene[] = {"ostrex-gui", "a.gltf"};
    QCOMPARE(QString::fromStdString(ParseGuiCommandLine(2, scene).scene), QString("a.gltf"));
    const char* help[] = {"ostrex-gui", "--help"};
    QVERIFY(ParseGuiCommandLine(2, help).help);
    const char* bad[] = {"ostrex-gui", "--bogus"};
    QVERIFY(!ParseGuiCommandLine(2, bad).error.empty());
    const char* two[] = {"ostrex-gui", "a.gltf", "b.gltf"};
    QVERIFY(!ParseGuiCommandLine(3, two).error.empty());
}

int RunOstrexGuiTests(int argc, char** argv)
{
    COstrexGuiTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "OstrexGuiTest.moc"
