// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MPoint.h>
#include <maya/StandInArray.h>

class MPointArray : public MStandInArray<MPoint>
{
  public:
    using MStandInArray<MPoint>::MStandInArray;
};
