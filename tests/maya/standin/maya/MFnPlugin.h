// Stand-in for the Maya devkit header of the same name: registrations are recorded in the stand-in
// scene. Included by exactly one file of the plug-in, as the real header defines MApiVersion.
#pragma once

#include <maya/MFnBase.h>
#include <maya/MString.h>
#include <maya/MTypes.h>

class MFnPlugin : public MFnBase
{
  public:
    MFnPlugin();
    MFnPlugin(MObject& object, const char* vendor = "Unknown", const char* version = "Unknown",
              const char* requiredApiVersion = "Any", MStatus* ReturnStatus = 0L);
    ~MFnPlugin() override;
    MStatus registerCommand(const MString& commandName, MCreatorFunction creatorFunction,
                            MCreateSyntaxFunction createSyntaxFunction = NULL);
    MStatus deregisterCommand(const MString& commandName);
    MStatus registerFileTranslator(const MString& translatorName, const char* pixmapName,
                                   MCreatorFunction creatorFunction, const char* optionsScriptName = NULL,
                                   const char* defaultOptionsString = NULL, bool requiresFullMel = false,
                                   MString dataStorageLocation = MFnPlugin::kDefaultDataLocation);
    MStatus deregisterFileTranslator(const MString& translatorName);
    static const MString kDefaultDataLocation;
};

#ifndef MNoVersionString
extern "C" {
DLL_PUBLIC char MApiVersion[] = "201602";
}
#endif
