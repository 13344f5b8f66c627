// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/StandInArray.h>

class MDoubleArray : public MStandInArray<double>
{
  public:
    using MStandInArray<double>::MStandInArray;
};
