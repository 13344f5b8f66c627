#include "Log.h"

#include <cstdarg>
#include <cstdio>
#include <new>

namespace
{
ILogSink* g_pSink = nullptr;
thread_local ILogSink* t_pSink = nullptr;

ILogSink* CurrentSink()
{
    return t_pSink ? t_pSink : g_pSink;
}

// Formats into the fixed 1024-byte buffer; longer text is cut.
std::string FormatMessage(const char* format, va_list args)
{
    char buffer[1024];
    const int written = std::vsnprintf(buffer, sizeof buffer, format, args);
    if (written < 0)
        return std::string();
    return std::string(buffer);
}

// Hands the formatted text to deliver. Logging never throws: an out-of-memory error must still be
// reportable from the handler that caught std::bad_alloc, and a message that cannot be copied or
// kept for want of memory is dropped.
template <typename Deliver> void Send(const char* format, va_list args, Deliver deliver) noexcept
{
    try
    {
        deliver(FormatMessage(format, args));
    }
    catch (const std::bad_alloc&)
    {
    }
}
} // namespace

void Log(int level, const char* format, ...)
{
    ILogSink* sink = CurrentSink();
    if (!sink || !format)
        return;
    va_list args;
    va_start(args, format);
    Send(format, args, [level, sink](const std::string& text) { sink->OnLog(level, text); });
    va_end(args);
}

void ProgressUpdate(int percent, const char* format, ...)
{
    ILogSink* sink = CurrentSink();
    if (!sink || !format)
        return;
    va_list args;
    va_start(args, format);
    Send(format, args, [percent, sink](const std::string& text) { sink->OnProgress(percent, text); });
    va_end(args);
}

ILogSink* SetLogSink(ILogSink* sink)
{
    ILogSink* previous = g_pSink;
    g_pSink = sink;
    return previous;
}

ILogSink* GetLogSink()
{
    return g_pSink;
}

ILogSink* SetThreadLogSink(ILogSink* sink)
{
    ILogSink* previous = t_pSink;
    t_pSink = sink;
    return previous;
}

CRecordingLogSink::CRecordingLogSink() : m_pPrevious(SetLogSink(this)) {}

CRecordingLogSink::~CRecordingLogSink()
{
    SetLogSink(m_pPrevious);
}

void CRecordingLogSink::OnLog(int level, const std::string& text)
{
    entries.push_back({level, text});
}

void CRecordingLogSink::OnProgress(int percent, const std::string& text)
{
    progress.push_back({percent, text});
}

bool CRecordingLogSink::Has(int level, const std::string& text) const
{
    for (const SEntry& e : entries)
        if (e.level == level && e.text == text)
            return true;
    return false;
}

int CRecordingLogSink::Count(const std::string& text) const
{
    int n = 0;
    for (const SEntry& e : entries)
        if (e.text == text)
            ++n;
    return n;
}

void CRecordingLogSink::Clear()
{
    entries.clear();
    progress.clear();
}
