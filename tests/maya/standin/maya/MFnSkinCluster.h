// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <maya/MFnGeometryFilter.h>

class MDagPathArray;
class MDoubleArray;
class MFloatArray;
class MIntArray;

class MFnSkinCluster : public MFnGeometryFilter
{
    MAYA_STANDIN_FN_SET(MFnSkinCluster)
    unsigned int influenceObjects(MDagPathArray& paths, MStatus* ReturnStatus = NULL) const;
    MStatus getWeights(const MDagPath& path, const MObject& components, MDoubleArray& weights,
                       unsigned int& influenceCount) const;
    MStatus getWeights(const MDagPath& path, const MObject& components, unsigned int influenceIndex,
                       MDoubleArray& weights) const;
    MStatus getWeights(const MDagPath& path, const MObject& components, MIntArray& influenceIndices,
                       MDoubleArray& weights) const;
    MStatus getWeights(const MDagPath& path, const MObject& components, MFloatArray& weights,
                       unsigned int& influenceCount) const;
    MStatus getWeights(const MDagPath& path, const MObject& components, unsigned int influenceIndex,
                       MFloatArray& weights) const;
};
