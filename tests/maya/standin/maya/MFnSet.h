// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnDependencyNode.h>

class MFnSet : public MFnDependencyNode
{
    MAYA_STANDIN_FN_SET(MFnSet)
};
