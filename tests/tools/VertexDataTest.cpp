// Golden-byte tests of the seventeen vertex component types.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "QMXTVertexData.h"

namespace
{
uint32_t U32(const uint8_t* p)
{
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

void ReadU32(float out[4], uint32_t value, uint32_t type)
{
    uint8_t bytes[4];
    std::memcpy(bytes, &value, 4);
    QMXTVertexRead(out, bytes, type, 4);
}
} // namespace

TEST(VertexDataTypes, SizesAndComponentsFollowTheTable)
{
    const uint32_t sizes[18] = {0, 4, 4, 2, 4, 4, 4, 4, 4, 4, 1, 2, 2, 1, 1, 1, 2, 4};
    const uint32_t comps[18] = {0, 1, 1, 1, 4, 4, 4, 4, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    for (uint32_t t = 0; t < 18; ++t)
    {
        EXPECT_EQ(QMXTModelTVODataTypeSize(t), sizes[t]) << t;
        EXPECT_EQ(QMXTModelTVODataTypeComponentCount(t), comps[t]) << t;
    }
    EXPECT_EQ(QMXTModelTVODataTypeSize(18), 0u);
    EXPECT_EQ(QMXTModelTVODataTypeComponentCount(1000), 0u);
    EXPECT_STREQ(QMXTModelTVODataTypeName(12), "short, normalised");
    EXPECT_STREQ(QMXTModelTVODataTypeName(9), "fixed 16.16");

    CTVOData d;
    d.eType = EQMXTDataShort;
    d.n = 3;
    EXPECT_EQ(QMXTModelTVODataStride(d), 6u);
}

TEST(VertexDataTypes, PackedColoursReadInTheirByteOrder)
{
    float v[4];
    ReadU32(v, 0x11223344u, EQMXTDataRGBA);
    EXPECT_FLOAT_EQ(v[0], 0x11 * 0.003921569f);
    EXPECT_FLOAT_EQ(v[1], 0x22 * 0.003921569f);
    EXPECT_FLOAT_EQ(v[2], 0x33 * 0.003921569f);
    EXPECT_FLOAT_EQ(v[3], 0x44 * 0.003921569f);
    for (uint32_t type : {EQMXTDataARGB, EQMXTDataD3DCOLOR})
    {
        ReadU32(v, 0x11223344u, type);
        EXPECT_FLOAT_EQ(v[0], 0x22 * 0.003921569f);
        EXPECT_FLOAT_EQ(v[1], 0x33 * 0.003921569f);
        EXPECT_FLOAT_EQ(v[2], 0x44 * 0.003921569f);
        EXPECT_FLOAT_EQ(v[3], 0x11 * 0.003921569f);
    }
}

TEST(VertexDataTypes, ColourWritesClampScaleAndPack)
{
    uint8_t out[4];
    const float rgba[4] = {1.5f, -0.2f, 0.5f, 1.0f};
    QMXTVertexWrite(out, EQMXTDataRGBA, 4, rgba);
    EXPECT_EQ(U32(out), 0xFF007FFFu);
    QMXTVertexWrite(out, EQMXTDataARGB, 4, rgba);
    EXPECT_EQ(U32(out), 0xFFFF007Fu);
    QMXTVertexWrite(out, EQMXTDataD3DCOLOR, 4, rgba);
    EXPECT_EQ(U32(out), 0xFFFF007Fu);

    const float ub[4] = {300.0f, -4.0f, 17.9f, 255.0f};
    QMXTVertexWrite(out, EQMXTDataUBYTE4, 4, ub);
    EXPECT_EQ(out[0], 255);
    EXPECT_EQ(out[1], 0);
    EXPECT_EQ(out[2], 17);
    EXPECT_EQ(out[3], 255);
    float back[4];
    QMXTVertexRead(back, out, EQMXTDataUBYTE4, 4);
    EXPECT_EQ(back[2], 17.0f);
}

TEST(VertexDataTypes, Dec3nPacksTenBitFieldsAndSignExtends)
{
    float v[4];
    ReadU32(v, 0x000001FFu, EQMXTDataDEC3N);
    EXPECT_FLOAT_EQ(v[0], 1.0f);
    EXPECT_EQ(v[1], 0.0f);
    EXPECT_EQ(v[2], 0.0f);
    EXPECT_EQ(v[3], 1.0f);

    // -1 in y is 0x3FF in bits 10..19 (two's complement), -0.5 in z truncates to -255.
    const float in[3] = {0.25f, -1.0f, -0.5f};
    uint8_t out[4];
    QMXTVertexWrite(out, EQMXTDataDEC3N, 3, in);
    const uint32_t expected = (127u) | ((static_cast<uint32_t>(-511) & 0x3FFu) << 10) |
                              ((static_cast<uint32_t>(-255) & 0x3FFu) << 20);
    EXPECT_EQ(U32(out), expected);
    QMXTVertexRead(v, out, EQMXTDataDEC3N, 3);
    EXPECT_FLOAT_EQ(v[1], -511 * 0.0019569471f);
    EXPECT_FLOAT_EQ(v[2], -255 * 0.0019569471f);

    const float big[3] = {2.0f, -3.0f, 0.0f};
    QMXTVertexWrite(out, EQMXTDataDEC3N, 3, big);
    EXPECT_EQ(U32(out) & 0x3FFu, 511u);
    EXPECT_EQ((U32(out) >> 10) & 0x3FFu, static_cast<uint32_t>(-511) & 0x3FFu);
}

TEST(VertexDataTypes, ScalarGoldenBytes)
{
    uint8_t out[16];
    const float a[2] = {1.5f, -2.25f};

    QMXTVertexWrite(out, EQMXTDataFixed16_16, 2, a);
    int32_t fixed[2];
    std::memcpy(fixed, out, 8);
    EXPECT_EQ(fixed[0], 0x00018000);
    EXPECT_EQ(fixed[1], -0x00024000);

    const float n[2] = {0.5f, -1.0f};
    QMXTVertexWrite(out, EQMXTDataShortNorm, 2, n);
    int16_t s[2];
    std::memcpy(s, out, 4);
    EXPECT_EQ(s[0], 16383);
    EXPECT_EQ(s[1], -32767);

    QMXTVertexWrite(out, EQMXTDataByteNorm, 2, n);
    EXPECT_EQ(static_cast<int8_t>(out[0]), 63);
    EXPECT_EQ(static_cast<int8_t>(out[1]), -127);

    const float u[1] = {0.5f};
    QMXTVertexWrite(out, EQMXTDataUnsignedByteNorm, 1, u);
    EXPECT_EQ(out[0], 127);
    QMXTVertexWrite(out, EQMXTDataUnsignedShortNorm, 1, u);
    uint16_t us;
    std::memcpy(&us, out, 2);
    EXPECT_EQ(us, 32767);

    const float t[2] = {-7.9f, 7.9f};
    QMXTVertexWrite(out, EQMXTDataShort, 2, t);
    std::memcpy(s, out, 4);
    EXPECT_EQ(s[0], -7);
    EXPECT_EQ(s[1], 7);
    QMXTVertexWrite(out, EQMXTDataByte, 1, t);
    EXPECT_EQ(static_cast<int8_t>(out[0]), -7);
}

TEST(VertexDataTypes, ScalarReadsScaleBack)
{
    uint8_t bytes[8];
    const uint32_t big = 0xF0000000u;
    std::memcpy(bytes, &big, 4);
    float v[4];
    QMXTVertexRead(v, bytes, EQMXTDataUnsignedInt, 1);
    EXPECT_FLOAT_EQ(v[0], 4026531840.0f); // stays positive above 2^31
    EXPECT_EQ(v[1], 0.0f);
    EXPECT_EQ(v[3], 1.0f);

    const int16_t s[2] = {32767, -32767};
    std::memcpy(bytes, s, 4);
    QMXTVertexRead(v, bytes, EQMXTDataShortNorm, 2);
    EXPECT_FLOAT_EQ(v[0], 1.0f);
    EXPECT_FLOAT_EQ(v[1], -1.0f);
    EXPECT_EQ(v[2], 0.0f);

    const int32_t f = -0x00024000;
    std::memcpy(bytes, &f, 4);
    QMXTVertexRead(v, bytes, EQMXTDataFixed16_16, 1);
    EXPECT_FLOAT_EQ(v[0], -2.25f);
}

TEST(VertexDataTypes, UnknownTypesReadDefaultAndWriteNothing)
{
    uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (uint32_t type : {0u, 18u, 999u})
    {
        float v[4] = {9, 9, 9, 9};
        QMXTVertexRead(v, bytes, type, 4);
        EXPECT_EQ(v[0], 0.0f);
        EXPECT_EQ(v[1], 0.0f);
        EXPECT_EQ(v[2], 0.0f);
        EXPECT_EQ(v[3], 1.0f);
        const float in[4] = {1, 2, 3, 4};
        QMXTVertexWrite(bytes, type, 4, in);
        QMXTVertexWrite(bytes, type, 77u);
        EXPECT_EQ(bytes[0], 1);
        EXPECT_EQ(bytes[7], 8);
    }
}

TEST(VertexDataTypes, IndicesAsShortOrInt)
{
    uint8_t bytes[4] = {0, 0, 0, 0};
    QMXTVertexWrite(bytes, EQMXTDataUnsignedShort, 0x12345u);
    EXPECT_EQ(bytes[0], 0x45);
    EXPECT_EQ(bytes[1], 0x23);
    EXPECT_EQ(bytes[2], 0);
    uint32_t index = 0;
    QMXTVertexRead(index, bytes, EQMXTDataUnsignedShort);
    EXPECT_EQ(index, 0x2345u);
    QMXTVertexWrite(bytes, EQMXTDataUnsignedInt, 0xDEADBEEFu);
    QMXTVertexRead(index, bytes, EQMXTDataUnsignedInt);
    EXPECT_EQ(index, 0xDEADBEEFu);
    QMXTVertexRead(index, bytes, EQMXTDataFloat);
    EXPECT_EQ(index, 0u);
}

TEST(VertexDataTypes, OutOfRangeWritesSaturate)
{
    uint8_t out[4];
    const float huge[1] = {1e20f};
    QMXTVertexWrite(out, EQMXTDataShort, 1, huge);
    int16_t s;
    std::memcpy(&s, out, 2);
    EXPECT_EQ(s, 32767);
    const float nan[1] = {std::nanf("")};
    QMXTVertexWrite(out, EQMXTDataInt, 1, nan);
    EXPECT_EQ(U32(out), 0u);
}
