// How a mesh of the scene model is drawn: its draw calls (one a strip, one a bone batch run of a
// list) and access to its indices and vertex elements, whether it is indexed, interleaved or not.
// The checks before upload and the renderer share these, so what is checked is what is drawn.
#pragma once

#include <cstdint>
#include <vector>

#include "QMXTModelTVO.h"

struct SDrawRange
{
    uint32_t nFirst = 0; // first index position (first vertex for a mesh without indices)
    uint32_t nCount = 0; // indices (or vertices) drawn
    bool bStrip = false; // a triangle strip, else a triangle list
    uint32_t nBatch = 0; // bone batch of the range's first triangle (0 without batches)
};

// Whether the mesh carries an index stream; without one, vertex k is corner k.
bool TVOMeshIndexed(const STVOMesh& mesh);
// The vertex at index position k.
uint32_t TVOMeshVertexAt(const STVOMesh& mesh, uint32_t k);
// Address of vertex v's element of a stream (interleaved block or the stream's own array).
const uint8_t* TVOStreamElement(const STVOMesh& mesh, const CTVOData& data, uint32_t v);
// Whether a stream is present and readable (components, data).
bool TVOStreamPresent(const STVOMesh& mesh, const CTVOData& data);
// The draw calls of a mesh: lists split where the bone batch changes, strips one call each (a strip
// belongs to the batch of its first triangle). Face count and strip lengths must be consistent
// (the reader checks them).
std::vector<SDrawRange> TVODrawRanges(const STVOMesh& mesh);
// Bytes the mesh holds: vertex data, indices, strip lengths and bone batch tables.
uint64_t TVOMeshBytes(const STVOMesh& mesh);
