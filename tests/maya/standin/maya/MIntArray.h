// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/StandInArray.h>

class MIntArray : public MStandInArray<int>
{
  public:
    using MStandInArray<int>::MStandInArray;
};
