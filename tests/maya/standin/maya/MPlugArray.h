// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MPlug.h>
#include <maya/StandInArray.h>

class MPlugArray : public MStandInArray<MPlug>
{
  public:
    using MStandInArray<MPlug>::MStandInArray;
};
