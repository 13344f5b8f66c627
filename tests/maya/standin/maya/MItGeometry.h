// Stand-in for the Maya devkit header of the same name: the vertices of a mesh in id order.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

class MItGeometry
{
  public:
    MItGeometry(const MDagPath& path, MStatus* ReturnStatus = NULL);
    MItGeometry(const MDagPath& path, MObject& component, MStatus* ReturnStatus = NULL);
    virtual ~MItGeometry();
    bool isDone(MStatus* ReturnStatus = NULL) const;
    MStatus next();
    MStatus reset();
    int index(MStatus* ReturnStatus = NULL) const;
    int count(MStatus* ReturnStatus = NULL) const;
    MObject currentItem(MStatus* ReturnStatus = NULL) const;

  private:
    int m_node;
    int m_count = 0;
    int m_at = 0;
};
