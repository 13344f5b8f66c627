// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnReflectShader.h>

class MFnPhongShader : public MFnReflectShader
{
    MAYA_STANDIN_FN_SET(MFnPhongShader)
    float cosPower(MStatus* ReturnStatus = NULL) const;
};
