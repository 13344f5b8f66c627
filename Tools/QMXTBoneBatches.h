// Bone batches of a skinned mesh, for matrix-palette skinning with a bounded palette.
//
// Create splits a mesh into batches of at most a fixed number of bones: triangles are regrouped by
// batch, bone indices in the vertices are rewritten to batch-local ones, and vertices shared by
// batches are duplicated. The arrays come from the C heap and are released by Release.
#pragma once

#include <cstdint>
#include <cstdlib>

class CQMXTBoneBatches
{
  public:
    uint32_t* pnBatches = nullptr;      // batch count x batch bone maximum bone indices
    uint32_t* pnBatchBoneCnt = nullptr; // bones in each batch
    uint32_t* pnBatchOffset = nullptr;  // first triangle of each batch in the rewritten index list
    uint32_t nBatchBoneMax = 0;         // batch bone limit
    uint32_t nBatchCnt = 0;             // batch count

    // Result codes of Create.
    enum : int
    {
        eSuccess = 0,
        eFailed = 1,
        eTooManyVertices = 2
    };

    // Splits a skinned mesh into batches. Arguments, in order:
    //   pnOutVtxNum, ppOutVtx: the rewritten vertex count and vertex array (malloc'ed, stride bytes
    //     a vertex), handed to the caller;
    //   pwIdx: the 32-bit index list, rewritten in place; nIdxNum its length (3 a triangle);
    //   nVertexNum, pVertices, nStride: the input vertices;
    //   nOffsetWeight, eTypeWeight: where and how the bone weights are stored in a vertex;
    //   nOffsetIdx, eTypeIdx: where and how the bone indices are stored;
    //   nBatchBoneMax: the palette size; nBonesPerVtx: 1 to 4 influences a vertex.
    // Returns eSuccess, eFailed (nothing written to pwIdx) or eTooManyVertices.
    int Create(uint32_t* pnOutVtxNum, uint8_t** ppOutVtx, uint32_t* pwIdx, uint32_t nIdxNum,
               uint32_t nVertexNum, const uint8_t* pVertices, uint32_t nStride, uint32_t nOffsetWeight,
               uint32_t eTypeWeight, uint32_t nOffsetIdx, uint32_t eTypeIdx, uint32_t nBatchBoneMax,
               uint32_t nBonesPerVtx);

    // Frees the three arrays and clears every field.
    void Release()
    {
        std::free(pnBatches);
        std::free(pnBatchBoneCnt);
        std::free(pnBatchOffset);
        *this = CQMXTBoneBatches();
    }
};
