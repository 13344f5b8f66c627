#include "TVOSceneCheck.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <vector>

#include "TVOMeshLayout.h"

namespace
{
std::string Say(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Say(const char* format, ...)
{
    char line[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    return line;
}

// Parents in range and no loop: walking up from any node ends at a root within nNumNode steps.
std::string CheckNodes(const STVOScene& s)
{
    for (uint32_t i = 0; i < s.nNumNode; ++i)
    {
        const int32_t parent = s.pNode[i].nIdxParent;
        if (parent >= 0 && static_cast<uint32_t>(parent) >= s.nNumNode)
            return Say("node %u: parent %d is not one of the %u nodes", i, parent, s.nNumNode);
    }
    std::vector<uint8_t> state(s.nNumNode, 0); // 0 unknown, 1 on the current walk, 2 reaches a root
    for (uint32_t i = 0; i < s.nNumNode; ++i)
    {
        std::vector<uint32_t> walk;
        int32_t n = static_cast<int32_t>(i);
        while (n >= 0 && state[n] == 0)
        {
            state[n] = 1;
            walk.push_back(static_cast<uint32_t>(n));
            n = s.pNode[n].nIdxParent;
        }
        if (n >= 0 && state[n] == 1)
            return Say("node %u: its parents form a loop", i);
        for (uint32_t w : walk)
            state[w] = 2;
    }
    for (uint32_t i = 0; i < s.nNumMeshNode; ++i)
    {
        const int32_t idx = s.pNode[i].nIdx;
        if (idx < 0 || static_cast<uint32_t>(idx) >= s.nNumMesh)
            return Say("node %u: mesh %d is not one of the %u meshes", i, idx, s.nNumMesh);
    }
    for (uint32_t c = 0; c < s.nNumCamera; ++c)
    {
        const int32_t idx = s.pNode[s.nNumMeshNode + s.nNumLight + c].nIdx;
        if (idx < 0 || static_cast<uint32_t>(idx) >= s.nNumCamera)
            return Say("camera node %u: camera %d is not one of the %u cameras", c, idx, s.nNumCamera);
    }
    return {};
}

std::string CheckStreams(const STVOMesh& m, uint32_t i)
{
    if (m.nNumFaces && !TVOStreamPresent(m, m.sVertex))
        return Say("mesh %u: triangles but no positions", i);
    const CTVOData* streams[] = {&m.sVertex, &m.sNormals, &m.sVtxColours, &m.sBoneIdx, &m.sBoneWeight};
    for (const CTVOData* d : streams)
        if (d->n > 4 && QMXTModelTVODataTypeComponentCount(d->eType) == 1)
            return Say("mesh %u: a vertex stream of %u components (at most 4)", i, d->n);
    for (uint32_t u = 0; m.psUVW && u < m.nNumUVW; ++u)
        if (m.psUVW[u].n > 4 && QMXTModelTVODataTypeComponentCount(m.psUVW[u].eType) == 1)
            return Say("mesh %u: a UVW stream of %u components (at most 4)", i, m.psUVW[u].n);
    return {};
}

std::string CheckBatches(const STVOScene& s, const STVOMesh& m, uint32_t i)
{
    const CQMXTBoneBatches& b = m.sBoneBatch;
    for (uint32_t k = 0; k < b.nBatchCnt; ++k)
    {
        if (b.pnBatchOffset[k] > m.nNumFaces || (k && b.pnBatchOffset[k] < b.pnBatchOffset[k - 1]))
            return Say("mesh %u: bone batch %u starts at triangle %u, out of order or past the %u triangles",
                       i, k, b.pnBatchOffset[k], m.nNumFaces);
        if (b.pnBatchBoneCnt[k] > b.nBatchBoneMax)
            return Say("mesh %u: bone batch %u has %u bones for a palette of %u", i, k, b.pnBatchBoneCnt[k],
                       b.nBatchBoneMax);
        for (uint32_t j = 0; j < b.pnBatchBoneCnt[k]; ++j)
            if (b.pnBatches[k * b.nBatchBoneMax + j] >= s.nNumNode)
                return Say("mesh %u: bone batch %u names node %u of %u", i, k,
                           b.pnBatches[k * b.nBatchBoneMax + j], s.nNumNode);
    }
    return {};
}

// Every bone index of every drawn vertex is below the bone count of the batch it is drawn with.
std::string CheckBoneIndices(const STVOScene& s, const STVOMesh& m, uint32_t i)
{
    if (!TVOStreamPresent(m, m.sBoneIdx) || !TVOStreamPresent(m, m.sBoneWeight))
        return {};
    const CQMXTBoneBatches& b = m.sBoneBatch;
    const uint32_t components = std::min<uint32_t>(m.sBoneIdx.n, eQMXTMaxBonesPerVertex);
    for (const SDrawRange& r : TVODrawRanges(m))
    {
        const uint32_t batchBones = b.nBatchCnt ? b.pnBatchBoneCnt[r.nBatch] : s.nNumNode;
        for (uint32_t k = r.nFirst; k < r.nFirst + r.nCount; ++k)
        {
            const uint32_t v = TVOMeshVertexAt(m, k);
            float bones[4];
            QMXTVertexRead(bones, TVOStreamElement(m, m.sBoneIdx, v), m.sBoneIdx.eType, m.sBoneIdx.n);
            for (uint32_t c = 0; c < components; ++c)
                if (!(bones[c] >= 0.0f && bones[c] + 0.5f < static_cast<float>(batchBones)))
                    return Say("mesh %u: vertex %u uses bone %g beyond the palette of %u", i, v,
                               static_cast<double>(bones[c]), batchBones);
        }
    }
    return {};
}
} // namespace

std::string TVOCheckSceneForDrawing(const STVOScene& s)
{
    std::string problem = CheckNodes(s);
    for (uint32_t i = 0; problem.empty() && i < s.nNumMesh; ++i)
    {
        const STVOMesh& m = s.pMesh[i];
        problem = CheckStreams(m, i);
        if (problem.empty())
            problem = CheckBatches(s, m, i);
        if (problem.empty())
            problem = CheckBoneIndices(s, m, i);
    }
    return problem;
}
