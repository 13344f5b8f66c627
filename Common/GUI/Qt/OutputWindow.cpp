#include <QCloseEvent>
#include <QPushButton>

#include "Output.h"
#include "WindowLayout.h"

Output::Output(const QString& title, QWidget* parent) : QMainWindow(parent), m_pWidget(new COutputWidget(this))
{
    setObjectName("OstrexOutput");
    setWindowTitle(title);
    setCentralWidget(m_pWidget);
    resize(560, 360);
    connect(m_pWidget->okButton(), &QPushButton::clicked, this, &Output::onOK);
}

void Output::Log(const char* text, EOutputType type)
{
    m_pWidget->appendOutput(text, type);
}

void Output::ProgressUpdate(int percent, const char* text)
{
    m_pWidget->setProgress(percent);
    m_pWidget->appendOutput(text, eOutputBlack);
}

void Output::ClearText()
{
    m_pWidget->clearOutput();
}

void Output::loadLayout(CQMXPreferences& prefs, const QString& suffix)
{
    LoadWindowLayout(*this, prefs, suffix);
}

void Output::saveLayout(CQMXPreferences& prefs, const QString& suffix) const
{
    SaveWindowLayout(*this, prefs, suffix);
}

void Output::onOK()
{
    close();
}

void Output::closeEvent(QCloseEvent* event)
{
    event->accept();
}
