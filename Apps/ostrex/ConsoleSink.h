// Console sink for Log and ProgressUpdate.
//
// On a terminal, messages are coloured by level as in the output window (0 dark green, 1 default,
// 2 chocolate, shown as yellow, 3 bold red) and progress is a bar redrawn in place on one line; on
// any other stream every message is a plain line and progress steps are printed only in verbose
// mode. Quiet shows errors only, normal shows levels 0, 2 and 3 (successes such as the summary,
// warnings, errors), verbose adds level-1 information and level-4 details. Other
// levels print nothing. Trailing newlines of a message are dropped; every message ends one line.
#pragma once

#include <cstdio>
#include <string>

#include "CommandLine.h"
#include "Log.h"

class CConsoleSink : public ILogSink
{
  public:
    // stream is not owned. terminal selects colours and the progress bar (see IsTerminal).
    CConsoleSink(std::FILE* stream, bool terminal, EVerbosity verbosity);
    ~CConsoleSink() override;
    CConsoleSink(const CConsoleSink&) = delete;
    CConsoleSink& operator=(const CConsoleSink&) = delete;

    void OnLog(int level, const std::string& text) override;
    void OnProgress(int percent, const std::string& text) override;

    // Ends a progress bar line that is still open (also done by the destructor).
    void Finish();

    // True when the stream is a terminal that understands colour (not TERM=dumb).
    static bool IsTerminal(std::FILE* stream);

  private:
    void ClearBar();
    void DrawBar();

    std::FILE* m_pStream;
    bool m_bTerminal;
    EVerbosity m_eVerbosity;
    bool m_bBarShown = false;
    int m_iPercent = 0;
    std::string m_sProgressText;
};
