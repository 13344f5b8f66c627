// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDagNode.h>

class MFnCamera : public MFnDagNode
{
    MAYA_STANDIN_DAG_FN_SET(MFnCamera)
    bool isOrtho(MStatus* ReturnStatus = NULL) const;
    double nearClippingPlane(MStatus* ReturnStatus = NULL) const;
    double farClippingPlane(MStatus* ReturnStatus = NULL) const;
    double verticalFieldOfView(MStatus* ReturnStatus = NULL) const;
};
