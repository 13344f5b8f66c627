#include "WarningTee.h"

CWarningTee::CWarningTee() : m_pNext(SetLogSink(this)) {}

CWarningTee::~CWarningTee()
{
    SetLogSink(m_pNext);
}

void CWarningTee::OnLog(int level, const std::string& text)
{
    if (level == eLogWarning)
        warnings.push_back(text);
    if (m_pNext)
        m_pNext->OnLog(level, text);
}

void CWarningTee::OnProgress(int percent, const std::string& text)
{
    if (m_pNext)
        m_pNext->OnProgress(percent, text);
}
