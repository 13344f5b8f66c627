// The console log sink on a terminal: colours by level and an in-place progress bar. (What each
// verbosity shows off a terminal is checked on the program's own runs.)
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "ConsoleSink.h"
#include "Log.h"

namespace
{
// What was written to a temporary stream; closes it.
std::string Drain(std::FILE* file)
{
    std::string text;
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

// Runs one scripted export's messages through a sink.
std::string RunScript(bool terminal, EVerbosity verbosity)
{
    std::FILE* stream = std::tmpfile();
    {
        CConsoleSink sink(stream, terminal, verbosity);
        ILogSink* previous = SetLogSink(&sink);
        Log(eLogDetail, "\"Box\": pos anim: removed\n");
        ProgressUpdate(40, "Export stage 2");
        Log(eLogWarning, "Warning (Tube): Ignoring some bone influences. \nThe maximum is %i.", 4);
        Log(eLogError, "Failed to write output file");
        Log(eLogSuccess, "Exported");
        Log(7, "unknown level");
        ProgressUpdate(100, "Complete");
        SetLogSink(previous);
    }
    return Drain(stream);
}
} // namespace

TEST(ConsoleSink, TerminalColoursLevelsAndRedrawsAndEndsTheBar)
{
    const std::string out = RunScript(true, eVerbosityNormal);
    EXPECT_NE(out.find("\033[32mExported\033[0m\n"), std::string::npos);
    EXPECT_NE(out.find("\033[33mWarning (Tube)"), std::string::npos);
    EXPECT_NE(out.find("\033[1;31mFailed to write output file\033[0m\n"), std::string::npos);
    EXPECT_EQ(out.find("pos anim"), std::string::npos);
    // The bar is drawn in place and wiped before a message, and its line is ended at 100 %.
    EXPECT_NE(out.find("\r\033[K[############------------------]  40% Export stage 2"), std::string::npos);
    EXPECT_NE(out.find("\r\033[K[##############################] 100% Complete\n"), std::string::npos);

    EXPECT_EQ(RunScript(true, eVerbosityQuiet), "\033[1;31mFailed to write output file\033[0m\n");
    EXPECT_NE(RunScript(false, eVerbosityVerbose).find("\"Box\": pos anim: removed\n[ 40%] Export stage 2\n"),
              std::string::npos);

    std::FILE* stream = std::tmpfile(); // an open bar line is ended when the sink goes
    {
        CConsoleSink sink(stream, true, eVerbosityNormal);
        sink.OnProgress(75, "Final export stage");
    }
    EXPECT_EQ(Drain(stream), "\r\033[K[######################--------]  75% Final export stage\n");
}
