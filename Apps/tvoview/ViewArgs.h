// The command line of tvoview:
//   tvoview FILE.tvo [--screenshot OUT.png] [--frame N] [--camera NAME] [--size WxH]
#pragma once

#include <string>

struct SViewArgs
{
    std::string sFile;
    std::string sScreenshot; // empty: open the window
    float fFrame = -1.0f;    // negative: not given
    std::string sCamera;     // empty: the orbit camera
    int nWidth = 800, nHeight = 600;
    bool bHelp = false;
};

// Parses argv; returns an empty string on success, else what is wrong with the arguments.
std::string TVOParseViewArgs(int argc, char** argv, SViewArgs& out);
// The usage text; the full help adds what each option and the window controls do.
const char* TVOViewUsage();
const char* TVOViewHelp();
