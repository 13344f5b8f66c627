// Per-stream component rewriting: channel shredding and data type conversion.
#include <cstdlib>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"
#include "QMXTLargeArray.h"

namespace
{
bool IsPacked(uint32_t type)
{
    return QMXTModelTVODataTypeComponentCount(type) > 1;
}

// Components a stream carries: n elements of a scalar type, or the components of one packed element.
uint32_t LogicalComponents(const CTVOData& data)
{
    return data.n * QMXTModelTVODataTypeComponentCount(data.eType);
}

// Source component (0 to 3) named by a channel letter, or -1.
int ChannelComponent(int32_t entry)
{
    switch (entry < 0 ? -entry : entry)
    {
    case 'x': return 0;
    case 'y': return 1;
    case 'z': return 2;
    case 'w': return 3;
    default: return -1;
    }
}

// Bytes from one vertex to the next; a stride left at 0 means tightly packed.
uint32_t StrideOf(const CTVOData& data)
{
    return data.nStride ? data.nStride : QMXTModelTVODataStride(data);
}

bool StreamReadable(const CTVOData& data, const char* what)
{
    if (QMXTModelTVODataTypeSize(data.eType) == 0 || LogicalComponents(data) > 4 ||
        StrideOf(data) < QMXTModelTVODataStride(data))
    {
        QMXTErrorOutputDebug("%s: the stream has an unknown type, more than four components or a short stride.\n",
                             what);
        return false;
    }
    return true;
}
} // namespace

int QMXTModelTVODataShred(CTVOData& data, uint32_t vertexCount, const int32_t* channels)
{
    if (!channels)
        return 1;
    int component[4];
    float sign[4];
    uint32_t entries = 0;
    for (; entries < 4 && channels[entries] != 0; ++entries)
    {
        component[entries] = ChannelComponent(channels[entries]);
        sign[entries] = channels[entries] < 0 ? -1.0f : 1.0f;
        if (component[entries] < 0)
        {
            QMXTErrorOutputDebug("DataShred: channel entry %d names no component.\n", channels[entries]);
            return 1;
        }
    }
    if (!data.pData || data.n == 0)
        return 0;
    if (!StreamReadable(data, "DataShred"))
        return 1;
    if (entries == 0)
    {
        data.Reset();
        return 0;
    }
    const uint32_t logical = LogicalComponents(data);
    const uint32_t outCount = entries < logical ? entries : logical;
    const uint32_t newN = IsPacked(data.eType) ? 1 : outCount;
    const uint32_t oldStride = StrideOf(data);
    const uint32_t newStride = QMXTModelTVODataTypeSize(data.eType) * newN;
    // In place, front to back: the new stride is never larger, so vertex v is written no further
    // than where it was read from and never over a vertex still to be read.
    for (uint32_t v = 0; v < vertexCount; ++v)
    {
        float in[4], out[4];
        QMXTVertexRead(in, data.pData + static_cast<size_t>(v) * oldStride, data.eType, data.n);
        for (uint32_t i = 0; i < outCount; ++i)
            out[i] = sign[i] * in[component[i]];
        QMXTVertexWrite(data.pData + static_cast<size_t>(v) * newStride, data.eType, outCount, out);
    }
    if (newStride < oldStride && vertexCount > 0)
        if (void* shrunk = QMXTLargeRealloc(data.pData, static_cast<size_t>(vertexCount) * newStride))
            data.pData = static_cast<uint8_t*>(shrunk);
    data.n = newN;
    data.nStride = newStride;
    return 0;
}

int QMXTModelTVODataConvert(CTVOData& data, uint32_t vertexCount, EQMXTDataType target)
{
    if (!data.pData || data.n == 0 || data.eType == target)
        return 0;
    if (QMXTModelTVODataTypeSize(target) == 0)
    {
        QMXTErrorOutputDebug("DataConvert: unknown target type %u.\n", static_cast<unsigned>(target));
        return 1;
    }
    if (!StreamReadable(data, "DataConvert"))
        return 1;
    const uint32_t logical = LogicalComponents(data);
    const uint32_t newN = IsPacked(target) ? 1 : logical;
    const uint32_t newStride = QMXTModelTVODataTypeSize(target) * newN;
    const uint32_t oldStride = StrideOf(data);
    uint8_t* out = data.pData;
    if (newStride != oldStride)
    {
        out = static_cast<uint8_t*>(QMXTMallocArray(vertexCount, newStride));
        if (!out)
            return 1;
    }
    for (uint32_t v = 0; v < vertexCount; ++v)
    {
        float value[4];
        QMXTVertexRead(value, data.pData + static_cast<size_t>(v) * oldStride, data.eType, data.n);
        QMXTVertexWrite(out + static_cast<size_t>(v) * newStride, target, logical, value);
    }
    if (out != data.pData)
    {
        std::free(data.pData);
        data.pData = out;
    }
    data.eType = target;
    data.n = newN;
    data.nStride = newStride;
    return 0;
}
