#include <QApplication>

#include "GuiPreferences.h"
#include "Output.h"
#include "QMXPreferences.h"

namespace
{
// QApplication keeps a reference to argc and the argv pointers for its whole life.
int g_argc = 1;
char g_szProgram[] = "Ostrex - Output dlg";
char* g_argvDefault[] = {g_szProgram, nullptr};
const char* const kLayoutSuffix = "Output";
} // namespace

CDlgOutput& CDlgOutput::Instance()
{
    static CDlgOutput instance;
    return instance;
}

CDlgOutput::~CDlgOutput()
{
    // At process exit the application object may already be gone; only the sink is put back.
    if (m_nRefCount > 0)
        SetLogSink(m_pPreviousSink);
}

int CDlgOutput::AddRef()
{
    if (m_nRefCount++ == 0)
        m_pPreviousSink = SetLogSink(this);
    return m_nRefCount;
}

int CDlgOutput::DelRef()
{
    if (m_nRefCount == 0)
        return 0;
    if (--m_nRefCount == 0)
    {
        if (GetLogSink() == this)
            SetLogSink(m_pPreviousSink);
        m_pPreviousSink = nullptr;
    }
    return m_nRefCount;
}

bool CDlgOutput::EnsureApplication(int argc, char** argv)
{
    auto* existing = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (existing && existing != m_pApplication)
    {
        Kill();
        m_pApplication = existing;
        m_bOwnsApplication = false;
    }
    if (m_pApplication)
        return true;
    if (QCoreApplication::instance())
        return false; // a non-widget application object cannot show windows
    if (argc > 0 && argv)
        g_argc = argc;
    m_pApplication = new QApplication(g_argc, argc > 0 && argv ? argv : g_argvDefault);
    QCoreApplication::setApplicationName(g_szProgram);
    m_bOwnsApplication = true;
    return true;
}

bool CDlgOutput::Show(const char* title)
{
    if (!EnsureApplication())
        return false;
    const QString caption = QString::fromUtf8(title ? title : "");
    if (!m_pWindow)
    {
        m_pWindow = new Output(caption);
        m_pWindow->setAttribute(Qt::WA_DeleteOnClose, false);
        m_pWindow->loadLayout(GuiPreferences(), kLayoutSuffix);
        for (const auto& [text, type] : m_pending)
            m_pWindow->Log(text.c_str(), type);
        m_pending.clear();
    }
    else
        m_pWindow->setWindowTitle(caption);
    m_pWindow->show();
    HandleEvents();
    return true;
}

void CDlgOutput::Log(const char* text, EOutputType type)
{
    if (!text)
        return;
    if (m_pWindow)
        m_pWindow->Log(text, type);
    else if (m_pending.size() < kMaxPendingMessages)
        m_pending.emplace_back(text, type);
}

void CDlgOutput::ProgressUpdate(int percent, const char* text)
{
    if (m_pWindow && text)
        m_pWindow->ProgressUpdate(percent, text);
}

void CDlgOutput::ClearText()
{
    m_pending.clear();
    if (m_pWindow)
        m_pWindow->ClearText();
}

void CDlgOutput::HandleEvents()
{
    if (QCoreApplication::instance())
        QCoreApplication::processEvents();
}

void CDlgOutput::Close()
{
    if (m_pWindow)
    {
        m_pWindow->saveLayout(GuiPreferences(), kLayoutSuffix);
        GuiPreferences().Save();
        m_pWindow->close();
    }
}

bool CDlgOutput::IsOpen() const
{
    return m_pWindow && m_pWindow->isVisible();
}

void CDlgOutput::Kill()
{
    delete m_pWindow.data();
    m_pWindow = nullptr;
    m_pending.clear();
    if (m_bOwnsApplication)
        delete m_pApplication;
    m_pApplication = nullptr;
    m_bOwnsApplication = false;
}

void CDlgOutput::OnLog(int level, const std::string& text)
{
    if (m_pPreviousSink)
        m_pPreviousSink->OnLog(level, text);
    EOutputType type;
    if (m_nRefCount > 0 && OutputTypeForLevel(level, type))
        Log(text.c_str(), type);
}

void CDlgOutput::OnProgress(int percent, const std::string& text)
{
    if (m_pPreviousSink)
        m_pPreviousSink->OnProgress(percent, text);
    if (m_nRefCount > 0)
    {
        ProgressUpdate(percent, text.c_str());
        // Exports run on the thread that draws the window: let it repaint at every step.
        HandleEvents();
    }
}
