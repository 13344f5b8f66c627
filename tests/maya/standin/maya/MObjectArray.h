// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MObject.h>
#include <maya/StandInArray.h>

class MObjectArray : public MStandInArray<MObject>
{
  public:
    using MStandInArray<MObject>::MStandInArray;
};
