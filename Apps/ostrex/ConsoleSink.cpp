#include "ConsoleSink.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace
{
const int kBarWidth = 30;
const size_t kBarTextWidth = 40;

const char* ColourOf(int level)
{
    switch (level)
    {
    case eLogSuccess:
        return "\033[32m"; // dark green
    case eLogWarning:
        return "\033[33m"; // chocolate: the nearest of the basic colours
    case eLogError:
        return "\033[1;31m"; // bold red
    case eLogDetail:
        return "\033[2m"; // dim
    default:
        return nullptr;
    }
}

bool Shows(EVerbosity verbosity, int level)
{
    if (level < eLogSuccess || level > eLogDetail)
        return false;
    if (verbosity == eVerbosityQuiet)
        return level == eLogError;
    // Stage and per-mesh information is for verbose runs; a normal run shows successes (the
    // summary), warnings and errors.
    if (level == eLogDetail || level == eLogInfo)
        return verbosity == eVerbosityVerbose;
    return true;
}

std::string WithoutTrailingNewlines(const std::string& text)
{
    size_t end = text.size();
    while (end > 0 && (text[end - 1] == '\n' || text[end - 1] == '\r'))
        --end;
    return text.substr(0, end);
}
} // namespace

CConsoleSink::CConsoleSink(std::FILE* stream, bool terminal, EVerbosity verbosity)
    : m_pStream(stream), m_bTerminal(terminal), m_eVerbosity(verbosity)
{
}

CConsoleSink::~CConsoleSink()
{
    Finish();
}

bool CConsoleSink::IsTerminal(std::FILE* stream)
{
    if (!stream || !isatty(fileno(stream)))
        return false;
    const char* term = std::getenv("TERM");
    return !(term && std::strcmp(term, "dumb") == 0);
}

void CConsoleSink::OnLog(int level, const std::string& text)
{
    if (!Shows(m_eVerbosity, level))
        return;
    ClearBar();
    const std::string line = WithoutTrailingNewlines(text);
    const char* colour = m_bTerminal ? ColourOf(level) : nullptr;
    if (colour)
        std::fprintf(m_pStream, "%s%s\033[0m\n", colour, line.c_str());
    else
        std::fprintf(m_pStream, "%s\n", line.c_str());
    if (m_bTerminal && m_eVerbosity != eVerbosityQuiet && m_iPercent > 0 && m_iPercent < 100)
        DrawBar();
    std::fflush(m_pStream);
}

void CConsoleSink::OnProgress(int percent, const std::string& text)
{
    if (m_eVerbosity == eVerbosityQuiet)
        return;
    m_iPercent = percent < 0 ? 0 : (percent > 100 ? 100 : percent);
    m_sProgressText = WithoutTrailingNewlines(text);
    if (m_bTerminal)
    {
        DrawBar();
        if (m_iPercent >= 100)
            Finish();
    }
    else if (m_eVerbosity == eVerbosityVerbose)
    {
        std::fprintf(m_pStream, "[%3d%%] %s\n", m_iPercent, m_sProgressText.c_str());
    }
    std::fflush(m_pStream);
}

void CConsoleSink::Finish()
{
    if (!m_bBarShown)
        return;
    std::fputc('\n', m_pStream);
    std::fflush(m_pStream);
    m_bBarShown = false;
}

void CConsoleSink::ClearBar()
{
    if (!m_bBarShown)
        return;
    std::fputs("\r\033[K", m_pStream);
    m_bBarShown = false;
}

void CConsoleSink::DrawBar()
{
    const int filled = m_iPercent * kBarWidth / 100;
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(kBarWidth - filled), '-');
    std::string text = m_sProgressText;
    if (text.size() > kBarTextWidth)
        text = text.substr(0, kBarTextWidth - 3) + "...";
    std::fprintf(m_pStream, "\r\033[K[%s] %3d%% %s", bar.c_str(), m_iPercent, text.c_str());
    m_bBarShown = true;
}
