// Triangle strips: adjacency, strip growth with undo, five seeded runs, and the strip writers.
//
// Adjacency pairs each half-edge with the earliest free opposite half-edge of an earlier triangle, in
// triangle order; half-edges are bucketed by their lower vertex and sorted by the other, so a lookup
// touches only the triangles on that edge. The pseudo-random order reproduces the C library's rand()
// sequence after srand(seed) and its qsort (a top-down merge sort, left half n / 2, ties to the left)
// with the wrapped 32-bit key difference as comparison, without touching the caller's rand() state.
//
// The results are those of walking every growth attempt; two kinds of attempt are settled without
// walking. A walk that cannot take in all the triangles of some existing strip cannot bring the strip
// count down to its threshold, fails and changes nothing (CWalkPaths, CCompletable). Repeating a walk
// right after it was kept re-forms the strip it made unchanged before going on (StripGrowAgain).
#include "QMXTTriStrip.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "QMXTLargeArray.h"
#include "QMXTLibcOrder.h"

namespace
{
constexpr int32_t kNone = -1;

bool IsDegenerate(const uint32_t* tri)
{
    return tri[0] == tri[1] || tri[1] == tri[2] || tri[0] == tri[2];
}

// Neighbours across edges 0 (corners 0-1), 1 (1-2) and 2 (2-0) of every triangle, kNone for none.
QMXTLargeVector<int32_t> BuildAdjacency(const uint32_t* pnInputIdx, uint32_t nTri)
{
    QMXTLargeVector<int32_t> adj(size_t(nTri) * 3, kNone);
    const size_t nIdx = size_t(nTri) * 3;
    uint32_t nMaxVertex = 0;
    for (size_t i = 0; i < nIdx; ++i)
        nMaxVertex = std::max(nMaxVertex, pnInputIdx[i]);
    // Sparse vertex numbers are renumbered densely (same equalities) to keep the buckets small.
    const uint32_t* pnIdx = pnInputIdx;
    QMXTLargeVector<uint32_t> dense;
    if (nMaxVertex > nIdx + 64)
    {
        QMXTLargeVector<uint32_t> used(pnInputIdx, pnInputIdx + nIdx);
        std::sort(used.begin(), used.end());
        used.erase(std::unique(used.begin(), used.end()), used.end());
        dense.resize(nIdx);
        for (size_t i = 0; i < nIdx; ++i)
            dense[i] = uint32_t(std::lower_bound(used.begin(), used.end(), pnInputIdx[i]) - used.begin());
        pnIdx = dense.data();
        nMaxVertex = uint32_t(used.size() - 1);
    }
    // Half-edges bucketed by lower vertex, each bucket sorted by (upper vertex, half-edge).
    QMXTLargeVector<uint32_t> start(size_t(nMaxVertex) + 2, 0);
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
    QMXTLargeVector<SHalf> half(start.back());
    {
        QMXTLargeVector<uint32_t> fill(start.begin(), start.end() - 1);
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

// The strip links of one triangle.
struct SLink
{
    int32_t prev = kNone;
    int32_t next = kNone;
    bool wind = false;
};

// Adjacency and, per triangle edge with a neighbour, the neighbour's edge back.
struct SStripMesh
{
    const uint32_t* pnIdx;
    uint32_t nTri;
    QMXTLargeVector<int32_t> adj;
    QMXTLargeVector<uint8_t> backEdge;

    SStripMesh(const uint32_t* idx, uint32_t n) : pnIdx(idx), nTri(n), adj(BuildAdjacency(idx, n)), backEdge(size_t(n) * 3, 0)
    {
        for (uint32_t t = 0; t < n; ++t)
            for (int e = 0; e < 3; ++e)
                if (const int32_t nb = adj[size_t(t) * 3 + e]; nb != kNone)
                    for (int f = 0; f < 3; ++f)
                        if (adj[size_t(nb) * 3 + f] == int32_t(t))
                        {
                            backEdge[size_t(t) * 3 + e] = static_cast<uint8_t>(f);
                            break;
                        }
    }
};

// The paths that growth walks follow, as states (triangle, edge to leave by, winding flag): from a
// state the walk crosses the edge and leaves the neighbour by the edge before (flag set) or after the
// one it entered by, with the flag toggled. Each state has at most one successor, and at most one
// predecessor (the entry edge follows from the exit edge and the flag, and two triangles pair across
// one edge only), so the states form simple chains, ending where an edge has no neighbour, and
// cycles. A walk started at (triangle, edge, set) visits a prefix of its state's path. Chain states
// are numbered from the chain's end backwards, so the states whose path passes s are those numbered
// [in(s), out(s)) with out(s) the end of its chain's numbers.
class CWalkPaths
{
  public:
    explicit CWalkPaths(const SStripMesh& mesh) : m_mesh(&mesh)
    {
        const size_t n = size_t(mesh.nTri) * 6;
        QMXTLargeVector<int32_t> pred(n, kNone);
        for (size_t s = 0; s < n; ++s)
            if (const int32_t next = Successor(int32_t(s)); next != kNone)
            {
                m_bSimple = m_bSimple && pred[size_t(next)] == kNone;
                pred[size_t(next)] = int32_t(s);
            }
        m_in.assign(n, kNone);
        m_out.assign(n, 0);
        m_order.resize(n);
        m_onCycle.assign(n, 0);
        int32_t clock = 0;
        for (size_t s = 0; s < n; ++s)
        {
            if (Successor(int32_t(s)) != kNone)
                continue;
            const int32_t first = clock;
            for (int32_t x = int32_t(s); x != kNone; x = pred[size_t(x)])
            {
                m_order[size_t(clock)] = x;
                m_in[size_t(x)] = clock++;
            }
            for (int32_t i = first; i < clock; ++i)
                m_out[size_t(m_order[size_t(i)])] = clock;
        }
        // What is left lies on cycles; out holds the cycle number there.
        for (size_t s = 0; s < n; ++s)
        {
            if (m_in[s] != kNone)
                continue;
            for (int32_t x = int32_t(s); m_in[size_t(x)] == kNone; x = Successor(x))
            {
                m_order[size_t(clock)] = x;
                m_in[size_t(x)] = clock++;
                m_onCycle[size_t(x)] = 1;
                m_out[size_t(x)] = m_nCycles;
            }
            ++m_nCycles;
        }
    }

    static int32_t State(uint32_t t, int edge, bool wind) { return int32_t(t * 6 + uint32_t(edge) * 2 + (wind ? 1 : 0)); }
    // False if some state had two predecessors (impossible with adjacency across one edge a pair;
    // then nothing may be concluded from the paths).
    bool Simple() const { return m_bSimple; }
    size_t StateCount() const { return m_in.size(); }
    int32_t CycleCount() const { return m_nCycles; }
    bool OnCycle(int32_t s) const { return m_onCycle[s]; }
    int32_t Cycle(int32_t s) const { return m_onCycle[s] ? m_out[s] : kNone; }
    int32_t In(int32_t s) const { return m_in[s]; }
    int32_t Out(int32_t s) const { return m_out[s]; }
    int32_t StateAt(int32_t position) const { return m_order[position]; } // inverse of In
    // Whether b lies on the path from a.
    bool Reaches(int32_t a, int32_t b) const
    {
        if (m_onCycle[b])
            return m_onCycle[a] && m_out[a] == m_out[b];
        return !m_onCycle[a] && m_in[b] <= m_in[a] && m_in[a] < m_out[b];
    }

  private:
    int32_t Successor(int32_t s) const
    {
        const size_t half = size_t(s / 6) * 3 + size_t(s % 6) / 2;
        const bool wind = s & 1;
        if (m_mesh->adj[half] == kNone)
            return kNone;
        const int in = m_mesh->backEdge[half];
        return State(uint32_t(m_mesh->adj[half]), wind ? (in + 2) % 3 : (in + 1) % 3, !wind);
    }

    const SStripMesh* m_mesh;
    QMXTLargeVector<int32_t> m_in, m_out, m_order; // out: chain end, or the cycle number on a cycle
    QMXTLargeVector<uint8_t> m_onCycle;
    int32_t m_nCycles = 0;
    bool m_bSimple = true;
};

// Which walks could complete a strip. A walk changes the strip count by 1 (its own strip) plus, for
// every strip it touched, the pieces left minus one, so it can only reach a threshold of 0 or below
// once it has visited every triangle of some strip, both ends included. The states of a strip's end
// triangle are marked when the path from them reaches the other end (a lone triangle is its own
// other end); a walk may succeed only if its path meets a marked state. Marks count on the states
// whose path passes them: per cycle, and over the Euler tour either directly (short ranges, the
// usual case) or in a Fenwick tree (long ranges).
class CCompletable
{
  public:
    CCompletable() = default;
    CCompletable(const CWalkPaths& paths, uint32_t nTri)
        : m_paths(&paths), m_direct(paths.StateCount(), 0), m_cycleMarks(size_t(paths.CycleCount()), 0),
          m_mask(nTri, 0), m_seen(nTri, 0), m_quick(nTri, 0)
    {
        for (uint32_t t = 0; t < nTri; ++t)
            for (int e = 0; e < 3; ++e)
                if (paths.OnCycle(CWalkPaths::State(t, e, true)))
                    m_quick[t] |= uint8_t(8u << e);
    }

    // Whether a walk from triangle t leaving by edge e with the winding set may complete a strip.
    // The passes ask in random triangle order; a byte a triangle keeps those reads in cache.
    bool MayCompleteForward(uint32_t t, int e) const
    {
        const uint8_t quick = m_quick[t];
        if ((quick >> e) & 1u)
            return true;
        const int32_t s = CWalkPaths::State(t, e, true);
        if (((quick >> (3 + e)) & 1u) && m_cycleMarks[m_paths->Cycle(s)] > 0)
            return true;
        return m_nLong != 0 && LongMarks(s);
    }

    bool MayComplete(int32_t s) const
    {
        if (m_direct[s] > 0 || (m_paths->Cycle(s) != kNone && m_cycleMarks[m_paths->Cycle(s)] > 0))
            return true;
        return m_nLong != 0 && LongMarks(s);
    }

  private:
    bool LongMarks(int32_t s) const
    {
        int32_t sum = 0;
        for (size_t i = size_t(m_paths->In(s)) + 1; i > 0; i -= i & (~i + 1))
            sum += m_fenwick[i];
        return sum > 0;
    }

  public:

    // Marks the ends of all strips, counting the marks on every state in one sweep.
    void Build(const QMXTLargeVector<SLink>& links)
    {
        m_bBuilding = true;
        m_pending.assign(m_direct.size() + 1, 0);
        for (uint32_t t = 0; t < m_mask.size(); ++t)
        {
            if (links[t].prev != kNone)
                continue;
            int32_t b = int32_t(t);
            while (links[b].next != kNone)
                b = links[b].next;
            SetMask(int32_t(t), EndMask(int32_t(t), b));
            if (b != int32_t(t))
                SetMask(b, EndMask(b, int32_t(t)));
        }
        int32_t count = 0;
        for (size_t i = 0; i < m_direct.size(); ++i)
        {
            count += m_pending[i];
            SetDirect(m_paths->StateAt(int32_t(i)), count);
        }
        m_pending.clear();
        m_pending.shrink_to_fit();
        m_bBuilding = false;
    }

    // Re-marks the ends of the strips that hold the given triangles (and clears their other members).
    void Refresh(const int32_t* tri, size_t n, const QMXTLargeVector<SLink>& links)
    {
        ++m_round;
        for (size_t i = 0; i < n; ++i)
        {
            int32_t a = tri[i];
            if (m_seen[a] == m_round)
                continue;
            while (links[a].prev != kNone)
                a = links[a].prev;
            int32_t b = a;
            m_seen[a] = m_round;
            while (links[b].next != kNone)
            {
                if (b != a)
                    SetMask(b, 0);
                b = links[b].next;
                m_seen[b] = m_round;
            }
            SetMask(a, EndMask(a, b));
            if (b != a)
                SetMask(b, EndMask(b, a));
        }
    }

  private:
    uint8_t EndMask(int32_t a, int32_t b) const
    {
        uint8_t mask = 0;
        for (int i = 0; i < 6; ++i)
            for (int j = 0; j < 6; ++j)
                if (m_paths->Reaches(a * 6 + i, b * 6 + j))
                {
                    mask |= uint8_t(1u << i);
                    break;
                }
        return mask;
    }

    void SetMask(int32_t t, uint8_t mask)
    {
        const uint8_t old = m_mask[t];
        if (old == mask)
            return;
        for (int i = 0; i < 6; ++i)
            if (((old ^ mask) >> i) & 1u)
                Mark(t * 6 + i, ((mask >> i) & 1u) ? 1 : -1);
        m_mask[t] = mask;
    }

    void Mark(int32_t s, int32_t d)
    {
        if (m_paths->OnCycle(s))
        {
            m_cycleMarks[m_paths->Cycle(s)] += d;
            return;
        }
        const size_t in = size_t(m_paths->In(s)), out = size_t(m_paths->Out(s));
        if (m_bBuilding && out - in <= kDirectRange)
        {
            m_pending[in] += d;
            m_pending[out] -= d;
            return;
        }
        if (out - in <= kDirectRange)
        {
            // Counted per state (not per tour position), so that a query reads next to its neighbours.
            for (size_t i = in; i < out; ++i)
            {
                const int32_t state = m_paths->StateAt(int32_t(i));
                SetDirect(state, m_direct[size_t(state)] + d);
            }
            return;
        }
        if (m_fenwick.empty())
            m_fenwick.assign(m_direct.size() + 2, 0);
        m_nLong += d;
        FenwickAdd(in, d);
        FenwickAdd(out, -d);
    }

    // A state's direct count, mirrored in the quick bits for the states with the winding set.
    void SetDirect(int32_t s, int32_t count)
    {
        m_direct[size_t(s)] = count;
        if (s & 1)
        {
            uint8_t& quick = m_quick[size_t(s / 6)];
            const uint8_t bit = uint8_t(1u << ((s % 6) / 2));
            quick = count > 0 ? uint8_t(quick | bit) : uint8_t(quick & ~bit);
        }
    }

    void FenwickAdd(size_t i, int32_t d)
    {
        for (++i; i < m_fenwick.size(); i += i & (~i + 1))
            m_fenwick[i] += d;
    }

    static constexpr size_t kDirectRange = 4096;
    const CWalkPaths* m_paths = nullptr;
    QMXTLargeVector<int32_t> m_direct, m_fenwick, m_cycleMarks;
    int32_t m_nLong = 0; // marks kept in the Fenwick tree
    QMXTLargeVector<int32_t> m_pending; // while building: differences over tour positions
    bool m_bBuilding = false;
    QMXTLargeVector<uint8_t> m_mask; // marked states of each triangle
    QMXTLargeVector<uint32_t> m_seen;
    // Per triangle, for its three edges with the winding set: bits 0-2 direct count above 0, bits 3-5
    // state on a cycle.
    QMXTLargeVector<uint8_t> m_quick;
    uint32_t m_round = 0;
};

// One strip building run over fixed adjacency.
class CStripBuilder
{
  public:
    explicit CStripBuilder(const SStripMesh& mesh)
        : m_pnIdx(mesh.pnIdx), m_nTri(mesh.nTri), m_adj(mesh.adj), m_backEdge(mesh.backEdge), m_cur(mesh.nTri),
          m_cemented(mesh.nTri), m_inWalk(mesh.nTri, 0), m_chainMark(size_t(mesh.nTri) * 3, kNone)
    {
    }

    // Starts a run from the strips of another builder (reusing this one's storage). From now on,
    // walks that cannot complete a strip are skipped (their outcome is known: they fail and change
    // nothing); the marks follow every walk that is kept.
    void StartRun(const CStripBuilder& from, const CCompletable& marks, bool track)
    {
        m_cur = from.m_cur;
        m_cemented = from.m_cemented;
        m_inWalk = from.m_inWalk;
        m_walk = from.m_walk;
        m_nStrips = from.m_nStrips;
        m_complete = marks;
        m_bTrack = track;
    }

    // Marks for the strips as they are now.
    CCompletable Completable(const CWalkPaths& paths) const
    {
        CCompletable marks(paths, m_nTri);
        marks.Build(m_cur);
        return marks;
    }

    // Whether, starting from the strips the edge pass left, a whole improvement pass with the given
    // threshold changed nothing: then it changes nothing in any order, so another run can skip it.
    struct SUnchangedPasses
    {
        bool bKnown[2] = {false, false};
        bool bUnchanged[2] = {false, false};
    };

    // Writes strips in the order of their first triangles; returns the strip count.
    uint32_t Output(QMXTLargeVector<uint32_t>& idx, QMXTLargeVector<uint32_t>& len) const
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
                idx.append(tri, tri + 3);
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
        m_inWalk[t] = m_walk;
        return change;
    }

    // Walks from a triangle across an edge, relinking as it goes, until the strip count has fallen to
    // the threshold; keeps the walk when it got there, restores every touched triangle otherwise.
    bool StripGrow(int32_t start, int edge, int threshold) { return Finish(threshold, WalkFrom(start, edge, threshold)); }

    // A fresh walk from a triangle across an edge; returns the change in the strip count.
    int WalkFrom(int32_t start, int edge, int threshold)
    {
        ++m_walk;
        m_touched.clear();
        m_visited.clear();
        int total = 1;
        Walk(start, kNone, edge, true, threshold, total);
        return total;
    }

    // Restores every triangle the last walk touched.
    void Undo()
    {
        for (int32_t t : m_touched)
            m_cur[t] = m_cemented[t];
    }

    // The same walk again right after it was kept (the edge pass does this until it fails). Walking
    // the strip that walk made re-forms it as it is: every link and flag comes out unchanged, the
    // count is back where it was (0) at its end and never lower on the way (the first triangle
    // detaches its successor and cuts the next pair, every second triangle then stands alone). So
    // the walk goes straight on from the step after that strip, whose triangles are still marked as
    // in the walk.
    bool StripGrowAgain(int threshold)
    {
        const SStep next = m_next;
        if (next.tri == kNone)
            return false; // it stops at the strip's end: not below the threshold, nothing changes
        m_touched.clear();
        Touch(m_visited.back());
        int total = 0;
        Walk(next.tri, m_visited.back(), next.edge, next.wind, threshold, total);
        return Finish(threshold, total);
    }

    // Links triangles along the path from cur while the count is above the threshold; remembers
    // the step after the last triangle linked (none when the path ends or comes back on itself).
    void Walk(int32_t cur, int32_t prev, int edge, bool wind, int threshold, int& total)
    {
        m_next = {kNone, 0, false};
        while (total > threshold)
        {
            total += Link(cur, prev, wind);
            m_visited.push_back(cur);
            const size_t half = size_t(cur) * 3 + edge;
            const int32_t nb = m_adj[half];
            if (nb == kNone || m_inWalk[nb] == m_walk)
                return;
            const int in = m_backEdge[half];
            edge = wind ? (in + 2) % 3 : (in + 1) % 3;
            wind = !wind;
            prev = cur;
            cur = nb;
            m_next = {cur, edge, wind};
        }
    }

    // Whether some walk of a pass with this threshold would be kept, asked in triangle order from
    // the present strips: without one, the pass leaves every strip as it is, whatever its order.
    bool AnyWalkKept(int threshold)
    {
        for (uint32_t t = 0; t < m_nTri; ++t)
            for (int e = 0; e < 3; ++e)
                if (!m_bTrack || m_complete.MayCompleteForward(t, e))
                {
                    const int total = WalkFrom(static_cast<int32_t>(t), e, threshold);
                    Undo();
                    if (total <= threshold)
                        return true;
                }
        return false;
    }

    // Keeps the walk when it got to the threshold, restores every touched triangle otherwise.
    bool Finish(int threshold, int total)
    {
        if (total > threshold)
        {
            Undo();
            total = 0;
        }
        else
        {
            m_bKept = true;
            for (int32_t t : m_touched)
                m_cemented[t] = m_cur[t];
            if (m_bTrack)
                m_complete.Refresh(m_touched.data(), m_touched.size(), m_cur);
        }
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
                for (bool kept = StripGrow(cur, edge, -1); kept;)
                    kept = StripGrowAgain(-1);
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
        CQMXTLibcRandom rng(seed);
        QMXTLargeVector<SQMXTOrderKey>& keys = m_keys;
        QMXTLargeVector<SQMXTOrderKey>& tmp = m_keysScratch;
        keys.resize(m_nTri);
        tmp.resize(m_nTri);
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
            if (!(pristine && memo.bKnown[slot] && memo.bUnchanged[slot]) && AnyWalkKept(threshold))
            {
                QMXTLibcQsortOrder(keys.data(), keys.size(), tmp.data());
                m_bKept = false;
                for (const SQMXTOrderKey& k : keys)
                    for (int e = 0; e < 3; ++e)
                        if ((!m_bTrack || m_complete.MayCompleteForward(k.nIndex, e)) &&
                            StripGrow(static_cast<int32_t>(k.nIndex), e, threshold))
                            improved = true;
                if (pristine)
                {
                    memo.bKnown[slot] = true;
                    memo.bUnchanged[slot] = !m_bKept;
                }
                pristine = pristine && !m_bKept;
            }
            // A pass in which no walk can be kept changes nothing and improves nothing in any order.
            else if (pristine)
            {
                memo.bKnown[slot] = true;
                memo.bUnchanged[slot] = true;
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
    const QMXTLargeVector<int32_t>& m_adj;
    const QMXTLargeVector<uint8_t>& m_backEdge; // per triangle edge: the neighbour's edge back to it
    QMXTLargeVector<SLink> m_cur, m_cemented;
    QMXTLargeVector<uint32_t> m_inWalk; // the walk that last linked each triangle
    uint32_t m_walk = 0;
    struct SStep
    {
        int32_t tri;
        int edge;
        bool wind;
    } m_next = {kNone, 0, false}; // where the last walk would have gone on
    QMXTLargeVector<int32_t> m_chainMark; // per triangle edge: the chain start that last tried it
    QMXTLargeVector<int32_t> m_touched, m_visited;
    int64_t m_nStrips = 0;
    bool m_bKept = false; // a walk reached its threshold and was kept
    CCompletable m_complete;
    bool m_bTrack = false;
    QMXTLargeVector<SQMXTOrderKey> m_keys, m_keysScratch;
};

template <typename T> T* CopyToHeap(const QMXTLargeVector<T>& v)
{
    T* p = static_cast<T*>(QMXTLargeAlloc(v.empty() ? 1 : v.size() * sizeof(T)));
    if (p && !v.empty())
        std::memcpy(p, v.data(), v.size() * sizeof(T));
    return p;
}

// Builds the best of the five seeded runs into idx and len. The edge pass does not depend on the
// seed, so it runs once and each run starts from a copy of its strips.
void BuildStrips(const uint32_t* pnIdx, uint32_t nTri, QMXTLargeVector<uint32_t>& idx, QMXTLargeVector<uint32_t>& len)
{
    const SStripMesh mesh(pnIdx, nTri);
    CStripBuilder afterEdges(mesh);
    afterEdges.StripFromEdges();
    const CWalkPaths paths(mesh);
    const CCompletable marks = afterEdges.Completable(paths);
    CStripBuilder::SUnchangedPasses memo;
    bool firstPristine = false;
    QMXTLargeVector<uint32_t> runIdx, runLen;
    CStripBuilder builder(mesh);
    for (uint32_t seed = 0; seed < 5; ++seed)
    {
        builder.StartRun(afterEdges, marks, paths.Simple());
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
        QMXTLargeVector<uint32_t> idx, len;
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
        QMXTLargeVector<uint32_t> idx, len;
        BuildStrips(pnIdx, nTriNum, idx, len);
        // Strip back to list: triangle k > 0 of a strip ends at its new index p and takes
        // (p-1, p-2, p) when k is odd and (p-2, p-1, p) when even, keeping every winding.
        QMXTLargeVector<uint32_t> list;
        list.reserve(size_t(nTriNum) * 3);
        size_t s = 0;
        for (uint32_t n : len)
        {
            list.append(idx.begin() + s, idx.begin() + s + 3);
            for (uint32_t k = 1; k < n; ++k)
            {
                const size_t p = s + 2 + k;
                if (k % 2)
                    list.append({idx[p - 1], idx[p - 2], idx[p]});
                else
                    list.append({idx[p - 2], idx[p - 1], idx[p]});
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
