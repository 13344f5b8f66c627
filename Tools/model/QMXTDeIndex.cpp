// Expansion of an indexed mesh to one vertex a corner.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"

namespace
{
// Copies, for every index k in order, the stride bytes of the vertex it names into out[k].
void Gather(uint8_t* out, const uint8_t* in, uint32_t stride, const std::vector<uint32_t>& indices)
{
    for (size_t k = 0; k < indices.size(); ++k)
        std::memcpy(out + k * stride, in + static_cast<size_t>(indices[k]) * stride, stride);
}

int DeIndexInterleaved(STVOMesh& mesh, const std::vector<uint32_t>& indices)
{
    const uint32_t stride = QMXTInterleavedStride(mesh);
    uint8_t* block = static_cast<uint8_t*>(QMXTMallocArray(indices.size(), stride));
    if (!block)
        return 1;
    Gather(block, mesh.pInterleaved, stride, indices);
    std::free(mesh.pInterleaved);
    mesh.pInterleaved = block;
    return 0;
}

int DeIndexArrays(STVOMesh& mesh, const std::vector<uint32_t>& indices)
{
    CQMXTStreamArrays arrays;
    if (!arrays.Allocate(mesh, indices.size(), [](const CTVOData& s) { return s.nStride; }))
        return 1;
    size_t next = 0;
    QMXTForEachStream(mesh, [&](CTVOData& s) {
        uint8_t* array = arrays.Take(next++);
        if (!array)
            return;
        Gather(array, s.pData, s.nStride, indices);
        std::free(s.pData);
        s.pData = array;
    });
    return 0;
}
} // namespace

int QMXTModelTVODeIndex(STVOMesh& mesh)
{
    if (mesh.nNumVertex == 0 || !QMXTMeshIndexed(mesh))
        return 0;
    if (!QMXTStreamsConsistent(mesh))
    {
        QMXTErrorOutputDebug("DeIndex: a vertex stream has no data or a bad type, stride or offset.\n");
        return 1;
    }
    const uint32_t count = QMXTModelTVOCountIndices(mesh);
    if (count == 0)
        return 0;
    std::vector<uint32_t> indices(count);
    for (uint32_t k = 0; k < count; ++k)
    {
        indices[k] = QMXTMeshIndex(mesh, k);
        if (indices[k] >= mesh.nNumVertex)
        {
            QMXTErrorOutputDebug("DeIndex: index %u names vertex %u of %u.\n", k, indices[k], mesh.nNumVertex);
            return 1;
        }
    }
    const int result = QMXTIsInterleaved(mesh) ? DeIndexInterleaved(mesh, indices) : DeIndexArrays(mesh, indices);
    if (result != 0)
        return result;
    mesh.nNumVertex = count;
    mesh.sFaces.Reset();
    return 0;
}
