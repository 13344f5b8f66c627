// The test class of gui_tests: its slots are defined in one file per window or logic class, and
// GuiTestMain runs them in one application.
#pragma once

#include <QObject>

class CGuiTest : public QObject
{
    Q_OBJECT
  private slots:
    // OutputTest.cpp
    void levelColours_data();
    void levelColours();
    void messagesReachTheWindow();
    void progressBar_data();
    void progressBar();
    // OptionsWidgetTest.cpp
    void everyControlRoundTripsItsOption();
    void choiceLists_data();
    void choiceLists();
    void controlsFollowTheirGoverningOption_data();
    void controlsFollowTheirGoverningOption();
    void bit7HidesTheLastComponent();
    void alignmentFollowsTheLargestType();
    void droppedOptionsFileIsReadWithoutPostExportActions();
    // ProfilesTest.cpp
    void studioProfilesAreReadOnlyAndNotStored();
    void recentFilesMostRecentFirst();
    void exportedProfileImportsAlike();
    void contextActionsEditOnlyUserProfiles();
    // DialogTest.cpp
    void cancelKeepsAndExportStoresTheOptionsForScriptRuns();
    void manualIsFoundBesideTheProgram();
    // ScreenshotTest.cpp
    void optionsTabs();
};

// The ostrex-gui tests (OstrexGuiTest.cpp, built with the program).
int RunOstrexGuiTests(int argc, char** argv);
