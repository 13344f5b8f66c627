// The two per-mesh passes that shape a finished mesh for the target.
//
// GeometryPass (run by GenD): tangent space, bone batches, triangle order, strips or list, indexed
// or not; the mesh leaves it interleaved without padding.
// VertexFormatPass (run by Process afterwards): 16-bit indices where they suffice, every stream in
// the data type and components its vertex format asks for, adapted to the coordinate system; the
// mesh leaves it de-interleaved, for Process to interleave with the chosen padding. A stream whose
// format is not exported (or selects no component) is removed, as are trailing unwritten uv sets;
// with bUnpackMatrix, positions of a non-float type are quantised with an unpack matrix.
// A tangent-space failure is logged and leaves the mesh without tangent and binormal streams.
// The mesh transforms they call fail on the builder's own, consistent meshes only for want of memory:
// such a failure throws std::bad_alloc (RequireMemory), which CTVO::ProcessWith reports as the
// out-of-memory error. GeometryPass logs its other failures and returns false.
//
// Coordinate system: with eCoordSystemDirectX the z component of positions, normals, tangents and
// binormals is negated (a mirror through the xy plane, matching the z negation of node animation),
// so the geometry pass reverses every triangle's winding to keep faces front-facing, and mesh
// assembly already stored V as 1 - V. Tangents are generated before the mirror from the stored
// (flipped) V, so both mirrored vectors come out as a left-handed frame expects.
#pragma once

#include "BuilderSettings.h"
#include "QMXTModelTVO.h"

bool GeometryPass(STVOMesh& mesh, const SBuilderSettings& settings);
// Throws std::bad_alloc unless done.
void RequireMemory(bool done);
void VertexFormatPass(STVOMesh& mesh, const SBuilderSettings& settings);
