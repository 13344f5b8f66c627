// CGuiSession: what ostrex-gui does around the options window: it opens a scene file (any format
// the command line's importer reads), exports it with the options being edited through the same
// export job as the command line (RunExportJob), shows progress and messages in the output log,
// remembers exported paths in the recent-files list, and opens results in the viewer tvoview found
// next to the program. Preferences and profiles are those of the plug-in (GuiPreferences).
//
// Errors (a missing scene, a scene the importer cannot read, a failed write) are reported through
// the error handler, by default a message box; the program never ends on them.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

#include "Options.h"

class COptionsWindow;

class CGuiSession : public QObject
{
    Q_OBJECT
  public:
    CGuiSession();
    ~CGuiSession() override;

    COptionsWindow& window() const { return *m_pWindow; }
    COptions& options() { return m_options; }

    // Takes a scene to export; false (with an error) when the file cannot be opened for reading.
    bool openScene(const QString& path);
    const QString& scenePath() const { return m_sScene; }
    // The path the next export writes to; when empty, Export asks for one.
    void setOutputPath(const QString& path) { m_sOutput = path; }
    const QString& outputPath() const { return m_sOutput; }
    // Exports the scene to the output path; true when the file was written.
    bool exportScene();
    // Starts tvoview beside this program on the last written file; false (with an error) when it
    // is missing or cannot start.
    bool openInViewer();

    void setErrorHandler(std::function<void(const QString&)> handler) { m_errorHandler = std::move(handler); }

  private:
    void reportError(const QString& message);
    void updateTitle();

    COptions m_options;
    std::unique_ptr<COptionsWindow> m_pWindow;
    QString m_sScene;
    QString m_sOutput;
    QString m_sLastWritten;
    std::function<void(const QString&)> m_errorHandler;
};
