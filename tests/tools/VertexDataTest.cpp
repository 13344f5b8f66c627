// Golden-byte tests of the seventeen vertex component types.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "QMXTVertexData.h"

// Each row writes values and compares the bytes, then nothing past them may change.
TEST(VertexDataTypes, WritesClampScaleSaturateAndPackToGoldenBytes)
{
    const float nan = std::nanf("");
    struct SRow
    {
        uint32_t type, count;
        std::vector<float> in;
        std::vector<uint8_t> bytes;
    };
    const SRow rows[] = {
        {EQMXTDataRGBA, 4, {1.5f, -0.2f, 0.5f, 1.0f}, {0xFF, 0x7F, 0x00, 0xFF}}, // 0xFF007FFF
        {EQMXTDataARGB, 4, {1.5f, -0.2f, 0.5f, 1.0f}, {0x7F, 0x00, 0xFF, 0xFF}}, // 0xFFFF007F
        {EQMXTDataUBYTE4, 4, {300.0f, -4.0f, 17.9f, 255.0f}, {255, 0, 17, 255}},
        // Ten-bit fields: 0.25 -> 127, -1 -> -511, -0.5 truncates to -255, all two's complement.
        {EQMXTDataDEC3N, 3, {0.25f, -1.0f, -0.5f}, {0x7F, 0x04, 0x18, 0x30}},
        {EQMXTDataDEC3N, 3, {2.0f, -3.0f, 0.0f}, {0xFF, 0x05, 0x08, 0x00}}, // clamped to +-511
        {EQMXTDataFixed16_16, 2, {1.5f, -2.25f}, {0x00, 0x80, 0x01, 0x00, 0x00, 0xC0, 0xFD, 0xFF}},
        {EQMXTDataShortNorm, 2, {0.5f, -1.0f}, {0xFF, 0x3F, 0x01, 0x80}}, // 16383, -32767
        {EQMXTDataByteNorm, 2, {0.5f, -1.0f}, {63, 0x81}},                // 63, -127
        {EQMXTDataUnsignedByteNorm, 1, {0.5f}, {127}},
        {EQMXTDataUnsignedShortNorm, 1, {0.5f}, {0xFF, 0x7F}},
        {EQMXTDataShort, 2, {-7.9f, 7.9f}, {0xF9, 0xFF, 0x07, 0x00}}, // truncated towards zero
        {EQMXTDataByte, 1, {-7.9f}, {0xF9}},
        {EQMXTDataShort, 1, {1e20f}, {0xFF, 0x7F}}, // saturates
        {EQMXTDataInt, 1, {nan}, {0, 0, 0, 0}},
    };
    for (const SRow& r : rows)
    {
        SCOPED_TRACE(std::string(QMXTModelTVODataTypeName(r.type)) + ", first value " +
                     std::to_string(r.in[0]));
        std::vector<uint8_t> out(r.bytes.size() + 4, 0xEE);
        QMXTVertexWrite(out.data(), r.type, r.count, r.in.data());
        EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + r.bytes.size()), r.bytes);
        EXPECT_EQ(std::vector<uint8_t>(out.begin() + r.bytes.size(), out.end()),
                  std::vector<uint8_t>(4, 0xEE));
    }
}

// Each row reads bytes; components the type does not hold come back as (0, 0, 0, 1).
TEST(VertexDataTypes, ReadsScaleBackInTheirByteOrder)
{
    const float k = 0.003921569f, d = 0.0019569471f; // 1/255, 1/511
    struct SRow
    {
        uint32_t type, count;
        std::vector<uint8_t> bytes;
        float out[4];
    };
    const SRow rows[] = {
        {EQMXTDataRGBA, 4, {0x44, 0x33, 0x22, 0x11}, {0x11 * k, 0x22 * k, 0x33 * k, 0x44 * k}},
        {EQMXTDataARGB, 4, {0x44, 0x33, 0x22, 0x11}, {0x22 * k, 0x33 * k, 0x44 * k, 0x11 * k}},
        {EQMXTDataUBYTE4, 4, {255, 0, 17, 255}, {255, 0, 17, 255}},
        {EQMXTDataDEC3N, 4, {0xFF, 0x01, 0x00, 0x00}, {1, 0, 0, 1}},
        {EQMXTDataDEC3N, 3, {0x7F, 0x04, 0x18, 0x30}, {127 * d, -511 * d, -255 * d, 1}}, // sign-extended
        {EQMXTDataUnsignedInt, 1, {0x00, 0x00, 0x00, 0xF0}, {4026531840.0f, 0, 0, 1}}, // positive above 2^31
        {EQMXTDataShortNorm, 2, {0xFF, 0x7F, 0x01, 0x80}, {1, -1, 0, 1}},
        {EQMXTDataFixed16_16, 1, {0x00, 0xC0, 0xFD, 0xFF}, {-2.25f, 0, 0, 1}},
    };
    for (const SRow& r : rows)
    {
        SCOPED_TRACE(std::string(QMXTModelTVODataTypeName(r.type)) + " from byte " +
                     std::to_string(r.bytes[0]));
        float v[4] = {9, 9, 9, 9};
        QMXTVertexRead(v, r.bytes.data(), r.type, r.count);
        for (int c = 0; c < 4; ++c)
            EXPECT_FLOAT_EQ(v[c], r.out[c]) << "component " << c;
    }
}

TEST(VertexDataTypes, IndicesAsShortOrIntAndUnknownTypesReadDefaultAndWriteNothing)
{
    uint8_t bytes[8] = {0, 0, 0, 0, 5, 6, 7, 8};
    uint32_t index = 0;
    QMXTVertexWrite(bytes, EQMXTDataUnsignedShort, 0x12345u);
    QMXTVertexRead(index, bytes, EQMXTDataUnsignedShort);
    EXPECT_EQ(index, 0x2345u);
    EXPECT_EQ(bytes[2], 0);
    QMXTVertexWrite(bytes, EQMXTDataUnsignedInt, 0xDEADBEEFu);
    QMXTVertexRead(index, bytes, EQMXTDataFloat);
    EXPECT_EQ(index, 0u);
    for (uint32_t type : {0u, 18u, 999u})
    {
        float v[4] = {9, 9, 9, 9};
        QMXTVertexRead(v, bytes, type, 4);
        EXPECT_EQ(std::vector<float>(v, v + 4), (std::vector<float>{0, 0, 0, 1}));
        QMXTVertexWrite(bytes, type, 4, v);
        QMXTVertexWrite(bytes, type, 77u);
        EXPECT_EQ(bytes[0], 0xEF);
        EXPECT_EQ(bytes[7], 8);
    }
}
