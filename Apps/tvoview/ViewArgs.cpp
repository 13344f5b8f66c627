#include "ViewArgs.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace
{
bool ParseSize(const char* text, int& width, int& height)
{
    char tail = 0;
    return std::sscanf(text, "%dx%d%c", &width, &height, &tail) == 2 && width >= 16 && height >= 16 &&
           width <= 8192 && height <= 8192;
}

bool ParseFrame(const char* text, float& frame)
{
    char* end = nullptr;
    frame = std::strtof(text, &end);
    return end != text && *end == 0 && std::isfinite(frame) && frame >= 0.0f;
}
} // namespace

const char* TVOViewUsage()
{
    return "usage: tvoview FILE.tvo [--screenshot OUT.png] [--frame N] [--camera NAME] [--size WxH]\n";
}

const char* TVOViewHelp()
{
    return "Draws a .tvo scene as a small GPU would (OpenGL ES 2 shaders).\n"
           "  --screenshot OUT.png  render one frame without any display, write it as PNG and exit\n"
           "  --frame N             animation frame to show (fractions blend between keys)\n"
           "  --camera NAME         look through the scene camera of that node name\n"
           "  --size WxH            image or view size in pixels (default 800x600)\n"
           "Window: drag to turn the free camera, wheel to zoom; Play, the frame slider and the\n"
           "camera list are under the view; the side panel has the summary, the node tree, the\n"
           "mesh statistics and the wireframe, normals, bone batch and bounds toggles; Ctrl+Q quits.\n"
           "Exit status: 0 done, 1 the file cannot be read or drawn or no context can be made,\n"
           "2 usage error.\n";
}

std::string TVOParseViewArgs(int argc, char** argv, SViewArgs& out)
{
    for (int i = 1; i < argc; ++i)
    {
        const char* arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--help") == 0 || std::strcmp(arg, "-h") == 0)
        {
            out.bHelp = true;
            return {};
        }
        if (std::strcmp(arg, "--screenshot") == 0 && hasValue)
            out.sScreenshot = argv[++i];
        else if (std::strcmp(arg, "--frame") == 0 && hasValue)
        {
            if (!ParseFrame(argv[++i], out.fFrame))
                return std::string("--frame wants a frame number of 0 or more, not '") + argv[i] + "'";
        }
        else if (std::strcmp(arg, "--camera") == 0 && hasValue)
            out.sCamera = argv[++i];
        else if (std::strcmp(arg, "--size") == 0 && hasValue)
        {
            if (!ParseSize(argv[++i], out.nWidth, out.nHeight))
                return std::string("--size wants WIDTHxHEIGHT from 16 to 8192, not '") + argv[i] + "'";
        }
        else if (arg[0] == '-' && arg[1] != 0)
            return std::string("unknown option or missing value: ") + arg;
        else if (!out.sFile.empty())
            return "only one file can be viewed";
        else
            out.sFile = arg;
    }
    return out.sFile.empty() ? "no file given" : "";
}
