#include "GuiCommandLine.h"

SGuiCommandLine ParseGuiCommandLine(int argc, const char* const* argv)
{
    SGuiCommandLine cl;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::string arg = argv[i] ? argv[i] : "";
        if (!optionsEnded && (arg == "--help" || arg == "-h"))
            cl.help = true;
        else if (!optionsEnded && arg == "--")
            optionsEnded = true;
        else if (!optionsEnded && arg.size() > 1 && arg[0] == '-')
            cl.error = "unknown option '" + arg + "'";
        else if (cl.scene.empty())
            cl.scene = arg;
        else
            cl.error = "more than one scene given ('" + cl.scene + "' and '" + arg + "')";
        if (!cl.error.empty())
            break;
    }
    return cl;
}

std::string GuiCommandLineHelp()
{
    return "Usage: ostrex-gui [SCENE]\n"
           "       ostrex-gui --help\n"
           "\n"
           "Opens the Ostrex options window over SCENE (any scene file the ostrex command line reads,\n"
           "such as .gltf, .glb, .fbx, .dae or .obj). Export asks where to write the .tvo (or .h/.cpp)\n"
           "and shows the output log while it works. File > Open... chooses another scene.\n"
           "\n"
           "Profiles, the last used options and the recent files are shared with the Maya plug-in\n"
           "and the command line (preferences under ~/.qmxconfig/Corvell/). Studio profiles are read\n"
           "from the folder named by OSTREX_STUDIO_PROFILES.\n";
}
