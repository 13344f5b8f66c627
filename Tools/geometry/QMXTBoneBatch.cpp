// Bone batching: splits a skinned mesh into palettes of at most a fixed number of bones.
//
// The batch choice works on distinct triangle bone sets: a set met again later adds nothing to the
// batch list (the list always keeps a superset of every set already seen), so only the first triangle
// of each distinct set is compared against the list. The vertex pass remembers, per vertex, the copy
// chosen in the current batch, and the output buffer grows geometrically.
#include "QMXTBoneBatches.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "QMXTVertexData.h"
#include "QMXTLargeArray.h"

namespace
{
constexpr uint32_t kNone = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kSlots = eQMXTMaxBonesPerVertex; // influences a vertex
constexpr uint32_t kMaxTriangleBones = 3 * kSlots;

// Weights and indices of one vertex as the vertex reader returns them.
struct SVertexBones
{
    float fWeight[kSlots];
    float fIndex[kSlots];
};

// A stored bone index as a palette entry; false for a value that names no bone.
bool ToBone(float value, uint32_t& bone)
{
    if (!(value >= 0.0f) || value >= 4294967296.0f)
        return false;
    bone = static_cast<uint32_t>(value);
    return true;
}

// The bones of one triangle in order of appearance, and the same sorted for comparisons.
struct STriangleBones
{
    uint32_t n = 0;
    uint32_t pnOrdered[kMaxTriangleBones];
    uint32_t pnSorted[kMaxTriangleBones];
};

// Collects the bones with a non-zero weight of a triangle's vertices; false when one does not fit.
bool CollectTriangleBones(const SVertexBones* pVtx, const uint32_t* pnTri, uint32_t nBonesPerVtx, uint32_t nMax,
                          STriangleBones& set)
{
    set.n = 0;
    for (int c = 0; c < 3; ++c)
    {
        const SVertexBones& v = pVtx[pnTri[c]];
        for (uint32_t k = 0; k < nBonesPerVtx; ++k)
        {
            if (v.fWeight[k] == 0.0f)
                continue;
            uint32_t bone;
            if (!ToBone(v.fIndex[k], bone))
                return false;
            if (std::find(set.pnOrdered, set.pnOrdered + set.n, bone) != set.pnOrdered + set.n)
                continue;
            if (set.n >= nMax)
                return false;
            set.pnOrdered[set.n++] = bone;
        }
    }
    std::copy(set.pnOrdered, set.pnOrdered + set.n, set.pnSorted);
    std::sort(set.pnSorted, set.pnSorted + set.n);
    return true;
}

// Distinct triangle bone sets, by sorted content, in order of first appearance.
class CDistinctSets
{
  public:
    // Returns the id of the set, adding it when it is new.
    uint32_t Intern(const STriangleBones& set)
    {
        if (m_nSlots.size() < 2 * (m_nStart.size() + 1))
            Grow();
        const uint32_t mask = static_cast<uint32_t>(m_nSlots.size() - 1);
        for (uint32_t h = Hash(set.pnSorted, set.n) & mask;; h = (h + 1) & mask)
        {
            const uint32_t id = m_nSlots[h];
            if (id == kNone)
            {
                m_nSlots[h] = Add(set);
                return m_nSlots[h];
            }
            if (Count(id) == set.n && std::equal(set.pnSorted, set.pnSorted + set.n, Sorted(id)))
                return id;
        }
    }

    uint32_t Size() const { return static_cast<uint32_t>(m_nStart.size()); }
    uint32_t Count(uint32_t id) const { return m_nCount[id]; }
    const uint32_t* Sorted(uint32_t id) const { return m_nSorted.data() + m_nStart[id]; }
    const uint32_t* Ordered(uint32_t id) const { return m_nOrdered.data() + m_nStart[id]; }

  private:
    static uint32_t Hash(const uint32_t* p, uint32_t n)
    {
        uint32_t h = 2166136261u ^ n;
        for (uint32_t i = 0; i < n; ++i)
            h = (h ^ p[i]) * 16777619u;
        return h ^ (h >> 15);
    }

    uint32_t Add(const STriangleBones& set)
    {
        m_nStart.push_back(static_cast<uint32_t>(m_nSorted.size()));
        m_nCount.push_back(set.n);
        m_nSorted.insert(m_nSorted.end(), set.pnSorted, set.pnSorted + set.n);
        m_nOrdered.insert(m_nOrdered.end(), set.pnOrdered, set.pnOrdered + set.n);
        return static_cast<uint32_t>(m_nStart.size() - 1);
    }

    void Grow()
    {
        std::vector<uint32_t> slots(std::max<size_t>(64, m_nSlots.size() * 2), kNone);
        const uint32_t mask = static_cast<uint32_t>(slots.size() - 1);
        for (uint32_t id = 0; id < Size(); ++id)
        {
            uint32_t h = Hash(Sorted(id), Count(id)) & mask;
            while (slots[h] != kNone)
                h = (h + 1) & mask;
            slots[h] = id;
        }
        m_nSlots.swap(slots);
    }

    std::vector<uint32_t> m_nSlots;
    std::vector<uint32_t> m_nStart, m_nCount, m_nSorted, m_nOrdered;
};

// A set of bones in insertion order, with a sorted copy for the set comparisons.
struct SBatch
{
    std::vector<uint32_t> nBones;
    std::vector<uint32_t> nSorted;

    void Assign(const uint32_t* pnOrdered, const uint32_t* pnSorted, uint32_t n)
    {
        nBones.assign(pnOrdered, pnOrdered + n);
        nSorted.assign(pnSorted, pnSorted + n);
    }
    bool Contains(const uint32_t* pnSorted, uint32_t n) const
    {
        return std::includes(nSorted.begin(), nSorted.end(), pnSorted, pnSorted + n);
    }
    bool IsContainedIn(const uint32_t* pnSorted, uint32_t n) const
    {
        return std::includes(pnSorted, pnSorted + n, nSorted.begin(), nSorted.end());
    }
    // Bones of other that this batch lacks, or -1 when the union would exceed nMax.
    int64_t TestMerge(const SBatch& other, uint32_t nMax) const
    {
        size_t missing = 0;
        auto it = nSorted.begin();
        for (uint32_t bone : other.nSorted)
        {
            it = std::lower_bound(it, nSorted.end(), bone);
            if (it == nSorted.end() || *it != bone)
                ++missing;
        }
        return nBones.size() + missing > nMax ? -1 : static_cast<int64_t>(missing);
    }
    void Merge(const SBatch& other)
    {
        for (uint32_t bone : other.nBones)
        {
            auto it = std::lower_bound(nSorted.begin(), nSorted.end(), bone);
            if (it != nSorted.end() && *it == bone)
                continue;
            nSorted.insert(it, bone);
            nBones.push_back(bone);
        }
    }
    // Turns a vertex's bone indices into positions in this batch; zero weights give 0, bones the
    // batch lacks keep their index.
    void LocalIndices(float fIndex[kSlots], const float fWeight[kSlots], uint32_t nBonesPerVtx) const
    {
        for (uint32_t k = 0; k < nBonesPerVtx; ++k)
        {
            if (fWeight[k] == 0.0f)
            {
                fIndex[k] = 0.0f;
                continue;
            }
            for (size_t p = 0; p < nBones.size(); ++p)
                if (static_cast<float>(nBones[p]) == fIndex[k])
                {
                    fIndex[k] = static_cast<float>(p);
                    break;
                }
        }
    }
};

// Distinct sets in first-appearance order give the first batch list: a set inside a listed batch
// adds nothing, a set holding a listed batch replaces the first such, any other set is appended.
std::vector<SBatch> DistinctBatches(const CDistinctSets& sets)
{
    std::vector<SBatch> list;
    for (uint32_t id = 0; id < sets.Size(); ++id)
    {
        const uint32_t* sorted = sets.Sorted(id);
        const uint32_t n = sets.Count(id);
        bool placed = false;
        for (SBatch& batch : list)
        {
            if (batch.Contains(sorted, n))
            {
                placed = true;
                break;
            }
            if (batch.IsContainedIn(sorted, n))
            {
                batch.Assign(sets.Ordered(id), sorted, n);
                placed = true;
                break;
            }
        }
        if (!placed)
        {
            list.emplace_back();
            list.back().Assign(sets.Ordered(id), sorted, n);
        }
    }
    return list;
}

// Each batch in turn absorbs the later batch that adds the fewest bones (the earliest on a tie) for
// as long as that number is below the limit and the union fits.
void MergeBatches(std::vector<SBatch>& list, uint32_t nMax)
{
    for (size_t a = 0; a < list.size(); ++a)
    {
        for (;;)
        {
            size_t best = 0;
            int64_t bestAdded = -1;
            for (size_t b = a + 1; b < list.size(); ++b)
            {
                const int64_t added = list[a].TestMerge(list[b], nMax);
                if (added != -1 && (bestAdded == -1 || added < bestAdded))
                {
                    best = b;
                    bestAdded = added;
                }
            }
            if (bestAdded == -1 || bestAdded >= static_cast<int64_t>(nMax))
                break;
            list[a].Merge(list[best]);
            list.erase(list.begin() + static_cast<std::ptrdiff_t>(best));
        }
    }
}

struct SFreeDeleter
{
    void operator()(void* p) const { std::free(p); }
};

// The new vertex block: whole records copied from the input, grown geometrically.
class CVertexBuffer
{
  public:
    CVertexBuffer(uint32_t nStride, uint32_t nExpected) : m_nStride(nStride)
    {
        // Usually about as many vertices come out as went in, plus a few copies: start with room for
        // those (pages not written are not touched).
        const uint64_t cap = std::min<uint64_t>(uint64_t(nExpected) + nExpected / 4 + 64, 0xFFFFFFFFu / nStride);
        if (void* p = QMXTLargeAlloc(cap * nStride))
        {
            m_pData.reset(static_cast<uint8_t*>(p));
            m_nCapacity = static_cast<uint32_t>(cap);
        }
    }

    // Appends a copy of the record; null when the block would pass 4 GiB or memory runs out.
    uint8_t* Append(const uint8_t* pRecord)
    {
        if (static_cast<uint64_t>(m_nCount + 1) * m_nStride > 0xFFFFFFFFu)
            return nullptr;
        if (m_nCount == m_nCapacity)
        {
            const uint64_t capacity = std::max<uint64_t>(64, uint64_t(m_nCapacity) * 2);
            const uint64_t cap = std::min<uint64_t>(capacity, 0xFFFFFFFFu / m_nStride);
            void* p = QMXTLargeRealloc(m_pData.get(), cap * m_nStride);
            if (!p)
                return nullptr;
            m_pData.release();
            m_pData.reset(static_cast<uint8_t*>(p));
            m_nCapacity = static_cast<uint32_t>(cap);
        }
        uint8_t* out = m_pData.get() + size_t(m_nCount) * m_nStride;
        std::memcpy(out, pRecord, m_nStride);
        ++m_nCount;
        return out;
    }
    uint32_t Size() const { return m_nCount; }
    // Hands the block over, trimmed to its size (null when empty).
    uint8_t* Surrender()
    {
        if (m_nCount == 0)
            return nullptr;
        if (void* p = QMXTLargeRealloc(m_pData.get(), size_t(m_nCount) * m_nStride))
        {
            m_pData.release();
            m_pData.reset(static_cast<uint8_t*>(p));
        }
        return m_pData.release();
    }

  private:
    std::unique_ptr<uint8_t, SFreeDeleter> m_pData;
    uint32_t m_nStride;
    uint32_t m_nCount = 0;
    uint32_t m_nCapacity = 0;
};

bool ComponentFits(uint32_t offset, uint32_t type, uint32_t count, uint32_t stride)
{
    if (type == EQMXTDataNone || type >= EQMXTDataTypeCount)
        return false;
    return uint64_t(offset) + QMXTModelTVODataElementBytes(type, count) <= stride;
}

template <typename T> T* AllocArray(size_t n)
{
    return static_cast<T*>(QMXTLargeCalloc(n ? n : 1, sizeof(T)));
}
} // namespace

void CQMXTBoneBatches::Release()
{
    std::free(pnBatches);
    std::free(pnBatchBoneCnt);
    std::free(pnBatchOffset);
    *this = CQMXTBoneBatches();
}

int CQMXTBoneBatches::Create(uint32_t* pnOutVtxNum, uint8_t** ppOutVtx, uint32_t* pnIdx, uint32_t nVertexNum,
                             const uint8_t* pVertices, uint32_t nStride, uint32_t nOffsetWeight, uint32_t eTypeWeight,
                             uint32_t nOffsetIdx, uint32_t eTypeIdx, uint32_t nTriNum, uint32_t nBoneLimit,
                             uint32_t nBonesPerVtx)
{
    Release();
    if (nBonesPerVtx < 1 || nBonesPerVtx > kSlots || nBoneLimit == 0 || !pnOutVtxNum || !ppOutVtx)
        return eFailed;
    if ((nTriNum && !pnIdx) || (nVertexNum && !pVertices) || nStride == 0)
        return eFailed;
    if (!ComponentFits(nOffsetWeight, eTypeWeight, nBonesPerVtx, nStride) ||
        !ComponentFits(nOffsetIdx, eTypeIdx, nBonesPerVtx, nStride))
        return eFailed;
    const size_t nIdxNum = size_t(nTriNum) * 3;
    for (size_t i = 0; i < nIdxNum; ++i)
        if (pnIdx[i] >= nVertexNum)
            return eFailed;

    try
    {
        // The weights and indices of every vertex in use, read once.
        QMXTLargeVector<SVertexBones> vtx(nVertexNum);
        {
            QMXTLargeVector<uint8_t> read(nVertexNum, 0);
            for (size_t i = 0; i < nIdxNum; ++i)
            {
                const uint32_t v = pnIdx[i];
                if (read[v])
                    continue;
                read[v] = 1;
                const uint8_t* rec = pVertices + size_t(v) * nStride;
                QMXTVertexRead(vtx[v].fWeight, rec + nOffsetWeight, eTypeWeight, nBonesPerVtx);
                QMXTVertexRead(vtx[v].fIndex, rec + nOffsetIdx, eTypeIdx, nBonesPerVtx);
            }
        }

        // Triangle bone sets, interned by content.
        CDistinctSets sets;
        QMXTLargeVector<uint32_t> triSet(nTriNum);
        STriangleBones set;
        for (uint32_t t = 0; t < nTriNum; ++t)
        {
            if (!CollectTriangleBones(vtx.data(), pnIdx + size_t(t) * 3, nBonesPerVtx, nBoneLimit, set))
                return eFailed;
            triSet[t] = sets.Intern(set);
        }

        std::vector<SBatch> list = DistinctBatches(sets);
        MergeBatches(list, nBoneLimit);

        // Each distinct set, and so each triangle, goes to the first batch holding it.
        std::vector<uint32_t> setBatch(sets.Size());
        for (uint32_t id = 0; id < sets.Size(); ++id)
        {
            uint32_t b = 0;
            while (!list[b].Contains(sets.Sorted(id), sets.Count(id)))
                ++b;
            setBatch[id] = b;
        }
        const uint32_t nBatches = static_cast<uint32_t>(list.size());
        std::vector<uint32_t> batchStart(nBatches + 1, 0);
        for (uint32_t t = 0; t < nTriNum; ++t)
            ++batchStart[setBatch[triSet[t]] + 1];
        for (uint32_t b = 0; b < nBatches; ++b)
            batchStart[b + 1] += batchStart[b];
        QMXTLargeVector<uint32_t> order(nTriNum);
        {
            std::vector<uint32_t> fill(batchStart.begin(), batchStart.end() - 1);
            for (uint32_t t = 0; t < nTriNum; ++t)
                order[fill[setBatch[triSet[t]]]++] = t;
        }

        // Vertex copies: one per distinct batch-local index vector of a vertex, found by the stored
        // vector; the copy chosen in the current batch is remembered per vertex.
        CVertexBuffer out(nStride, nVertexNum);
        // Per vertex its first and last copy and the copy chosen in the current batch (the last two
        // only meaningful once the first or the batch is set).
        QMXTLargeVector<uint32_t> firstCopy(nVertexNum, kNone), memoBatch(nVertexNum, kNone), nextCopy;
        QMXTLargeVector<uint32_t> lastCopy(nVertexNum), memoCopy(nVertexNum);
        QMXTLargeVector<float> stored; // four floats a copy
        stored.reserve((size_t(nVertexNum) + nVertexNum / 4) * kSlots);
        nextCopy.reserve(size_t(nVertexNum) + nVertexNum / 4);
        QMXTLargeVector<uint32_t> newIdx(nIdxNum);
        for (uint32_t b = 0; b < nBatches; ++b)
        {
            for (uint32_t k = batchStart[b]; k < batchStart[b + 1]; ++k)
            {
                const uint32_t t = order[k];
                for (int c = 0; c < 3; ++c)
                {
                    const uint32_t v = pnIdx[size_t(t) * 3 + c];
                    if (memoBatch[v] != b)
                    {
                        float local[kSlots];
                        std::memcpy(local, vtx[v].fIndex, sizeof local);
                        list[b].LocalIndices(local, vtx[v].fWeight, nBonesPerVtx);
                        uint32_t copy = firstCopy[v];
                        while (copy != kNone && !std::equal(local, local + kSlots, &stored[size_t(copy) * kSlots]))
                            copy = nextCopy[copy];
                        if (copy == kNone)
                        {
                            uint8_t* rec = out.Append(pVertices + size_t(v) * nStride);
                            if (!rec)
                                return eTooManyVertices;
                            copy = out.Size() - 1;
                            QMXTVertexWrite(rec + nOffsetIdx, eTypeIdx, nBonesPerVtx, local);
                            float back[kSlots];
                            QMXTVertexRead(back, rec + nOffsetIdx, eTypeIdx, nBonesPerVtx);
                            std::memcpy(stored.grow(kSlots), back, sizeof back);
                            nextCopy.push_back(kNone);
                            (firstCopy[v] == kNone ? firstCopy[v] : nextCopy[lastCopy[v]]) = copy;
                            lastCopy[v] = copy;
                        }
                        memoBatch[v] = b;
                        memoCopy[v] = copy;
                    }
                    newIdx[size_t(k) * 3 + c] = memoCopy[v];
                }
            }
        }

        uint32_t* bones = AllocArray<uint32_t>(size_t(nBatches) * nBoneLimit);
        uint32_t* counts = AllocArray<uint32_t>(nBatches);
        uint32_t* offsets = AllocArray<uint32_t>(nBatches);
        if (!bones || !counts || !offsets)
        {
            std::free(bones);
            std::free(counts);
            std::free(offsets);
            return eFailed;
        }
        for (uint32_t b = 0; b < nBatches; ++b)
        {
            std::copy(list[b].nBones.begin(), list[b].nBones.end(), bones + size_t(b) * nBoneLimit);
            counts[b] = static_cast<uint32_t>(list[b].nBones.size());
            offsets[b] = batchStart[b];
        }
        pnBatches = bones;
        pnBatchBoneCnt = counts;
        pnBatchOffset = offsets;
        nBatchBoneMax = nBoneLimit;
        nBatchCnt = nBatches;

        std::copy(newIdx.begin(), newIdx.end(), pnIdx);
        *pnOutVtxNum = out.Size();
        *ppOutVtx = out.Surrender();
        return eSuccess;
    }
    catch (const std::bad_alloc&)
    {
        Release();
        return eFailed;
    }
}
