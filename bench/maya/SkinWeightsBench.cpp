// The skin pass over a skinned grid of n vertices (4 joints, every vertex weighted to two), through
// the plug-in's scene walk and the stand-in API: time should grow linearly with n. The plain
// reset-and-step read of one vertex's weights is measured beside it, at small sizes, for contrast.
#include <benchmark/benchmark.h>

#include <maya/MDagPath.h>
#include <maya/MFnSkinCluster.h>

#include <cmath>

#include "Ostrex.h"
#include "SkinWeights.h"
#include "StandInScene.h"

using standin::Scene;

namespace
{
// A side x side grid of points, quads between them, skinned to four joints; returns the skin cluster.
int SkinnedGrid(int side)
{
    standin::ResetScene();
    std::vector<int> joints;
    for (int j = 0, parent = 0; j < 4; ++j)
        joints.push_back(parent = Scene().Add(MFn::kJoint, "j" + std::to_string(j), parent));
    const int group = Scene().Add(MFn::kShadingEngine, "sg", -1);
    const int shape = Scene().Add(MFn::kMesh, "gridShape", Scene().Add(MFn::kTransform, "grid"));
    standin::SMesh& mesh = Scene().nodes[shape].mesh;
    std::vector<std::vector<double>> weights;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
        {
            mesh.points.push_back({double(x), double(y), 0.0});
            mesh.normals.push_back({0.0, 0.0, 1.0});
            const double t = double(y) / side;
            std::vector<double> w(4, 0.0);
            w[y * 3 / side] = 1.0 - t;
            w[3] += t;
            weights.push_back(w);
        }
    for (int y = 0; y + 1 < side; ++y)
        for (int x = 0; x + 1 < side; ++x)
            mesh.faces.push_back({y * side + x, y * side + x + 1, (y + 1) * side + x + 1, (y + 1) * side + x});
    mesh.groups = {{group, {}}};
    const int skin = Scene().Add(MFn::kSkinClusterFilter, "skinCluster1", -1);
    Scene().nodes[skin].outputs = {shape};
    Scene().nodes[skin].influences = joints;
    Scene().nodes[skin].weights[shape] = weights;
    return skin;
}

void BM_SkinnedMeshExtraction(benchmark::State& state)
{
    const int side = static_cast<int>(std::lround(std::sqrt(double(state.range(0)))));
    SkinnedGrid(side);
    for (auto _ : state)
    {
        Ostrex exporter;
        exporter.Options().SetOption(COptionsData::eExportSkin, true);
        exporter.Init();
        exporter.DoConversion();
        benchmark::DoNotOptimize(exporter.Content()->nodes.back().modifiers.size());
    }
    state.counters["vertices"] = side * side;
    state.counters["ns/vertex"] =
        benchmark::Counter(double(side) * side, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SkinnedMeshExtraction)->Arg(25000)->Arg(50000)->Arg(100000)->Unit(benchmark::kMillisecond);

// Every vertex read the plain way: reset the iterator and step to the vertex.
void BM_SteppedWeightReads(benchmark::State& state)
{
    const int side = static_cast<int>(std::lround(std::sqrt(double(state.range(0)))));
    const int skin = SkinnedGrid(side);
    MFnSkinCluster cluster(MObject::StandInNode(skin));
    MDagPath path;
    MDagPath::getAPathTo(MObject::StandInNode(Scene().nodes[skin].outputs[0]), path);
    for (auto _ : state)
        for (int v = 0; v < side * side; ++v)
        {
            MDoubleArray weights;
            ReadVertexWeightsByStepping(cluster, path, v, weights);
            benchmark::DoNotOptimize(weights.length());
        }
    state.counters["vertices"] = side * side;
}
BENCHMARK(BM_SteppedWeightReads)->Arg(2500)->Arg(5000)->Arg(10000)->Unit(benchmark::kMillisecond);
} // namespace
