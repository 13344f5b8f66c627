// Plain reference versions of the geometry toolkit, for the equality tests only.
//
// Each follows its algorithm step by step with the simplest searches: edges found by a backwards
// scan over every edge built so far, large meshes scanned vertex by vertex, option membership by
// linear search, strip adjacency by comparing every pair of triangles, rand()/qsort from the C
// library, one reallocation per appended vertex, fixed 32-slot records for every vertex. They are
// quadratic and meant for small meshes.
#pragma once

#include <cstdint>
#include <vector>

#include "QMXTVertexData.h"

namespace ref
{
struct SSortResult
{
    int nResult = 0;
    std::vector<uint32_t> idx;
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> blocks;
};
SSortResult GeometrySort(const std::vector<uint8_t>& vertices, const std::vector<uint32_t>& idx, uint32_t nStride,
                         uint32_t nVertexNum, uint32_t nVtxMax, uint32_t nTriMax, uint32_t nFlags);

struct SStripResult
{
    std::vector<uint32_t> idx;
    std::vector<uint32_t> len;
};
SStripResult TriStrip(const std::vector<uint32_t>& idx);
std::vector<uint32_t> TriStripList(const std::vector<uint32_t>& idx);

struct SBatchResult
{
    int nResult = 0;
    uint32_t nVertexNum = 0;
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> idx;
    std::vector<uint32_t> bones, counts, offsets; // the batch table as written
};
SBatchResult BoneBatches(const std::vector<uint8_t>& vertices, uint32_t nVertexNum, const std::vector<uint32_t>& idx,
                         uint32_t nStride, uint32_t nOffsetWeight, uint32_t eTypeWeight, uint32_t nOffsetIdx,
                         uint32_t eTypeIdx, uint32_t nBoneLimit, uint32_t nBonesPerVtx);

struct STangentLayout
{
    uint32_t nStride;
    uint32_t nOffsetPos, nOffsetNor, nOffsetUV, nOffsetTan, nOffsetBin;
    EQMXTDataType eTypePos, eTypeNor, eTypeUV, eTypeTan, eTypeBin;
};
struct STangentResult
{
    int nResult = 0;
    uint32_t nVertexNum = 0;
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> idx;
};
STangentResult TangentSpace(const std::vector<uint8_t>& vertices, uint32_t nVertexNum, const std::vector<uint32_t>& idx,
                            const STangentLayout& layout, float fSplit);
} // namespace ref
