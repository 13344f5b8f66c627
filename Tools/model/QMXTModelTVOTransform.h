// Transformations of a scene model: rewrite meshes and materials in place, or copy records.
//
// Every function returns 0 for success and 1 for failure; a failure caused by bad input is also
// described on QMXTErrorOutputDebug. Unless said otherwise a failed call leaves its mesh as it was.
// n below is a mesh's vertex count, i its index count (QMXTModelTVOCountIndices).
//
// Streams and interleaving: a mesh is interleaved when pInterleaved is set; each present stream's
// pData then holds its byte offset within one vertex (QMXTModelTVODataOffset) and its nStride the
// interleaved stride. Stream components are read and written only through QMXTVertexRead and
// QMXTVertexWrite, so every function works on any of the seventeen data types.
//
// Choices made here where the rules leave room:
// - List to strips writes strips as the hardware draws them: triangle k of a strip s0, s1, ... is
//   (sk, sk+1, sk+2) for even k and (sk+1, sk, sk+2) for odd k. A triangle (a, b, c) extends the
//   current strip when, at an odd position, a is the strip's last index and b the one before it,
//   and at an even position, a is the one before the last and b the last; otherwise it starts a new
//   strip. Every triangle keeps its corners, in order, and so its winding.
//   Strips to list uses its own fixed corner order instead, (k-1, k-2, k) for every index k after
//   the first three. For the third, fifth, ... triangle of a strip this is the reverse winding of
//   the hardware reading. A list made that way turns back into strips that hold exactly its
//   triangles, and (barring repeated indices) those strips turn back into exactly that list.
// - Flattening: a mesh drawn through its node lands exactly where it stood at the source's frame.
//   The meshes hold world-space data, so every mesh node becomes a root with a static identity
//   transform (its animation is dropped); every other node (lights, cameras, bones, plain nodes)
//   keeps its world placement at every frame: one whose parent was a mesh node hangs under its
//   nearest ancestor that is not, with matrix keys that give its old world transform.
// - Quantising an axis of zero extent uses a scale of 1 on it: every position then stores the
//   range minimum m on that axis and the unpack matrix maps it back to the exact coordinate.
//   Positions are rounded to the nearest step of the target type (not truncated), so a stored
//   position is the nearest one the type can hold within its listed range.
#pragma once

#include <cstdint>

#include "QMXTModelTVO.h"
#include "QMXTVertexData.h"

// Interleaves a mesh that has no interleaved block, or de-interleaves one that has.
// Interleaving: each stream of stride s (type size x components) is padded by
// (alignment - s mod alignment) mod alignment bytes (none for alignment 0); streams are placed in
// three passes, 4-byte types, then 2-byte, then 1-byte, each pass in the order positions, normals,
// tangents, binormals, colours, UVW streams, bone indices, bone weights. The new block is zeroed, so
// padding bytes are 0. De-interleaving copies every present stream into an array of its own.
// A mesh without vertices is left as it is. Fails (mesh unchanged) on allocation failure or when a
// present stream of a mesh with vertices has no data. Cost O(n x stride) time, one block of memory.
int QMXTModelTVOToggleInterleaved(STVOMesh& mesh, uint32_t alignment);

// Expands an indexed mesh to one vertex a corner: vertex count becomes the index count, vertex k is
// a copy of the vertex index k named, and the index array is released (sFaces reset). Works on
// interleaved and non-interleaved meshes, on lists and strips (strip lengths are kept). A mesh
// without vertices or without indices is left as it is. Fails (mesh unchanged) when an index is not
// below the vertex count or on allocation failure. Cost O(i x stride).
int QMXTModelTVODeIndex(STVOMesh& mesh);

// Converts between indexed strips and an indexed triangle list (index type kept).
// Strips to list: strip by strip, the first triangle takes the strip's first three indices and
// every further index k adds (index k-1, index k-2, index k). Strip lengths are freed.
// List to strips: triangles in list order, never crossing a bone batch boundary (sBoneBatch
// offsets); the edge test is the hardware parity described at the top of this header. The index
// array is shrunk to fit. The triangle order and face count are kept, so batch offsets stay valid.
// Fails on a mesh without indices, strip lengths that do not add up to the face count, or
// allocation failure. Cost O(i).
int QMXTModelTVOToggleStrips(STVOMesh& mesh);

// Picks, reorders and negates components of a stream (not of an interleaved mesh). channels holds
// up to four entries ended by 0: 'x', 'y', 'z', 'w' name components 0 to 3, a negative entry takes
// the component negated. The result has as many components as entries, never more than the stream
// had, in the same type; an empty list removes the stream. Packed types (colours, UBYTE4, DEC3N)
// keep their one element. A stream without data is left as it is. Fails on an unknown entry or a
// stream of more than four components. Cost O(n), in place.
int QMXTModelTVODataShred(CTVOData& data, uint32_t vertexCount, const int32_t* channels);

// Re-encodes a stream (not of an interleaved mesh; the face indices too) in another type through
// QMXTVertexRead and QMXTVertexWrite; a stride of 0 is taken as tightly packed. The component count
// becomes old count x old type's components for a scalar target and 1 for a packed target; the
// stride type size x components. Nothing happens when the stream has no data or already has the
// type. Fails on an unknown target or a stream of more than four components. Cost O(n); a new
// array when the stride changes, else in place.
int QMXTModelTVODataConvert(CTVOData& data, uint32_t vertexCount, EQMXTDataType target);

// Quantises the positions into the range [m, M] of the target type and sets the unpack matrix,
// which maps a stored position back: Translation(-m) x Scaling(1/scale) x Translation(min).
// Ranges: int [-2^30, 2^30]; unsigned short [0, 65535]; RGBA, ARGB, D3DCOLOR [0, 1]; UBYTE4 and
// unsigned byte [0, 255]; DEC3N [-511, 511]; fixed 16.16 and short [-32767, 32767]; the four
// normalised types [-1, 1]; byte [-127, 127]; unsigned int [0, 2^30]. Note that DEC3N and the two
// unsigned normalised types cannot store part of those ranges (DEC3N holds [-1, 1], the unsigned
// normalised types [0, 1]); such positions saturate.
// A mesh without vertices, or without positions, succeeds with the identity. An interleaved mesh
// must have float positions, which are scaled in place and stay float (the block layout cannot
// change). Fails for a float or unknown target; a failed call changes nothing. Cost O(n).
int QMXTModelTVOScaleAndConvertVtxData(STVOMesh& mesh, EQMXTDataType target);

// Permutes the corners of every triangle of an indexed triangle list: new corners 0, 1, 2 are the
// old corners i0, i1, i2 ((0, 2, 1) reverses the winding). Fails when (i0, i1, i2) is not a
// permutation of (0, 1, 2), or the mesh has no indices or is stripped. Cost O(i), in place.
int QMXTModelTVOReorderFaces(STVOMesh& mesh, uint32_t i0, uint32_t i1, uint32_t i2);

// Copies material settings from src into dst by name. Each source material, in order, is matched
// with the first not yet matched destination material of exactly the same name. For each texture
// slot with a valid source texture: an empty (or invalid) destination slot gets a new texture with
// the source's name; a destination texture of the same base name with another extension (wood.qmx
// for wood.png) is renamed to the source's name; any other is kept. Blend factors and operations,
// blend colour, blend factor and flags are copied; effect file and effect name are replaced when
// the source has them. Opacity, colours, shininess and names are kept. Succeeds at once when either
// scene has no materials. Fails when adding a texture or a name fails. Cost O(materials + textures).
int QMXTModelTVOMergeMaterials(const STVOScene& src, STVOScene& dst);

// Rebuilds dst from src with mesh data in world space at src's current frame. dst is destroyed
// first (it must be empty or loaded). dst gets copies of src's scene fields, nodes, cameras, lights,
// materials and textures, and one mesh for each mesh node (node i's index becomes i). A mesh without
// bone batches has its positions transformed by its node's world matrix and its normals, tangents
// and binormals by the inverse transpose, renormalised. A skinned mesh is transformed batch by
// batch: each vertex met in the batch's triangles, once, by the batch's bone matrices
// (GetBoneWorldMatrix) named by its bone indices, weighted by its bone weights. Nodes are then
// rebased as described at the top of this file. dst gets InitImpl at the end. Positions are taken as stored, so they should not yet be quantised (identity unpack
// matrix). Fails (dst left empty) on a mesh node naming no mesh, a bone outside the nodes, an index
// outside the vertices, or allocation failure. Cost O(total vertices + indices of the mesh nodes).
int QMXTModelTVOFlattenToWorldSpace(CQMXTModelTVO& src, CQMXTModelTVO& dst);

// Deep copies: every array of dst is newly allocated; dst's previous contents are overwritten, not
// freed. On failure dst is left zeroed with nothing allocated. Cost O(size of the record's arrays).
// A node's animation arrays are sized by frameCount and its flags (one key for a static channel).
int QMXTModelTVOCopyNode(const STVONode& src, STVONode& dst, uint32_t frameCount);
int QMXTModelTVOCopyMesh(const STVOMesh& src, STVOMesh& dst);
int QMXTModelTVOCopyMaterial(const STVOMaterial& src, STVOMaterial& dst);
int QMXTModelTVOCopyTexture(const STVOTexture& src, STVOTexture& dst);
// A camera's field-of-view animation holds frameCount entries.
int QMXTModelTVOCopyCamera(const STVOCamera& src, STVOCamera& dst, uint32_t frameCount);
int QMXTModelTVOCopyLight(const STVOLight& src, STVOLight& dst);
// A stream of vertexCount vertices; an interleaved source carries an offset, which is copied as is.
int QMXTModelTVOCopyCTVOData(const CTVOData& src, CTVOData& dst, uint32_t vertexCount, bool interleaved);
// A whole scene: its fields and every record, through the record copies above (the one deep copy of
// the scene model; CQMXTModelTVO::CopyFromMemory uses it too). Without meshes dst gets none, for a
// caller that makes its own. Also fails when a record array is missing for a count above 0.
int QMXTModelTVOCopyScene(const STVOScene& src, STVOScene& dst, bool withMeshes = true);
