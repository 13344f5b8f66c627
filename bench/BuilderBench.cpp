// The builder end to end on a large mesh: a quad grid of n x n quads (2 n^2 triangles) with
// normals and one uv set, given as unwelded corners like a host delivers them, through
// CTVO::Process and CTVO::Write. Arg 0: default options; 1: triangle strips; 2: tangent space.
// Counters give each stage's processor seconds (from the progress messages): A content to model, B index
// resolution, C node animation, D the geometry pass plus the vertex-format pass, W writing.
// The grid side is 1000 unless OSTREX_GRID says otherwise. Peak memory: run one argument under
// /usr/bin/time -v (--benchmark_filter=BM_BuilderGrid/0).
#include <benchmark/benchmark.h>

#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <unistd.h>

#include "Log.h"
#include "TVO.h"

namespace
{
SContent MakeGrid(int n)
{
    SContent content;
    CNode node;
    node.name = "Grid";
    node.type = eNodeMesh;
    SGeomData& g = node.geom;
    const size_t corners = static_cast<size_t>(n) * n * 6;
    g.positions.reserve(corners);
    g.normals.reserve(corners);
    g.faces.reserve(corners / 3);
    g.channels.resize(1);
    g.channels[0].uvw.reserve(corners);
    g.channels[0].faces.reserve(corners / 3);
    const float step = 1.0f / static_cast<float>(n);
    auto corner = [&](int x, int y) { return QMXTVECTOR3f{x * step, y * step, 0.0f}; };
    auto triangle = [&](QMXTVECTOR3f a, QMXTVECTOR3f b, QMXTVECTOR3f c)
    {
        SFace f;
        CTriIdx t;
        const QMXTVECTOR3f p[3] = {a, b, c};
        for (int k = 0; k < 3; ++k)
        {
            f.pos[k] = f.normal[k] = t.idx[k] = static_cast<int>(g.positions.size());
            g.positions.push_back(p[k]);
            g.normals.push_back({0.0f, 0.0f, 1.0f});
            g.channels[0].uvw.push_back({p[k].x, p[k].y, 0.0f});
        }
        g.faces.push_back(f);
        g.channels[0].faces.push_back(t);
    };
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
        {
            triangle(corner(x, y), corner(x + 1, y), corner(x + 1, y + 1));
            triangle(corner(x, y), corner(x + 1, y + 1), corner(x, y + 1));
        }
    content.AddNode(node);
    return content;
}

const SContent& Grid()
{
    static const SContent grid =
        MakeGrid(std::getenv("OSTREX_GRID") ? std::atoi(std::getenv("OSTREX_GRID")) : 1000);
    return grid;
}

double ThreadSeconds()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Notes the processor time of every progress step (wall time is unreliable on a shared machine).
class CStageClock : public ILogSink
{
  public:
    void OnLog(int, const std::string&) override {}
    void OnProgress(int percent, const std::string& text) override
    {
        marks[std::to_string(percent) + text] = ThreadSeconds();
    }
    double Between(const std::string& a, const std::string& b) const
    {
        auto i = marks.find(a), j = marks.find(b);
        if (i == marks.end() || j == marks.end())
            return 0.0;
        return j->second - i->second;
    }
    std::map<std::string, double> marks;
};
} // namespace

static void BM_BuilderGrid(benchmark::State& state)
{
    const SContent& content = Grid();
    COptions options;
    if (state.range(0) == 1)
    {
        options.SetOption(COptionsData::ePrimType, ePrimTriangleStrips);
        options.HandleOptimisations();
    }
    if (state.range(0) == 2)
        options.SetOption(COptionsData::eTangentSpace, true);
    const std::string path = "/tmp/ostrex_bench_grid_" + std::to_string(::getpid()) + ".tvo";
    CStageClock clock;
    ILogSink* previous = SetLogSink(&clock);
    for (auto _ : state)
    {
        CTVO tvo;
        if (!tvo.Process(content, options) || !tvo.Write(path.c_str(), options, "bench", false))
            state.SkipWithError("export failed");
    }
    SetLogSink(previous);
    std::remove(path.c_str());
    state.counters["A"] = clock.Between("0Export stage 1", "40Export stage 2");
    state.counters["B"] = clock.Between("40Export stage 2", "50Export stage 3");
    state.counters["C"] = clock.Between("50Export stage 3", "75Final export stage");
    state.counters["D"] = clock.Between("75Final export stage", "95Saving");
    state.counters["W"] = clock.Between("95Saving", "100Complete");
    state.counters["triangles"] = static_cast<double>(content.nodes[0].geom.faces.size());
}
BENCHMARK(BM_BuilderGrid)
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Iterations(3) // the first export of a process also pays the machine's first touch of its memory
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
