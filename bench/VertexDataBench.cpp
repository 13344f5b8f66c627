// Throughput of the vertex component conversions, the inner loop of every format pass.
#include <benchmark/benchmark.h>

#include <vector>

#include "QMXTVertexData.h"

static void BM_VertexWriteRead(benchmark::State& state)
{
    const uint32_t type = static_cast<uint32_t>(state.range(0));
    const uint32_t count = 3;
    const uint32_t bytes = QMXTModelTVODataElementBytes(type, count);
    std::vector<uint8_t> buffer(bytes * 1024);
    const float in[4] = {0.25f, -0.5f, 0.75f, 1.0f};
    float out[4];
    for (auto _ : state)
    {
        for (uint32_t i = 0; i < 1024; ++i)
        {
            QMXTVertexWrite(&buffer[i * bytes], type, count, in);
            QMXTVertexRead(out, &buffer[i * bytes], type, count);
            benchmark::DoNotOptimize(out);
        }
    }
    state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(BM_VertexWriteRead)->Arg(EQMXTDataFloat)->Arg(EQMXTDataShortNorm)->Arg(EQMXTDataDEC3N)->Arg(EQMXTDataRGBA);
