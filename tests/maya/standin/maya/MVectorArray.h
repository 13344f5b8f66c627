// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MVector.h>
#include <maya/StandInArray.h>

class MVectorArray : public MStandInArray<MVector>
{
  public:
    using MStandInArray<MVector>::MStandInArray;
};
