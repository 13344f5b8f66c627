// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnNonAmbientLight.h>

class MFnNonExtendedLight : public MFnNonAmbientLight
{
    MAYA_STANDIN_DAG_FN_SET(MFnNonExtendedLight)
};
