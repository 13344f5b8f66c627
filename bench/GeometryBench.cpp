// Throughput of the geometry toolkit on a generated quad grid: 1000 x 1000 quads (2M triangles) and
// its first 200k triangles (the first 100 rows, with their 101 rows of vertices). Each benchmark reports triangles per second; the
// sort also reports ACMR for FIFO caches of 16 and 32 entries (input order, our order, and
// meshoptimizer's order as a yardstick when the library is present), the strips indices a triangle.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "QMXTBoneBatches.h"
#include "QMXTGeometrySort.h"
#include "QMXTTangentSpace.h"
#include "QMXTTriStrip.h"
#include "QMXTVertexData.h"

#ifdef OSTREX_HAVE_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

namespace
{
constexpr uint32_t kSide = 1000;

// Grid triangles: quad (x, y) as (a, b, d) and (a, d, c), row by row.
struct SGrid
{
    uint32_t nVertexNum = 0;
    std::vector<uint32_t> idx;
};

const SGrid& Grid(uint32_t nTri)
{
    static SGrid full, part;
    if (full.idx.empty())
    {
        full.nVertexNum = (kSide + 1) * (kSide + 1);
        full.idx.reserve(size_t(kSide) * kSide * 6);
        for (uint32_t y = 0; y < kSide; ++y)
            for (uint32_t x = 0; x < kSide; ++x)
            {
                const uint32_t a = y * (kSide + 1) + x, b = a + 1, c = a + kSide + 1, d = c + 1;
                full.idx.insert(full.idx.end(), {a, b, d, a, d, c});
            }
        // The first 100 rows of quads use only the first 101 rows of vertices.
        part.idx.assign(full.idx.begin(), full.idx.begin() + 600000);
        part.nVertexNum = 101 * (kSide + 1);
    }
    return nTri == 2000000 ? full : part;
}

// Interleaved vertices: position, normal, UV, tangent and binormal (floats), bone weights (floats)
// and bone indices (UBYTE4) from a 16 x 16 lattice of bones, each vertex blending the four around it.
struct SLayout
{
    static constexpr uint32_t kPos = 0, kNor = 12, kUV = 24, kTan = 36, kBin = 48, kWeight = 60, kBone = 76,
                              kStride = 80;
};

const std::vector<uint8_t>& Vertices()
{
    static std::vector<uint8_t> data;
    if (!data.empty())
        return data;
    const uint32_t n = kSide + 1;
    data.assign(size_t(n) * n * SLayout::kStride, 0);
    const float cell = float(kSide) / 15.0f;
    for (uint32_t y = 0; y < n; ++y)
        for (uint32_t x = 0; x < n; ++x)
        {
            uint8_t* rec = &data[(size_t(y) * n + x) * SLayout::kStride];
            const float pos[3] = {float(x), float(y), 0.0f}, nor[3] = {0, 0, 1};
            const float uv[3] = {float(x) / kSide, float(y) / kSide, 0};
            QMXTVertexWrite(rec + SLayout::kPos, EQMXTDataFloat, 3, pos);
            QMXTVertexWrite(rec + SLayout::kNor, EQMXTDataFloat, 3, nor);
            QMXTVertexWrite(rec + SLayout::kUV, EQMXTDataFloat, 3, uv);
            const float fx = float(x) / cell, fy = float(y) / cell;
            const uint32_t bx = std::min(uint32_t(fx), 14u), by = std::min(uint32_t(fy), 14u);
            const float tx = fx - float(bx), ty = fy - float(by);
            const float bones[4] = {float(by * 16 + bx), float(by * 16 + bx + 1), float((by + 1) * 16 + bx),
                                    float((by + 1) * 16 + bx + 1)};
            const float w[4] = {(1 - tx) * (1 - ty), tx * (1 - ty), (1 - tx) * ty, tx * ty};
            QMXTVertexWrite(rec + SLayout::kWeight, EQMXTDataFloat, 4, w);
            QMXTVertexWrite(rec + SLayout::kBone, EQMXTDataUBYTE4, 4, bones);
        }
    return data;
}

void SetTriangles(benchmark::State& state, uint32_t nTri)
{
    state.SetItemsProcessed(int64_t(state.iterations()) * nTri);
    state.counters["triangles"] = nTri;
}

#ifdef OSTREX_HAVE_MESHOPTIMIZER
double Acmr(const std::vector<uint32_t>& idx, uint32_t nVertex, unsigned cache)
{
    return meshopt_analyzeVertexCache(idx.data(), idx.size(), nVertex, cache, 0, 0).acmr;
}
#endif
} // namespace

static void BM_GeometrySort(benchmark::State& state)
{
    const SGrid& g = Grid(uint32_t(state.range(0)));
    const uint32_t nTri = uint32_t(g.idx.size() / 3);
    std::vector<uint32_t> idx;
    for (auto _ : state)
    {
        state.PauseTiming();
        idx = g.idx;
        state.ResumeTiming();
        if (QMXTGeometrySort(nullptr, idx.data(), 0, g.nVertexNum, nTri, 32, 64, 3) != 0)
            state.SkipWithError("sort failed");
    }
    SetTriangles(state, nTri);
#ifdef OSTREX_HAVE_MESHOPTIMIZER
    state.counters["ACMR16_input"] = Acmr(g.idx, g.nVertexNum, 16);
    state.counters["ACMR32_input"] = Acmr(g.idx, g.nVertexNum, 32);
    state.counters["ACMR16"] = Acmr(idx, g.nVertexNum, 16);
    state.counters["ACMR32"] = Acmr(idx, g.nVertexNum, 32);
    std::vector<uint32_t> meshopt(g.idx.size());
    meshopt_optimizeVertexCache(meshopt.data(), g.idx.data(), g.idx.size(), g.nVertexNum);
    state.counters["ACMR16_meshopt"] = Acmr(meshopt, g.nVertexNum, 16);
    state.counters["ACMR32_meshopt"] = Acmr(meshopt, g.nVertexNum, 32);
#endif
}
BENCHMARK(BM_GeometrySort)->Arg(200000)->Arg(2000000)->Unit(benchmark::kMillisecond)->Iterations(3);

#ifdef OSTREX_HAVE_MESHOPTIMIZER
static void BM_MeshoptVertexCache(benchmark::State& state)
{
    const SGrid& g = Grid(uint32_t(state.range(0)));
    std::vector<uint32_t> out(g.idx.size());
    for (auto _ : state)
        meshopt_optimizeVertexCache(out.data(), g.idx.data(), g.idx.size(), g.nVertexNum);
    SetTriangles(state, uint32_t(g.idx.size() / 3));
}
BENCHMARK(BM_MeshoptVertexCache)->Arg(200000)->Arg(2000000)->Unit(benchmark::kMillisecond)->Iterations(3);
#endif

static void BM_TriStrip(benchmark::State& state)
{
    const SGrid& g = Grid(uint32_t(state.range(0)));
    const uint32_t nTri = uint32_t(g.idx.size() / 3);
    uint32_t nStrips = 0;
    for (auto _ : state)
    {
        uint32_t *idx = nullptr, *len = nullptr;
        if (QMXTTriStrip(&idx, &len, &nStrips, g.idx.data(), nTri) != 0)
            state.SkipWithError("strips failed");
        state.PauseTiming();
        std::free(idx);
        std::free(len);
        state.ResumeTiming();
    }
    SetTriangles(state, nTri);
    state.counters["strips"] = nStrips;
    state.counters["indices_per_triangle"] = double(nTri + 2.0 * nStrips) / nTri;
}
BENCHMARK(BM_TriStrip)->Arg(200000)->Arg(2000000)->Unit(benchmark::kMillisecond)->Iterations(3);

static void BM_BoneBatches(benchmark::State& state)
{
    const SGrid& g = Grid(uint32_t(state.range(0)));
    const uint32_t nTri = uint32_t(g.idx.size() / 3);
    const std::vector<uint8_t>& vtx = Vertices();
    std::vector<uint32_t> idx;
    uint32_t nOut = 0, nBatches = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        idx = g.idx;
        state.ResumeTiming();
        CQMXTBoneBatches batches;
        uint8_t* out = nullptr;
        if (batches.Create(&nOut, &out, idx.data(), g.nVertexNum, vtx.data(), SLayout::kStride, SLayout::kWeight,
                           EQMXTDataFloat, SLayout::kBone, EQMXTDataUBYTE4, nTri, 9, 4) != 0)
            state.SkipWithError("bone batches failed");
        nBatches = batches.nBatchCnt;
        std::free(out);
        batches.Release();
    }
    SetTriangles(state, nTri);
    state.counters["batches"] = nBatches;
    state.counters["vertices_out"] = nOut;
}
BENCHMARK(BM_BoneBatches)->Arg(200000)->Arg(2000000)->Unit(benchmark::kMillisecond)->Iterations(3);

static void BM_TangentSpace(benchmark::State& state)
{
    const SGrid& g = Grid(uint32_t(state.range(0)));
    const uint32_t nTri = uint32_t(g.idx.size() / 3);
    const std::vector<uint8_t>& vtx = Vertices();
    std::vector<uint32_t> idx;
    uint32_t nOut = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        idx = g.idx;
        state.ResumeTiming();
        uint8_t* out = nullptr;
        if (QMXTVertexGenerateTangentSpace(&nOut, &out, idx.data(), g.nVertexNum, vtx.data(), SLayout::kStride,
                                           SLayout::kPos, EQMXTDataFloat, SLayout::kNor, EQMXTDataFloat, SLayout::kUV,
                                           EQMXTDataFloat, SLayout::kTan, EQMXTDataFloat, SLayout::kBin,
                                           EQMXTDataFloat, nTri, 0.5f) != 0)
            state.SkipWithError("tangent space failed");
        std::free(out);
    }
    SetTriangles(state, nTri);
    state.counters["vertices_out"] = nOut;
}
BENCHMARK(BM_TangentSpace)->Arg(200000)->Arg(2000000)->Unit(benchmark::kMillisecond)->Iterations(3);
