// The plug-in's entry points: registration of the translator "Veldra Exporter" and the command
// "Ostrex_Export". The only file that includes MFnPlugin.h (it defines MApiVersion).
#include <maya/MFnPlugin.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

#include "MelLauncher.h"
#include "Ostrex.h"

namespace
{
const char* const kTranslatorName = "Veldra Exporter";
const char* const kCommandName = "Ostrex_Export";
} // namespace

PLUGIN_EXPORT MStatus initializePlugin(MObject obj)
{
    MFnPlugin plugin(obj, "Corvell Ltd.", "2.12  Build: 3.0@2149614", "Any");
    MStatus status = plugin.registerFileTranslator(kTranslatorName, "", Ostrex::creator, NULL, NULL, false);
    if (!status)
    {
        status.perror("Failed to register our file translator");
        return status;
    }
    status = plugin.registerCommand(kCommandName, MelLauncher::creator);
    if (!status)
    {
        status.perror("Failed to register our MEL command");
        return status;
    }
    cout << "Loaded Ostrex" << endl;
    return status;
}

PLUGIN_EXPORT MStatus uninitializePlugin(MObject obj)
{
    MFnPlugin plugin(obj, "Unknown", "Unknown", "Any");
    MStatus status = plugin.deregisterFileTranslator(kTranslatorName);
    if (!status)
    {
        status.perror("Ostrex::deregisterFileTranslator");
        return status;
    }
    status = plugin.deregisterCommand(kCommandName);
    if (!status)
        status.perror("Failed to deregister the MEL command.");
    return status;
}
