// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnReflectShader.h>

class MFnBlinnShader : public MFnReflectShader
{
    MAYA_STANDIN_FN_SET(MFnBlinnShader)
    float specularRollOff(MStatus* ReturnStatus = NULL) const;
};
