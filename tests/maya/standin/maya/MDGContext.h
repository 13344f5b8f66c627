// Stand-in for the Maya devkit header of the same name.
#pragma once

class MDGContext
{
  public:
    MDGContext();
    static MDGContext fsNormal;
};
