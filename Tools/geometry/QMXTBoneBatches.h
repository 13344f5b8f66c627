// Bone batches of a skinned mesh, for matrix-palette skinning with a bounded palette.
//
// Create splits a mesh into batches of at most a fixed number of bones: triangles are regrouped by
// batch, bone indices in the vertices are rewritten to batch-local ones, and vertices shared by
// batches are duplicated. The arrays come from the C heap and are released by Release.
//
// How batches are chosen: every triangle's bone set (bones of its three vertices with a non-zero
// weight, in order of appearance) is collected; the distinct maximal sets, in triangle order, form the
// first batch list (a set already contained in a listed batch adds nothing, a set containing a listed
// batch replaces the first such); then each batch in turn absorbs the later batch that adds the
// fewest new bones, while the sum stays within the limit and adds fewer bones than the limit. Each
// triangle goes to the first batch holding its set; batches are written in list order, triangles in
// original order within a batch. A vertex gets one copy for each distinct batch-local index vector;
// vertices that no triangle uses are dropped.
//
// Cost: O(T) for the triangles and vertices, plus O(D x B) set comparisons for D distinct triangle bone
// sets and B batches, plus O(B^2) merge tests.
#pragma once

#include <cstdint>

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
    //   pnOutVtxNum, ppOutVtx: the new vertex count and vertex array (malloc'ed, nStride bytes a
    //     vertex), handed to the caller, who frees it;
    //   pnIdx: the 32-bit index list, three a triangle, rewritten in place;
    //   nVertexNum, pVertices, nStride: the input vertices (not changed);
    //   nOffsetWeight, eTypeWeight: where and how the bone weights are stored in a vertex;
    //   nOffsetIdx, eTypeIdx: where and how the bone indices are stored;
    //   nTriNum: triangles in pnIdx;
    //   nBoneLimit: the palette size (batch bone limit); nBonesPerVtx: 1 to 4 influences a vertex.
    // Returns eSuccess; eFailed when an argument is invalid (bones per vertex outside 1..4, a zero
    // palette, an index past the vertices, a component outside the stride), or when one triangle
    // needs more bones than the palette holds (a bone index that is negative or not a number counts
    // as one that does not fit); eTooManyVertices when the new vertex block would exceed 4 GiB or
    // cannot be allocated. On failure the index list, *pnOutVtxNum and *ppOutVtx are untouched and
    // the batch fields are empty. Any batches held before the call are released first.
    int Create(uint32_t* pnOutVtxNum, uint8_t** ppOutVtx, uint32_t* pnIdx, uint32_t nVertexNum,
               const uint8_t* pVertices, uint32_t nStride, uint32_t nOffsetWeight, uint32_t eTypeWeight,
               uint32_t nOffsetIdx, uint32_t eTypeIdx, uint32_t nTriNum, uint32_t nBoneLimit,
               uint32_t nBonesPerVtx);

    // Frees the three arrays and clears every field.
    void Release();
};
