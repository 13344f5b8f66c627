// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDagNode.h>

#define kMFnMeshInstanceUnspecified -1

class MColor;
class MColorArray;
class MFloatVectorArray;
class MStringArray;

class MFnMesh : public MFnDagNode
{
    MAYA_STANDIN_DAG_FN_SET(MFnMesh)
    int numUVs(const MString& uvSet, MStatus* ReturnStatus = NULL) const;
    MStatus getNormals(MFloatVectorArray& normals, MSpace::Space space = MSpace::kObject) const;
    MStatus getUVSetNames(MStringArray& names) const;
    MStatus getVertexColors(MColorArray& colors, const MString* colorSet = NULL, const MColor* defaultUnsetColor = NULL);
};
