// The export options of one command line, and their listing.
//
// PrepareExportOptions starts from the defaults, then takes the profile named by --profile from the
// preferences store (its profiles under "Profiles"), then the file named by --config
// (COptions::ReadConfig: an options text, a previous .tvo or a generated .h; the post-export
// command and viewer launch it carries are dropped with a warning unless --allow-post-export is
// given, since a file from elsewhere must never start a program), then every --set as
// one options text, in order. Last, the output's extension chooses the output kind (".cpp" source,
// ".h" header, any other binary; no extension keeps what the options say), and the output path is
// stored for merging materials from an earlier export.
#pragma once

#include <string>

#include "CommandLine.h"
#include "Options.h"

// Name of the preferences set and the key prefix of its profiles, shared with the options window.
extern const char* const kOstrexPreferencesName;
extern const char* const kOstrexProfilesPrefix;

struct SOptionsOutcome
{
    bool ok = true;
    EExitCode exitCode = eExitSuccess; // eExitUsage for a bad --set or an unknown profile
    std::string subject;               // what the error is about: a file, or empty for the command line
    std::string error;
};

SOptionsOutcome PrepareExportOptions(const SCommandLine& cl, COptions& options);

// Every option as "key=value" in the options text's order, padded, followed by its caption.
std::string ListExportOptions(const COptions& options);
