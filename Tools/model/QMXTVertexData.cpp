// Stored form <-> float conversion of the seventeen vertex component types.
//
// Out-of-range floats written to a non-clamping integer type saturate at the type's limits and NaN
// is stored as 0: a cast of such a value is undefined in C++, and saturation keeps the data valid.
#include "QMXTVertexData.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace
{
struct STypeInfo
{
    const char* name;
    uint32_t size;
    uint32_t components;
};

// The one table of types, indexed by id; both directions of conversion use it.
const STypeInfo kTypes[EQMXTDataTypeCount] = {
    {"none", 0, 0},
    {"float", 4, 1},
    {"int", 4, 1},
    {"unsigned short", 2, 1},
    {"RGBA", 4, 4},
    {"ARGB", 4, 4},
    {"D3DCOLOR", 4, 4},
    {"UBYTE4", 4, 4},
    {"DEC3N", 4, 3},
    {"fixed 16.16", 4, 1},
    {"unsigned byte", 1, 1},
    {"short", 2, 1},
    {"short, normalised", 2, 1},
    {"byte", 1, 1},
    {"byte, normalised", 1, 1},
    {"unsigned byte, normalised", 1, 1},
    {"unsigned short, normalised", 2, 1},
    {"unsigned int", 4, 1},
};

const STypeInfo& Info(uint32_t type)
{
    return type < EQMXTDataTypeCount ? kTypes[type] : kTypes[0];
}

bool IsPacked(uint32_t type)
{
    return Info(type).components > 1;
}

template <typename T> T Load(const uint8_t* p)
{
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <typename T> void Store(uint8_t* p, T v)
{
    std::memcpy(p, &v, sizeof v);
}

// Truncates toward zero and saturates to [lo, hi]; NaN gives 0.
int64_t TruncSaturate(double v, int64_t lo, int64_t hi)
{
    if (std::isnan(v))
        return 0;
    if (v <= static_cast<double>(lo))
        return lo;
    if (v >= static_cast<double>(hi))
        return hi;
    return static_cast<int64_t>(v);
}

template <typename T> T TruncTo(double v)
{
    return static_cast<T>(TruncSaturate(v, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

uint32_t ColourByte(float v)
{
    return static_cast<uint32_t>(TruncSaturate(static_cast<double>(v) * 255.0, 0, 255));
}

float ReadScalar(const uint8_t* p, uint32_t type)
{
    switch (type)
    {
    case EQMXTDataFloat: return Load<float>(p);
    case EQMXTDataInt: return static_cast<float>(Load<int32_t>(p));
    case EQMXTDataUnsignedShort: return static_cast<float>(Load<uint16_t>(p));
    case EQMXTDataFixed16_16: return static_cast<float>(Load<int32_t>(p)) / 65536.0f;
    case EQMXTDataUnsignedByte: return static_cast<float>(*p);
    case EQMXTDataShort: return static_cast<float>(Load<int16_t>(p));
    case EQMXTDataShortNorm: return static_cast<float>(Load<int16_t>(p)) / 32767.0f;
    case EQMXTDataByte: return static_cast<float>(static_cast<int8_t>(*p));
    case EQMXTDataByteNorm: return static_cast<float>(static_cast<int8_t>(*p)) / 127.0f;
    case EQMXTDataUnsignedByteNorm: return static_cast<float>(*p) / 255.0f;
    case EQMXTDataUnsignedShortNorm: return static_cast<float>(Load<uint16_t>(p)) / 65535.0f;
    case EQMXTDataUnsignedInt: return static_cast<float>(static_cast<int64_t>(Load<uint32_t>(p)));
    default: return 0.0f;
    }
}

void WriteScalar(uint8_t* p, uint32_t type, float f)
{
    const double v = f;
    switch (type)
    {
    case EQMXTDataFloat: Store<float>(p, f); break;
    case EQMXTDataInt: Store<int32_t>(p, TruncTo<int32_t>(v)); break;
    case EQMXTDataUnsignedShort: Store<uint16_t>(p, TruncTo<uint16_t>(v)); break;
    case EQMXTDataFixed16_16: Store<int32_t>(p, TruncTo<int32_t>(v * 65536.0)); break;
    case EQMXTDataUnsignedByte: *p = TruncTo<uint8_t>(v); break;
    case EQMXTDataShort: Store<int16_t>(p, TruncTo<int16_t>(v)); break;
    case EQMXTDataShortNorm: Store<int16_t>(p, TruncTo<int16_t>(v * 32767.0)); break;
    case EQMXTDataByte: *p = static_cast<uint8_t>(TruncTo<int8_t>(v)); break;
    case EQMXTDataByteNorm: *p = static_cast<uint8_t>(TruncTo<int8_t>(v * 127.0)); break;
    case EQMXTDataUnsignedByteNorm: *p = TruncTo<uint8_t>(v * 255.0); break;
    case EQMXTDataUnsignedShortNorm: Store<uint16_t>(p, TruncTo<uint16_t>(v * 65535.0)); break;
    case EQMXTDataUnsignedInt: Store<uint32_t>(p, TruncTo<uint32_t>(v)); break;
    default: break;
    }
}

int32_t SignExtend10(uint32_t field)
{
    return (field & 0x200u) ? static_cast<int32_t>(field) - 1024 : static_cast<int32_t>(field);
}
} // namespace

void CTVOData::Reset(bool isOffset)
{
    if (!isOffset)
        std::free(pData);
    eType = EQMXTDataNone;
    n = 0;
    nStride = 0;
    pData = nullptr;
}

const char* QMXTModelTVODataTypeName(uint32_t type)
{
    return Info(type).name;
}

uint32_t QMXTModelTVODataTypeSize(uint32_t type)
{
    return Info(type).size;
}

uint32_t QMXTModelTVODataTypeComponentCount(uint32_t type)
{
    return Info(type).components;
}

uint32_t QMXTModelTVODataStride(const CTVOData& data)
{
    return QMXTModelTVODataTypeSize(data.eType) * data.n;
}

uint32_t QMXTModelTVODataElementBytes(uint32_t type, uint32_t count)
{
    if (count == 0)
        return 0;
    return IsPacked(type) ? Info(type).size : Info(type).size * count;
}

void QMXTVertexRead(float out[4], const void* in, uint32_t type, uint32_t count)
{
    out[0] = out[1] = out[2] = 0.0f;
    out[3] = 1.0f;
    const uint8_t* p = static_cast<const uint8_t*>(in);
    switch (type)
    {
    case EQMXTDataRGBA:
    {
        const uint32_t v = Load<uint32_t>(p);
        for (int i = 0; i < 4; ++i)
            out[i] = static_cast<float>((v >> (24 - 8 * i)) & 0xFFu) * 0.003921569f;
        return;
    }
    case EQMXTDataARGB:
    case EQMXTDataD3DCOLOR:
    {
        const uint32_t v = Load<uint32_t>(p);
        out[3] = static_cast<float>((v >> 24) & 0xFFu) * 0.003921569f;
        out[0] = static_cast<float>((v >> 16) & 0xFFu) * 0.003921569f;
        out[1] = static_cast<float>((v >> 8) & 0xFFu) * 0.003921569f;
        out[2] = static_cast<float>(v & 0xFFu) * 0.003921569f;
        return;
    }
    case EQMXTDataUBYTE4:
        for (int i = 0; i < 4; ++i)
            out[i] = static_cast<float>(p[i]);
        return;
    case EQMXTDataDEC3N:
    {
        const uint32_t v = Load<uint32_t>(p);
        for (int i = 0; i < 3; ++i)
            out[i] = static_cast<float>(SignExtend10((v >> (10 * i)) & 0x3FFu)) * 0.0019569471f;
        return;
    }
    default:
        break;
    }
    const uint32_t size = Info(type).size;
    if (size == 0)
        return;
    const uint32_t n = count < 4 ? count : 4;
    for (uint32_t i = 0; i < n; ++i)
        out[i] = ReadScalar(p + i * size, type);
}

void QMXTVertexRead(uint32_t& outIndex, const void* in, uint32_t type)
{
    const uint8_t* p = static_cast<const uint8_t*>(in);
    if (type == EQMXTDataUnsignedShort)
        outIndex = Load<uint16_t>(p);
    else if (type == EQMXTDataUnsignedInt)
        outIndex = Load<uint32_t>(p);
    else
        outIndex = 0;
}

void QMXTVertexWrite(void* out, uint32_t type, uint32_t count, const float* in)
{
    uint8_t* p = static_cast<uint8_t*>(out);
    if (IsPacked(type))
    {
        // Components the caller does not give take the read defaults (0, 0, 0, 1).
        float v[4] = {0.0f, 0.0f, 0.0f, 1.0f};
        for (uint32_t i = 0; i < count && i < 4; ++i)
            v[i] = in[i];
        switch (type)
        {
        case EQMXTDataRGBA:
            Store<uint32_t>(p, ColourByte(v[0]) << 24 | ColourByte(v[1]) << 16 | ColourByte(v[2]) << 8 |
                                   ColourByte(v[3]));
            break;
        case EQMXTDataARGB:
        case EQMXTDataD3DCOLOR:
            Store<uint32_t>(p, ColourByte(v[3]) << 24 | ColourByte(v[0]) << 16 | ColourByte(v[1]) << 8 |
                                   ColourByte(v[2]));
            break;
        case EQMXTDataUBYTE4:
            for (int i = 0; i < 4; ++i)
                p[i] = static_cast<uint8_t>(TruncSaturate(v[i], 0, 255));
            break;
        case EQMXTDataDEC3N:
        {
            uint32_t packed = 0;
            for (int i = 0; i < 3; ++i)
            {
                const int64_t field = TruncSaturate(static_cast<double>(v[i]) * 511.0, -511, 511);
                packed |= (static_cast<uint32_t>(field) & 0x3FFu) << (10 * i);
            }
            Store<uint32_t>(p, packed);
            break;
        }
        default:
            break;
        }
        return;
    }
    const uint32_t size = Info(type).size;
    if (size == 0)
        return;
    for (uint32_t i = 0; i < count && i < 4; ++i)
        WriteScalar(p + i * size, type, in[i]);
}

void QMXTVertexWrite(void* out, uint32_t type, uint32_t index)
{
    uint8_t* p = static_cast<uint8_t*>(out);
    if (type == EQMXTDataUnsignedShort)
        Store<uint16_t>(p, static_cast<uint16_t>(index));
    else if (type == EQMXTDataUnsignedInt)
        Store<uint32_t>(p, index);
}
