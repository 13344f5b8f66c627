// Stand-in for the Maya devkit header of the same name: every scene node in creation order.
#pragma once

#include <maya/MFn.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

class MItDependencyNodes
{
  public:
    MItDependencyNodes(MFn::Type filter = MFn::kInvalid, MStatus* ReturnStatus = NULL);
    virtual ~MItDependencyNodes();
    MStatus reset(MFn::Type filter = MFn::kInvalid);
    bool isDone(MStatus* ReturnStatus = NULL) const;
    MStatus next();
    MObject thisNode(MStatus* ReturnStatus = NULL) const;

  private:
    void Skip();
    MFn::Type m_filter;
    int m_at;
};
