// The menus of the options window: File (open options, export, recent files, exit) and Help
// (manual, About, Feedback, update check).
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QSysInfo>
#include <QVBoxLayout>

#include "CommonGUIStrings.h"
#include "ManualLocator.h"
#include "OptionsWidget.h"
#include "OptionsWindow.h"
#include "OstrexStrings.h"
#include "QMXPreferences.h"
#include "RecentFiles.h"

#ifndef OSTREX_VERSION
#define OSTREX_VERSION "0.1"
#endif

using S = COstrexStrings;
using C = CCommonGUIStrings;

namespace
{
const char* const kUpdaterKey = "Updates/Program";
const char* const kManualViewerKey = "Help/Viewer";

QString StoredString(CQMXPreferences& prefs, const char* key)
{
    CQMXTString value;
    prefs.GetValue(key, value, CQMXTString());
    return QString::fromUtf8(value.c_str());
}
} // namespace

void COptionsWindow::buildMenus()
{
    m_pFileMenu = menuBar()->addMenu(S::QtText(S::eStrFile));
    m_pFileMenu->addAction(S::QtText(S::eStrOpenMenu), this, &COptionsWindow::onOpen);
    m_pFileMenu->addAction(S::QtText(S::eStrExportMenu), this, &COptionsWindow::onExport);
    m_pRecentMenu = m_pFileMenu->addMenu(C::QtText(C::eStrRecentFiles));
    m_pFileMenu->addSeparator();
    m_pFileMenu->addAction(S::QtText(S::eStrExit), this, &COptionsWindow::onCancel);

    m_pHelpMenu = menuBar()->addMenu(S::QtText(S::eStrHelp));
    m_pHelpMenu->addAction(S::QtText(S::eStrOstrexHelp), this, &COptionsWindow::onHelp);
    m_pHelpMenu->addAction(S::QtText(S::eStrAboutOstrex), this, &COptionsWindow::onAbout);
    m_pHelpMenu->addAction(S::QtText(S::eStrFeedback), this, &COptionsWindow::onFeedback);
    m_pHelpMenu->addAction(C::QtText(C::eStrCheckForUpdates), this, &COptionsWindow::OnForceCheckForUpdates);
    refreshRecentFiles();
}

void COptionsWindow::refreshRecentFiles()
{
    CRecentFiles recent;
    recent.Load(m_prefs);
    m_pRecentMenu->clear();
    for (const QString& path : recent.Files())
        m_pRecentMenu->addAction(path, this, [this, path] { openFile(path); });
    if (recent.Files().isEmpty())
        m_pRecentMenu->addAction(C::QtText(C::eStrNoRecentFiles))->setEnabled(false);
}

void COptionsWindow::onOpen()
{
    const QString filters = S::QtText(S::eStrFilterVeldra) + ";;" + S::QtText(S::eStrFilterConfig) + ";;" +
                            S::QtText(S::eStrFilterText) + ";;" + S::QtText(S::eStrFilterAll);
    const QString path = QFileDialog::getOpenFileName(this, QString(S::QtText(S::eStrOpenMenu)).remove("..."), QString(),
                                                      m_openHandler ? S::QtText(S::eStrFilterAll) : filters);
    if (!path.isEmpty())
        openFile(path);
}

void COptionsWindow::openFile(const QString& path)
{
    if (m_openHandler)
        m_openHandler(path);
    else if (!m_pOptionsWidget->readOptionsFile(path))
        displayError(C::QtText(C::eStrReadOptionsFailed).arg(path));
}

void COptionsWindow::onHelp()
{
    const QString manual = FindManual(QCoreApplication::applicationDirPath());
    if (manual.isEmpty())
    {
        displayError(C::QtText(C::eStrManualMissing).arg(ManualCandidates(QCoreApplication::applicationDirPath()).join("\n")));
        return;
    }
    const QString viewer = StoredString(m_prefs, kManualViewerKey);
    if (!viewer.isEmpty() && QProcess::startDetached(viewer, {manual}))
        return;
    if (QProcess::startDetached("xdg-open", {manual}))
        return;
    if (QMessageBox::question(this, S::QtText(S::eStrOstrexHelp), C::QtText(C::eStrManualOpenFailed).arg(manual)) !=
        QMessageBox::Yes)
        return;
    const QString chosen = QFileDialog::getOpenFileName(this, C::QtText(C::eStrLocateViewer), "/usr/bin",
                                                        S::QtText(S::eStrFilterExe));
    if (chosen.isEmpty())
        return;
    if (!QProcess::startDetached(chosen, {manual}))
    {
        displayError(C::QtText(C::eStrUpdaterFailed).arg(chosen));
        return;
    }
    m_prefs.SetValue(kManualViewerKey, chosen.toUtf8().constData());
    m_prefs.Save();
}

void COptionsWindow::onAbout()
{
    QMessageBox::about(this, C::QtText(C::eStrAboutTitle), C::QtText(C::eStrAboutText).arg(OSTREX_VERSION, qVersion()));
}

void COptionsWindow::onFeedback()
{
    QDialog dialog(this);
    dialog.setWindowTitle(C::QtText(C::eStrFeedbackTitle));
    auto* text = new QPlainTextEdit;
    text->setReadOnly(true);
    text->setPlainText(QString("Ostrex %1\nQt %2\n%3 (%4)\n\n%5")
                           .arg(OSTREX_VERSION, qVersion(), QSysInfo::prettyProductName(), QSysInfo::buildAbi(),
                                QString::fromUtf8(m_options.ToString().c_str())));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton* copy = buttons->addButton(C::QtText(C::eStrCopyText), QDialogButtonBox::ActionRole);
    connect(copy, &QPushButton::clicked, text, [text] { QApplication::clipboard()->setText(text->toPlainText()); });
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(C::QtText(C::eStrFeedbackText)));
    layout->addWidget(text);
    layout->addWidget(buttons);
    dialog.resize(520, 420);
    dialog.exec();
}

void COptionsWindow::OnForceCheckForUpdates()
{
    // The update program is whatever the user configured; this window never goes online itself.
    const QString program = StoredString(m_prefs, kUpdaterKey);
    if (program.isEmpty())
        QMessageBox::information(this, C::QtText(C::eStrCheckForUpdates),
                                 C::QtText(C::eStrNoUpdater).arg(QString::fromUtf8(m_prefs.GetFilePath().c_str())));
    else if (!QProcess::startDetached(program, {}))
        displayError(C::QtText(C::eStrUpdaterFailed).arg(program));
}
