// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MColor.h>
#include <maya/StandInArray.h>

class MColorArray : public MStandInArray<MColor>
{
  public:
    using MStandInArray<MColor>::MStandInArray;
};
