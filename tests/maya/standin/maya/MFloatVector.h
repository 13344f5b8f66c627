// Stand-in for the Maya devkit header of the same name.
#pragma once

class MFloatVector
{
  public:
    MFloatVector() : x(0.0f), y(0.0f), z(0.0f) {}
    MFloatVector(float xx, float yy, float zz = 0.0f) : x(xx), y(yy), z(zz) {}
    static const MFloatVector zero;
    float x, y, z;
};
