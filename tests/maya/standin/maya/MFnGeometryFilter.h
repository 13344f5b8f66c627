// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDependencyNode.h>

class MDagPath;

class MFnGeometryFilter : public MFnDependencyNode
{
    MAYA_STANDIN_FN_SET(MFnGeometryFilter)
    unsigned int numOutputConnections(MStatus* ReturnStatus = NULL) const;
    unsigned int indexForOutputConnection(unsigned int connectionIndex, MStatus* ReturnStatus = NULL) const;
    MStatus getPathAtIndex(unsigned int index, MDagPath& path) const;
};
