// Triangle strips: adjacency, strip growth with undo, five seeded runs, and the strip writers.
//
// Adjacency pairs each half-edge with the earliest free opposite half-edge of an earlier triangle, in
// triangle order; half-edges are bucketed by their lower vertex and sorted by the other, so a lookup
// touches only the triangles on that edge. The pseudo-random order reproduces the C library's rand()
// sequence after srand(seed) and its qsort (a top-down merge sort, left half n / 2, ties to the left)
// with the wrapped 32-bit key difference as comparison, without touching the caller's rand() state.
#include "QMXTTriStrip.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace
{
constexpr int32_t kNone = -1;

// The additive feedback generator behind the C library's rand(): 31 words of state, taps 3 and 31,
// seeded by the 16807 multiplier and warmed up by 310 draws.
class CLibcRandom
{
  public:
    explicit CLibcRandom(uint32_t seed)
    {
        int32_t word = static_cast<int32_t>(seed == 0 ? 1 : seed);
        m_nState[0] = static_cast<uint32_t>(word);
        for (int i = 1; i < kDegree; ++i)
        {
            const int32_t hi = word / 127773, lo = word % 127773;
            word = 16807 * lo - 2836 * hi;
            if (word < 0)
                word += 2147483647;
            m_nState[i] = static_cast<uint32_t>(word);
        }
        for (int i = 0; i < 10 * kDegree; ++i)
            Next();
    }

    uint32_t Next()
    {
        m_nState[m_nFront] += m_nState[m_nRear];
        const uint32_t result = m_nState[m_nFront] >> 1;
        m_nFront = m_nFront + 1 == kDegree ? 0 : m_nFront + 1;
        m_nRear = m_nRear + 1 == kDegree ? 0 : m_nRear + 1;
        return result;
    }

  private:
    static constexpr int kDegree = 31;
    uint32_t m_nState[kDegree];
    int m_nFront = 3;
    int m_nRear = 0;
};

struct SKey
{
    uint32_t nKey;
    uint32_t nTri;
};

int CompareKeys(const SKey& a, const SKey& b)
{
    return static_cast<int32_t>(a.nKey - b.nKey);
}

// Merge sort with the split and tie rule of the C library's qsort, so an inconsistent comparison
// (the wrapped difference) orders exactly as qsort does.
void MergeSort(SKey* b, size_t n, SKey* tmp)
{
    if (n <= 1)
        return;
    size_t n1 = n / 2, n2 = n - n1;
    SKey* b1 = b;
    SKey* b2 = b + n1;
    MergeSort(b1, n1, tmp);
    MergeSort(b2, n2, tmp);
    SKey* t = tmp;
    while (n1 > 0 && n2 > 0)
    {
        if (CompareKeys(*b1, *b2) <= 0)
        {
            *t++ = *b1++;
            --n1;
        }
        else
        {
            *t++ = *b2++;
            --n2;
        }
    }
    if (n1 > 0)
        std::memcpy(t, b1, n1 * sizeof(SKey));
    std::memcpy(b, tmp, (n - n2) * sizeof(SKey));
}

bool IsDegenerate(const uint32_t* tri)
{
    return tri[0] == tri[1] || tri[1] == tri[2] || tri[0] == tri[2];
}

// Neighbours across edges 0 (corners 0-1), 1 (1-2) and 2 (2-0) of every triangle, kNone for none.
std::vector<int32_t> BuildAdjacency(const uint32_t* pnInputIdx, uint32_t nTri)
{
    std::vector<int32_t> adj(size_t(nTri) * 3, kNone);
    const size_t nIdx = size_t(nTri) * 3;
    uint32_t nMaxVertex = 0;
    for (size_t i = 0; i < nIdx; ++i)
        nMaxVertex = std::max(nMaxVertex, pnInputIdx[i]);
    // Sparse vertex numbers are renumbered densely (same equalities) to keep the buckets small.
    const uint32_t* pnIdx = pnInputIdx;
    std::vector<uint32_t> dense;
    if (nMaxVertex > nIdx + 64)
    {
        std::vector<uint32_t> used(pnInputIdx, pnInputIdx + nIdx);
        std::sort(used.begin(), used.end());
        used.erase(std::unique(used.begin(), used.end()), used.end());
        dense.resize(nIdx);
        for (size_t i = 0; i < nIdx; ++i)
            dense[i] = uint32_t(std::lower_bound(used.begin(), used.end(), pnInputIdx[i]) - used.begin());
        pnIdx = dense.data();
        nMaxVertex = uint32_t(used.size() - 1);
    }
    // Half-edges bucketed by lower vertex, each bucket sorted by (upper vertex, half-edge).
    std::vector<uint32_t> start(size_t(nMaxVertex) + 2, 0);
    for (uint32_t t = 0; t < nTri; ++t)
        if (!IsDegenerate(pnIdx + size_t(t) * 3))
            for (int e = 0; e < 3; ++e)
                ++start[std::min(pnIdx[size_t(t) * 3 + e], pnIdx[size_t(t) * 3 + (e + 1) % 3]) + 1];
    for (size_t v = 1; v < start.size(); ++v)
        start[v] += start[v - 1];
    struct SHalf
    {
        uint32_t nUpper;
        uint32_t nHalf;
        bool operator<(const SHalf& o) const { return nUpper != o.nUpper ? nUpper < o.nUpper : nHalf < o.nHalf; }
    };
    std::vector<SHalf> half(start.back());
    {
        std::vector<uint32_t> fill(start.begin(), start.end() - 1);
        for (uint32_t t = 0; t < nTri; ++t)
            if (!IsDegenerate(pnIdx + size_t(t) * 3))
                for (uint32_t e = 0; e < 3; ++e)
                {
                    const uint32_t a = pnIdx[size_t(t) * 3 + e], b = pnIdx[size_t(t) * 3 + (e + 1) % 3];
                    half[fill[std::min(a, b)]++] = {std::max(a, b), t * 3 + e};
                }
    }
    for (size_t v = 0; v + 1 < start.size(); ++v)
        if (start[v + 1] - start[v] > 1)
            std::sort(half.begin() + start[v], half.begin() + start[v + 1]);

    // In triangle order, each edge a->b takes the earliest free b->a of an earlier triangle that is not
    // already its neighbour across another edge.
    for (uint32_t i = 0; i < nTri; ++i)
    {
        const uint32_t* tri = pnIdx + size_t(i) * 3;
        if (IsDegenerate(tri))
            continue;
        for (int e = 0; e < 3; ++e)
        {
            const uint32_t a = tri[e], b = tri[(e + 1) % 3];
            const SHalf* first = half.data() + start[std::min(a, b)];
            const SHalf* last = half.data() + start[std::min(a, b) + 1];
            const SHalf* it = std::lower_bound(first, last, SHalf{std::max(a, b), 0});
            for (; it != last && it->nUpper == std::max(a, b) && it->nHalf / 3 < i; ++it)
            {
                const uint32_t h = it->nHalf, j = h / 3;
                if (pnIdx[h] != b || adj[h] != kNone)
                    continue;
                if ((e > 0 && adj[size_t(i) * 3] == int32_t(j)) || (e > 1 && adj[size_t(i) * 3 + 1] == int32_t(j)))
                    continue;
                adj[size_t(i) * 3 + e] = static_cast<int32_t>(j);
                adj[h] = static_cast<int32_t>(i);
                break;
            }
        }
    }
    return adj;
}

// One strip building run over fixed adjacency.
class CStripBuilder
{
  public:
    CStripBuilder(const uint32_t* pnIdx, uint32_t nTri, const std::vector<int32_t>& adj)
        : m_pnIdx(pnIdx), m_nTri(nTri), m_adj(adj), m_cur(nTri), m_cemented(nTri), m_inWalk(nTri, 0),
          m_chainMark(size_t(nTri) * 3, kNone), m_backEdge(size_t(nTri) * 3, 0)
    {
        // For each edge with a neighbour, the edge by which that neighbour is adjacent back.
        for (uint32_t t = 0; t < nTri; ++t)
            for (int e = 0; e < 3; ++e)
                if (adj[size_t(t) * 3 + e] != kNone)
                    m_backEdge[size_t(t) * 3 + e] =
                        static_cast<uint8_t>(EdgeFromAdjTri(uint32_t(adj[size_t(t) * 3 + e]), int32_t(t)));
    }

    // Whether, starting from the strips the edge pass left, a whole improvement pass with the given
    // threshold changed nothing: then it changes nothing in any order, so another run can skip it.
    struct SUnchangedPasses
    {
        bool bKnown[2] = {false, false};
        bool bUnchanged[2] = {false, false};
    };

    // Writes strips in the order of their first triangles; returns the strip count.
    uint32_t Output(std::vector<uint32_t>& idx, std::vector<uint32_t>& len) const
    {
        idx.clear();
        len.clear();
        for (uint32_t t = 0; t < m_nTri; ++t)
        {
            if (m_cur[t].prev != kNone)
                continue;
            const uint32_t* tri = m_pnIdx + size_t(t) * 3;
            if (m_cur[t].next == kNone)
            {
                idx.insert(idx.end(), tri, tri + 3);
                len.push_back(1);
                continue;
            }
            static const int kLead[3][2] = {{2, 0}, {0, 1}, {1, 2}};
            const int e = std::max(0, EdgeFromAdjTri(t, m_cur[t].next));
            idx.push_back(tri[kLead[e][0]]);
            idx.push_back(tri[kLead[e][1]]);
            uint32_t n = 0;
            for (int32_t s = static_cast<int32_t>(t); s != kNone; s = m_cur[s].next, ++n)
                idx.push_back(ThirdVertex(m_pnIdx + size_t(s) * 3, idx[idx.size() - 2], idx.back()));
            len.push_back(n);
        }
        return static_cast<uint32_t>(len.size());
    }

  private:
    struct SLink
    {
        int32_t prev = kNone;
        int32_t next = kNone;
        bool wind = false;
    };

    // The corner that is neither of the two indices written last.
    static uint32_t ThirdVertex(const uint32_t* tri, uint32_t a, uint32_t b)
    {
        for (int c = 0; c < 3; ++c)
            if (tri[c] != a && tri[c] != b)
                return tri[c];
        return tri[0];
    }

    int EdgeFromAdjTri(uint32_t t, int32_t other) const
    {
        for (int e = 0; e < 3; ++e)
            if (m_adj[size_t(t) * 3 + e] == other)
                return e;
        return -1;
    }

    void Touch(int32_t t) { m_touched.push_back(t); }

    void DetachPrev(int32_t t)
    {
        const int32_t p = m_cur[t].prev;
        Touch(p);
        m_cur[p].next = kNone;
        m_cur[t].prev = kNone;
    }

    // Detaches the next triangle; one that would start a strip with the wrong parity is also cut from
    // its own next. Returns 1 when that second cut happened.
    int DetachNext(int32_t t)
    {
        const int32_t n = m_cur[t].next;
        Touch(n);
        m_cur[t].next = kNone;
        m_cur[n].prev = kNone;
        if (m_cur[n].wind || m_cur[n].next == kNone)
            return 0;
        const int32_t m = m_cur[n].next;
        Touch(m);
        m_cur[m].prev = kNone;
        m_cur[n].next = kNone;
        return 1;
    }

    // Links t behind p with winding w; returns the change in the strip count.
    int Link(int32_t t, int32_t p, bool w)
    {
        Touch(t);
        int change;
        if (m_cur[t].prev != kNone && m_cur[t].next != kNone)
        {
            DetachPrev(t);
            change = 1 + DetachNext(t);
        }
        else if (m_cur[t].next != kNone)
            change = DetachNext(t);
        else if (m_cur[t].prev != kNone)
        {
            DetachPrev(t);
            change = 0;
        }
        else
            change = -1;
        m_cur[t].next = kNone;
        m_cur[t].prev = p;
        if (p != kNone)
            m_cur[p].next = t;
        m_cur[t].wind = w;
        m_inWalk[t] = 1;
        return change;
    }

    // Walks from a triangle across an edge, relinking as it goes, until the strip count has fallen to
    // the threshold; keeps the walk when it got there, restores every touched triangle otherwise.
    bool StripGrow(int32_t start, int edge, int threshold)
    {
        m_touched.clear();
        m_visited.clear();
        int total = 1;
        bool wind = true;
        int32_t prev = kNone, cur = start;
        while (total > threshold)
        {
            total += Link(cur, prev, wind);
            m_visited.push_back(cur);
            const size_t half = size_t(cur) * 3 + edge;
            const int32_t nb = m_adj[half];
            if (nb == kNone || m_inWalk[nb])
                break;
            const int in = m_backEdge[half];
            edge = wind ? (in + 2) % 3 : (in + 1) % 3;
            wind = !wind;
            prev = cur;
            cur = nb;
        }
        if (total > threshold)
        {
            for (int32_t t : m_touched)
                m_cur[t] = m_cemented[t];
            total = 0;
        }
        else
        {
            m_bKept = true;
            for (int32_t t : m_touched)
                m_cemented[t] = m_cur[t];
        }
        for (int32_t t : m_visited)
            m_inWalk[t] = 0;
        m_nStrips += total;
        return total != 0;
    }

  public:
    // Grows strips from triangles with one neighbour, retrying while it helps, then two triangles
    // further along the neighbour chain (a chain that comes back on itself is followed once round).
    void StripFromEdges()
    {
        for (uint32_t t = 0; t < m_nTri; ++t)
        {
            int nNeighbours = 0, edge = 0;
            for (int e = 0; e < 3; ++e)
                if (m_adj[size_t(t) * 3 + e] != kNone)
                {
                    ++nNeighbours;
                    edge = e;
                }
            if (nNeighbours != 1)
                continue;
            int32_t cur = static_cast<int32_t>(t);
            for (;;)
            {
                int32_t& mark = m_chainMark[size_t(cur) * 3 + edge];
                if (mark == static_cast<int32_t>(t))
                    break;
                mark = static_cast<int32_t>(t);
                while (StripGrow(cur, edge, -1))
                {
                }
                const int32_t n1 = m_adj[size_t(cur) * 3 + edge];
                if (n1 == kNone)
                    break;
                const int e1 = (EdgeFromAdjTri(n1, cur) + 1) % 3;
                const int32_t n2 = m_adj[size_t(n1) * 3 + e1];
                if (n2 == kNone)
                    break;
                edge = (EdgeFromAdjTri(n2, n1) + 2) % 3;
                cur = n2;
            }
        }
    }

    // Passes in pseudo-random triangle order, the threshold alternating 0 and -1, until two passes in
    // a row shorten nothing. Returns whether the strips are still those it started from.
    bool StripImprove(uint32_t seed, SUnchangedPasses& memo)
    {
        CLibcRandom rng(seed);
        std::vector<SKey> keys(m_nTri), tmp(m_nTri);
        int passes = 2, threshold = 0;
        bool pristine = true; // no walk has been kept yet in this run
        while (passes != 0)
        {
            --passes;
            for (uint32_t t = 0; t < m_nTri; ++t)
            {
                const uint32_t a = rng.Next();
                const uint32_t b = rng.Next();
                keys[t] = {a * b, t};
            }
            const int slot = threshold == 0 ? 0 : 1;
            bool improved = false;
            if (!(pristine && memo.bKnown[slot] && memo.bUnchanged[slot]))
            {
                MergeSort(keys.data(), keys.size(), tmp.data());
                m_bKept = false;
                for (const SKey& k : keys)
                    for (int e = 0; e < 3; ++e)
                        if (StripGrow(static_cast<int32_t>(k.nTri), e, threshold))
                            improved = true;
                if (pristine)
                {
                    memo.bKnown[slot] = true;
                    memo.bUnchanged[slot] = !m_bKept;
                }
                pristine = pristine && !m_bKept;
            }
            if (improved)
                passes = 2;
            threshold = threshold == 0 ? -1 : 0;
        }
        return pristine;
    }

  private:
    const uint32_t* m_pnIdx;
    uint32_t m_nTri;
    const std::vector<int32_t>& m_adj;
    std::vector<SLink> m_cur, m_cemented;
    std::vector<uint8_t> m_inWalk;
    std::vector<int32_t> m_chainMark; // per triangle edge: the chain start that last tried it
    std::vector<uint8_t> m_backEdge;  // per triangle edge: the neighbour's edge back to it
    std::vector<int32_t> m_touched, m_visited;
    int64_t m_nStrips = 0;
    bool m_bKept = false; // a walk reached its threshold and was kept
};

template <typename T> T* CopyToHeap(const std::vector<T>& v)
{
    T* p = static_cast<T*>(std::malloc(v.empty() ? 1 : v.size() * sizeof(T)));
    if (p && !v.empty())
        std::memcpy(p, v.data(), v.size() * sizeof(T));
    return p;
}

// Builds the best of the five seeded runs into idx and len. The edge pass does not depend on the
// seed, so it runs once and each run starts from a copy of its strips.
void BuildStrips(const uint32_t* pnIdx, uint32_t nTri, std::vector<uint32_t>& idx, std::vector<uint32_t>& len)
{
    const std::vector<int32_t> adj = BuildAdjacency(pnIdx, nTri);
    CStripBuilder afterEdges(pnIdx, nTri, adj);
    afterEdges.StripFromEdges();
    CStripBuilder::SUnchangedPasses memo;
    bool firstPristine = false;
    std::vector<uint32_t> runIdx, runLen;
    for (uint32_t seed = 0; seed < 5; ++seed)
    {
        CStripBuilder builder = afterEdges;
        const bool pristine = builder.StripImprove(seed, memo);
        // A run that kept nothing has the strips of the edge pass: the same output as the first run
        // when that one kept nothing either, and so no improvement on it.
        if (seed > 0 && pristine && firstPristine)
            continue;
        if (seed == 0)
            firstPristine = pristine;
        builder.Output(runIdx, runLen);
        if (seed == 0 || runLen.size() < len.size())
        {
            idx.swap(runIdx);
            len.swap(runLen);
        }
    }
}
} // namespace

int QMXTTriStrip(uint32_t** ppnStripIdx, uint32_t** ppnStripLen, uint32_t* pnStripNum, const uint32_t* pnIdx,
                 uint32_t nTriNum)
{
    if (!ppnStripIdx || !ppnStripLen || !pnStripNum || (nTriNum && !pnIdx) || nTriNum > INT32_MAX / 3)
        return 1;
    if (nTriNum == 0)
    {
        *ppnStripIdx = nullptr;
        *ppnStripLen = nullptr;
        *pnStripNum = 0;
        return 0;
    }
    try
    {
        std::vector<uint32_t> idx, len;
        BuildStrips(pnIdx, nTriNum, idx, len);
        uint32_t* outIdx = CopyToHeap(idx);
        uint32_t* outLen = CopyToHeap(len);
        if (!outIdx || !outLen)
        {
            std::free(outIdx);
            std::free(outLen);
            return 1;
        }
        *ppnStripIdx = outIdx;
        *ppnStripLen = outLen;
        *pnStripNum = static_cast<uint32_t>(len.size());
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}

int QMXTTriStripList(uint32_t* pnIdx, uint32_t nTriNum)
{
    if ((nTriNum && !pnIdx) || nTriNum > INT32_MAX / 3)
        return 1;
    try
    {
        std::vector<uint32_t> idx, len;
        BuildStrips(pnIdx, nTriNum, idx, len);
        // Strip back to list: triangle k > 0 of a strip ends at its new index p and takes
        // (p-1, p-2, p) when k is odd and (p-2, p-1, p) when even, keeping every winding.
        std::vector<uint32_t> list;
        list.reserve(size_t(nTriNum) * 3);
        size_t s = 0;
        for (uint32_t n : len)
        {
            list.insert(list.end(), idx.begin() + s, idx.begin() + s + 3);
            for (uint32_t k = 1; k < n; ++k)
            {
                const size_t p = s + 2 + k;
                if (k % 2)
                    list.insert(list.end(), {idx[p - 1], idx[p - 2], idx[p]});
                else
                    list.insert(list.end(), {idx[p - 2], idx[p - 1], idx[p]});
            }
            s += n + 2;
        }
        std::copy(list.begin(), list.end(), pnIdx);
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}
