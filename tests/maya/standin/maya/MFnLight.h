// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDagNode.h>

class MColor;

class MFnLight : public MFnDagNode
{
    MAYA_STANDIN_DAG_FN_SET(MFnLight)
    MColor color(MStatus* ReturnStatus = NULL) const;
};
