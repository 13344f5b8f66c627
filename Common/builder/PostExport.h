// Post-export actions: the user's command line and opening the written file in the model viewer.
//
// Both run through the system shell, one after the other, and wait for it. Their failures are
// logged and never change the result of the export. Hosts decide which options they take from
// files: see KeepProgramLaunchesOf.
#pragma once

#include <cstdint>
#include <string>

struct SPostExportSettings
{
    std::string sClPostTarget; // program run after export; nothing runs when empty
    std::string sClPostArgs;
    std::string sClPostCWD;    // prefixed to the program's path (quoted) when not empty
    std::string sPathToDravik; // the viewer
    bool bDisplayInDravik = false;
    uint32_t eExpFormat = 0; // the viewer opens binary output only
    std::string sOutputPath; // the written file
};

// The command line run for sClPostTarget: with a working directory, the quoted path of the
// program in it ("/" added unless the directory ends in "/" or a backslash); without one, the
// program as it stands, unquoted; then a blank and the arguments. Empty when there is no program.
std::string PostExportCommand(const SPostExportSettings& s);
// The viewer's command line: the viewer, a blank and the quoted output path.
std::string ViewerCommand(const SPostExportSettings& s);
// Runs the command, then the viewer: sPathToDravik, or the default viewer when that is empty.
void RunPostExportActions(const SPostExportSettings& s);

// The viewer that opens a written file when the options name none: the host installs it (the
// command line installs tvoview); empty, as at start, opens nothing.
void SetDefaultViewer(const std::string& path);
const std::string& DefaultViewer();
// Opens a written file in the default viewer without waiting for it to close. False, logged, when
// no default viewer is installed or it cannot be started.
bool OpenInViewer(const std::string& path);

// The shell the actions run through (std::system by default). Tests install a stand-in to see the
// commands and to play results the real shell rarely gives, such as -1. Returns the previous one.
using PostExportShell = int (*)(const char* command);
PostExportShell SetPostExportShell(PostExportShell shell);
