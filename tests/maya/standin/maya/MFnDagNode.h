// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDependencyNode.h>
#include <maya/MObject.h>

class MDagPath;
class MMatrix;
class MObjectArray;

class MFnDagNode : public MFnDependencyNode
{
    MAYA_STANDIN_DAG_FN_SET(MFnDagNode)
    unsigned int parentCount(MStatus* ReturnStatus = NULL) const;
    MObject parent(unsigned int i, MStatus* ReturnStatus = NULL) const;
    unsigned int childCount(MStatus* ReturnStatus = NULL) const;
    MObject child(unsigned int i, MStatus* ReturnStatus = NULL) const;
    MString fullPathName(MStatus* ReturnStatus = NULL) const;
    MDagPath dagPath(MStatus* ReturnStatus = NULL) const;
    MMatrix transformationMatrix(MStatus* ReturnStatus = NULL) const;
    bool isIntermediateObject(MStatus* ReturnStatus = NULL) const;
    MStatus getConnectedSetsAndMembers(unsigned int instanceNumber, MObjectArray& sets, MObjectArray& comps,
                                       bool renderableSetsOnly) const;
};
