// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnLambertShader.h>

class MFnReflectShader : public MFnLambertShader
{
    MAYA_STANDIN_FN_SET(MFnReflectShader)
    MColor specularColor(MStatus* ReturnStatus = NULL) const;
};
