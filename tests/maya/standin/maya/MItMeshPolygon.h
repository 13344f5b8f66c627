// Stand-in for the Maya devkit header of the same name. Triangles fan out from a polygon's first
// corner.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MTypes.h>

class MColor;
class MIntArray;
class MPointArray;
class MString;
class MVector;

class MItMeshPolygon
{
  public:
    MItMeshPolygon(const MDagPath& polyObject, MObject& component = MObject::kNullObj, MStatus* ReturnStatus = NULL);
    virtual ~MItMeshPolygon();
    bool isDone(MStatus* ReturnStatus = NULL);
    MStatus next();
    MStatus reset();
    unsigned int index(MStatus* ReturnStatus = NULL);
    void getPoints(MPointArray& points, MSpace::Space space = MSpace::kObject, MStatus* ReturnStatus = NULL);
    MStatus getNormal(MVector& normal, MSpace::Space space = MSpace::kObject) const;
    MStatus getNormal(unsigned int vertexIndex, MVector& normal, MSpace::Space space = MSpace::kObject) const;
    MStatus getUV(int vertexId, float2& uvPoint, const MString* uvSet = NULL) const;
    MStatus getColor(MColor& color, const MString* colorSetName = NULL);
    MStatus getColor(MColor& color, int vertexIndex);
    bool hasValidTriangulation(MStatus* ReturnStatus = NULL) const;
    MStatus numTriangles(int& count) const;
    MStatus getTriangle(int localTriIndex, MPointArray& points, MIntArray& vertexList,
                        MSpace::Space space = MSpace::kObject) const;

  private:
    int Face() const;
    int m_node;
    std::vector<int> m_faces;
    unsigned int m_at = 0;
};
