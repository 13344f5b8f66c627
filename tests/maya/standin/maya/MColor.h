// Stand-in for the Maya devkit header of the same name.
#pragma once

class MColor
{
  public:
    MColor() : r(0.0f), g(0.0f), b(0.0f), a(1.0f) {}
    MColor(float rr, float gg, float bb = 0.0f, float aa = 1.0f) : r(rr), g(gg), b(bb), a(aa) {}
    static const MColor kOpaqueBlack;
    float r, g, b, a;
};
