// The console log sink on a terminal: colours by level and a progress bar drawn in place, ended at
// 100 % or when the sink goes. (What each verbosity shows off a terminal: the program's own runs.)
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
} // namespace

TEST(ConsoleSink, TerminalColoursLevelsAndRedrawsAndEndsTheBar)
{
    std::FILE* stream = std::tmpfile();
    {
        CConsoleSink sink(stream, true, eVerbosityNormal);
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
    const std::string out = Drain(stream);
    EXPECT_NE(out.find("\033[32mExported\033[0m\n"), std::string::npos);
    EXPECT_NE(out.find("\033[33mWarning (Tube)"), std::string::npos);
    EXPECT_NE(out.find("\033[1;31mFailed to write output file\033[0m\n"), std::string::npos);
    EXPECT_EQ(out.find("pos anim"), std::string::npos);
    EXPECT_NE(out.find("\r\033[K[############------------------]  40% Export stage 2"), std::string::npos);
    EXPECT_NE(out.find("\r\033[K[##############################] 100% Complete\n"), std::string::npos);

    stream = std::tmpfile(); // an open bar line is ended when the sink goes
    {
        CConsoleSink sink(stream, true, eVerbosityNormal);
        sink.OnProgress(75, "Final export stage");
    }
    EXPECT_EQ(Drain(stream), "\r\033[K[######################--------]  75% Final export stage\n");
}
