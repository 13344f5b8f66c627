// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFloatVector.h>
#include <maya/StandInArray.h>

class MFloatVectorArray : public MStandInArray<MFloatVector>
{
  public:
    using MStandInArray<MFloatVector>::MStandInArray;
};
