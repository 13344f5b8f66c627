// tvoview: draws a .tvo scene as a small GPU would (OpenGL ES 2 shaders, strips, bone batches,
// quantised vertex types, the unpack matrix, animation, the file's lights and cameras).
//
//   tvoview FILE.tvo                       the viewer window
//   tvoview FILE.tvo --screenshot OUT.png  one frame without any display, then exit
//          [--frame N] [--camera NAME] [--size WxH]
//
// Exit status 0 on success; 1 when the file cannot be read or drawn, no OpenGL ES context can be
// made or the image cannot be written (one line on stderr); 2 for a usage error.
#include <cstdio>

#include <QCoreApplication>

#include "Screenshot.h"
#include "TVOViewCamera.h"
#include "ViewerWindow.h"

int main(int argc, char** argv)
{
    SViewArgs args;
    const std::string usage = TVOParseViewArgs(argc, argv, args);
    if (!usage.empty())
    {
        std::fprintf(stderr, "tvoview: %s\n%s", usage.c_str(), TVOViewUsage());
        return 2;
    }
    if (args.bHelp)
    {
        std::printf("%s%s", TVOViewUsage(), TVOViewHelp());
        return 0;
    }
    CTVOViewScene scene;
    const std::string problem = scene.Open(args.sFile);
    if (!problem.empty())
    {
        std::fprintf(stderr, "tvoview: %s: %s\n", args.sFile.c_str(), problem.c_str());
        return 1;
    }
    int camera = -1;
    if (!args.sCamera.empty() && (camera = TVOFindCamera(scene.Model(), args.sCamera)) < 0)
    {
        std::string names;
        for (uint32_t c = 0; c < scene.Model().nNumCamera; ++c)
            names += (c ? ", " : "") + TVOCameraName(scene.Model(), c);
        std::fprintf(stderr, "tvoview: %s: no camera named '%s' (cameras: %s)\n", args.sFile.c_str(),
                     args.sCamera.c_str(), names.empty() ? "none" : names.c_str());
        return 1;
    }
    if (!args.sScreenshot.empty())
    {
        // Image plugins (JPEG) are found through the application object; no display is needed.
        QCoreApplication app(argc, argv);
        return TVORunScreenshot(scene, args, camera);
    }
    return TVORunViewerWindow(argc, argv, scene, args, camera);
}
