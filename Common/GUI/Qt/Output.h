// The output log: a small window with coloured messages and a progress bar.
//
// Any part of the program writes to it through Log (Common/content/Log.h) or CDlgOutput::ProgressUpdate.
// CDlgOutput is the process-wide owner of the window (Output, whose central widget is a
// COutputWidget). While its reference count is above 0 it is the installed message sink: Log's
// levels 0..3 appear in the colours of OutputHtml.h (other levels print nothing), progress steps
// move the bar, add a black line and let Qt repaint (HandleEvents). Messages said before the window
// is shown are kept (up to kMaxPendingMessages) and appear when it opens. The previous sink, if any,
// still gets everything.
//
// The window's layout is kept in the shared preferences under the suffix "Output".
// Typical host use around one export:
//   CDlgOutput& out = CDlgOutput::Instance();
//   out.AddRef(); out.Show("Ostrex"); ... Log(...) / ProgressUpdate(...) / out.HandleEvents() ...
//   out.DelRef();
// Single-threaded: every call comes from the thread that runs Qt.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <string>
#include <utility>
#include <vector>

#include "Log.h"
#include "OutputHtml.h"

class QApplication;
class QCloseEvent;
class QProgressBar;
class QPushButton;
class QTextEdit;
class CQMXPreferences;

// The log view and progress bar (0..100; hidden exactly while the value is 100) and the OK button.
class COutputWidget : public QWidget
{
    Q_OBJECT
  public:
    explicit COutputWidget(QWidget* parent = nullptr);

    // Appends the text as a new paragraph in the colour of its type; a null text is ignored.
    void appendOutput(const char* text, EOutputType type);
    void setProgress(int percent);
    void clearOutput();

    QTextEdit* textView() const { return m_pText; }
    QProgressBar* progressBar() const { return m_pProgress; }
    QPushButton* okButton() const { return m_pOK; }

  private:
    QTextEdit* m_pText;
    QProgressBar* m_pProgress;
    QPushButton* m_pOK;
};

// The log window. Its state and geometry are kept in the preferences under
// "Maya/Window/State/<suffix>" and "Maya/Window/Geometry/<suffix>".
class Output : public QMainWindow
{
    Q_OBJECT
  public:
    explicit Output(const QString& title, QWidget* parent = nullptr);

    void Log(const char* text, EOutputType type);
    void ProgressUpdate(int percent, const char* text);
    void ClearText();
    COutputWidget* outputWidget() const { return m_pWidget; }

    void loadLayout(CQMXPreferences& prefs, const QString& suffix);
    void saveLayout(CQMXPreferences& prefs, const QString& suffix) const;

  public slots:
    void onOK();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    COutputWidget* m_pWidget;
};

class CDlgOutput : public ILogSink
{
  public:
    static constexpr size_t kMaxPendingMessages = 500;
    static CDlgOutput& Instance();

    // Logging is active while the count is above 0; the first AddRef installs this as the message
    // sink, the last DelRef puts the previous one back.
    int AddRef();
    int DelRef();
    int RefCount() const { return m_nRefCount; }

    // Creates a Qt application object when the host has none (from the host's arguments, named
    // "Ostrex - Output dlg"); adopts one the host made later. argv may be null.
    bool EnsureApplication(int argc = 0, char** argv = nullptr);
    // Creates the window with this title (or retitles it), shows it and processes pending events.
    bool Show(const char* title);
    void Log(const char* text, EOutputType type);
    // Only while the window exists and text is not null: moves the bar and adds the text in black.
    void ProgressUpdate(int percent, const char* text);
    void ClearText();
    // Lets Qt process pending events so the window repaints during long work.
    void HandleEvents();
    void Close();
    bool IsOpen() const;
    // Destroys the window and, when this class created it, the application object.
    void Kill();
    Output* Window() const { return m_pWindow; }

    void OnLog(int level, const std::string& text) override;
    void OnProgress(int percent, const std::string& text) override;

  private:
    CDlgOutput() = default;
    ~CDlgOutput() override;

    int m_nRefCount = 0;
    ILogSink* m_pPreviousSink = nullptr;
    QPointer<Output> m_pWindow;
    QApplication* m_pApplication = nullptr;
    bool m_bOwnsApplication = false;
    std::vector<std::pair<std::string, EOutputType>> m_pending;
};
