#include "MeshWalk.h"

#include <maya/MDagPath.h>
#include <maya/MFnMesh.h>
#include <maya/MFnSet.h>
#include <maya/MIntArray.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MObjectArray.h>
#include <maya/MPointArray.h>

#include "Log.h"

namespace
{
int FirstEqualPoint(const MPointArray& points, const MPoint& point)
{
    for (unsigned int i = 0; i < points.length(); ++i)
        if (points[i] == point)
            return static_cast<int>(i);
    return 0;
}

void WalkPolygon(MItMeshPolygon& polygon, IMeshCornerVisitor& visitor)
{
    int triangles = 0;
    polygon.numTriangles(triangles);
    if (!polygon.hasValidTriangulation())
        Log(eLogWarning, "Some polygons have bad triangulation.");
    MPointArray polygonPoints;
    polygon.getPoints(polygonPoints, MSpace::kObject);
    for (int t = 0; t < triangles; ++t)
    {
        MPointArray points;
        MIntArray vertexIds;
        if (polygon.getTriangle(t, points, vertexIds, MSpace::kObject) != MStatus::kSuccess || points.length() < 3)
            continue;
        const bool haveIds = vertexIds.length() >= 3;
        for (unsigned int c = 0; c < 3; ++c)
            visitor.Corner(polygon, points[c], haveIds ? vertexIds[c] : -1, FirstEqualPoint(polygonPoints, points[c]));
        visitor.EndTriangle();
    }
}
} // namespace

bool WalkMeshCorners(MFnMesh& mesh, IMeshCornerVisitor& visitor)
{
    MObjectArray sets, components;
    if (mesh.getConnectedSetsAndMembers(0, sets, components, true) != MStatus::kSuccess)
        return false;
    const unsigned int visited = sets.length() > 1 ? sets.length() - 1 : sets.length();
    const MDagPath path = mesh.dagPath();
    for (unsigned int s = 0; s < visited && s < components.length(); ++s)
    {
        MStatus status;
        MFnSet set(sets[s], &status);
        if (!status)
            continue;
        visitor.BeginSet(sets[s]);
        for (MItMeshPolygon polygon(path, components[s]); !polygon.isDone(); polygon.next())
            WalkPolygon(polygon, visitor);
    }
    return true;
}
