// Stand-in for the Maya devkit header of the same name.
#pragma once

class MEulerRotation
{
  public:
    enum RotationOrder
    {
        kXYZ = 0,
        kYZX,
        kZXY,
        kXZY,
        kYXZ,
        kZYX
    };
    MEulerRotation() : x(0.0), y(0.0), z(0.0), order(kXYZ) {}
    MEulerRotation(double xx, double yy, double zz, RotationOrder ord = kXYZ) : x(xx), y(yy), z(zz), order(ord) {}
    double x, y, z;
    RotationOrder order;
};
