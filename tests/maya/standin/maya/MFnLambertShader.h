// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDependencyNode.h>

class MColor;

class MFnLambertShader : public MFnDependencyNode
{
    MAYA_STANDIN_FN_SET(MFnLambertShader)
    MColor color(MStatus* ReturnStatus = NULL) const;
    MColor transparency(MStatus* ReturnStatus = NULL) const;
    MColor ambientColor(MStatus* ReturnStatus = NULL) const;
    float diffuseCoeff(MStatus* ReturnStatus = NULL) const;
};
