// The triangle corners of a mesh in export order, shared by the mesh and the skin extraction so that
// the n-th skinned vertex is the n-th position of the mesh.
//
// The shading groups of instance 0 are visited in order; when there is more than one, the last is
// deliberately left out. Sets that are no MFnSet are skipped. Per polygon
// of a set: "Some polygons have bad triangulation." when Maya says so; per triangle, getTriangle in
// object space (a failed triangle is dropped); per corner, the mesh vertex id and the first polygon
// vertex at the same place (the face-relative index for UVs, normals and colours).
// Cost: linear in corners, plus a scan of the polygon's own points per corner.
#pragma once

#include <maya/MObject.h>
#include <maya/MPoint.h>

class MFnMesh;
class MItMeshPolygon;

class IMeshCornerVisitor
{
  public:
    virtual ~IMeshCornerVisitor() = default;
    virtual void BeginSet(const MObject& set) = 0;
    // vertexId is -1 when Maya gave no vertex list for the triangle.
    virtual void Corner(MItMeshPolygon& polygon, const MPoint& point, int vertexId, int localVertex) = 0;
    virtual void EndTriangle() = 0;
};

// False when the shading groups cannot be read; the caller reports it.
bool WalkMeshCorners(MFnMesh& mesh, IMeshCornerVisitor& visitor);
