#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include "GuiTests.h"
#include "Log.h"
#include "ProfilesWidget.h"
#include "QMXPreferences.h"
#include "RecentFiles.h"

using O = COptionsData;

namespace
{
COptionsData OptionsWithBoneLimit(unsigned limit)
{
    COptionsData options;
    options.ConfigDefault();
    options.SetOption(O::eBoneLimit, limit);
    return options;
}

QStringList Captions(const CProfilesWidget& list)
{
    QStringList captions;
    for (int i = 0; i < list.count(); ++i)
        captions.append(list.profileAt(i)->caption());
    return captions;
}

// A preferences set of its own in the temporary HOME.
struct SPrefs
{
    explicit SPrefs(const char* name) : prefs(name)
    {
        CQMXTString errors;
        prefs.Load(errors, false);
    }
    CQMXPreferences prefs;
};
} // namespace

void CGuiTest::studioProfilesAreReadOnlyAndNotStored()
{
    QTemporaryDir studio;
    QFile file(studio.filePath("Studio Mobile.cfg"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("uiBoneLimit=24\nbDisplayInDravik=1\n");
    file.close();
    qputenv("OSTREX_STUDIO_PROFILES", studio.path().toUtf8());
    SPrefs store("ProfilesStudio");
    CProfilesWidget list;
    list.Load(store.prefs, "Profiles");
    qunsetenv("OSTREX_STUDIO_PROFILES");

    CProfileItem* profile = list.findProfile("Studio Mobile");
    QVERIFY(profile);
    QVERIFY(profile->isReadOnly());
    QCOMPARE(profile->text(), QString("Studio Mobile - read-only"));
    QCOMPARE(profile->getOptions().GetOption(O::eBoneLimit), 24u);
    QVERIFY(!profile->getOptions().GetOption(O::eDisplayInDravik));
    // Not stored with the user's profiles, which come back after the built-in entries.
    list.addItem("Mobile: low", OptionsWithBoneLimit(20));
    QVERIFY(list.Save(store.prefs, "Profiles"));
    CProfilesWidget loaded;
    loaded.Load(store.prefs, "Profiles");
    QCOMPARE(Captions(loaded), QStringList({"[Current]", "Default Settings", "Mobile: low"}));
    QCOMPARE(loaded.findProfile("Mobile: low")->getOptions().GetOption(O::eBoneLimit), 20u);
    list.setCurrentItem(profile); // and not renamed
    list.renameProfile();
    QCOMPARE(profile->caption(), QString("Studio Mobile"));
}

void CGuiTest::recentFilesMostRecentFirst()
{
    SPrefs store("Recent");
    CRecentFiles recent;
    for (int i = 0; i < 12; ++i)
        recent.Add(QString("/out/scene%1.tvo").arg(i));
    recent.Add("/out/scene5.tvo");
    QVERIFY(recent.Save(store.prefs));
    CRecentFiles loaded;
    loaded.Load(store.prefs);
    QCOMPARE(loaded.Files().size(), CRecentFiles::kMaxRecentFiles);
    QCOMPARE(loaded.Files().first(), QString("/out/scene5.tvo"));
    QCOMPARE(loaded.Files().count("/out/scene5.tvo"), 1);
    QCOMPARE(loaded.Files()[1], QString("/out/scene11.tvo"));
    QVERIFY(!loaded.Files().contains("/out/scene1.tvo"));
}

void CGuiTest::exportedProfileImportsAlike()
{
    QTemporaryDir dir;
    CProfilesWidget list;
    COptionsData options = OptionsWithBoneLimit(21);
    options.SetOption(O::eUsePostExportCL, true);
    options.SetOption(O::eClPostTarget, CQMXTString("make"));
    CProfileItem* saved = list.addItem("Console", options);
    QVERIFY(list.exportFile(saved, dir.filePath("console.cfg")));
    QVERIFY(!list.exportFile(saved, dir.filePath("missing/folder/console.cfg")));
    CProfileItem* imported = list.importFile(dir.filePath("console.cfg"));
    QVERIFY(imported);
    QCOMPARE(imported->caption(), QString("console"));
    QCOMPARE(list.m_sLastImportPath, dir.path());
    // Everything but the settings that would run the command comes back.
    options.SetOption(O::eUsePostExportCL, false);
    options.SetOption(O::eClPostTarget, CQMXTString());
    QVERIFY(imported->getOptions() == options);
    QVERIFY(!list.importFile(dir.filePath("absent.cfg")));
}

namespace
{
// Answers the name dialog with a fixed name.
class CNamedProfiles : public CProfilesWidget
{
  protected:
    QString getNewProfileName(const QString&) override { return "Named: 1"; }
};

// Answers the next confirmation box with the given button.
void AnswerConfirmation(QMessageBox::StandardButton answer)
{
    QTimer::singleShot(0,
                       [answer]
                       {
                           if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                               box->button(answer)->click();
                       });
}
} // namespace

void CGuiTest::contextActionsEditOnlyUserProfiles()
{
    CNamedProfiles list;
    list.updateCurrentOptions(OptionsWithBoneLimit(50));
    list.saveCurrentProfile();
    CProfileItem* saved = list.findProfile("Named: 1");
    QVERIFY(saved);
    QCOMPARE(saved->getOptions().GetOption(O::eBoneLimit), 50u);
    QCOMPARE(list.currentOptionsItem()->text(), QString("[Current] - Named: 1"));

    list.setCurrentItem(list.defaultOptionsItem());
    list.renameProfile();
    AnswerConfirmation(QMessageBox::Yes);
    list.deleteCurrentItem();
    QCoreApplication::processEvents(); // a box that was never shown gets no answer
    QCOMPARE(list.defaultOptionsItem()->text(), QString("Default Settings"));
    QCOMPARE(list.count(), 3);

    list.setCurrentItem(saved);
    AnswerConfirmation(QMessageBox::No);
    list.deleteCurrentItem();
    QCOMPARE(list.count(), 3);
    AnswerConfirmation(QMessageBox::Yes);
    list.deleteCurrentItem();
    QCOMPARE(list.count(), 2);
    QCOMPARE(list.currentOptionsItem()->text(), QString("[Current]"));
}
