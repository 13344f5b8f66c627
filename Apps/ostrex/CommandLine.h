// The ostrex command line: parsing into SCommandLine, the help text, and the output kind chosen by
// the output file's extension.
//
//   ostrex INPUT OUTPUT [--config FILE] [--set KEY=VALUE]... [--profile NAME] [--select NODE]...
//          [--fps N] [--animation NAME|INDEX] [--allow-post-export] [--view] [--quiet|--verbose]
//          [--depfile FILE] [--report-json FILE|-] [--strict] [--threads N]
//   ostrex --out-dir DIR [-j N] [--format tvo|h|cpp] [export options] SCENE...
//   ostrex --list-options [--config FILE] [--set KEY=VALUE]... [--profile NAME]
//   ostrex --help
//
// Options with a value take it as the next argument or after "=" ("--fps=24"). "--" ends the
// options. Parsing never exits or prints; usage errors come back as text for exit code 2.
#pragma once

#include <string>
#include <vector>

enum ECommandAction : int
{
    eCommandExport = 0,
    eCommandHelp,
    eCommandListOptions,
    eCommandUsageError,
    eCommandBatch // several scenes into --out-dir
};

enum EVerbosity : int
{
    eVerbosityQuiet = 0,  // errors only
    eVerbosityNormal = 1, // levels 0, 2 and 3 and the progress bar
    eVerbosityVerbose = 2 // also level-1 information and level-4 details
};

// Exit codes of the program.
enum EExitCode : int
{
    eExitSuccess = 0,
    eExitFailure = 1,
    eExitUsage = 2
};

struct SCommandLine
{
    ECommandAction action = eCommandUsageError;
    std::string input;
    std::string output;
    std::string configFile;             // --config, empty when not given
    std::vector<std::string> settings;  // --set values in order, each KEY=VALUE with a non-empty key
    std::string profile;                // --profile, empty when not given
    std::vector<std::string> selection; // --select node names in order
    int fps = 0;                        // --fps; 0 means the animation's own rate
    int threads = 0;                    // --threads; 0 means one a core
    std::string animation;              // --animation name or index; empty means the first
    EVerbosity verbosity = eVerbosityNormal;
    bool allowPostExport = false; // run the post-export actions that a --config file carries
    bool view = false;            // open the written file in the viewer
    std::string depfile;    // --depfile: Make-format dependency file of the export
    std::string reportJson; // --report-json: JSON report file, "-" for standard output
    bool strict = false;    // --strict: a warning fails the export
    // Batch (eCommandBatch): every scene of inputs into outDir, jobs at a time (0: one a core).
    std::vector<std::string> inputs;
    std::string outDir;
    int jobs = 0;
    std::string format; // --format: extension of the batch outputs, "tvo" (when empty), "h" or "cpp"
    std::string error; // the usage error, for eCommandUsageError
};

// Parses argv[1..argc-1]. Unknown options, missing or malformed values, a missing or extra
// positional argument and conflicting options give eCommandUsageError with the reason.
SCommandLine ParseCommandLine(int argc, const char* const* argv);

// The text of "ostrex --help".
std::string CommandLineHelp();

// The line printed after a usage error, pointing at --help.
std::string CommandLineHint();

// Splits one --set value at its first "=". False when there is no "=" or the key is empty.
bool SplitSetting(const std::string& setting, std::string& key, std::string& value);

// Output kind from the extension of the lower-cased path (the text from its last "."; a dot in the
// first position does not count): 2 for ".cpp" (C++ source), 1 for ".h" (header), 0 for any other
// extension (binary scene file), -1 when the path has no extension (the options keep their value).
int OutputFormatForPath(const std::string& path);
