#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include "OstrexStrings.h"
#include "Output.h"

COutputWidget::COutputWidget(QWidget* parent)
    : QWidget(parent), m_pText(new QTextEdit(this)), m_pProgress(new QProgressBar(this)),
      m_pOK(new QPushButton(COstrexStrings::QtText(COstrexStrings::eStrOK), this))
{
    m_pText->setReadOnly(true);
    m_pProgress->setRange(0, 100);
    m_pProgress->setValue(0);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_pOK);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_pText, 1);
    layout->addWidget(m_pProgress);
    layout->addLayout(buttons);
}

void COutputWidget::appendOutput(const char* text, EOutputType type)
{
    if (!text)
        return;
    m_pText->append(OutputHtml(QString::fromUtf8(text), type));
}

void COutputWidget::setProgress(int percent)
{
    m_pProgress->setValue(percent);
    m_pProgress->setVisible(percent != 100);
}

void COutputWidget::clearOutput()
{
    m_pText->clear();
}
