// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDagNode.h>

class MEulerRotation;

class MFnTransform : public MFnDagNode
{
    MAYA_STANDIN_DAG_FN_SET(MFnTransform)
    MStatus getScale(double scale[3]) const;
    MStatus getRotation(MEulerRotation& rotation) const;
};
