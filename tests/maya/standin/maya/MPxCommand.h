// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>

class MArgList;

class MPxCommand
{
  public:
    MPxCommand();
    virtual ~MPxCommand();
    virtual MStatus doIt(const MArgList& args);
};
