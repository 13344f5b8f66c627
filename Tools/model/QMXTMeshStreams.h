// Shared helpers of the mesh transformations: visiting a mesh's streams, finding a vertex's bytes
// whether the mesh is interleaved or not, and reading indices.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "QMXTModelTVO.h"
#include "QMXTVertexData.h"
#include "QMXTLargeArray.h"

// Calls f(stream) for every vertex stream of the mesh, present or not, in the order positions,
// normals, tangents, binormals, each UVW stream, colours, bone indices, bone weights; with
// coloursFirst (the interleaved placement order) the colours come before the UVW streams.
template <typename Mesh, typename F> void QMXTForEachStream(Mesh& mesh, F f, bool coloursFirst = false)
{
    f(mesh.sVertex);
    f(mesh.sNormals);
    f(mesh.sTangents);
    f(mesh.sBinormals);
    if (coloursFirst)
        f(mesh.sVtxColours);
    for (uint32_t i = 0; mesh.psUVW && i < mesh.nNumUVW; ++i)
        f(mesh.psUVW[i]);
    if (!coloursFirst)
        f(mesh.sVtxColours);
    f(mesh.sBoneIdx);
    f(mesh.sBoneWeight);
}

inline bool QMXTIsInterleaved(const STVOMesh& mesh)
{
    return mesh.pInterleaved != nullptr;
}

// A stream counts as present when it has components and (outside an interleaved block) data.
inline bool QMXTStreamPresent(const STVOMesh& mesh, const CTVOData& s)
{
    return s.n != 0 && (QMXTIsInterleaved(mesh) || s.pData != nullptr);
}

// Bytes of vertex v of a present stream; the stride between vertices is s.nStride either way.
inline uint8_t* QMXTStreamVertex(STVOMesh& mesh, const CTVOData& s, uint32_t v)
{
    const size_t at = static_cast<size_t>(v) * s.nStride;
    if (QMXTIsInterleaved(mesh))
        return mesh.pInterleaved + QMXTModelTVODataOffset(s) + at;
    return s.pData + at;
}

// Stride of one vertex of an interleaved mesh (every present stream carries it), 0 if none.
inline uint32_t QMXTInterleavedStride(const STVOMesh& mesh)
{
    uint32_t stride = 0;
    QMXTForEachStream(mesh, [&](const CTVOData& s) {
        if (stride == 0 && s.n != 0)
            stride = s.nStride;
    });
    return stride;
}

// Index at position k of the face stream (unsigned short or unsigned int).
inline uint32_t QMXTMeshIndex(const STVOMesh& mesh, uint32_t k)
{
    uint32_t index;
    const size_t size = QMXTModelTVODataTypeSize(mesh.sFaces.eType);
    QMXTVertexRead(index, mesh.sFaces.pData + static_cast<size_t>(k) * size, mesh.sFaces.eType);
    return index;
}

// The mesh has a usable index array.
inline bool QMXTMeshIndexed(const STVOMesh& mesh)
{
    return mesh.sFaces.pData != nullptr &&
           (mesh.sFaces.eType == EQMXTDataUnsignedShort || mesh.sFaces.eType == EQMXTDataUnsignedInt);
}

// An interleaved mesh's streams all carry one stride and lie within it; an array mesh's streams
// have data and a stride that covers their components. Guards the transformations against
// inconsistent records read from elsewhere.
inline bool QMXTStreamsConsistent(const STVOMesh& mesh)
{
    const bool interleaved = QMXTIsInterleaved(mesh);
    const uint32_t stride = interleaved ? QMXTInterleavedStride(mesh) : 0;
    bool ok = true;
    QMXTForEachStream(mesh, [&](const CTVOData& s) {
        if (s.n == 0)
            return;
        const uint32_t bytes = QMXTModelTVODataStride(s);
        if (bytes == 0 || s.nStride < bytes)
            ok = false;
        else if (interleaved)
            ok = ok && s.nStride == stride && QMXTModelTVODataOffset(s) <= stride - bytes;
        else
            ok = ok && s.pData != nullptr;
    });
    return ok;
}

// malloc of count x size bytes; null when the product overflows. Never asks for 0 bytes, so null
// always means failure.
inline void* QMXTMallocArray(size_t count, size_t size)
{
    if (size != 0 && count > SIZE_MAX / size)
        return nullptr;
    const size_t bytes = count * size;
    return QMXTLargeAlloc(bytes ? bytes : 1);
}

// New arrays for the present streams of a mesh, made all at once before anything changes: either
// every array exists or none does, so a transformation that fails on memory leaves the mesh intact.
// Arrays not taken are freed with the object. No exception leaves it.
class CQMXTStreamArrays
{
  public:
    CQMXTStreamArrays() = default;
    ~CQMXTStreamArrays()
    {
        for (uint8_t* a : m_arrays)
            std::free(a);
    }
    CQMXTStreamArrays(const CQMXTStreamArrays&) = delete;
    CQMXTStreamArrays& operator=(const CQMXTStreamArrays&) = delete;

    // One array of count elements of bytesOf(stream) bytes for every stream with components, in
    // QMXTForEachStream order (absent streams get none). False when any allocation fails.
    template <typename BytesOf> bool Allocate(const STVOMesh& mesh, size_t count, BytesOf bytesOf) noexcept
    {
        size_t streams = 0;
        QMXTForEachStream(mesh, [&](const CTVOData&) { ++streams; });
        try
        {
            m_arrays.assign(streams, nullptr);
        }
        catch (const std::bad_alloc&)
        {
            return false;
        }
        size_t i = 0;
        bool ok = true;
        QMXTForEachStream(mesh, [&](const CTVOData& s) {
            uint8_t*& array = m_arrays[i++];
            if (ok && s.n != 0)
                ok = (array = static_cast<uint8_t*>(QMXTMallocArray(count, bytesOf(s)))) != nullptr;
        });
        return ok;
    }

    // The array of the i-th stream (null for an absent one); the caller owns it from now on.
    uint8_t* Take(size_t i)
    {
        uint8_t* array = m_arrays[i];
        m_arrays[i] = nullptr;
        return array;
    }

  private:
    std::vector<uint8_t*> m_arrays;
};
