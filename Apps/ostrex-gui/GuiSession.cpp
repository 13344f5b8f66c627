#include "GuiSession.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QProcess>

#include "CommandLine.h"
#include "CommonGUIStrings.h"
#include "ExportJob.h"
#include "GuiPreferences.h"
#include "Log.h"
#include "OptionsWidget.h"
#include "OptionsWindow.h"
#include "OstrexStrings.h"
#include "Output.h"
#include "PostExport.h"
#include "RecentFiles.h"

using C = CCommonGUIStrings;
using S = COstrexStrings;

namespace
{
// Files that carry options rather than a scene: opening one reads its options.
bool IsOptionsFile(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == "tvo" || suffix == "h" || suffix == "cpp" || suffix == "cfg" || suffix == "txt";
}

QString ViewerPath()
{
    const QString dir = QCoreApplication::applicationDirPath();
    for (const QString& candidate : {dir + "/tvoview", dir + "/../tvoview/tvoview"})
        if (QFileInfo(candidate).isExecutable())
            return QFileInfo(candidate).canonicalFilePath();
    return QString();
}
} // namespace

CGuiSession::CGuiSession()
{
    m_options.ConfigDefault();
    LoadLastUsedOptions(GuiPreferences(), m_options);
    // "Open in QMXDravik" with no viewer path opens the export in tvoview, as the command line does.
    SetDefaultViewer(ViewerPath().toStdString());
    m_pWindow = std::make_unique<COptionsWindow>(m_options, GuiPreferences());
    m_pWindow->setExportHandler([this] { exportScene(); });
    m_pWindow->setOpenHandler([this](const QString& path) {
        if (IsOptionsFile(path))
            m_pWindow->optionsWidget()->readOptionsFile(path);
        else
            openScene(path);
    });
    QAction* view = new QAction(C::QtText(C::eStrOpenInTvoview), m_pWindow.get());
    connect(view, &QAction::triggered, this, [this] { openInViewer(); });
    m_pWindow->fileMenu()->insertAction(m_pWindow->recentFilesMenu()->menuAction(), view);
    updateTitle();
}

CGuiSession::~CGuiSession() = default;

void CGuiSession::reportError(const QString& message)
{
    Log(eLogError, "%s", message.toUtf8().constData());
    if (m_errorHandler)
        m_errorHandler(message);
    else
        m_pWindow->displayError(message);
}

void CGuiSession::updateTitle()
{
    const QString title = C::QtText(C::eStrOptionsTitle);
    m_pWindow->setWindowTitle(m_sScene.isEmpty() ? title : title + " - " + QFileInfo(m_sScene).fileName());
}

bool CGuiSession::openScene(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
    {
        reportError(C::QtText(C::eStrSceneUnreadable).arg(path, file.exists() ? file.errorString() : "no such file"));
        return false;
    }
    m_sScene = QFileInfo(path).absoluteFilePath();
    updateTitle();
    return true;
}

bool CGuiSession::exportScene()
{
    if (m_sScene.isEmpty())
    {
        reportError(C::QtText(C::eStrNoScene));
        return false;
    }
    QString output = m_sOutput;
    if (output.isEmpty())
    {
        const QFileInfo scene(m_sScene);
        const QString suggestion =
            m_sLastWritten.isEmpty() ? scene.absolutePath() + "/" + scene.completeBaseName() + ".tvo" : m_sLastWritten;
        const QString filters = S::QtText(S::eStrFilterVeldraBinary) + ";;" + S::QtText(S::eStrFilterVeldraHeader) +
                                ";;" + S::QtText(S::eStrFilterVeldraSource);
        output = QFileDialog::getSaveFileName(m_pWindow.get(), C::QtText(C::eStrExportScene), suggestion, filters);
        if (output.isEmpty())
            return false;
    }

    CDlgOutput& log = CDlgOutput::Instance();
    log.AddRef();
    log.Show(C::QtText(C::eStrOutputTitle).toUtf8().constData());
    log.ClearText();
    SExportJob job;
    job.input = m_sScene.toLocal8Bit().constData();
    job.output = output.toLocal8Bit().constData();
    job.options = m_options;
    const int format = OutputFormatForPath(job.output);
    if (format >= 0)
        job.options.SetOption(COptionsData::eExpFormat, static_cast<EExportFormat>(format));
    m_pWindow->setEnabled(false);
    const SExportOutcome outcome = RunExportJob(job);
    m_pWindow->setEnabled(true);
    if (outcome.ok)
    {
        Log(eLogSuccess, "%s", ExportSummaryLine(outcome.summary).c_str());
        m_sLastWritten = output;
        SaveToRegistry(output.toUtf8().constData());
        m_pWindow->refreshRecentFiles();
    }
    log.DelRef();
    if (!outcome.ok)
        reportError(C::QtText(C::eStrSceneUnreadable)
                        .arg(QString::fromLocal8Bit(outcome.subject.c_str()), QString::fromUtf8(outcome.error.c_str())));
    return outcome.ok;
}

bool CGuiSession::openInViewer()
{
    const QString viewer = ViewerPath();
    if (viewer.isEmpty())
    {
        reportError(C::QtText(C::eStrViewerMissing).arg(QCoreApplication::applicationDirPath()));
        return false;
    }
    if (m_sLastWritten.isEmpty() || !QProcess::startDetached(viewer, {m_sLastWritten}))
    {
        reportError(C::QtText(C::eStrUpdaterFailed).arg(viewer));
        return false;
    }
    return true;
}
