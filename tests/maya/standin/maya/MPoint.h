// Stand-in for the Maya devkit header of the same name.
#pragma once

class MPoint
{
  public:
    MPoint() : x(0.0), y(0.0), z(0.0), w(1.0) {}
    MPoint(double xx, double yy, double zz = 0.0, double ww = 1.0) : x(xx), y(yy), z(zz), w(ww) {}
    bool operator==(const MPoint& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
    static const MPoint origin;
    double x, y, z, w;
};
