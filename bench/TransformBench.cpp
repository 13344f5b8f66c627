// Throughput of the model transformations over a square grid mesh (the argument is its vertex
// count; about two triangles a vertex). Items are vertices, bytes the vertex data of the input.
// Two sizes show whether the cost grows linearly. Blocks above the allocator's mmap threshold
// (32 MB with glibc) come fresh from the kernel on every call, so where page faults are costly
// (sandboxes, VMs) the 1M-vertex figures of the allocating transformations include them; run with
// GLIBC_TUNABLES=glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=4000000000 to measure the
// transformations alone.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "QMXTModelTVOTransform.h"

namespace
{
template <typename T> T* Heap(const std::vector<T>& v)
{
    T* p = static_cast<T*>(std::malloc(v.size() * sizeof(T) + 1));
    std::memcpy(p, v.data(), v.size() * sizeof(T));
    return p;
}

CTVOData Floats(uint32_t n, const std::vector<float>& v)
{
    CTVOData d;
    d.eType = EQMXTDataFloat;
    d.n = n;
    d.nStride = 4 * n;
    d.pData = reinterpret_cast<uint8_t*>(Heap(v));
    return d;
}

CTVOData Bytes(EQMXTDataType type, const std::vector<uint8_t>& v)
{
    CTVOData d;
    d.eType = type;
    d.n = 4;
    d.nStride = 4;
    d.pData = Heap(v);
    return d;
}

const uint32_t kBatches = 8, kBonesPerBatch = 9;

// A side x side grid: positions, normals, one UV set, four bone indices and weights, a 32-bit
// triangle list written as strips draw it, and eight bone batches over equal bands of triangles.
void BuildGrid(STVOMesh& m, uint32_t vertices)
{
    const uint32_t side = static_cast<uint32_t>(std::sqrt(static_cast<double>(vertices)));
    const uint32_t n = side * side;
    std::vector<float> pos, nrm, uv;
    std::vector<uint8_t> bone, weight;
    for (uint32_t y = 0; y < side; ++y)
        for (uint32_t x = 0; x < side; ++x)
        {
            const float h = std::sin(x * 0.01f) * std::cos(y * 0.01f);
            pos.insert(pos.end(), {float(x), h, float(y)});
            nrm.insert(nrm.end(), {0.0f, 1.0f, 0.0f});
            uv.insert(uv.end(), {x / float(side), y / float(side)});
            bone.insert(bone.end(), {uint8_t(x % kBonesPerBatch), uint8_t((x + 1) % kBonesPerBatch), 0, 0});
            weight.insert(weight.end(), {128, 127, 0, 0});
        }
    std::vector<uint32_t> idx;
    for (uint32_t y = 0; y + 1 < side; ++y)
        for (uint32_t x = 0; x + 1 < side; ++x)
        {
            const uint32_t a = y * side + x, b = a + 1, c = a + side, d = c + 1;
            idx.insert(idx.end(), {a, c, b, b, c, d});
        }
    m = STVOMesh();
    m.nNumVertex = n;
    m.nNumFaces = static_cast<uint32_t>(idx.size() / 3);
    m.sFaces.eType = EQMXTDataUnsignedInt;
    m.sFaces.n = 1;
    m.sFaces.nStride = 4;
    m.sFaces.pData = reinterpret_cast<uint8_t*>(Heap(idx));
    m.sVertex = Floats(3, pos);
    m.sNormals = Floats(3, nrm);
    m.nNumUVW = 1;
    m.psUVW = static_cast<CTVOData*>(std::calloc(1, sizeof(CTVOData)));
    m.psUVW[0] = Floats(2, uv);
    m.sBoneIdx = Bytes(EQMXTDataUnsignedByte, bone);
    m.sBoneWeight = Bytes(EQMXTDataUnsignedByteNorm, weight);
}

// A scene of one mesh node (node 0) and kBatches x kBonesPerBatch animated bone nodes.
struct SGridScene
{
    CQMXTModelTVO scene;
    explicit SGridScene(uint32_t vertices, bool skinned)
    {
        const uint32_t bones = kBatches * kBonesPerBatch;
        scene.nNumFrame = 2;
        scene.nNumMesh = 1;
        scene.pMesh = static_cast<STVOMesh*>(std::calloc(1, sizeof(STVOMesh)));
        BuildGrid(scene.pMesh[0], vertices);
        scene.nNumMeshNode = 1;
        scene.nNumNode = 1 + bones;
        scene.pNode = static_cast<STVONode*>(std::calloc(scene.nNumNode, sizeof(STVONode)));
        for (uint32_t i = 0; i < scene.nNumNode; ++i)
        {
            STVONode& node = scene.pNode[i];
            node.nIdxParent = i > 1 ? static_cast<int32_t>(i - 1) : -1;
            node.nAnimationFlags = eTVOHasPositionAnimation;
            node.pfAnimPosition = Heap(std::vector<float>{0, 0, 0, 0.1f * i, 1, 0});
            node.pfAnimScale = Heap(std::vector<float>{1, 2, 1, 0, 0, 0, 0});
        }
        if (skinned)
        {
            CQMXTBoneBatches& b = scene.pMesh[0].sBoneBatch;
            b.nBatchCnt = kBatches;
            b.nBatchBoneMax = kBonesPerBatch;
            std::vector<uint32_t> table, counts, offsets;
            for (uint32_t k = 0; k < kBatches; ++k)
            {
                for (uint32_t j = 0; j < kBonesPerBatch; ++j)
                    table.push_back(1 + k * kBonesPerBatch + j);
                counts.push_back(kBonesPerBatch);
                offsets.push_back(static_cast<uint32_t>(uint64_t(scene.pMesh[0].nNumFaces) * k / kBatches));
            }
            b.pnBatches = Heap(table);
            b.pnBatchBoneCnt = Heap(counts);
            b.pnBatchOffset = Heap(offsets);
        }
        scene.InitImpl();
        scene.SetFrame(1.5f);
    }
    STVOMesh& Mesh() { return scene.pMesh[0]; }
};

// A fresh copy of the grid mesh for each iteration, made and freed outside the timing.
class CMeshCopy
{
  public:
    explicit CMeshCopy(const STVOMesh& from) { QMXTModelTVOCopyMesh(from, m_Mesh); }
    ~CMeshCopy()
    {
        // Freed through a scene of its own, which owns arrays once loaded.
        CQMXTModelTVO holder;
        holder.nNumMesh = 1;
        holder.pMesh = static_cast<STVOMesh*>(std::malloc(sizeof(STVOMesh)));
        holder.pMesh[0] = m_Mesh;
        holder.InitImpl();
    }
    STVOMesh& Mesh() { return m_Mesh; }

  private:
    STVOMesh m_Mesh;
};

uint64_t VertexBytes(const STVOMesh& m)
{
    return uint64_t(m.nNumVertex) * 40; // 12 + 12 + 8 + 4 + 4
}

// Runs op on a fresh copy of the prepared mesh in every iteration.
template <typename Prepare, typename Op> void RunOnCopies(benchmark::State& state, Prepare prepare, Op op)
{
    SGridScene grid(static_cast<uint32_t>(state.range(0)), true);
    STVOMesh& base = grid.Mesh();
    prepare(base);
    for (auto _ : state)
    {
        state.PauseTiming();
        {
            CMeshCopy copy(base);
            state.ResumeTiming();
            if (op(copy.Mesh()) != 0)
                state.SkipWithError("transformation failed");
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * base.nNumVertex);
    state.SetBytesProcessed(state.iterations() * VertexBytes(base));
}

void Nothing(STVOMesh&) {}
void Interleaved(STVOMesh& m)
{
    QMXTModelTVOToggleInterleaved(m, 4);
}
void Stripped(STVOMesh& m)
{
    QMXTModelTVOToggleStrips(m);
}
} // namespace

static void BM_Interleave(benchmark::State& state)
{
    RunOnCopies(state, Nothing, [](STVOMesh& m) { return QMXTModelTVOToggleInterleaved(m, 4); });
}
static void BM_DeInterleave(benchmark::State& state)
{
    RunOnCopies(state, Interleaved, [](STVOMesh& m) { return QMXTModelTVOToggleInterleaved(m, 4); });
}
static void BM_DeIndex(benchmark::State& state)
{
    RunOnCopies(state, Interleaved, [](STVOMesh& m) { return QMXTModelTVODeIndex(m); });
}
static void BM_ListToStrips(benchmark::State& state)
{
    RunOnCopies(state, Nothing, [](STVOMesh& m) { return QMXTModelTVOToggleStrips(m); });
}
static void BM_StripsToList(benchmark::State& state)
{
    RunOnCopies(state, Stripped, [](STVOMesh& m) { return QMXTModelTVOToggleStrips(m); });
}
static void BM_DataShred(benchmark::State& state)
{
    static const int32_t swizzle[] = {'x', -'z', 'y', 0};
    RunOnCopies(state, Nothing, [](STVOMesh& m) { return QMXTModelTVODataShred(m.sNormals, m.nNumVertex, swizzle); });
}
static void BM_DataConvertNormalsToShortNorm(benchmark::State& state)
{
    RunOnCopies(state, Nothing,
                [](STVOMesh& m) { return QMXTModelTVODataConvert(m.sNormals, m.nNumVertex, EQMXTDataShortNorm); });
}
static void BM_DataConvertNormalsToDEC3N(benchmark::State& state)
{
    RunOnCopies(state, Nothing,
                [](STVOMesh& m) { return QMXTModelTVODataConvert(m.sNormals, m.nNumVertex, EQMXTDataDEC3N); });
}
static void BM_ScaleAndConvertToShort(benchmark::State& state)
{
    RunOnCopies(state, Nothing, [](STVOMesh& m) { return QMXTModelTVOScaleAndConvertVtxData(m, EQMXTDataShort); });
}
static void BM_ReorderFaces(benchmark::State& state)
{
    RunOnCopies(state, Nothing, [](STVOMesh& m) { return QMXTModelTVOReorderFaces(m, 0, 2, 1); });
}
static void BM_CopyMesh(benchmark::State& state)
{
    SGridScene grid(static_cast<uint32_t>(state.range(0)), true);
    for (auto _ : state)
    {
        CMeshCopy copy(grid.Mesh());
        benchmark::DoNotOptimize(copy.Mesh().sVertex.pData);
    }
    state.SetItemsProcessed(state.iterations() * grid.Mesh().nNumVertex);
    state.SetBytesProcessed(state.iterations() * VertexBytes(grid.Mesh()));
}

// Flattening rebuilds the destination scene (copies included) from the source in each iteration.
static void Flatten(benchmark::State& state, bool skinned, bool interleaved)
{
    SGridScene grid(static_cast<uint32_t>(state.range(0)), skinned);
    if (interleaved)
        QMXTModelTVOToggleInterleaved(grid.Mesh(), 4);
    CQMXTModelTVO dst;
    for (auto _ : state)
        if (QMXTModelTVOFlattenToWorldSpace(grid.scene, dst) != 0)
            state.SkipWithError("flatten failed");
    state.SetItemsProcessed(state.iterations() * grid.Mesh().nNumVertex);
    state.SetBytesProcessed(state.iterations() * VertexBytes(grid.Mesh()));
}
static void BM_FlattenStatic(benchmark::State& state)
{
    Flatten(state, false, false);
}
static void BM_FlattenSkinned(benchmark::State& state)
{
    Flatten(state, true, false);
}
static void BM_FlattenSkinnedInterleaved(benchmark::State& state)
{
    Flatten(state, true, true);
}

// Merging: the argument is the number of materials on each side, each with a texture to rename.
static void BM_MergeMaterials(benchmark::State& state)
{
    const uint32_t count = static_cast<uint32_t>(state.range(0));
    auto fill = [count](CQMXTModelTVO& s, const char* ext) {
        s.nNumMaterial = s.nNumTexture = count;
        s.pMaterial = static_cast<STVOMaterial*>(std::calloc(count, sizeof(STVOMaterial)));
        s.pTexture = static_cast<STVOTexture*>(std::calloc(count, sizeof(STVOTexture)));
        for (uint32_t i = 0; i < count; ++i)
        {
            const std::string name = "material" + std::to_string(i);
            s.pMaterial[i].pszName = strdup(name.c_str());
            s.pTexture[i].pszName = strdup((name + ext).c_str());
            for (int32_t& t : s.pMaterial[i].nIdxTexture)
                t = -1;
            s.pMaterial[i].nIdxTexture[0] = static_cast<int32_t>(i);
        }
        s.InitImpl();
    };
    CQMXTModelTVO src, dst;
    fill(src, ".png");
    fill(dst, ".qmx");
    for (auto _ : state)
        if (QMXTModelTVOMergeMaterials(src, dst) != 0)
            state.SkipWithError("merge failed");
    state.SetItemsProcessed(state.iterations() * count);
}

#define TRANSFORM_BENCH(name) \
    BENCHMARK(name)->Arg(1 << 18)->Arg(1 << 20)->MinWarmUpTime(0.5)->Unit(benchmark::kMillisecond)
TRANSFORM_BENCH(BM_Interleave);
TRANSFORM_BENCH(BM_DeInterleave);
TRANSFORM_BENCH(BM_DeIndex);
TRANSFORM_BENCH(BM_ListToStrips);
TRANSFORM_BENCH(BM_StripsToList);
TRANSFORM_BENCH(BM_DataShred);
TRANSFORM_BENCH(BM_DataConvertNormalsToShortNorm);
TRANSFORM_BENCH(BM_DataConvertNormalsToDEC3N);
TRANSFORM_BENCH(BM_ScaleAndConvertToShort);
TRANSFORM_BENCH(BM_ReorderFaces);
TRANSFORM_BENCH(BM_CopyMesh);
TRANSFORM_BENCH(BM_FlattenStatic);
TRANSFORM_BENCH(BM_FlattenSkinned);
TRANSFORM_BENCH(BM_FlattenSkinnedInterleaved);
BENCHMARK(BM_MergeMaterials)->Arg(1 << 12)->Arg(1 << 16)->Unit(benchmark::kMillisecond);
