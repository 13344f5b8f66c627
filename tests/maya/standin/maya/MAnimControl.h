// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>
#include <maya/MTime.h>

class MAnimControl
{
  public:
    static MTime minTime();
    static MTime maxTime();
    static MTime currentTime();
    static MStatus setCurrentTime(const MTime& time);
};
