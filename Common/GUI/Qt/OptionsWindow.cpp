#include "OptionsWindow.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include "CommonGUIStrings.h"
#include "GuiPreferences.h"
#include "OptionsWidget.h"
#include "OstrexStrings.h"
#include "Output.h"
#include "ProfilesWidget.h"
#include "QMXPreferences.h"
#include "WindowLayout.h"

using S = COstrexStrings;

namespace
{
const char* const kLayoutSuffix = "Options";
} // namespace

bool LoadLastUsedOptions(CQMXPreferences& prefs, COptions& options)
{
    return prefs.KeyExists(kGuiCurrentOptionsPrefix) && options.Load(prefs, kGuiCurrentOptionsPrefix);
}

COptionsWindow::COptionsWindow(COptions& options, CQMXPreferences& prefs, QWidget* parent)
    : QMainWindow(parent), m_options(options), m_prefs(prefs), m_pOptionsWidget(new COptionsWidget),
      m_pProfilesWidget(new CProfilesWidget), m_pExport(new QPushButton), m_pCancel(new QPushButton)
{
    setObjectName("OstrexOptions");
    CDlgOutput::Instance().AddRef();

    auto* profiles = new QGroupBox(S::QtText(S::eStrProfiles));
    profiles->setToolTip(S::QtText(S::eStrProfilesTip));
    auto* profilesLayout = new QVBoxLayout(profiles);
    profilesLayout->addWidget(m_pProfilesWidget);

    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(profiles);
    splitter->addWidget(m_pOptionsWidget);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({190, 800});

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_pExport);
    buttons->addWidget(m_pCancel);
    m_pExport->setDefault(true);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(splitter, 1);
    layout->addLayout(buttons);
    setCentralWidget(central);
    buildMenus();
    translateUI();

    connect(m_pExport, &QPushButton::clicked, this, &COptionsWindow::onExport);
    connect(m_pCancel, &QPushButton::clicked, this, &COptionsWindow::onCancel);
    connect(m_pOptionsWidget, &COptionsWidget::optionsChanged, m_pProfilesWidget,
            &CProfilesWidget::updateCurrentOptions);
    connect(m_pProfilesWidget, &CProfilesWidget::useOptions, this, &COptionsWindow::setOptions);

    m_pProfilesWidget->Load(m_prefs, kGuiProfilesPrefix);
    m_pOptionsWidget->Init(m_options);
    m_pProfilesWidget->setCurrentOptions(m_options);
    loadLayout();
}

COptionsWindow::~COptionsWindow()
{
    CDlgOutput::Instance().DelRef();
}

bool COptionsWindow::Exec()
{
    QEventLoop loop;
    m_pLoop = &loop;
    m_bExported = false;
    setWindowModality(Qt::ApplicationModal);
    show();
    loop.exec();
    m_pLoop = nullptr;
    return m_bExported;
}

void COptionsWindow::finish(bool exported)
{
    m_bExported = exported;
    if (m_pLoop)
    {
        m_pLoop->quit();
        hide();
    }
    else if (!exported)
        close(); // a window shown without Exec (ostrex-gui) ends with Cancel
}

void COptionsWindow::setOptions(const COptionsData& options)
{
    static_cast<COptionsData&>(m_options) = options;
    m_pOptionsWidget->refreshGUI();
    m_pProfilesWidget->setCurrentOptions(m_options);
}

void COptionsWindow::displayError(const QString& message)
{
    QMessageBox::critical(this, "Error", message);
}

void COptionsWindow::onExport()
{
    saveRegistry();
    if (m_exportHandler)
        m_exportHandler();
    else
        finish(true);
}

void COptionsWindow::onCancel()
{
    finish(false);
}

void COptionsWindow::translateUI()
{
    setWindowTitle(CCommonGUIStrings::QtText(CCommonGUIStrings::eStrOptionsTitle));
    m_pExport->setText(QString(S::QtText(S::eStrExportMenu)).remove("..."));
    m_pCancel->setText(S::QtText(S::eStrCancel));
}

void COptionsWindow::saveRegistry()
{
    m_options.Save(m_prefs, kGuiCurrentOptionsPrefix);
    m_pProfilesWidget->Save(m_prefs, kGuiProfilesPrefix);
    saveLayout();
    m_prefs.Save();
}

void COptionsWindow::loadLayout()
{
    LoadWindowLayout(*this, m_prefs, kLayoutSuffix);
}

void COptionsWindow::saveLayout()
{
    SaveWindowLayout(*this, m_prefs, kLayoutSuffix);
}

void COptionsWindow::closeEvent(QCloseEvent* event)
{
    saveLayout();
    m_prefs.Save();
    event->accept();
    if (m_pLoop)
    {
        m_bExported = false;
        m_pLoop->quit();
    }
}

bool DisplayOptionsDialog(COptions& options, int argc, char** argv, bool launchedFromMel)
{
    if (!CDlgOutput::Instance().EnsureApplication(argc, argv))
        return false;
    CQMXPreferences& prefs = GuiPreferences();
    if (launchedFromMel)
    {
        LoadLastUsedOptions(prefs, options);
        return true;
    }
    COptions edited = options;
    LoadLastUsedOptions(prefs, edited);
    COptionsWindow window(edited, prefs);
    if (!window.Exec())
        return false;
    options = edited;
    return true;
}
