// Vertex component types and the one place that converts between their stored form and floats.
//
// Every stream of a mesh (CTVOData) stores its components in one EQMXTDataType. All other code reads
// and writes vertex elements through QMXTVertexRead and QMXTVertexWrite, which share one table of
// sizes and component counts. Stored values are in host byte order; the file layer deals with
// little-endian conversion.
#pragma once

#include <cstdint>

enum EQMXTDataType : uint32_t
{
    EQMXTDataNone = 0,
    EQMXTDataFloat = 1,
    EQMXTDataInt = 2,
    EQMXTDataUnsignedShort = 3,
    EQMXTDataRGBA = 4,
    EQMXTDataARGB = 5,
    EQMXTDataD3DCOLOR = 6,
    EQMXTDataUBYTE4 = 7,
    EQMXTDataDEC3N = 8,
    EQMXTDataFixed16_16 = 9,
    EQMXTDataUnsignedByte = 10,
    EQMXTDataShort = 11,
    EQMXTDataShortNorm = 12,
    EQMXTDataByte = 13,
    EQMXTDataByteNorm = 14,
    EQMXTDataUnsignedByteNorm = 15,
    EQMXTDataUnsignedShortNorm = 16,
    EQMXTDataUnsignedInt = 17,
    EQMXTDataTypeCount = 18 // one past the last valid id
};

// Skinning: a vertex carries at most four bone influences (bone index and weight streams of up to
// four components).
enum : uint32_t
{
    eQMXTMaxBonesPerVertex = 4
};

// One vertex attribute stream, or the face indices of a mesh.
// When the owning mesh is interleaved, pData holds the byte offset of the stream within one vertex
// instead of an owned array (see QMXTModelTVODataOffset).
struct CTVOData
{
    EQMXTDataType eType = EQMXTDataNone;
    uint32_t n = 0;      // components a vertex; 0 means the stream is absent
    uint32_t nStride = 0; // bytes from one vertex to the next
    uint8_t* pData = nullptr;

    // Frees an owned array (unless the stream is an interleaved offset) and clears all four fields.
    // Pass isOffset = true for a stream of an interleaved mesh.
    void Reset(bool isOffset = false);
};

// Display name of a type as shown in the options ("float", "DEC3N", ...); "none" for 0 or unknown ids.
const char* QMXTModelTVODataTypeName(uint32_t type);
// Bytes of one element of the type; 0 for 0 and unknown ids.
uint32_t QMXTModelTVODataTypeSize(uint32_t type);
// Vector components one element carries: 4 for packed colours and UBYTE4, 3 for DEC3N, 1 for scalars.
uint32_t QMXTModelTVODataTypeComponentCount(uint32_t type);
// Type size x component count of a stream.
uint32_t QMXTModelTVODataStride(const CTVOData& data);
// The interleaved offset that pData carries for a stream of an interleaved mesh.
inline uint32_t QMXTModelTVODataOffset(const CTVOData& data)
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data.pData));
}
inline void QMXTModelTVODataSetOffset(CTVOData& data, uint32_t offset)
{
    data.pData = reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(offset));
}
// Bytes a vertex of this type and component count occupies: packed types hold up to four components
// in one element, scalar types one element a component.
uint32_t QMXTModelTVODataElementBytes(uint32_t type, uint32_t count);

// Reads one vertex element at in into out, which starts as (0, 0, 0, 1). For scalar types count
// components are read; packed types always fill four (DEC3N three). Unknown types leave (0, 0, 0, 1).
void QMXTVertexRead(float out[4], const void* in, uint32_t type, uint32_t count);
// Reads one index stored as unsigned short or unsigned int; other types give 0.
void QMXTVertexRead(uint32_t& outIndex, const void* in, uint32_t type);
// Writes count components of in at out in the type's stored form. Unknown types write nothing.
void QMXTVertexWrite(void* out, uint32_t type, uint32_t count, const float* in);
// Writes one index as unsigned short or unsigned int; other types write nothing.
void QMXTVertexWrite(void* out, uint32_t type, uint32_t index);
