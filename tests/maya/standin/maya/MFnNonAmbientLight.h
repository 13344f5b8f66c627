// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnLight.h>

class MFnNonAmbientLight : public MFnLight
{
    MAYA_STANDIN_DAG_FN_SET(MFnNonAmbientLight)
    short decayRate(MStatus* ReturnStatus = NULL) const;
};
