// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>

class MPoint;
class MFloatVector;

class MVector
{
  public:
    MVector() : x(0.0), y(0.0), z(0.0) {}
    MVector(double xx, double yy, double zz = 0.0) : x(xx), y(yy), z(zz) {}
    double length() const;
    MStatus normalize();
    static const MVector zero;
    double x, y, z;
};
