// The test classes of gui_tests; GuiTestMain runs them one after the other in one application.
#pragma once

#include <QObject>

class COutputTest : public QObject
{
    Q_OBJECT
  private slots:
    void levelColours_data();
    void levelColours();
    void messagesReachTheWindow();
    void progressBar_data();
    void progressBar();
};

class COptionsWidgetTest : public QObject
{
    Q_OBJECT
  private slots:
    void everyControlRoundTripsItsOption();
    void primitiveTypeTable_data();
    void primitiveTypeTable();
    void sortingMethodTable_data();
    void sortingMethodTable();
    void controlsFollowTheirGoverningOption_data();
    void controlsFollowTheirGoverningOption();
    void bit7HidesTheLastComponent();
    void alignmentFollowsTheLargestType();
    void droppedOptionsFileIsReadWithoutPostExportActions();
};

class CProfilesTest : public QObject
{
    Q_OBJECT
  private slots:
    void saveAndLoadKeepOrderAndColons();
    void studioProfilesAreReadOnly();
    void currentEntryNamesTheMatchingProfile();
    void recentFilesMostRecentFirst();
    void exportedProfileImportsAlike();
    void contextActionsEditOnlyUserProfiles();
};

class CDialogTest : public QObject
{
    Q_OBJECT
  private slots:
    void launchedFromScriptTakesStoredOptions();
    void cancelReturnsFalse();
    void exportStoresTheOptions();
    void manualIsFoundBesideTheProgram();
};

class CScreenshotTest : public QObject
{
    Q_OBJECT
  private slots:
    void optionsTabsAndOutputLog();
};

// The ostrex-gui tests (OstrexGuiTest.cpp, built with the program).
int RunOstrexGuiTests(int argc, char** argv);
