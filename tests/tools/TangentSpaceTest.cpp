// Tangent space: golden output digests (random, often mirrored UVs), degenerate corners, the
// triangle limit and argument failures.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "GeometryTestMeshes.h"
#include "GoldenDigests.h"
#include "QMXTVertexData.h"
#include "QMXTTangentSpace.h"

using namespace geomtest;

namespace
{
// Position, normal and UV at offsets 0, 12 and 24 (floats, the UV of type eTypeUV), then tangent and
// binormal of type eTypeTan, then a 4-byte tag.
struct STangentLayout
{
    EQMXTDataType eTypeTan, eTypeUV;
    uint32_t nOffsetTan = 24 + QMXTModelTVODataElementBytes(eTypeUV, 3);
    uint32_t nOffsetBin = nOffsetTan + QMXTModelTVODataElementBytes(eTypeTan, 3);
    uint32_t nStride = nOffsetBin + QMXTModelTVODataElementBytes(eTypeTan, 3) + 4;
};

struct SVertex
{
    QMXTVECTOR3f p, n, uv;
};

std::vector<uint8_t> Pack(const std::vector<SVertex>& v, const STangentLayout& l)
{
    std::vector<uint8_t> data(v.size() * l.nStride, 0xCD);
    for (uint32_t i = 0; i < v.size(); ++i)
    {
        uint8_t* rec = &data[i * l.nStride];
        QMXTVertexWrite(rec, EQMXTDataFloat, 3, &v[i].p.x);
        QMXTVertexWrite(rec + 12, EQMXTDataFloat, 3, &v[i].n.x);
        QMXTVertexWrite(rec + 24, l.eTypeUV, 3, &v[i].uv.x);
        std::memcpy(rec + l.nStride - 4, &i, 4);
    }
    return data;
}

struct SResult
{
    int nResult;
    uint32_t nVertexNum = 0;
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> idx;
};

SResult Generate(const std::vector<uint8_t>& data, uint32_t nVertex, std::vector<uint32_t> idx,
                 const STangentLayout& l, float split)
{
    SResult r;
    uint8_t* out = nullptr;
    r.nResult =
        QMXTVertexGenerateTangentSpace(&r.nVertexNum, &out, idx.data(), nVertex, data.data(), l.nStride, 0,
                                       EQMXTDataFloat, 12, EQMXTDataFloat, 24, l.eTypeUV, l.nOffsetTan,
                                       l.eTypeTan, l.nOffsetBin, l.eTypeTan, uint32_t(idx.size() / 3), split);
    r.idx = idx;
    if (r.nResult == 0)
        r.vertices.assign(out, out + size_t(r.nVertexNum) * l.nStride);
    std::free(out);
    return r;
}

QMXTVECTOR3f Read(const SResult& r, const STangentLayout& l, uint32_t v, uint32_t offset, uint32_t type)
{
    float f[4];
    QMXTVertexRead(f, &r.vertices[size_t(v) * l.nStride + offset], type, 3);
    return {f[0], f[1], f[2]};
}
} // namespace

TEST(TangentSpace, MatchesGoldenDigests)
{
    CGoldenDigests golden(
        "tangent-space.txt",
        "# Digests of QMXTVertexGenerateTangentSpace output (result, indices, and per output vertex\n"
        "# its source vertex and its tangent and binormal rounded to 1/1000) for the meshes of\n"
        "# tests/tools/TangentSpaceTest.cpp, one line per eight meshes. Written by the test with\n"
        "# OSTREX_WRITE_GOLDEN=1 from the code at 6d1b907, whose output equalled the former\n"
        "# quadratic reference implementation on these meshes.\n");
    const STangentLayout layouts[] = {{EQMXTDataFloat, EQMXTDataFloat},
                                      {EQMXTDataShortNorm, EQMXTDataFloat},
                                      {EQMXTDataDEC3N, EQMXTDataUnsignedShortNorm}};
    std::mt19937 rng(51);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f), uv(0.0f, 1.0f);
    for (uint32_t seed = 51; seed <= 54; ++seed)
    {
        const std::vector<SIndexMesh> zoo = MeshZoo(seed, 150, 90);
        for (size_t i = 0; i < zoo.size(); ++i)
        {
            const SIndexMesh& m = zoo[i];
            const STangentLayout& l = layouts[rng() % 3];
            std::vector<SVertex> v(m.nVertexNum);
            const bool smooth = rng() % 2;
            for (uint32_t k = 0; k < m.nVertexNum; ++k)
            {
                // Smooth meshes take UVs from the positions, others random (often mirrored) UVs.
                v[k].p = {unit(rng), unit(rng), 0.2f * unit(rng)};
                v[k].n = {0.1f * unit(rng), 0.1f * unit(rng), 1.0f};
                v[k].uv = smooth ? QMXTVECTOR3f{v[k].p.x, v[k].p.y, 0} : QMXTVECTOR3f{uv(rng), uv(rng), 0};
            }
            const float split = unit(rng);
            const SResult r = Generate(Pack(v, l), m.nVertexNum, m.idx, l, split);
            golden.AddValue(uint64_t(r.nResult) << 32 | r.nVertexNum);
            golden.Add(r.idx);
            for (uint32_t k = 0; r.nResult == 0 && k < r.nVertexNum; ++k)
            {
                golden.Add(&r.vertices[size_t(k) * l.nStride + l.nStride - 4], 4);
                for (const QMXTVECTOR3f& f :
                     {Read(r, l, k, l.nOffsetTan, l.eTypeTan), Read(r, l, k, l.nOffsetBin, l.eTypeTan)})
                    for (float c : {f.x, f.y, f.z})
                        golden.AddValue(uint64_t(std::lround(c * 1000.0f)));
            }
            if (i % 8 == 7 || i + 1 == zoo.size())
                golden.EndLine(std::to_string(seed) + "/" + std::to_string(i / 8));
        }
    }
    golden.Check();
}

// No UV area, a zero normal, a zero triangle: still finite unit vectors.
TEST(TangentSpace, DegenerateCornersGiveUnitVectors)
{
    QMXTVECTOR3f t, b;
    for (const QMXTVECTOR3f& normal : {QMXTVECTOR3f{0, 0, 1}, QMXTVECTOR3f{0, 0, 0}})
        for (const QMXTVECTOR3f& p1 : {QMXTVECTOR3f{1, 0, 0}, QMXTVECTOR3f{0, 0, 0}})
        {
            QMXTVertexTangentBitangent(t, b, normal, {0, 0, 0}, p1, {0, 1, 0}, {0.5f, 0.5f, 0},
                                       {0.5f, 0.5f, 0}, {0.5f, 0.5f, 0});
            EXPECT_NEAR(QMXTMatrixVec3LengthF(t), 1.0f, 1e-5f);
            EXPECT_NEAR(QMXTMatrixVec3LengthF(b), 1.0f, 1e-5f);
        }
}

TEST(TangentSpace, FailsOnRepeatedIndicesAndCrowdedVertices)
{
    const STangentLayout l{EQMXTDataFloat, EQMXTDataFloat};
    std::vector<SVertex> v(40); // a fan's centre and rim, with UVs the positions
    for (uint32_t i = 1; i < v.size(); ++i)
        v[i].p = v[i].uv = {std::cos(i * 0.15f), std::sin(i * 0.15f), 0};
    for (SVertex& vertex : v)
        vertex.n = {0, 0, 1};
    const std::vector<uint8_t> data = Pack(v, l);
    EXPECT_EQ(Generate(data, 40, {5, 5, 7}, l, 0.0f).nResult, 1);
    const SIndexMesh fan33 = Fan(33), fan32 = Fan(32);
    const SResult crowded = Generate(data, 40, fan33.idx, l, 0.0f);
    EXPECT_EQ(crowded.nResult, 1);
    EXPECT_EQ(crowded.idx, fan33.idx);
    const SResult full = Generate(data, 40, fan32.idx, l, 0.0f);
    ASSERT_EQ(full.nResult, 0);
    EXPECT_EQ(full.nVertexNum, 34u);
}

TEST(TangentSpace, RejectsBadArguments)
{
    const STangentLayout l{EQMXTDataFloat, EQMXTDataFloat};
    const std::vector<uint8_t> data = Pack(std::vector<SVertex>(4), l);
    std::vector<uint32_t> idx = {0, 1, 4};
    uint32_t n = 9;
    uint8_t* out = nullptr;
    auto run = [&](uint32_t tanOffset, EQMXTDataType tanType)
    {
        return QMXTVertexGenerateTangentSpace(&n, &out, idx.data(), 4, data.data(), l.nStride, 0,
                                              EQMXTDataFloat, 12, EQMXTDataFloat, 24, l.eTypeUV, tanOffset,
                                              tanType, l.nOffsetBin, l.eTypeTan, 1, 0.0f);
    };
    EXPECT_EQ(run(l.nOffsetTan, l.eTypeTan), 1); // index past the vertices
    idx = {0, 1, 2};
    EXPECT_EQ(run(l.nStride - 4, l.eTypeTan), 1);   // tangent past the record
    EXPECT_EQ(run(l.nOffsetTan, EQMXTDataNone), 1); // no type
    EXPECT_EQ(n, 9u);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(idx, (std::vector<uint32_t>{0, 1, 2}));
}
