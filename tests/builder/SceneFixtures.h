// Scene content for the builder tests, shaped as a host delivers it: every mesh an unwelded
// triangle list with one position, normal and uv entry per corner. Also a temporary directory and
// a file reader for the tests that write files.
#pragma once

#include "TempFiles.h"

#include <string>
#include <vector>

#include "Content.h"

// Appends one triangle as three fresh corners.
void AddCornerTriangle(SGeomData& g, const QMXTVECTOR3f p[3], const QMXTVECTOR3f& normal, int material = 0,
                       const QMXTVECTOR3f* uv = nullptr);
// A unit cube centred on the origin, 12 triangles, outward normals, one uv set; faces 0-5 use
// material matA and faces 6-11 material matB.
SGeomData CubeGeometry(int matA = 0, int matB = 0, float size = 1.0f);
// A mesh node of that cube.
CNode MeshNode(const std::string& name, const SGeomData& geom);
// A tube along y of rings + 1 rings of sides corners, skinned to the given bone nodes: ring r is
// weighted to bone r / ringsPerBone, with half its weight on the next bone.
SGeomData TubeGeometry(int rings, int sides);
SModifier TubeSkin(const SGeomData& tube, int rings, int sides, const std::vector<int>& bones);
// A square grid of n x n quads (2 n^2 triangles) in the xy plane with normals and one uv set,
// unwelded corners.
SGeomData GridGeometry(int n);


