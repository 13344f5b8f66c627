// Channel shredding, type conversion and position quantising.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>

#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

namespace
{
Vec4 Read(const CTVOData& d, uint32_t v)
{
    Vec4 out;
    QMXTVertexRead(out.data(), d.pData + static_cast<size_t>(v) * d.nStride, d.eType, d.n);
    return out;
}

// Each type: the values it holds, its precision there, the components of a stream of it, and the
// range positions are scaled to when quantised to it (none for floats).
struct STypeCase
{
    uint32_t type;
    float lo, hi, step;
    uint32_t components;
    double m, M;
};

const double kBig = 1073741824.0;
const STypeCase kTypes[] = {
    {EQMXTDataFloat, -1e6f, 1e6f, 0, 3, 0, 0},
    {EQMXTDataInt, -kBig, kBig, 1, 3, -kBig, kBig},
    {EQMXTDataUnsignedShort, 0, 65535, 1, 3, 0, 65535},
    {EQMXTDataRGBA, 0, 1, 1 / 255.0f, 4, 0, 1},
    {EQMXTDataARGB, 0, 1, 1 / 255.0f, 4, 0, 1},
    {EQMXTDataD3DCOLOR, 0, 1, 1 / 255.0f, 4, 0, 1},
    {EQMXTDataUBYTE4, 0, 255, 1, 4, 0, 255},
    {EQMXTDataDEC3N, -1, 1, 1 / 511.0f, 3, -511, 511},
    {EQMXTDataFixed16_16, -32767, 32767, 1 / 65536.0f, 3, -32767, 32767},
    {EQMXTDataUnsignedByte, 0, 255, 1, 3, 0, 255},
    {EQMXTDataShort, -32767, 32767, 1, 3, -32767, 32767},
    {EQMXTDataShortNorm, -1, 1, 1 / 32767.0f, 3, -1, 1},
    {EQMXTDataByte, -127, 127, 1, 3, -127, 127},
    {EQMXTDataByteNorm, -1, 1, 1 / 127.0f, 3, -1, 1},
    {EQMXTDataUnsignedByteNorm, 0, 1, 1 / 255.0f, 3, -1, 1},
    {EQMXTDataUnsignedShortNorm, 0, 1, 1 / 65535.0f, 3, -1, 1},
    {EQMXTDataUnsignedInt, 0, 4e9f, 1, 3, 0, kBig},
};
} // namespace

TEST(TransformShred, PicksReordersAndNegatesComponentsButNeverAddsAny)
{
    CTVOData d = MakeStream(EQMXTDataFloat, 3, {{1, 2, 3}, {4, 5, 6}});
    const int32_t swizzle[] = {'x', -'z', 'y', 0}, onlyY[] = {'y', 0};
    ASSERT_EQ(QMXTModelTVODataShred(d, 2, swizzle), 0);
    EXPECT_EQ(Read(d, 1), (Vec4{4, -6, 5, 1}));
    ASSERT_EQ(QMXTModelTVODataShred(d, 2, onlyY), 0);
    EXPECT_EQ(d.nStride, 4u);
    EXPECT_EQ(Read(d, 1), (Vec4{-6, 0, 0, 1}));
    d.Reset();
    CTVOData s = MakeStream(EQMXTDataShort, 2, {{7, 8}});
    const int32_t four[] = {'y', 'x', 'z', 'w', 0}, bad[] = {'q', 0};
    ASSERT_EQ(QMXTModelTVODataShred(s, 1, four), 0);
    EXPECT_EQ(s.n, 2u);
    EXPECT_EQ(Read(s, 0), (Vec4{8, 7, 0, 1}));
    EXPECT_EQ(QMXTModelTVODataShred(s, 1, bad), 1);
    s.Reset();
}

TEST(TransformConvert, EveryTypeHoldsValuesWithinItsPrecision)
{
    std::mt19937 rng(11);
    for (const STypeCase& tc : kTypes)
    {
        SCOPED_TRACE(QMXTModelTVODataTypeName(tc.type));
        std::uniform_real_distribution<float> value(tc.lo, tc.hi);
        std::vector<Vec4> values(50);
        for (Vec4& v : values)
            v = {value(rng), value(rng), value(rng), tc.components == 4 ? value(rng) : 1.0f};
        values[0] = {tc.lo, tc.hi, tc.lo, tc.hi};
        CTVOData d = MakeStream(EQMXTDataFloat, tc.components, values);

        ASSERT_EQ(QMXTModelTVODataConvert(d, 50, static_cast<EQMXTDataType>(tc.type)), 0);
        const bool packed = QMXTModelTVODataTypeComponentCount(tc.type) > 1;
        EXPECT_EQ(d.n, packed ? 1u : tc.components);
        EXPECT_EQ(d.nStride, QMXTModelTVODataTypeSize(tc.type) * d.n);
        ASSERT_EQ(QMXTModelTVODataConvert(d, 50, EQMXTDataFloat), 0);
        EXPECT_EQ(d.n, tc.components);
        for (uint32_t v = 0; v < 50; ++v)
            for (uint32_t c = 0; c < tc.components; ++c)
                EXPECT_NEAR(Read(d, v)[c], values[v][c], tc.step + 1e-6f * std::fabs(values[v][c]))
                    << "vertex " << v << " component " << c;
        d.Reset();
    }
    // Face indices narrowing to 16 bits are checked by the exporter's vertex format tests.
    CTVOData d = MakeStream(EQMXTDataFloat, 3, {{1, 2, 3}});
    EXPECT_EQ(QMXTModelTVODataConvert(d, 1, static_cast<EQMXTDataType>(18)), 1);
    EXPECT_EQ(d.eType, EQMXTDataFloat);
    d.Reset();
}

namespace
{
Vec4 Unpack(const STVOMesh& m, const Vec4& s)
{
    Vec4 out;
    for (int c = 0; c < 3; ++c)
        out[c] = s[0] * m.mUnpackMatrix[c] + s[1] * m.mUnpackMatrix[4 + c] + s[2] * m.mUnpackMatrix[8 + c] +
                 m.mUnpackMatrix[12 + c];
    return out;
}
} // namespace

// Every stored position dequantises to the original within half a step of the type. Where a
// type cannot hold part of its range (DEC3N, the unsigned normalised types), positions there come
// back at the nearest position it can hold.
TEST(TransformQuantise, UnpackedPositionsStayWithinHalfAStep)
{
    const double boxMin[3] = {-1, 0, -100}, boxMax[3] = {1, 10, -99.5};
    std::mt19937 rng(5);
    std::vector<Vec4> pos(200);
    for (Vec4& p : pos)
        for (int a = 0; a < 3; ++a)
            p[a] = std::uniform_real_distribution<float>(boxMin[a], boxMax[a])(rng);
    pos[0] = {-1, 0, -100};
    pos[1] = {1, 10, -99.5f};
    for (const STypeCase& qc : kTypes)
    {
        if (qc.type == EQMXTDataFloat)
            continue;
        SCOPED_TRACE(QMXTModelTVODataTypeName(qc.type));
        SMeshHolder h;
        STVOMesh& m = h.mesh();
        m.nNumVertex = static_cast<uint32_t>(pos.size());
        m.sVertex = MakeStream(EQMXTDataFloat, 3, pos);
        ASSERT_EQ(QMXTModelTVOScaleAndConvertVtxData(m, static_cast<EQMXTDataType>(qc.type)), 0);
        EXPECT_EQ(m.sVertex.eType, qc.type);
        for (uint32_t v = 0; v < m.nNumVertex; ++v)
        {
            const Vec4 back = Unpack(m, Read(m.sVertex, v));
            for (int a = 0; a < 3; ++a)
            {
                const double extent = boxMax[a] - boxMin[a], scale = (qc.M - qc.m) / extent;
                const double q = std::fmin(qc.hi, std::fmax(qc.lo, (pos[v][a] - boxMin[a]) * scale + qc.m));
                const double expected = (q - qc.m) / scale + boxMin[a];
                const double halfStep = 0.5 * qc.step / scale;
                const double floatSlack = 4 * FLT_EPSILON * (extent + std::fabs(boxMin[a]));
                EXPECT_NEAR(back[a], expected, halfStep + floatSlack) << "vertex " << v << " axis " << a;
            }
        }
    }
}

// An axis without extent stores the range minimum and unpacks to its value exactly.
TEST(TransformQuantise, AFlatAxisUnpacksExactly)
{
    SMeshHolder h;
    STVOMesh& m = h.mesh();
    m.nNumVertex = 2;
    m.sVertex = MakeStream(EQMXTDataFloat, 3, {{-1, 5, 0}, {1, 5, 0}});
    ASSERT_EQ(QMXTModelTVOScaleAndConvertVtxData(m, EQMXTDataUnsignedShort), 0);
    EXPECT_EQ(Read(m.sVertex, 1)[1], 0.0f);
    EXPECT_EQ(Unpack(m, Read(m.sVertex, 1))[1], 5.0f);
}

TEST(TransformQuantise, InterleavedFloatPositionsAreScaledInPlace)
{
    SMeshHolder h;
    STVOMesh& m = h.mesh();
    m.nNumVertex = 2;
    m.sVertex = MakeStream(EQMXTDataFloat, 3, {{2, 4, 6}, {4, 8, 12}});
    m.sNormals = MakeStream(EQMXTDataFloat, 3, {{0, 0, 1}, {0, 1, 0}});
    ASSERT_EQ(QMXTModelTVOToggleInterleaved(m, 4), 0);
    ASSERT_EQ(QMXTModelTVOScaleAndConvertVtxData(m, EQMXTDataShort), 0);
    EXPECT_EQ(m.sVertex.eType, EQMXTDataFloat);
    EXPECT_FLOAT_EQ(ReadVertex(m, m.sVertex, 1)[2], 32767.0f);
    EXPECT_NEAR(Unpack(m, ReadVertex(m, m.sVertex, 1))[2], 12.0f, 1e-5f);
    EXPECT_EQ(ReadVertex(m, m.sNormals, 1), (Vec4{0, 1, 0, 1}));

    EXPECT_EQ(QMXTModelTVOScaleAndConvertVtxData(m, EQMXTDataFloat), 1);
    EXPECT_EQ(QMXTModelTVOToggleInterleaved(m, 4), 0);
    ASSERT_EQ(QMXTModelTVODataConvert(m.sVertex, 2, EQMXTDataShort), 0);
    EXPECT_EQ(QMXTModelTVOToggleInterleaved(m, 4), 0);
    EXPECT_EQ(QMXTModelTVOScaleAndConvertVtxData(m, EQMXTDataShort), 1); // interleaved, not float
}
