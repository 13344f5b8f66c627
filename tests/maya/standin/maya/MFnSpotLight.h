// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnNonExtendedLight.h>

class MFnSpotLight : public MFnNonExtendedLight
{
    MAYA_STANDIN_DAG_FN_SET(MFnSpotLight)
    double coneAngle(MStatus* ReturnStatus = NULL) const;
};
