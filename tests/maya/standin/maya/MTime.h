// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>

class MTime
{
  public:
    enum Unit
    {
        kInvalid = 0,
        kHours = 1,
        kMinutes = 2,
        kSeconds = 3,
        kMilliseconds = 4,
        kGames = 5,
        kFilm = 6,
        kPALFrame = 7,
        kNTSCFrame = 8,
        kShowScan = 9,
        kPALField = 10,
        kNTSCField = 11,
        k2FPS = 12,
        k3FPS, k4FPS, k5FPS, k6FPS, k8FPS, k10FPS, k12FPS, k16FPS, k20FPS, k40FPS, k75FPS, k80FPS, k100FPS,
        k120FPS, k125FPS, k150FPS, k200FPS, k240FPS, k250FPS, k300FPS, k375FPS, k400FPS, k500FPS, k600FPS,
        k750FPS, k1200FPS, k1500FPS, k2000FPS, k3000FPS,
        k6000FPS = 42,
        kUserDef = 43,
        kLast = 44
    };
    MTime();
    MTime(const MTime&);
    MTime(double value, Unit unit = kFilm);
    ~MTime();
    MTime& operator=(const MTime&);
    Unit unit() const;
    double value() const;
    double as(Unit unit) const;
    static Unit uiUnit();

  private:
    double m_value;
    Unit m_unit;
};
