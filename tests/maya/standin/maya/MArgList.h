// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>

#include <vector>

class MArgList
{
  public:
    MArgList();
    MArgList(const MArgList&);
    ~MArgList();
    unsigned int length(MStatus* ReturnStatus = NULL) const;
    MString asString(unsigned int index, MStatus* ReturnStatus = NULL) const;
    MStatus addArg(const MString& arg);

  private:
    std::vector<MString> m_args;
};
