#include "HostLog.h"

#include <maya/MGlobal.h>
#include <maya/MString.h>

#include <cstdio>

void CMayaLogSink::Show(const std::string& text)
{
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
    MGlobal::displayInfo(MString(text.c_str()));
}

void CMayaLogSink::OnLog(int level, const std::string& text)
{
    if (level >= eLogSuccess && level <= eLogError)
        Show(text);
    if (m_pNext)
        m_pNext->OnLog(level, text);
}

void CMayaLogSink::OnProgress(int percent, const std::string& text)
{
    Show(text);
    if (m_pNext)
        m_pNext->OnProgress(percent, text);
}

CHostLogScope::CHostLogScope() : m_sink(GetLogSink()), m_pPrevious(SetLogSink(&m_sink)) {}

CHostLogScope::~CHostLogScope()
{
    SetLogSink(m_pPrevious);
}
