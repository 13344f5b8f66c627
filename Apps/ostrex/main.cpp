// ostrex: exports a scene that Assimp reads as a Veldra scene file, header or source.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

#include "CommandLine.h"
#include "ConsoleSink.h"
#include "ExportJob.h"
#include "ExportOptions.h"
#include "Log.h"
#include "PostExport.h"

// The importer library of Debian 12 leaks memory while reading some files; in sanitizer builds the
// leak checker is told to leave out leaks allocated inside it (everything else is still reported).
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libassimp.so\n";
}

namespace
{
std::string OneLine(std::string text)
{
    for (char& c : text)
        if (c == '\n' || c == '\r')
            c = ' ';
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text.empty() ? "unknown reason" : text;
}

int Failure(const std::string& subject, const std::string& reason)
{
    Log(eLogError, "ostrex: error: %s: %s", subject.c_str(), OneLine(reason).c_str());
    return eExitFailure;
}

// Reports an options problem: a usage error (exit 2) or a failure naming its file (exit 1).
int OptionsFailure(const SOptionsOutcome& outcome)
{
    if (outcome.exitCode == eExitUsage)
    {
        std::fprintf(stderr, "ostrex: usage error: %s\n%s\n", outcome.error.c_str(), CommandLineHint().c_str());
        return eExitUsage;
    }
    return Failure(outcome.subject, outcome.error);
}

// The viewer installed beside this program (the build tree keeps it in a sibling folder); else
// whatever "tvoview" the PATH finds.
std::string ViewerBesideProgram()
{
    char self[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n > 0)
    {
        const std::string exe(self, static_cast<size_t>(n));
        const std::string dir = exe.substr(0, exe.rfind('/') + 1);
        for (const std::string& candidate : {dir + "tvoview", dir + "../tvoview/tvoview"})
            if (access(candidate.c_str(), X_OK) == 0)
                return candidate;
    }
    return "tvoview";
}

int ListOptions(const SCommandLine& cl)
{
    COptions options;
    const SOptionsOutcome outcome = PrepareExportOptions(cl, options);
    if (!outcome.ok)
        return OptionsFailure(outcome);
    std::fputs(ListExportOptions(options).c_str(), stdout);
    return eExitSuccess;
}

int Export(const SCommandLine& cl)
{
    SExportJob job;
    const SOptionsOutcome prepared = PrepareExportOptions(cl, job.options);
    if (!prepared.ok)
        return OptionsFailure(prepared);
    job.input = cl.input;
    job.output = cl.output;
    job.selection = cl.selection;
    job.animation = cl.animation;
    job.fps = cl.fps;
    job.view = cl.view;
    SetDefaultViewer(ViewerBesideProgram());
    const SExportOutcome outcome = RunExportJob(job);
    if (!outcome.ok)
        return Failure(outcome.subject, outcome.error);
    Log(eLogSuccess, "%s", ExportSummaryLine(outcome.summary).c_str());
    return eExitSuccess;
}
} // namespace

int main(int argc, char** argv)
{
    const SCommandLine cl = ParseCommandLine(argc, argv);
    switch (cl.action)
    {
    case eCommandHelp:
        std::fputs(CommandLineHelp().c_str(), stdout);
        return eExitSuccess;
    case eCommandUsageError:
        std::fprintf(stderr, "ostrex: usage error: %s\n%s\n", cl.error.c_str(), CommandLineHint().c_str());
        return eExitUsage;
    case eCommandListOptions:
    case eCommandExport:
        break;
    }

    CConsoleSink sink(stderr, CConsoleSink::IsTerminal(stderr), cl.verbosity);
    ILogSink* previous = SetLogSink(&sink);
    const int code = cl.action == eCommandListOptions ? ListOptions(cl) : Export(cl);
    sink.Finish();
    SetLogSink(previous);
    return code;
}
