// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <vector>

class MSelectionList
{
  public:
    MSelectionList();
    MSelectionList(const MSelectionList&);
    virtual ~MSelectionList();
    unsigned int length(MStatus* ReturnStatus = NULL) const;
    MStatus getDependNode(unsigned int index, MObject& object) const;
    MStatus add(const MObject& object, const bool mergeWithExisting = false);

  private:
    friend class MGlobal; // the stand-in fills the active list
    std::vector<MObject> m_items;
};
