// Vertex-cache triangle order by greedy block growth.
//
// The working model: per vertex its triangles (in triangle order) and the count not yet written; per
// triangle its three edges and a written flag; per edge the count of unwritten triangles on it. A
// mesh is a slice of one vertex list; vertices move inside it when a closed piece is split off.
//
// What keeps it near-linear while giving the same blocks as the plain searches:
// - an edge is a number per unordered vertex pair, given out by the pair's lower vertex with marks
//   on the other ends, instead of a scan over all edges; an edge's state is one record;
// - the scans of a large mesh for vertices with one or some triangles left use bit sets over the
//   vertex list; membership of a vertex, triangle or edge in an option is a stamp, not a search;
// - a block grown from a start vertex depends only on the vertices it read, so it is kept until one
//   of them is written (each vertex lists the grown blocks that read it);
// - a growth lists its candidate triangles once, in the order the plain walk over the option's
//   vertices first meets them, and drops those that joined or can no longer fit. Within a growth a
//   candidate adds at most three vertices, so ratios that differ are at least 1/6 apart and
//   "better" is a strict order: the first candidate with the best score wins either way;
// - while no closed triangle waits outside the option, the triangles a candidate takes are those
//   that close at its new corners. Counts of them kept per vertex (other corners in the option)
//   and per edge (third corner in the option) give every candidate's ratio directly, so only the
//   candidates with the best ratio are appraised; one that closes only itself is scored from its
//   own edges, others from the triangle lists of its new corners, the result kept until a
//   triangle at those corners gets a corner in the option (per-vertex change counters); the
//   winner's triangles come from the same lists, sorted into the order of the plain walk;
// - otherwise, or when the triangle cap cuts a closing short, the plain appraisal walk decides.
#include "QMXTGeometrySort.h"
#include "QMXTLargeArray.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace
{
// Ordered bit set over vertex-list slots with a summary word per 64 words, for "next set slot".
class CSlotBits
{
  public:
    explicit CSlotBits(size_t n) : m_words((n + 63) / 64 + 1, 0), m_summary(m_words.size() / 64 + 1, 0) {}

    void Assign(size_t i, bool on)
    {
        uint64_t& w = m_words[i >> 6];
        const uint64_t bit = uint64_t(1) << (i & 63);
        w = on ? (w | bit) : (w & ~bit);
        const size_t wi = i >> 6;
        const uint64_t sbit = uint64_t(1) << (wi & 63);
        m_summary[wi >> 6] = w ? (m_summary[wi >> 6] | sbit) : (m_summary[wi >> 6] & ~sbit);
    }
    // First set slot in [from, end), or end.
    size_t Next(size_t from, size_t end) const
    {
        if (from >= end)
            return end;
        size_t wi = from >> 6;
        uint64_t w = m_words[wi] & (~uint64_t(0) << (from & 63));
        if (!w)
        {
            // Next non-empty word after wi through the summary.
            size_t si = (wi + 1) >> 6;
            uint64_t s = (wi + 1) & 63 ? m_summary[si] & (~uint64_t(0) << ((wi + 1) & 63)) : m_summary[si];
            const size_t lastWord = (end - 1) >> 6;
            for (;;)
            {
                if (s)
                {
                    wi = (si << 6) + size_t(__builtin_ctzll(s));
                    break;
                }
                if (++si > (lastWord >> 6))
                    return end;
                s = m_summary[si];
            }
            if (wi > lastWord)
                return end;
            w = m_words[wi];
        }
        const size_t i = (wi << 6) + size_t(__builtin_ctzll(w));
        return i < end ? i : end;
    }

  private:
    QMXTLargeVector<uint64_t> m_words;
    QMXTLargeVector<uint64_t> m_summary;
};

// Per edge: the count of unwritten triangles on it, and under the option stamp either its slot in
// the option's edge list (>= 0; both ends in the option) or minus the count of unwritten triangles
// on it whose third corner is in the option (< 0; both ends outside). One record keeps an edge's
// state in one cache line.
struct SEdge
{
    int32_t nRem;
    uint32_t nStamp;
    int32_t nValue;
};

struct SMesh
{
    uint32_t nStart;
    uint32_t nLen;
};

struct SEdgeUse
{
    int32_t nEdge;
    int32_t nCount; // the option's triangles on the edge
};

// A candidate block: vertices, triangles in order of addition, and edges with their use counts.
struct SOption
{
    std::vector<int32_t> vtx, tri;
    std::vector<SEdgeUse> edges;
    int nClosedDelta = 0;
    uint32_t nVtxMax = 0;

    void Clear()
    {
        vtx.clear();
        tri.clear();
        edges.clear();
        nClosedDelta = 0;
    }
    bool Empty() const { return vtx.empty(); }
    bool Full(size_t nTriMax) const { return nVtxMax - vtx.size() < 3 || tri.size() == nTriMax; }
};

// The closed-edge term of an edge in an option: +1 when the option takes the last triangle of an edge
// that has exactly one left, -1 when exactly one triangle is left outside the option.
int EdgeTerm(int nRemaining, int nCount)
{
    const int d = nRemaining - nCount;
    if (d == 0 && nRemaining == 1)
        return 1;
    return d == 1 ? -1 : 0;
}

// What IsBetterThan compares: triangles per vertex, then closed edges, then triangles.
struct SScore
{
    size_t nTri;
    float fRatio; // triangles per vertex, infinite without vertices
    int nClosedDelta;
};

SScore Score(size_t nTri, size_t nVtx, int nClosedDelta)
{
    return {nTri, nVtx == 0 ? INFINITY : float(nTri) / float(nVtx), nClosedDelta};
}

SScore Score(const SOption& o)
{
    return Score(o.tri.size(), o.vtx.size(), o.nClosedDelta);
}

bool IsBetterThan(const SScore& a, const SScore& b)
{
    if (std::fabs(a.fRatio - b.fRatio) > 0.1f)
        return a.fRatio > b.fRatio;
    if (a.nClosedDelta != b.nClosedDelta)
        return a.nClosedDelta > b.nClosedDelta;
    return a.nTri > b.nTri;
}

// A candidate triangle of the current growth and its cached fast appraisal.
struct SCandidate
{
    uint64_t nRatio = 0; // six times its triangles-per-vertex ratio, UINT64_MAX when unknown
    SScore score{};
    int32_t nTriangle = 0;
    uint32_t nClosing = 0; // sum of the closing counters of its new corners
    uint32_t nCap = 0;
    uint8_t nNewVtx = 0; // corners of the triangle not yet in the option
    bool bFast = false;  // the score above is from the fast appraisal (otherwise not kept)
};

// A full block grown from one start vertex, kept while none of the vertices it looked at changed.
struct SGrownBlock
{
    uint32_t nGeneration = 0; // bumped when the slot is reused or invalidated
    bool bValid = false;
    std::vector<int32_t> vtx, tri;
    std::vector<SEdgeUse> edges;
    int nClosedDelta = 0;
    SScore score{}; // of the block, compared against the best on every walk over the front
};

bool IsDegenerate(const uint32_t* tri)
{
    return tri[0] == tri[1] || tri[1] == tri[2] || tri[0] == tri[2];
}

class CGeometrySorter
{
  public:
    CGeometrySorter(const uint32_t* pnIdx, uint32_t nVtx, uint32_t nTri, uint32_t nVtxMax, uint32_t nTriMax)
        : m_pnIdx(pnIdx), m_nVtx(nVtx), m_nTri(nTri), m_nVtxMax(nVtxMax), m_nTriMax(nTriMax),
          m_lists(nVtxMax - 2), m_rem1(nVtx), m_remAny(nVtx)
    {
        BuildTriangleLists();
        BuildEdges();
        BuildMeshes();
        for (SOption* o : {&m_work, &m_best, &m_scratch[0], &m_scratch[1]})
        {
            o->nVtxMax = o == &m_work || o == &m_best ? nVtxMax : 3;
            o->vtx.reserve(std::min(nVtxMax, nVtx));
            o->tri.reserve(std::min(nTriMax, nTri));
            o->edges.reserve(size_t(std::min(nTriMax, nTri)) * 3);
        }
        m_vState.assign(nVtx, {0, 0, 0, 0});
        m_vBest.assign(nVtx, 0);
        m_vFootprint.assign(nVtx, 0);
        m_blockOf.assign(nVtx, -1);
        m_depHead.assign(nVtx, -1);
        m_fastEdgeIds.resize(size_t(std::min(nTriMax, nTri)) * 3);
        m_fastEdgeUses.resize(size_t(std::min(nTriMax, nTri)) * 3);
        m_fastTris.reserve(std::min(nTriMax, nTri));
        m_walkKeys.reserve(std::min(nTriMax, nTri));
        m_keptTris.reserve(std::min(nTriMax, nTri));
    }

    // Writes the new triangle order into out and the triangle count of each block into blocks.
    void Sort(QMXTLargeVector<uint32_t>& out, std::vector<uint32_t>& blocks)
    {
        out.reserve(size_t(m_nTri) * 3);
        m_pOut = &out;
        while (m_nWritten < m_nModelTri)
        {
            ClearWork();
            m_best.Clear();
            ++m_bestStamp;
            m_scratch[0].Clear();
            m_scratch[1].Clear();
            const int n = Fill();
            if (m_best.tri.empty() && n < 0)
                break;
            if (!m_best.tri.empty())
                blocks.push_back(static_cast<uint32_t>(m_best.tri.size()));
            Output();
            if (n >= 0)
            {
                const SMesh m = m_lists[n].back();
                m_lists[n].pop_back();
                ResizeMesh(m);
            }
        }
        FlushLeftovers(blocks);
    }

  private:
    const uint32_t* Tri(int32_t t) const { return m_tri[t].v; }
    const int32_t* TrisBegin(int32_t v) const { return m_triList.data() + m_triStart[v]; }
    const int32_t* TrisEnd(int32_t v) const { return m_triList.data() + m_triStart[v + 1]; }

    // Per vertex its triangles in triangle order; triangles that repeat an index stay out.
    void BuildTriangleLists()
    {
        m_tri.resize(m_nTri);
        for (uint32_t t = 0; t < m_nTri; ++t)
        {
            const uint32_t* p = m_pnIdx + size_t(t) * 3;
            m_tri[t] = {{p[0], p[1], p[2]}, 0, 0, 0, 0, 0};
        }
        m_triStart.assign(size_t(m_nVtx) + 1, 0);
        m_degenerate.assign(m_nTri, 0);
        for (uint32_t t = 0; t < m_nTri; ++t)
        {
            if (IsDegenerate(Tri(t)))
            {
                m_degenerate[t] = 1;
                continue;
            }
            ++m_nModelTri;
            for (int c = 0; c < 3; ++c)
                ++m_triStart[Tri(t)[c] + 1];
        }
        for (uint32_t v = 0; v < m_nVtx; ++v)
            m_triStart[v + 1] += m_triStart[v];
        m_triList.resize(m_triStart[m_nVtx]);
        QMXTLargeVector<uint32_t> fill(m_triStart.begin(), m_triStart.end() - 1);
        for (uint32_t t = 0; t < m_nTri; ++t)
            if (!m_degenerate[t])
                for (int c = 0; c < 3; ++c)
                    m_triList[fill[Tri(t)[c]]++] = static_cast<int32_t>(t);
        m_rem.resize(m_nVtx);
        for (uint32_t v = 0; v < m_nVtx; ++v)
            m_rem[v] = static_cast<int32_t>(m_triStart[v + 1] - m_triStart[v]);
    }

    // Edges get dense numbers by their lower vertex: walking each vertex's triangles, a mark on the
    // other end tells whether the pair already has a number. (Numbers are only names: nothing
    // depends on their order.)
    void BuildEdges()
    {
        m_triEdge.assign(size_t(m_nTri) * 3, -1);
        QMXTLargeVector<uint32_t> mark(m_nVtx, UINT32_MAX);
        QMXTLargeVector<int32_t> number(m_nVtx);
        int32_t nEdges = 0;
        for (uint32_t a = 0; a < m_nVtx; ++a)
            for (const int32_t *p = TrisBegin(int32_t(a)), *end = TrisEnd(int32_t(a)); p != end; ++p)
            {
                const uint32_t* u = Tri(*p);
                const int c = u[0] == a ? 0 : u[1] == a ? 1 : 2;
                // The edges from corner c to the next and from the previous to corner c.
                for (const int k : {c, (c + 2) % 3})
                {
                    const uint32_t b = u[k == c ? (c + 1) % 3 : k];
                    if (b < a)
                        continue; // named from b
                    if (mark[b] != a)
                    {
                        mark[b] = a;
                        number[b] = nEdges++;
                    }
                    m_triEdge[size_t(*p) * 3 + k] = number[b];
                }
            }
        m_edges.assign(size_t(nEdges), {0, 0, 0});
        for (int32_t e : m_triEdge)
            if (e >= 0)
                ++m_edges[e].nRem;
    }

    // Connected groups by shared triangles, breadth first, laid out in one vertex list.
    void BuildMeshes()
    {
        m_list.resize(m_nVtx);
        m_slot.assign(m_nVtx, 0);
        QMXTLargeVector<uint8_t> placed(m_nVtx, 0);
        uint32_t end = 0;
        for (uint32_t v = 0; v < m_nVtx; ++v)
        {
            if (placed[v])
                continue;
            const uint32_t start = end;
            placed[v] = 1;
            m_list[end++] = static_cast<int32_t>(v);
            for (uint32_t k = start; k < end; ++k)
                for (const int32_t *p = TrisBegin(m_list[k]), *pEnd = TrisEnd(m_list[k]); p != pEnd; ++p)
                    for (int c = 0; c < 3; ++c)
                    {
                        const uint32_t w = Tri(*p)[c];
                        if (!placed[w])
                        {
                            placed[w] = 1;
                            m_list[end++] = static_cast<int32_t>(w);
                        }
                    }
            if (end - start > 2)
                PushMesh({start, end - start});
        }
        for (uint32_t s = 0; s < m_nVtx; ++s)
        {
            m_slot[m_list[s]] = s;
            UpdateBits(m_list[s]);
        }
    }

    void PushMesh(SMesh m) { m_lists[std::min(m.nLen, m_nVtxMax) - 3].push_back(m); }
    std::vector<SMesh>& Large() { return m_lists[m_nVtxMax - 3]; }

    void UpdateBits(int32_t v)
    {
        m_rem1.Assign(m_slot[v], m_rem[v] == 1);
        m_remAny.Assign(m_slot[v], m_rem[v] != 0);
    }

    void SwapSlots(uint32_t s, uint32_t d)
    {
        if (s == d)
            return;
        std::swap(m_list[s], m_list[d]);
        m_slot[m_list[s]] = s;
        m_slot[m_list[d]] = d;
        UpdateBits(m_list[s]);
        UpdateBits(m_list[d]);
    }

    // Keeps only the vertices with triangles left, in order, and puts the mesh back on its list.
    void ResizeMesh(SMesh m)
    {
        uint32_t w = m.nStart;
        for (uint32_t p = m.nStart; p < m.nStart + m.nLen; ++p)
            if (m_rem[m_list[p]] != 0)
                SwapSlots(p, w++);
        const uint32_t len = w - m.nStart;
        if (len >= 3)
            PushMesh({m.nStart, len});
    }

    // Moves the option's vertices to the front of the large mesh and splits them off as a mesh.
    void SplitMesh(const std::vector<int32_t>& vtx)
    {
        const uint32_t n = static_cast<uint32_t>(vtx.size());
        const uint32_t start = Large().back().nStart;
        for (uint32_t k = 0; k < n; ++k)
            SwapSlots(m_slot[vtx[k]], start + k);
        if (n >= 3)
            PushMesh({start, n});
        SMesh& m = Large().back();
        m.nStart += n;
        m.nLen -= n;
        if (m.nLen < m_nVtxMax)
        {
            const SMesh rest = m;
            Large().pop_back();
            ResizeMesh(rest);
        }
    }

    // Working option membership by stamps.
    void ClearWork()
    {
        m_work.Clear();
        ++m_workStamp;
        m_nClosedOutside = 0;
    }
    bool InWork(uint32_t v) const { return m_vState[v].nWork == m_workStamp; }
    // A triangle at v outside the option had a corner join it; it closes at v when its third corner
    // is in the option too.
    void Closing(uint32_t v, bool closes)
    {
        SVertexState& s = m_vState[v];
        ++s.nClosing;
        if (closes)
        {
            s.nClosed = s.nClosedStamp == m_workStamp ? s.nClosed + 1 : 1;
            s.nClosedStamp = m_workStamp;
        }
    }
    // Unwritten triangles on edge e (both ends outside the option) whose third corner is in it.
    uint32_t Closed(const SEdge& e) const { return e.nStamp == m_workStamp && e.nValue < 0 ? uint32_t(-e.nValue) : 0; }
    // Unwritten triangles at v (outside the option) whose other corners are in the option.
    uint32_t Closed(uint32_t v) const
    {
        const SVertexState& s = m_vState[v];
        return s.nClosedStamp == m_workStamp ? s.nClosed : 0;
    }

    // Adds v to the option. With bCandidates (a growth step whose joining triangles carry the
    // scratch stamp), also does what AddCandidates(v, footprint) would do once they joined.
    template <bool bCandidates = false> void WorkAddVertex(int32_t v, std::vector<int32_t>* footprint = nullptr)
    {
        if (InWork(v))
            return;
        m_vState[v].nWork = m_workStamp;
        m_work.vtx.push_back(v);
        if (bCandidates && footprint)
            Footprint(*footprint, v);
        // Every unwritten triangle at v outside the option may now close against it: the triangles a
        // fast appraisal at its other corners can take change (their counters move). Triangles whose
        // corners are now all in the option but that it does not hold yet are counted.
        for (const int32_t *p = TrisBegin(v), *end = TrisEnd(v); p != end; ++p)
        {
            STriangle& u = m_tri[*p];
            if (u.bUsed || u.nWork == m_workStamp)
                continue;
            if (bCandidates && u.nScratch != m_scratchStamp && u.nCandidate != m_growth)
                AddCandidate(*p, footprint);
            const int c = u.v[0] == uint32_t(v) ? 0 : u.v[1] == uint32_t(v) ? 1 : 2;
            const uint32_t a = u.v[(c + 1) % 3], b = u.v[(c + 2) % 3];
            const bool inA = InWork(a), inB = InWork(b);
            if (inA && inB)
                ++m_nClosedOutside;
            else
            {
                if (!inA)
                    Closing(a, inB);
                if (!inB)
                    Closing(b, inA);
                if (!inA && !inB)
                {
                    SEdge& e = m_edges[m_triEdge[size_t(*p) * 3 + (c + 1) % 3]];
                    e.nValue = e.nStamp == m_workStamp ? e.nValue - 1 : -1;
                    e.nStamp = m_workStamp;
                }
            }
        }
    }
    void WorkAddEdgeUse(int32_t e, int32_t count)
    {
        SEdge& edge = m_edges[e];
        if (edge.nStamp != m_workStamp || edge.nValue < 0)
        {
            edge.nStamp = m_workStamp;
            edge.nValue = static_cast<int32_t>(m_work.edges.size());
            m_work.edges.push_back({e, count});
            m_work.nClosedDelta += EdgeTerm(m_edges[e].nRem, count);
            return;
        }
        int32_t& n = m_work.edges[edge.nValue].nCount;
        m_work.nClosedDelta += EdgeTerm(m_edges[e].nRem, n + count) - EdgeTerm(m_edges[e].nRem, n);
        n += count;
    }
    // Adds a triangle whose corners are all in the option already.
    void WorkAddTriangle(int32_t t)
    {
        --m_nClosedOutside;
        m_tri[t].nWork = m_workStamp;
        m_work.tri.push_back(t);
        for (int c = 0; c < 3; ++c)
            WorkAddEdgeUse(m_triEdge[size_t(t) * 3 + c], 1);
    }

    // Makes a block (the working option or a grown block) the best option, with its stamps.
    template <typename TBlock> void SetBest(const TBlock& b)
    {
        m_best.vtx = b.vtx;
        m_best.tri = b.tri;
        m_best.edges = b.edges;
        m_best.nClosedDelta = b.nClosedDelta;
        ++m_bestStamp;
        for (int32_t v : m_best.vtx)
            m_vBest[v] = m_bestStamp;
        for (int32_t t : m_best.tri)
            m_tri[t].nBest = m_bestStamp;
    }
    void CopyWorkToBest() { SetBest(m_work); }
    void CopyBestToWork()
    {
        ClearWork();
        for (int32_t v : m_best.vtx)
            WorkAddVertex(v);
        for (int32_t t : m_best.tri)
        {
            --m_nClosedOutside;
            m_tri[t].nWork = m_workStamp;
            m_work.tri.push_back(t);
        }
        for (const SEdgeUse& e : m_best.edges)
        {
            m_edges[e.nEdge].nStamp = m_workStamp;
            m_edges[e.nEdge].nValue = static_cast<int32_t>(m_work.edges.size());
            m_work.edges.push_back(e);
        }
        m_work.nClosedDelta = m_best.nClosedDelta;
    }

    // Scratch option of triangle t: t and every triangle around its vertices that it closes against
    // the working option (with their edges unless only the triangles are wanted). False when t's
    // new vertices do not fit.
    bool Appraise(int32_t t, SOption& s, bool bEdges = true)
    {
        s.Clear();
        ++m_scratchStamp;
        const uint32_t* tv = Tri(t);
        for (int c = 0; c < 3; ++c)
            if (!InWork(tv[c]))
                s.vtx.push_back(static_cast<int32_t>(tv[c]));
        if (m_nVtxMax - m_work.vtx.size() < s.vtx.size())
            return false;
        const size_t cap = m_nTriMax - m_work.tri.size();
        for (int c = 0; c < 3; ++c)
        {
            const int32_t v = static_cast<int32_t>(tv[c]);
            for (const int32_t *p = TrisBegin(v), *end = TrisEnd(v); p != end && s.tri.size() < cap; ++p)
            {
                const int32_t u = *p;
                if (m_tri[u].bUsed || m_tri[u].nWork == m_workStamp || m_tri[u].nScratch == m_scratchStamp)
                    continue;
                const uint32_t* uv = Tri(u);
                bool closes = true;
                for (int k = 0; k < 3 && closes; ++k)
                    closes = uv[k] == tv[0] || uv[k] == tv[1] || uv[k] == tv[2] || InWork(uv[k]);
                if (!closes)
                    continue;
                m_tri[u].nScratch = m_scratchStamp;
                s.tri.push_back(u);
                for (int k = 0; k < 3 && bEdges; ++k)
                    ScratchAddEdgeUse(s, m_triEdge[size_t(u) * 3 + k]);
            }
        }
        return true;
    }
    void ScratchAddEdgeUse(SOption& s, int32_t e)
    {
        for (SEdgeUse& use : s.edges)
            if (use.nEdge == e)
            {
                s.nClosedDelta += EdgeTerm(m_edges[e].nRem, use.nCount + 1) - EdgeTerm(m_edges[e].nRem, use.nCount);
                ++use.nCount;
                return;
            }
        s.edges.push_back({e, 1});
        s.nClosedDelta += EdgeTerm(m_edges[e].nRem, 1);
    }

    // The unwritten triangles outside the option at the new corners nv (one or two) whose corners
    // are all in the option or among nv, each once, in the order of the corners' lists. False when
    // there are more than cap. The walk stops once it has the count known from the closing
    // counters (SIZE_MAX when not known).
    bool CollectClosing(const uint32_t* nv, uint32_t nNew, size_t cap, size_t nKnown, std::vector<int32_t>& out) const
    {
        out.clear();
        for (uint32_t i = 0; i < nNew; ++i)
        {
            const uint32_t self = nv[i], other = nNew == 2 ? nv[1 - i] : UINT32_MAX;
            for (const int32_t *p = TrisBegin(int32_t(self)), *end = TrisEnd(int32_t(self)); p != end; ++p)
            {
                const STriangle& u = m_tri[*p];
                if (u.bUsed || u.nWork == m_workStamp)
                    continue;
                bool closes = true;
                for (int k = 0; k < 3 && closes; ++k)
                    closes = u.v[k] == other ? i == 0 /* else met in the first list */
                                             : u.v[k] == self || InWork(u.v[k]);
                if (!closes)
                    continue;
                if (out.size() == cap)
                    return false;
                out.push_back(*p);
                if (out.size() == nKnown)
                    return true;
            }
        }
        return true;
    }

    // The count of triangles the appraisal of a candidate with nNew new corners takes, when its
    // ratio from Ratio is known (the closing counters count exactly those), else SIZE_MAX.
    static size_t KnownCount(uint64_t nRatio, uint32_t nNew)
    {
        return nRatio == UINT64_MAX ? SIZE_MAX : size_t(nRatio * nNew / 6);
    }

    // The count of t's corners not in the option; the first two of them go to nv in corner order.
    uint32_t NewCorners(const uint32_t* tv, uint32_t* nv) const
    {
        uint32_t nNew = 0;
        for (int c = 0; c < 3; ++c)
            if (!InWork(tv[c]))
            {
                if (nNew < 2)
                    nv[nNew] = tv[c];
                ++nNew;
            }
        return nNew;
    }

    // The score of appraising t from the triangle lists of its new vertices only. Exact while no
    // triangle outside the option has all its corners in it (then every triangle the walk would
    // take has a corner among t's new vertices) and the count stays within the cap (so the walk's
    // order does not matter). False when it cannot decide.
    bool AppraiseFast(int32_t t, uint64_t nRatio, bool& accepted, size_t& nNewVtx, SScore& score)
    {
        if (m_nClosedOutside != 0)
            return false;
        uint32_t nv[2];
        const uint32_t nNew = NewCorners(Tri(t), nv);
        if (nNew == 0 || nNew == 3)
            return false;
        nNewVtx = nNew;
        if (m_nVtxMax - m_work.vtx.size() < nNew)
        {
            accepted = false;
            score = Score(0, nNew, 0);
            return true;
        }
        if (!CollectClosing(nv, nNew, m_nTriMax - m_work.tri.size(), KnownCount(nRatio, nNew), m_fastTris))
            return false;
        // Distinct edges of the triangles taken and their use counts; the closed-edge delta is summed
        // at the end. Few triangles close at once, so a linear search is cheapest.
        int32_t* edgeIds = m_fastEdgeIds.data();
        int32_t* edgeUses = m_fastEdgeUses.data();
        size_t nEdges = 0;
        for (int32_t u : m_fastTris)
            for (int k = 0; k < 3; ++k)
            {
                const int32_t e = m_triEdge[size_t(u) * 3 + k];
                size_t j = 0;
                while (j < nEdges && edgeIds[j] != e)
                    ++j;
                if (j == nEdges)
                {
                    edgeIds[nEdges] = e;
                    edgeUses[nEdges++] = 0;
                }
                ++edgeUses[j];
            }
        int delta = 0;
        for (size_t j = 0; j < nEdges; ++j)
            delta += EdgeTerm(m_edges[edgeIds[j]].nRem, edgeUses[j]);
        accepted = true;
        score = Score(m_fastTris.size(), nNew, delta);
        return true;
    }

    // What Appraise(t, s, false) gives, from the triangle lists of t's new corners only: exact under
    // the conditions of AppraiseFast. False when it cannot decide.
    bool AppraiseNewCorners(int32_t t, uint64_t nRatio, SOption& s)
    {
        if (m_nClosedOutside != 0)
            return false;
        uint32_t nv[2];
        const uint32_t nNew = NewCorners(Tri(t), nv);
        if (nNew == 0 || nNew == 3 || m_nVtxMax - m_work.vtx.size() < nNew)
            return false;
        if (!CollectClosing(nv, nNew, m_nTriMax - m_work.tri.size(), KnownCount(nRatio, nNew), m_keptTris))
            return false;
        TakeInWalkOrder(t, m_keptTris, s);
        return true;
    }

    // Sets s to what Appraise(t, s, false) gives when tris are the triangles it takes. Its walk
    // meets them by the first of t's corners they touch, then in triangle order (the order of the
    // lists), which the sort restores.
    void TakeInWalkOrder(int32_t t, const std::vector<int32_t>& tris, SOption& s)
    {
        const uint32_t* tv = Tri(t);
        s.Clear();
        for (int c = 0; c < 3; ++c)
            if (!InWork(tv[c]))
                s.vtx.push_back(static_cast<int32_t>(tv[c]));
        m_walkKeys.clear();
        for (int32_t u : tris)
        {
            const uint32_t* uv = Tri(u);
            uint64_t c = 0;
            while (uv[0] != tv[c] && uv[1] != tv[c] && uv[2] != tv[c])
                ++c;
            const uint64_t key = (c << 32) | uint64_t(u);
            size_t j = m_walkKeys.size();
            m_walkKeys.push_back(key);
            for (; j > 0 && m_walkKeys[j - 1] > key; --j)
                m_walkKeys[j] = m_walkKeys[j - 1];
            m_walkKeys[j] = key;
        }
        for (uint64_t key : m_walkKeys)
            s.tri.push_back(int32_t(key & 0xFFFFFFFFu));
    }

    // Six times the triangles-per-vertex ratio of appraising t, from the counts of triangles that
    // close at its new corners and on the edge between two new corners (all the fast appraisal
    // takes), or UINT64_MAX when those do not decide the appraisal. False when t's new corners do
    // not fit.
    bool Ratio(int32_t t, const uint32_t* tv, uint64_t& ratio) const
    {
        const bool isNew[3] = {!InWork(tv[0]), !InWork(tv[1]), !InWork(tv[2])};
        const uint32_t nNew = uint32_t(isNew[0]) + isNew[1] + isNew[2];
        if (nNew > m_nVtxMax - m_work.vtx.size())
            return false;
        ratio = UINT64_MAX;
        if (m_nClosedOutside != 0)
            return true;
        const size_t cap = m_nTriMax - m_work.tri.size();
        if (nNew == 1)
        {
            const uint64_t n = Closed(tv[isNew[0] ? 0 : isNew[1] ? 1 : 2]);
            if (n <= cap)
                ratio = n * 6;
        }
        else if (nNew == 2)
        {
            const int k = !isNew[2] ? 0 : !isNew[0] ? 1 : 2; // the edge from corner k to k + 1
            const uint64_t n = uint64_t(Closed(tv[k])) + Closed(tv[(k + 1) % 3]) +
                               Closed(m_edges[m_triEdge[size_t(t) * 3 + k]]);
            if (n <= cap)
                ratio = n * 3;
        }
        return true;
    }

    // The score of candidate c under the current option (with its ratio from Ratio), directly when it
    // closes only itself, else from its cached fast appraisal while the
    // counters of its new corners are unchanged and the triangle cap still allows it. False when its
    // new vertices do not fit (final within a growth: the free vertex slots shrink at least as fast
    // as a candidate's new vertices).
    bool CandidateScore(SCandidate& c, const uint32_t* tv, SScore& score)
    {
        uint32_t closing = 0, nNew = 0;
        for (int k = 0; k < 3; ++k)
            if (!InWork(tv[k]))
            {
                closing += m_vState[tv[k]].nClosing;
                ++nNew;
            }
        if (c.nRatio != UINT64_MAX && c.nRatio * nNew == 6)
        {
            // It closes nothing but itself.
            int delta = 0;
            for (int k = 0; k < 3; ++k)
                delta += EdgeTerm(m_edges[m_triEdge[size_t(c.nTriangle) * 3 + k]].nRem, 1);
            score = Score(1, nNew, delta);
            m_scoredFrom = eScoredAlone;
            return true;
        }
        const size_t cap = m_nTriMax - m_work.tri.size();
        m_scoredFrom = eScoredElse;
        if (c.bFast && m_nClosedOutside == 0 && c.nNewVtx == nNew && c.nClosing == closing)
        {
            if (c.nNewVtx > m_nVtxMax - m_work.vtx.size())
                return false;
            if (c.nCap == cap || (c.score.nTri < c.nCap && c.score.nTri <= cap))
            {
                score = c.score;
                return true;
            }
        }
        bool accepted;
        size_t nNewVtx = 0;
        c.bFast = AppraiseFast(c.nTriangle, c.nRatio, accepted, nNewVtx, score);
        if (c.bFast)
            m_scoredFrom = eScoredFast;
        else
        {
            accepted = Appraise(c.nTriangle, m_scratch[1]);
            score = Score(m_scratch[1]);
        }
        c.nClosing = closing;
        c.nCap = static_cast<uint32_t>(cap);
        c.nNewVtx = static_cast<uint8_t>(nNewVtx);
        c.score = score;
        return accepted;
    }

    // Appends v's unwritten triangles outside the option that are not candidates yet. With a
    // footprint given, records v and the corners of those triangles.
    void AddCandidates(int32_t v, std::vector<int32_t>* footprint)
    {
        if (footprint)
            Footprint(*footprint, v);
        for (const int32_t *p = TrisBegin(v), *end = TrisEnd(v); p != end; ++p)
        {
            const STriangle& u = m_tri[*p];
            if (!u.bUsed && u.nWork != m_workStamp && u.nCandidate != m_growth)
                AddCandidate(*p, footprint);
        }
    }
    void AddCandidate(int32_t t, std::vector<int32_t>* footprint)
    {
        STriangle& u = m_tri[t];
        u.nCandidate = m_growth;
        SCandidate c{};
        c.nTriangle = t;
        m_candidates.push_back(c);
        if (footprint)
            for (int k = 0; k < 3; ++k)
                Footprint(*footprint, int32_t(u.v[k]));
    }

    // Grows the working option by the best appraised candidate until nothing fits: the first
    // accepted candidate, replaced by any later one that is better, in the order of the option's
    // vertices and their triangles. With a footprint given, records every vertex whose state the
    // growth read: the option's vertices and the corners of every unwritten triangle at them (each
    // is a candidate or joined the option, whose corners are in it).
    //
    // The candidates of a growth are kept in one list in that order of first appearance: a triangle
    // first appears at the earliest option vertex it touches, vertices only join, and a triangle that
    // joins the option never leaves it. Within a growth every candidate adds at most three vertices,
    // so two different triangle-per-vertex ratios differ by at least 1/6 and "better" is a strict
    // order: the fold over the full walk picks the first candidate with the best score, which is
    // what the fold over the list picks as well.
    void AddBestTriangles(std::vector<int32_t>* footprint = nullptr)
    {
        ++m_growth;
        m_candidates.clear();
        for (int32_t v : m_work.vtx)
            AddCandidates(v, footprint);
        while (m_work.tri.size() < m_nTriMax)
        {
            // Drop the candidates that joined the option or can no longer fit, and take the ratio of
            // the rest where the closing counts decide it.
            uint64_t best = 0;
            size_t live = 0;
            for (size_t i = 0; i < m_candidates.size(); ++i)
            {
                SCandidate& c = m_candidates[i];
                const STriangle& u = m_tri[c.nTriangle];
                if (u.nWork == m_workStamp)
                    continue; // joined the option
                if (!Ratio(c.nTriangle, u.v, c.nRatio))
                    continue; // refused for good
                if (c.nRatio != UINT64_MAX)
                    best = std::max(best, c.nRatio);
                if (live != i) // records move only once one has gone
                    m_candidates[live] = c;
                ++live;
            }
            m_candidates.resize(live);
            // The fold over the candidates that can reach the best ratio known (the winner has the
            // best ratio of all, and ratios that differ are never within 0.1 of each other here).
            int32_t kept = -1;
            SScore keptScore{};
            bool keptTrisKnown = false;
            uint64_t keptRatio = UINT64_MAX;
            for (SCandidate& c : m_candidates)
            {
                SScore score;
                if (c.nRatio < best || !CandidateScore(c, Tri(c.nTriangle), score))
                    continue;
                if (kept < 0 || IsBetterThan(score, keptScore))
                {
                    kept = c.nTriangle;
                    keptScore = score;
                    keptRatio = c.nRatio;
                    // Keep the triangles the score was taken from when they are at hand.
                    keptTrisKnown = m_scoredFrom != eScoredElse;
                    if (m_scoredFrom == eScoredAlone)
                        m_keptTris.assign(1, kept);
                    else if (m_scoredFrom == eScoredFast)
                        std::swap(m_keptTris, m_fastTris);
                }
            }
            // The winner's triangles in the appraisal's walk order (it cannot be refused here: its
            // score was taken under the same option).
            if (kept < 0)
                break;
            if (keptTrisKnown)
                TakeInWalkOrder(kept, m_keptTris, m_scratch[0]);
            else if (!AppraiseNewCorners(kept, keptRatio, m_scratch[0]) && !Appraise(kept, m_scratch[0], false))
                break;
            // The new vertices list their triangles that stay outside as candidates, in the order
            // of the vertices and their lists.
            ++m_scratchStamp;
            for (int32_t t : m_scratch[0].tri)
                m_tri[t].nScratch = m_scratchStamp;
            for (int32_t v : m_scratch[0].vtx)
                WorkAddVertex<true>(v, footprint);
            for (int32_t t : m_scratch[0].tri)
                WorkAddTriangle(t);
        }
    }

    void Footprint(std::vector<int32_t>& footprint, int32_t v)
    {
        if (m_vFootprint[v] != m_footprintStamp)
        {
            m_vFootprint[v] = m_footprintStamp;
            footprint.push_back(v);
        }
    }

    // The block grown from v, from the cache when none of the vertices it read has changed since.
    // Null when the growth did not fill up (the working option then holds the closed piece).
    const SGrownBlock* GrowFrom(int32_t v)
    {
        int32_t& slot = m_blockOf[v];
        if (slot >= 0 && m_blocks[slot].bValid)
            return &m_blocks[slot];
        ClearWork();
        WorkAddVertex(v);
        ++m_footprintStamp;
        m_footprintScratch.clear();
        AddBestTriangles(&m_footprintScratch);
        if (!m_work.Full(m_nTriMax))
            return nullptr;
        if (slot < 0)
        {
            if (m_freeBlocks.empty())
            {
                slot = static_cast<int32_t>(m_blocks.size());
                m_blocks.emplace_back();
            }
            else
            {
                slot = m_freeBlocks.back();
                m_freeBlocks.pop_back();
            }
        }
        SGrownBlock& b = m_blocks[slot];
        ++b.nGeneration;
        b.bValid = true;
        b.vtx = m_work.vtx;
        b.tri = m_work.tri;
        b.edges = m_work.edges;
        b.nClosedDelta = m_work.nClosedDelta;
        b.score = Score(m_work);
        // Each vertex read remembers the block, so that a change there invalidates it.
        for (int32_t x : m_footprintScratch)
        {
            int32_t node;
            if (m_freeDeps.empty())
            {
                node = static_cast<int32_t>(m_deps.size());
                m_deps.emplace_back();
            }
            else
            {
                node = m_freeDeps.back();
                m_freeDeps.pop_back();
            }
            m_deps[node] = {slot, b.nGeneration, m_depHead[x]};
            m_depHead[x] = node;
        }
        return &b;
    }

    // Invalidates the grown blocks that read vertex v.
    void VertexChanged(int32_t v)
    {
        for (int32_t node = m_depHead[v]; node >= 0;)
        {
            const SDependency d = m_deps[node];
            if (m_blocks[d.nBlock].nGeneration == d.nGeneration)
                m_blocks[d.nBlock].bValid = false;
            m_freeDeps.push_back(node);
            node = d.nNext;
        }
        m_depHead[v] = -1;
    }

    void DropGrownBlock(int32_t v)
    {
        if (m_blockOf[v] >= 0)
        {
            SGrownBlock& b = m_blocks[m_blockOf[v]];
            ++b.nGeneration;
            b.bValid = false;
            m_freeBlocks.push_back(m_blockOf[v]);
            m_blockOf[v] = -1;
        }
    }

    // Grows a block from one vertex of the large mesh. A block that does not fill up is a closed
    // piece: it is split off and false returned. A full block replaces the best when better.
    bool FillFrom(int32_t v)
    {
        const SGrownBlock* b = GrowFrom(v);
        if (!b)
        {
            TakeBestBlock(); // before any grown block is dropped
            for (int32_t x : m_work.vtx)
                DropGrownBlock(x);
            SplitMesh(m_work.vtx);
            return false;
        }
        if ((m_nBestBlock < 0 && m_best.Empty()) ||
            IsBetterThan(BlockScore(*b), m_nBestBlock >= 0 ? BlockScore(m_blocks[m_nBestBlock]) : Score(m_best)))
            m_nBestBlock = m_blockOf[v];
        return true;
    }

    static const SScore& BlockScore(const SGrownBlock& b) { return b.score; }

    // While grown blocks are compared the best of them is only named (most are beaten again soon);
    // it becomes the best option here, before anything reads the best option or drops a block.
    void TakeBestBlock()
    {
        if (m_nBestBlock < 0)
            return;
        const int32_t slot = m_nBestBlock;
        m_nBestBlock = -1;
        SetBest(m_blocks[slot]);
    }

    // Counts the unwritten triangles of a mesh that are not yet in the best option.
    size_t NewTriangles(SMesh m)
    {
        ++m_scratchStamp;
        size_t n = 0;
        for (uint32_t p = m.nStart; p < m.nStart + m.nLen; ++p)
            for (const int32_t* q = TrisBegin(m_list[p]); q != TrisEnd(m_list[p]); ++q)
                if (!m_tri[*q].bUsed && m_tri[*q].nBest != m_bestStamp && m_tri[*q].nScratch != m_scratchStamp)
                {
                    m_tri[*q].nScratch = m_scratchStamp;
                    ++n;
                }
        return n;
    }

    void PackWhole(SMesh m)
    {
        for (uint32_t p = m.nStart; p < m.nStart + m.nLen; ++p)
        {
            const int32_t v = m_list[p];
            if (m_vBest[v] != m_bestStamp)
            {
                m_vBest[v] = m_bestStamp;
                m_best.vtx.push_back(v);
            }
        }
        for (uint32_t p = m.nStart; p < m.nStart + m.nLen; ++p)
            for (const int32_t* q = TrisBegin(m_list[p]); q != TrisEnd(m_list[p]); ++q)
                if (!m_tri[*q].bUsed && m_tri[*q].nBest != m_bestStamp)
                {
                    m_tri[*q].nBest = m_bestStamp;
                    m_best.tri.push_back(*q);
                }
    }

    // Chooses the next block into the best option. Returns the index of a mesh list whose last mesh
    // the block started from (to be compacted after output), or -1.
    int Fill()
    {
        for (bool restart = true; restart;)
        {
            restart = false;
            if (Large().empty())
                break;
            const SMesh m = Large().back();
            const uint32_t end = m.nStart + m.nLen;
            for (size_t p = m_rem1.Next(m.nStart, end); p < end; p = m_rem1.Next(p + 1, end))
                if (!FillFrom(m_list[p]))
                {
                    restart = true;
                    break;
                }
            TakeBestBlock();
            if (restart)
                continue;
            if (m_best.Empty())
            {
                const size_t p = m_remAny.Next(m.nStart, end);
                if (p < end && !FillFrom(m_list[p]))
                {
                    restart = true;
                    continue;
                }
                TakeBestBlock();
                if (m_best.Empty())
                {
                    Large().pop_back();
                    restart = true;
                    continue;
                }
            }
            if (m_best.Full(m_nTriMax))
                return -1;
        }

        // Pack small meshes whole, largest that fits first.
        for (int j = int(m_nVtxMax) - int(m_best.vtx.size()) - 3; j >= 0 && m_nVtxMax - m_best.vtx.size() >= 3;)
        {
            if (!m_lists[j].empty() && m_best.tri.size() + NewTriangles(m_lists[j].back()) <= m_nTriMax)
            {
                PackWhole(m_lists[j].back());
                m_lists[j].pop_back();
                j = std::min(j, int(m_nVtxMax) - int(m_best.vtx.size()) - 3);
            }
            else
                --j;
        }
        if (m_best.Full(m_nTriMax))
            return -1;

        // Fill the rest from the first vertex of the largest remaining piece (not one of 3 vertices).
        CopyBestToWork();
        int n = int(m_nVtxMax) - 3;
        while (n >= 1 && m_lists[n].empty())
            --n;
        if (n < 1)
            return -1;
        WorkAddVertex(m_list[m_lists[n].back().nStart]);
        AddBestTriangles();
        CopyWorkToBest();
        return n;
    }

    // Writes the best option's triangles and marks them written; their vertices change.
    void Output()
    {
        for (int32_t t : m_best.tri)
        {
            for (int c = 0; c < 3; ++c)
            {
                const int32_t v = static_cast<int32_t>(Tri(t)[c]);
                if (--m_rem[v] <= 1)
                    UpdateBits(v); // the bits only change on the way from 2 to 0
                VertexChanged(v);
                DropGrownBlock(v);
                --m_edges[m_triEdge[size_t(t) * 3 + c]].nRem;
                m_pOut->push_back(Tri(t)[c]);
            }
            m_tri[t].bUsed = 1;
            ++m_nWritten;
        }
    }

    // Triangles no block took (only possible for pieces of more triangles than a block holds, which
    // a piece of three vertices with repeated triangles can be) and triangles that repeat an index, in
    // input order, in blocks within both limits.
    void FlushLeftovers(std::vector<uint32_t>& blocks)
    {
        std::vector<uint32_t> blockVtx;
        uint32_t blockTri = 0;
        auto flushTri = [&](uint32_t t) {
            const uint32_t* tv = Tri(int32_t(t));
            size_t added = 0;
            for (int c = 0; c < 3; ++c)
                added += std::count(blockVtx.begin(), blockVtx.end(), tv[c]) == 0 &&
                         std::find(tv, tv + c, tv[c]) == tv + c;
            if (blockTri == m_nTriMax || blockVtx.size() + added > m_nVtxMax)
            {
                blocks.push_back(blockTri);
                blockTri = 0;
                blockVtx.clear();
            }
            for (int c = 0; c < 3; ++c)
            {
                if (std::count(blockVtx.begin(), blockVtx.end(), tv[c]) == 0)
                    blockVtx.push_back(tv[c]);
                m_pOut->push_back(tv[c]);
            }
            ++blockTri;
        };
        for (uint32_t t = 0; t < m_nTri; ++t)
            if (!m_degenerate[t] && !m_tri[t].bUsed)
                flushTri(t);
        for (uint32_t t = 0; t < m_nTri; ++t)
            if (m_degenerate[t])
                flushTri(t);
        if (blockTri)
            blocks.push_back(blockTri);
    }

    const uint32_t* m_pnIdx;
    uint32_t m_nVtx, m_nTri, m_nVtxMax, m_nTriMax;
    uint32_t m_nModelTri = 0, m_nWritten = 0;
    QMXTLargeVector<uint32_t> m_triStart;
    QMXTLargeVector<int32_t> m_triList, m_rem, m_triEdge, m_list;
    QMXTLargeVector<SEdge> m_edges;
    QMXTLargeVector<uint32_t> m_slot;
    QMXTLargeVector<uint8_t> m_degenerate;
    std::vector<std::vector<SMesh>> m_lists; // by vertex count - 3; the last holds the large meshes
    CSlotBits m_rem1, m_remAny;              // slots whose vertex has exactly one / any triangle left
    SOption m_work, m_best, m_scratch[2];
    // Per triangle its corners, option membership stamps (the arrays start at 0, the stamps at 1)
    // and the written flag, in one record.
    struct STriangle
    {
        uint32_t v[3];
        uint32_t nWork, nBest, nScratch;
        uint32_t nCandidate; // growth that listed it as a candidate
        uint8_t bUsed;
    };
    // Per vertex: the option stamp, a counter of changes of the triangles that could close against
    // the option there, and the count of those that do (valid with its stamp).
    struct SVertexState
    {
        uint32_t nWork, nClosing, nClosedStamp, nClosed;
    };
    QMXTLargeVector<SVertexState> m_vState;
    QMXTLargeVector<uint32_t> m_vBest;
    QMXTLargeVector<STriangle> m_tri;
    uint32_t m_workStamp = 1, m_bestStamp = 1, m_scratchStamp = 1;
    QMXTLargeVector<uint32_t>* m_pOut = nullptr;
    // Grown blocks by start vertex; per vertex the blocks that read it (a free-listed node pool).
    struct SDependency
    {
        int32_t nBlock;
        uint32_t nGeneration;
        int32_t nNext;
    };
    std::vector<SGrownBlock> m_blocks;
    QMXTLargeVector<int32_t> m_blockOf, m_depHead;
    std::vector<int32_t> m_freeBlocks, m_footprintScratch, m_freeDeps;
    std::vector<SDependency> m_deps;
    QMXTLargeVector<uint32_t> m_vFootprint;
    uint32_t m_footprintStamp = 0;
    std::vector<SCandidate> m_candidates; // of the current growth
    size_t m_nClosedOutside = 0;        // triangles with all corners in the option, not in it
    std::vector<int32_t> m_fastEdgeIds, m_fastEdgeUses; // three entries a triangle under the cap
    std::vector<int32_t> m_fastTris;                    // the triangles of the last fast appraisal
    std::vector<int32_t> m_keptTris;                    // the triangles of the growth's next winner
    // Where CandidateScore took its last score from: a fresh fast appraisal (its triangles are in
    // m_fastTris), the candidate alone, or elsewhere (cache or full appraisal).
    enum EScoredFrom
    {
        eScoredFast,
        eScoredAlone,
        eScoredElse
    } m_scoredFrom = eScoredElse;
    std::vector<uint64_t> m_walkKeys;                   // sort keys of the winner's triangles
    uint32_t m_growth = 0; // stamps the candidates listed by the current growth
    int32_t m_nBestBlock = -1; // grown block that is the best so far, not yet taken into m_best
};

// New vertex numbers by first use; records move with them.
bool Renumber(uint8_t* pVertices, uint32_t* pnIdx, uint32_t nStride, uint32_t nVertexNum, size_t nIdxNum)
{
    QMXTLargeVector<uint32_t> newNum(nVertexNum, UINT32_MAX);
    uint8_t* scratch = static_cast<uint8_t*>(QMXTLargeAlloc(size_t(nVertexNum) * nStride + 1));
    if (!scratch)
        return false;
    uint32_t next = 0;
    for (size_t i = 0; i < nIdxNum; ++i)
    {
        uint32_t& n = newNum[pnIdx[i]];
        if (n == UINT32_MAX)
        {
            std::memcpy(scratch + size_t(next) * nStride, pVertices + size_t(pnIdx[i]) * nStride, nStride);
            n = next++;
        }
        pnIdx[i] = n;
    }
    std::memcpy(pVertices, scratch, size_t(next) * nStride);
    QMXTLargeFree(scratch);
    return true;
}
} // namespace

int QMXTGeometrySort(void* pVertices, uint32_t* pnIdx, uint32_t nStride, uint32_t nVertexNum, uint32_t nTriNum,
                     uint32_t nBlockVertexMax, uint32_t nBlockTriMax, uint32_t nFlags, uint32_t* pnBlockNum,
                     uint32_t* pnBlockTri)
{
    const bool reorder = nFlags & eQMXTGeometrySortReorder;
    const bool renumber = !(nFlags & eQMXTGeometrySortKeepVertices);
    if (nBlockVertexMax < 4 || nBlockTriMax < 1 || (nTriNum && !pnIdx))
        return 1;
    if (nVertexNum > INT32_MAX || nTriNum > INT32_MAX / 3)
        return 1; // vertex and triangle numbers are kept as signed 32-bit values
    if (renumber && nVertexNum && (!pVertices || nStride == 0))
        return 1;
    const size_t nIdxNum = size_t(nTriNum) * 3;
    for (size_t i = 0; i < nIdxNum; ++i)
        if (pnIdx[i] >= nVertexNum)
            return 1;
    try
    {
        std::vector<uint32_t> blocks;
        if (reorder && nTriNum)
        {
            QMXTLargeVector<uint32_t> out;
            CGeometrySorter(pnIdx, nVertexNum, nTriNum, nBlockVertexMax, nBlockTriMax).Sort(out, blocks);
            if (renumber && !Renumber(static_cast<uint8_t*>(pVertices), out.data(), nStride, nVertexNum, nIdxNum))
                return 1;
            std::copy(out.begin(), out.end(), pnIdx);
        }
        else if (renumber && !Renumber(static_cast<uint8_t*>(pVertices), pnIdx, nStride, nVertexNum, nIdxNum))
            return 1;
        if (pnBlockNum)
        {
            *pnBlockNum = static_cast<uint32_t>(blocks.size());
            if (pnBlockTri)
                std::copy(blocks.begin(), blocks.end(), pnBlockTri);
        }
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}
