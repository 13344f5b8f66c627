// Stand-in for the Maya devkit header of the same name. A path is the chain of node ids from the
// node under the world down to the node.
#pragma once

#include <maya/MFn.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <vector>

class MMatrix;
class MString;

class MDagPath
{
  public:
    MDagPath();
    MDagPath(const MDagPath&);
    virtual ~MDagPath();
    MDagPath& operator=(const MDagPath&);
    static MStatus getAPathTo(const MObject&, MDagPath&);
    bool hasFn(MFn::Type, MStatus* ReturnStatus = NULL) const;
    MFn::Type apiType(MStatus* ReturnStatus = NULL) const;
    MObject node(MStatus* ReturnStatus = NULL) const;
    MMatrix inclusiveMatrix(MStatus* ReturnStatus = NULL) const;
    MString fullPathName(MStatus* ReturnStatus = NULL) const;
    MString partialPathName(MStatus* ReturnStatus = NULL) const;
    bool operator==(const MDagPath&) const;

    // Stand-in only.
    const std::vector<int>& StandInChain() const { return m_chain; }
    void StandInSetChain(std::vector<int> chain) { m_chain = std::move(chain); }

  private:
    std::vector<int> m_chain;
};
