// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnBase.h>
#include <maya/MString.h>

class MPlug;

class MFnDependencyNode : public MFnBase
{
    MAYA_STANDIN_FN_SET(MFnDependencyNode)
    MString name(MStatus* ReturnStatus = NULL) const;
    MPlug findPlug(const MString& attrName, bool wantNetworkedPlug, MStatus* ReturnStatus = NULL) const;
};
