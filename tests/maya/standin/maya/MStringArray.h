// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MString.h>
#include <maya/StandInArray.h>

class MStringArray : public MStandInArray<MString>
{
  public:
    using MStandInArray<MString>::MStandInArray;
};
