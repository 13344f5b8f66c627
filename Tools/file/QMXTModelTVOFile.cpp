#include "QMXTModelTVOFile.h"

#include <cstddef>
#include <utility>

uint64_t QMXTTVOChannelFloats(const uint32_t* pIdx, bool animated, uint32_t frameCount, uint32_t keySize)
{
    if (!animated || frameCount == 0)
        return keySize;
    if (!pIdx)
        return static_cast<uint64_t>(frameCount) * keySize;
    uint32_t largest = 0;
    for (uint32_t i = 0; i < frameCount; ++i)
        if (pIdx[i] > largest)
            largest = pIdx[i];
    return static_cast<uint64_t>(largest) + keySize;
}

std::vector<const CTVOData*> QMXTTVOInterleavedStreams(const STVOMesh& mesh)
{
    std::vector<const CTVOData*> streams;
    for (const CTVOData* s : QMXTModelTVOFixedStreams(mesh))
        if (s->n)
            streams.push_back(s);
    for (uint32_t i = 0; mesh.psUVW && i < mesh.nNumUVW; ++i)
        if (mesh.psUVW[i].n)
            streams.push_back(&mesh.psUVW[i]);
    for (size_t pass = 0; pass + 1 < streams.size(); ++pass)
        for (size_t i = 0; i + 1 < streams.size() - pass; ++i)
            if (QMXTModelTVODataOffset(*streams[i]) > QMXTModelTVODataOffset(*streams[i + 1]))
                std::swap(streams[i], streams[i + 1]);
    return streams;
}

bool QMXTTVOInterleavedLayoutValid(const STVOMesh& mesh)
{
    const uint64_t stride = mesh.sVertex.nStride;
    uint64_t end = 0;
    for (const CTVOData* s : QMXTTVOInterleavedStreams(mesh))
    {
        const uint32_t size = QMXTModelTVODataTypeSize(s->eType);
        if (size != 1 && size != 2 && size != 4)
            return false;
        const uint64_t offset = QMXTModelTVODataOffset(*s);
        if (offset < end)
            return false;
        end = offset + static_cast<uint64_t>(size) * s->n;
        if (end > stride)
            return false;
    }
    return true;
}

void QMXTTVOSwapInterleaved(STVOMesh& mesh)
{
    const uint32_t stride = mesh.sVertex.nStride;
    const std::vector<const CTVOData*> streams = QMXTTVOInterleavedStreams(mesh);
    for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
    {
        uint8_t* vertex = mesh.pInterleaved + static_cast<size_t>(v) * stride;
        for (const CTVOData* s : streams)
        {
            const uint32_t size = QMXTModelTVODataTypeSize(s->eType);
            if (size < 2)
                continue;
            uint8_t* p = vertex + QMXTModelTVODataOffset(*s);
            for (uint32_t c = 0; c < s->n; ++c, p += size)
                for (uint32_t lo = 0, hi = size - 1; lo < hi; ++lo, --hi)
                    std::swap(p[lo], p[hi]);
        }
    }
}
