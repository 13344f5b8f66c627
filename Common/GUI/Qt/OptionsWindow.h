// The options window and the entry the hosts call before an interactive export.
//
// DisplayOptionsDialog(options, argc, argv, launchedFromMel):
//  - creates a Qt application object when the host has none (through CDlgOutput);
//  - launched from a script (launchedFromMel), takes the options stored by the last export
//    ("Profiles/[Current]/" in the preferences; the defaults when there are none) into options,
//    shows nothing and returns true;
//  - otherwise shows COptionsWindow modally over options as last used: Export stores the options,
//    profiles and layout (saveRegistry) and returns true with options set; Cancel or closing the
//    window returns false and leaves options as they were.
//
// COptionsWindow edits a COptions record by reference: options tabs (COptionsWidget), profile
// list (CProfilesWidget), Export and Cancel buttons, and the File and Help menus (open options from
// a file, export, recent files, exit; manual, About, Feedback, Check for Updates). While it is open
// the output log (CDlgOutput) is the message sink. Its layout is kept under
// "Maya/Window/State/Options" and "Maya/Window/Geometry/Options".
#pragma once

#include <QMainWindow>
#include <QString>

#include <functional>

#include "Options.h"

class QCloseEvent;
class QEventLoop;
class QMenu;
class QPushButton;
class CQMXPreferences;
class COptionsWidget;
class CProfilesWidget;

bool DisplayOptionsDialog(COptions& options, int argc, char** argv, bool launchedFromMel);

// Reads the options of the last export ("Profiles/[Current]/") into options; false, leaving options
// as they are, when none are stored.
bool LoadLastUsedOptions(CQMXPreferences& prefs, COptions& options);

class COptionsWindow : public QMainWindow
{
    Q_OBJECT
  public:
    COptionsWindow(COptions& options, CQMXPreferences& prefs, QWidget* parent = nullptr);
    ~COptionsWindow() override;

    // Shows the window modally until Export (true) or Cancel/close (false).
    bool Exec();

    // Replaces what Export does: the handler runs after saveRegistry and the window stays open
    // (ostrex-gui exports from it). Without a handler Export ends Exec with true.
    void setExportHandler(std::function<void()> handler) { m_exportHandler = std::move(handler); }
    // Replaces what File > Open... does with a chosen path (default: read options from the file).
    void setOpenHandler(std::function<void(const QString&)> handler) { m_openHandler = std::move(handler); }

    COptionsWidget* optionsWidget() const { return m_pOptionsWidget; }
    CProfilesWidget* profilesWidget() const { return m_pProfilesWidget; }
    QPushButton* exportButton() const { return m_pExport; }
    QPushButton* cancelButton() const { return m_pCancel; }
    QMenu* fileMenu() const { return m_pFileMenu; }
    QMenu* recentFilesMenu() const { return m_pRecentMenu; }
    COptions& options() const { return m_options; }

  public slots:
    void setOptions(const COptionsData& options);
    void displayError(const QString& message);
    void onExport();
    void onCancel();
    void onOpen();
    void onHelp();
    void onAbout();
    void onFeedback();
    void OnForceCheckForUpdates();
    void translateUI();
    void saveRegistry();
    void loadLayout();
    void saveLayout();
    // Rebuilds the recent-files menu from the preferences.
    void refreshRecentFiles();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildMenus();
    void openFile(const QString& path);
    void finish(bool exported);

    COptions& m_options;
    CQMXPreferences& m_prefs;
    COptionsWidget* m_pOptionsWidget;
    CProfilesWidget* m_pProfilesWidget;
    QPushButton* m_pExport;
    QPushButton* m_pCancel;
    QMenu* m_pFileMenu = nullptr;
    QMenu* m_pRecentMenu = nullptr;
    QMenu* m_pHelpMenu = nullptr;
    QEventLoop* m_pLoop = nullptr;
    bool m_bExported = false;
    std::function<void()> m_exportHandler;
    std::function<void(const QString&)> m_openHandler;
};
