// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MDagPath.h>
#include <maya/StandInArray.h>

class MDagPathArray : public MStandInArray<MDagPath>
{
  public:
    using MStandInArray<MDagPath>::MStandInArray;
};
