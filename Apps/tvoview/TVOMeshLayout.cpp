#include "TVOMeshLayout.h"

#include <cstddef>

namespace
{
// Batch of triangle t: the last batch whose first triangle is at or before t.
uint32_t BatchOfTriangle(const CQMXTBoneBatches& b, uint32_t t, uint32_t from)
{
    uint32_t batch = from;
    while (batch + 1 < b.nBatchCnt && b.pnBatchOffset[batch + 1] <= t)
        ++batch;
    return batch;
}

std::vector<const CTVOData*> VertexStreams(const STVOMesh& m)
{
    std::vector<const CTVOData*> all = {&m.sVertex,     &m.sNormals, &m.sTangents,  &m.sBinormals,
                                        &m.sVtxColours, &m.sBoneIdx, &m.sBoneWeight};
    for (uint32_t i = 0; m.psUVW && i < m.nNumUVW; ++i)
        all.push_back(&m.psUVW[i]);
    return all;
}
} // namespace

bool TVOMeshIndexed(const STVOMesh& mesh)
{
    return mesh.sFaces.pData != nullptr;
}

uint32_t TVOMeshVertexAt(const STVOMesh& mesh, uint32_t k)
{
    if (!TVOMeshIndexed(mesh))
        return k;
    uint32_t index = 0;
    QMXTVertexRead(index, mesh.sFaces.pData + static_cast<size_t>(k) * mesh.sFaces.nStride,
                   mesh.sFaces.eType);
    return index;
}

const uint8_t* TVOStreamElement(const STVOMesh& mesh, const CTVOData& data, uint32_t v)
{
    const uint8_t* base = mesh.pInterleaved ? mesh.pInterleaved + QMXTModelTVODataOffset(data) : data.pData;
    return base + static_cast<size_t>(v) * data.nStride;
}

bool TVOStreamPresent(const STVOMesh& mesh, const CTVOData& data)
{
    return data.n > 0 && (mesh.pInterleaved || data.pData);
}

std::vector<SDrawRange> TVODrawRanges(const STVOMesh& mesh)
{
    std::vector<SDrawRange> ranges;
    const CQMXTBoneBatches& b = mesh.sBoneBatch;
    if (mesh.nNumStrips)
    {
        uint32_t triangle = 0, position = 0, batch = 0;
        for (uint32_t s = 0; s < mesh.nNumStrips; ++s)
        {
            const uint32_t length = mesh.pnStripLength[s];
            batch = b.nBatchCnt ? BatchOfTriangle(b, triangle, batch) : 0;
            if (length)
                ranges.push_back({position, length + 2, true, batch});
            triangle += length;
            position += length + 2;
        }
        return ranges;
    }
    if (!b.nBatchCnt)
    {
        if (mesh.nNumFaces)
            ranges.push_back({0, 3 * mesh.nNumFaces, false, 0});
        return ranges;
    }
    for (uint32_t batch = 0; batch < b.nBatchCnt; ++batch)
    {
        const uint32_t first = b.pnBatchOffset[batch];
        const uint32_t end = batch + 1 < b.nBatchCnt ? b.pnBatchOffset[batch + 1] : mesh.nNumFaces;
        if (end > first)
            ranges.push_back({3 * first, 3 * (end - first), false, batch});
    }
    return ranges;
}

uint64_t TVOMeshBytes(const STVOMesh& mesh)
{
    uint64_t bytes = 0;
    if (mesh.pInterleaved)
        bytes += static_cast<uint64_t>(mesh.sVertex.nStride) * mesh.nNumVertex;
    else
        for (const CTVOData* d : VertexStreams(mesh))
            if (d->pData)
                bytes += static_cast<uint64_t>(d->nStride) * mesh.nNumVertex;
    if (TVOMeshIndexed(mesh))
        bytes += static_cast<uint64_t>(mesh.sFaces.nStride) * QMXTModelTVOCountIndices(mesh);
    bytes += 4ull * mesh.nNumStrips;
    const CQMXTBoneBatches& b = mesh.sBoneBatch;
    bytes += 4ull * b.nBatchCnt * (b.nBatchBoneMax + 2);
    return bytes;
}
