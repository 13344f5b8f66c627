// Throughput of the .tvo writer and reader on a scene of one million vertices, in memory: the file
// layer should be far from the bottleneck of an export.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "QMXTModelTVO.h"
#include "QMXTSink.h"

namespace
{
void Stream(CTVOData& d, EQMXTDataType type, uint32_t components, uint32_t count)
{
    d.eType = type;
    d.n = components;
    d.nStride = QMXTModelTVODataTypeSize(type) * components;
    d.pData = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(d.nStride) * count));
    for (size_t i = 0; i < static_cast<size_t>(d.nStride) * count; ++i)
        d.pData[i] = static_cast<uint8_t>(i * 131);
}

// One mesh: float positions and normals, one unsigned short UVW stream, a triangle fan's worth of
// 32-bit indices; interleaved into one 28-byte vertex when asked.
void MakeScene(CQMXTModelTVO& s, uint32_t vertices, bool interleaved)
{
    s.nNumMesh = s.nNumNode = s.nNumMeshNode = 1;
    s.pMesh = static_cast<STVOMesh*>(std::calloc(1, sizeof(STVOMesh)));
    s.pNode = static_cast<STVONode*>(std::calloc(1, sizeof(STVONode)));
    s.pNode[0].nIdxParent = -1;
    STVOMesh& m = s.pMesh[0];
    m.nNumVertex = vertices;
    m.nNumFaces = vertices - 2;
    m.sFaces = {EQMXTDataUnsignedInt, 1, 4, static_cast<uint8_t*>(std::malloc(12u * m.nNumFaces))};
    uint32_t* idx = reinterpret_cast<uint32_t*>(m.sFaces.pData);
    for (uint32_t t = 0; t < m.nNumFaces; ++t)
        idx[3 * t] = t, idx[3 * t + 1] = t + 1, idx[3 * t + 2] = t + 2;
    Stream(m.sVertex, EQMXTDataFloat, 3, vertices);
    Stream(m.sNormals, EQMXTDataFloat, 3, vertices);
    m.nNumUVW = 1;
    m.psUVW = static_cast<CTVOData*>(std::calloc(1, sizeof(CTVOData)));
    Stream(m.psUVW[0], EQMXTDataUnsignedShort, 2, vertices);
    for (int i = 0; i < 16; ++i)
        m.mUnpackMatrix[i] = i % 5 == 0 ? 1.0f : 0.0f;
    if (interleaved)
    {
        CTVOData* streams[3] = {&m.sVertex, &m.sNormals, &m.psUVW[0]};
        const uint32_t stride = 28, offsets[3] = {0, 12, 24};
        m.pInterleaved = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(stride) * vertices));
        for (int k = 0; k < 3; ++k)
        {
            for (uint32_t v = 0; v < vertices; ++v)
                std::memcpy(m.pInterleaved + static_cast<size_t>(v) * stride + offsets[k],
                            streams[k]->pData + static_cast<size_t>(v) * streams[k]->nStride,
                            streams[k]->nStride);
            std::free(streams[k]->pData);
            QMXTModelTVODataSetOffset(*streams[k], offsets[k]);
            streams[k]->nStride = stride;
        }
    }
    s.InitImpl();
}

const uint32_t kVertices = 1000000;

// The sink keeps its capacity between iterations: growing a fresh 40 MB buffer each time measures the
// allocator's page faults, not the writer (a file sink hands the bytes to the OS instead).
void BM_WriteTVO(benchmark::State& state)
{
    CQMXTModelTVO scene;
    MakeScene(scene, kVertices, state.range(0) != 0);
    CSinkMemory sink;
    for (auto _ : state)
    {
        sink.Data().clear();
        if (scene.SaveTVO(sink, "options", "history") != 0)
            state.SkipWithError("write failed");
        benchmark::DoNotOptimize(sink.Data().data());
    }
    const size_t bytes = sink.Data().size();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["file_MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_ReadTVO(benchmark::State& state)
{
    CQMXTModelTVO scene;
    MakeScene(scene, kVertices, state.range(0) != 0);
    CSinkMemory sink;
    scene.SaveTVO(sink);
    const uint32_t size = static_cast<uint32_t>(sink.Data().size());
    for (auto _ : state)
    {
        CQMXTModelTVO read;
        if (read.ReadFromMemory(sink.Data().data(), size) != 0)
            state.SkipWithError("read failed");
        benchmark::DoNotOptimize(read.pMesh);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}
} // namespace

BENCHMARK(BM_WriteTVO)->ArgName("interleaved")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadTVO)->ArgName("interleaved")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
