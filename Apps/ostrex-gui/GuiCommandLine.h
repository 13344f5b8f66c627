// The ostrex-gui command line:  ostrex-gui [SCENE]  |  ostrex-gui --help
// Parsing never prints; a usage error comes back as text (exit code 2).
#pragma once

#include <string>

struct SGuiCommandLine
{
    bool help = false;
    std::string scene; // empty: the window opens without a scene
    std::string error; // usage error, empty when the line is fine
};

SGuiCommandLine ParseGuiCommandLine(int argc, const char* const* argv);
std::string GuiCommandLineHelp();
