// Interleaving and de-interleaving of a mesh's vertex streams.
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"
#include "QMXTLargeArray.h"

namespace
{
uint32_t Padding(uint32_t bytes, uint32_t alignment)
{
    if (bytes == 0 || alignment == 0)
        return 0;
    return (alignment - bytes % alignment) % alignment;
}

int Interleave(STVOMesh& mesh, uint32_t alignment)
{
    uint32_t stride = 0;
    QMXTForEachStream(mesh, [&](const CTVOData& s) {
        const uint32_t bytes = QMXTModelTVODataStride(s);
        stride += bytes + Padding(bytes, alignment);
    });
    if (stride == 0)
        return 0; // no streams: nothing to interleave
    uint8_t* block = static_cast<uint8_t*>(QMXTLargeCalloc(mesh.nNumVertex, stride));
    if (!block)
        return 1;

    // Largest elements first; within a pass colours come before the UVW streams.
    uint32_t offset = 0;
    for (uint32_t elementSize : {4u, 2u, 1u})
    {
        QMXTForEachStream(
            mesh,
            [&](CTVOData& s) {
                if (s.n == 0 || QMXTModelTVODataTypeSize(s.eType) != elementSize)
                    return;
                const uint32_t bytes = QMXTModelTVODataStride(s);
                for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
                    std::memcpy(block + static_cast<size_t>(v) * stride + offset,
                                s.pData + static_cast<size_t>(v) * s.nStride, bytes);
                std::free(s.pData);
                QMXTModelTVODataSetOffset(s, offset);
                s.nStride = stride;
                offset += bytes + Padding(bytes, alignment);
            },
            true);
    }
    mesh.pInterleaved = block;
    return 0;
}

int DeInterleave(STVOMesh& mesh)
{
    // Every array first, so that a failure leaves the mesh interleaved and intact.
    CQMXTStreamArrays arrays;
    if (!arrays.Allocate(mesh, mesh.nNumVertex, [](const CTVOData& s) { return QMXTModelTVODataStride(s); }))
        return 1;
    size_t next = 0;
    QMXTForEachStream(mesh, [&](CTVOData& s) {
        uint8_t* array = arrays.Take(next++);
        if (s.n == 0)
        {
            s.Reset(true);
            return;
        }
        const uint32_t bytes = QMXTModelTVODataStride(s);
        for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
            std::memcpy(array + static_cast<size_t>(v) * bytes, QMXTStreamVertex(mesh, s, v), bytes);
        s.pData = array;
        s.nStride = bytes;
    });
    std::free(mesh.pInterleaved);
    mesh.pInterleaved = nullptr;
    return 0;
}
} // namespace

int QMXTModelTVOToggleInterleaved(STVOMesh& mesh, uint32_t alignment)
{
    if (mesh.nNumVertex == 0)
        return 0;
    if (!QMXTStreamsConsistent(mesh))
    {
        QMXTErrorOutputDebug("Interleave: a vertex stream has no data or a bad type, stride or offset.\n");
        return 1;
    }
    return QMXTIsInterleaved(mesh) ? DeInterleave(mesh) : Interleave(mesh, alignment);
}
