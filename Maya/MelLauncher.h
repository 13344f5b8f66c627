// MelLauncher: the MEL command Ostrex_Export(file [, optionsFile [, exportActive]]). It runs the
// translator's export without the export dialog: with an options file, without any window.
#pragma once

#include <maya/MPxCommand.h>
#include <maya/MStatus.h>

class MArgList;

class MelLauncher : public MPxCommand
{
  public:
    static void* creator();
    MStatus doIt(const MArgList& args) override;
};
