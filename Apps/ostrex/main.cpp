// ostrex: exports a scene that Assimp reads as a Veldra scene file, header or source.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <string>

#include "BatchExport.h"
#include "CommandLine.h"
#include "ConsoleSink.h"
#include "ExportJob.h"
#include "ExportOptions.h"
#include "ExportReport.h"
#include "Log.h"
#include "PostExport.h"
#include "QMXPreferences.h"
#include "SafeOutput.h"
#include "WarningTee.h"

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

// The files the options were read from, for the dependency file.
std::vector<std::string> OptionFiles(const SCommandLine& cl)
{
    std::vector<std::string> files;
    if (!cl.profile.empty())
        files.push_back(CQMXPreferences(kOstrexPreferencesName).GetFilePath().c_str());
    if (!cl.configFile.empty())
        files.push_back(cl.configFile);
    return files;
}

int Export(const SCommandLine& cl)
{
    SExportJob job;
    CWarningTee preparing; // --strict and the report count the options' warnings too
    const SOptionsOutcome prepared = PrepareExportOptions(cl, job.options);
    job.warnings = preparing.warnings;
    job.input = cl.input;
    job.output = cl.output;
    std::string error;
    if (!prepared.ok)
    {
        if (!cl.reportJson.empty()) // the report says why, as far as it can be written
        {
            SExportOutcome refused;
            refused.subject = prepared.subject.empty() ? "options" : prepared.subject;
            refused.error = prepared.error;
            refused.summary.warnings = job.warnings;
            WriteExportReport(cl.reportJson, ExportReportJson(job, refused), error);
        }
        return OptionsFailure(prepared);
    }
    job.selection = cl.selection;
    job.animation = cl.animation;
    job.fps = cl.fps;
    job.threads = static_cast<unsigned>(cl.threads);
    job.view = cl.view;
    job.depfile = cl.depfile;
    job.optionFiles = OptionFiles(cl);
    job.strict = cl.strict;
    job.measureQuantisation = !cl.reportJson.empty();
    if (!cl.reportJson.empty() && cl.reportJson != "-")
    {
        CSafeOutput probe(cl.reportJson); // a report that cannot be written fails before any work
        if (!probe.Begin(error))
            return Failure(cl.reportJson, error);
    }
    SetDefaultViewer(ViewerBesideProgram());
    const SExportOutcome outcome = RunExportJob(job);
    if (!cl.reportJson.empty() && !WriteExportReport(cl.reportJson, ExportReportJson(job, outcome), error))
    {
        if (outcome.ok)
            return Failure(cl.reportJson, error);
        Log(eLogError, "ostrex: error: %s: %s", cl.reportJson.c_str(), error.c_str());
    }
    if (!outcome.ok)
        return Failure(outcome.subject, outcome.error);
    Log(eLogSuccess, "%s", ExportSummaryLine(outcome.summary).c_str());
    return eExitSuccess;
}

// One scene of a batch, in its own process: plain lines on stderr, which the parent collects.
int ExportBatchScene(const SCommandLine& cl, const SBatchScene& scene)
{
    CConsoleSink sink(stderr, false, cl.verbosity);
    SetLogSink(&sink);
    SCommandLine one = cl;
    one.input = scene.input;
    one.output = scene.output;
    if (one.threads == 0 && cl.jobs != 1)
        one.threads = 1; // the scenes running side by side already take the cores
    const int code = Export(one);
    sink.Finish();
    SetLogSink(nullptr);
    return code;
}

int ExportBatch(const SCommandLine& cl)
{
    std::vector<SBatchScene> plan;
    std::string error;
    if (!PlanBatch(cl.inputs, cl.outDir, cl.format.empty() ? "tvo" : cl.format, plan, error))
    {
        std::fprintf(stderr, "ostrex: usage error: %s\n%s\n", error.c_str(), CommandLineHint().c_str());
        return eExitUsage;
    }
    // Options are checked once up front, so a bad --set or profile is one usage error, not one a scene.
    COptions options;
    {
        SCommandLine probe = cl;
        probe.output = plan.front().output;
        ILogSink* quiet = SetLogSink(nullptr);
        const SOptionsOutcome prepared = PrepareExportOptions(probe, options);
        SetLogSink(quiet);
        if (!prepared.ok)
            return OptionsFailure(prepared);
    }
    std::error_code made;
    std::filesystem::create_directories(cl.outDir, made);
    if (made)
        return Failure(cl.outDir, "cannot create the folder: " + made.message());
    const int jobs = cl.jobs ? cl.jobs : DefaultJobCount();
    const int failed = RunBatch(plan, jobs, [&cl](const SBatchScene& scene) { return ExportBatchScene(cl, scene); });
    const int total = static_cast<int>(plan.size());
    if (failed)
    {
        Log(eLogError, "ostrex: %d of %d scenes failed; %d written to %s", failed, total, total - failed,
            cl.outDir.c_str());
        return eExitFailure;
    }
    Log(eLogSuccess, "Exported %d %s to %s", total, total == 1 ? "scene" : "scenes", cl.outDir.c_str());
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
    case eCommandBatch:
        break;
    }

    CConsoleSink sink(stderr, CConsoleSink::IsTerminal(stderr), cl.verbosity);
    ILogSink* previous = SetLogSink(&sink);
    const int code = cl.action == eCommandListOptions ? ListOptions(cl)
                     : cl.action == eCommandBatch     ? ExportBatch(cl)
                                                      : Export(cl);
    sink.Finish();
    SetLogSink(previous);
    return code;
}
