// Plain reference versions of the geometry toolkit (see the header).
#include "GeometryReference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>

#include "QMXTMath.h"
#include "QMXTTangentSpace.h"

namespace ref
{
namespace
{
bool IsDegenerate(const uint32_t* t)
{
    return t[0] == t[1] || t[1] == t[2] || t[0] == t[2];
}

// ---------------------------------------------------------------------------------------------------
// Vertex-cache sort.

struct STri;
struct SVtx
{
    std::vector<STri*> tris;
    int nRemaining = 0;
    SVtx** ppSlot = nullptr;
    uint32_t nId = 0;
};
struct SEdg
{
    SVtx* pV[2];
    int nRemaining = 0;
};
struct STri
{
    const uint32_t* pIdx;
    SEdg* pEdg[3];
    bool bUsed = false;
};
struct SMesh
{
    SVtx** ppVtx;
    uint32_t nNum;
};

struct COption
{
    uint32_t nVtxMax = 0, nTriMax = 0;
    std::vector<SVtx*> vtx;
    std::vector<STri*> tri;
    std::vector<std::pair<SEdg*, int>> edges;

    void Clear()
    {
        vtx.clear();
        tri.clear();
        edges.clear();
    }
    bool Uses(SVtx* v) const { return std::find(vtx.begin(), vtx.end(), v) != vtx.end(); }
    bool Has(STri* t) const { return std::find(tri.begin(), tri.end(), t) != tri.end(); }
    void AddVertex(SVtx* v)
    {
        if (!Uses(v))
            vtx.push_back(v);
    }
    void AddTriangle(STri* t, bool withEdges)
    {
        tri.push_back(t);
        if (!withEdges)
            return;
        for (SEdg* e : t->pEdg)
        {
            auto it = std::find_if(edges.begin(), edges.end(), [e](const auto& p) { return p.first == e; });
            if (it == edges.end())
                edges.push_back({e, 1});
            else
                ++it->second;
        }
    }
    bool Full() const { return nVtxMax - vtx.size() < 3 || tri.size() == nTriMax; }
    int ClosedEdgeDelta() const
    {
        int delta = 0;
        for (const auto& [e, n] : edges)
        {
            const int d = e->nRemaining - n;
            if (d == 0 && e->nRemaining == 1)
                ++delta;
            else if (d == 1)
                --delta;
        }
        return delta;
    }
};

bool IsBetterThan(const COption& a, const COption& b)
{
    const float ra = a.vtx.empty() ? INFINITY : float(a.tri.size()) / float(a.vtx.size());
    const float rb = b.vtx.empty() ? INFINITY : float(b.tri.size()) / float(b.vtx.size());
    if (std::fabs(ra - rb) > 0.1f)
        return ra > rb;
    const int da = a.ClosedEdgeDelta(), db = b.ClosedEdgeDelta();
    if (da != db)
        return da > db;
    return a.tri.size() > b.tri.size();
}

class CObject
{
  public:
    CObject(const uint32_t* idx, uint32_t nVtx, uint32_t nTri, uint32_t nVtxMax, uint32_t nTriMax)
        : m_vtx(nVtx), m_list(nVtx), m_lists(nVtxMax - 2), m_nVtxMax(nVtxMax), m_nTriMax(nTriMax)
    {
        m_tris.reserve(nTri);
        for (uint32_t t = 0; t < nTri; ++t)
            if (!IsDegenerate(idx + t * 3))
                m_tris.push_back(STri{idx + t * 3, {}, false});
        m_pool.reserve(m_tris.size() * 3);
        for (uint32_t v = 0; v < nVtx; ++v)
            m_vtx[v].nId = v;
        for (STri& t : m_tris)
            for (int c = 0; c < 3; ++c)
            {
                t.pEdg[c] = FindOrCreateEdge(&m_vtx[t.pIdx[c]], &m_vtx[t.pIdx[(c + 1) % 3]]);
                ++t.pEdg[c]->nRemaining;
                ++m_vtx[t.pIdx[c]].nRemaining;
            }
        for (STri& t : m_tris)
            for (int c = 0; c < 3; ++c)
                m_vtx[t.pIdx[c]].tris.push_back(&t);
        GroupMeshes();
        for (COption* o : {&m_work, &m_best})
            *o = COption{nVtxMax, nTriMax, {}, {}, {}};
        for (COption& o : m_scratch)
            o = COption{3, nTriMax, {}, {}, {}};
    }

    void Sort(std::vector<uint32_t>& out, std::vector<uint32_t>& blocks)
    {
        size_t written = 0;
        while (written < m_tris.size())
        {
            for (COption* o : {&m_work, &m_best, &m_scratch[0], &m_scratch[1]})
                o->Clear();
            const int n = Fill();
            if (m_best.tri.empty() && n < 0)
                break;
            if (!m_best.tri.empty())
                blocks.push_back(uint32_t(m_best.tri.size()));
            for (STri* t : m_best.tri)
            {
                for (int c = 0; c < 3; ++c)
                {
                    --m_vtx[t->pIdx[c]].nRemaining;
                    --t->pEdg[c]->nRemaining;
                    out.push_back(t->pIdx[c]);
                }
                t->bUsed = true;
                ++written;
            }
            if (n >= 0)
            {
                ResizeMesh(m_lists[n].back());
                m_lists[n].pop_back();
            }
        }
    }

    bool Used(const uint32_t* pIdx) const
    {
        for (const STri& t : m_tris)
            if (t.pIdx == pIdx)
                return t.bUsed;
        return false;
    }

  private:
    SEdg* FindOrCreateEdge(SVtx* a, SVtx* b)
    {
        SVtx* lo = std::min(a, b);
        SVtx* hi = std::max(a, b);
        for (size_t i = m_pool.size(); i-- > 0;)
            if (m_pool[i].pV[0] == lo && m_pool[i].pV[1] == hi)
                return &m_pool[i];
        m_pool.push_back(SEdg{{lo, hi}, 0});
        return &m_pool.back();
    }

    void GroupMeshes()
    {
        std::vector<bool> placed(m_vtx.size(), false);
        size_t end = 0;
        for (size_t v = 0; v < m_vtx.size(); ++v)
        {
            if (placed[v])
                continue;
            const size_t start = end;
            placed[v] = true;
            m_list[end++] = &m_vtx[v];
            for (size_t k = start; k < end; ++k)
                for (STri* t : m_list[k]->tris)
                    for (int c = 0; c < 3; ++c)
                        if (!placed[t->pIdx[c]])
                        {
                            placed[t->pIdx[c]] = true;
                            m_list[end++] = &m_vtx[t->pIdx[c]];
                        }
            if (end - start > 2)
                Push(SMesh{&m_list[start], uint32_t(end - start)});
        }
        for (size_t s = 0; s < m_list.size(); ++s)
            m_list[s]->ppSlot = &m_list[s];
    }

    void Push(SMesh m) { m_lists[m.nNum >= m_nVtxMax ? m_nVtxMax - 3 : m.nNum - 3].push_back(m); }
    std::vector<SMesh>& Large() { return m_lists[m_nVtxMax - 3]; }

    void ResizeMesh(SMesh& m)
    {
        uint32_t w = 0;
        for (uint32_t i = 0; i < m.nNum; ++i)
            if (m.ppVtx[i]->nRemaining != 0)
            {
                m.ppVtx[w] = m.ppVtx[i];
                m.ppVtx[w]->ppSlot = &m.ppVtx[w];
                ++w;
            }
        m.nNum = w;
        if (w > 0)
            Push(m);
    }

    void SplitMesh(SMesh& m, const std::vector<SVtx*>& vtx)
    {
        for (size_t k = 0; k < vtx.size(); ++k)
        {
            SVtx** slot = vtx[k]->ppSlot;
            SVtx** front = m.ppVtx + k;
            std::swap(*slot, *front);
            (*slot)->ppSlot = slot;
            (*front)->ppSlot = front;
        }
        const uint32_t n = uint32_t(vtx.size());
        Push(SMesh{m.ppVtx, n});
        m.ppVtx += n;
        m.nNum -= n;
        if (m.nNum < m_nVtxMax)
        {
            ResizeMesh(m);
            Large().pop_back();
        }
    }

    bool Appraise(STri* t, COption& s)
    {
        s.Clear();
        SVtx* tv[3] = {&m_vtx[t->pIdx[0]], &m_vtx[t->pIdx[1]], &m_vtx[t->pIdx[2]]};
        for (SVtx* v : tv)
            if (!m_work.Uses(v))
                s.AddVertex(v);
        if (m_work.nVtxMax - m_work.vtx.size() < s.vtx.size())
            return false;
        for (SVtx* v : tv)
            for (size_t k = 0; k < v->tris.size() && s.tri.size() < m_nTriMax - m_work.tri.size(); ++k)
            {
                STri* u = v->tris[k];
                if (u->bUsed || m_work.Has(u) || s.Has(u))
                    continue;
                bool closes = true;
                for (int c = 0; c < 3; ++c)
                {
                    SVtx* x = &m_vtx[u->pIdx[c]];
                    closes = closes && (x == tv[0] || x == tv[1] || x == tv[2] || m_work.Uses(x));
                }
                if (closes)
                    s.AddTriangle(u, true);
            }
        return true;
    }

    void AddBestTriangles()
    {
        while (m_work.tri.size() < m_nTriMax)
        {
            COption* kept = nullptr;
            for (size_t i = 0; i < m_work.vtx.size(); ++i)
            {
                SVtx* v = m_work.vtx[i];
                if (v->nRemaining == 0)
                    continue;
                for (STri* t : v->tris)
                {
                    if (t->bUsed || m_work.Has(t))
                        continue;
                    COption* s = kept == &m_scratch[0] ? &m_scratch[1] : &m_scratch[0];
                    if (Appraise(t, *s) && (!kept || IsBetterThan(*s, *kept)))
                        kept = s;
                }
            }
            if (!kept)
                break;
            for (SVtx* v : kept->vtx)
                m_work.AddVertex(v);
            for (STri* t : kept->tri)
                m_work.AddTriangle(t, true);
        }
    }

    bool FillFrom(SMesh& m, SVtx* v)
    {
        m_work.Clear();
        m_work.AddVertex(v);
        AddBestTriangles();
        if (!m_work.Full())
        {
            SplitMesh(m, m_work.vtx);
            return false;
        }
        if (m_best.vtx.empty() || IsBetterThan(m_work, m_best))
            m_best = m_work;
        return true;
    }

    int Fill()
    {
    restart:
        if (!Large().empty())
        {
            SMesh& m = Large().back();
            for (uint32_t i = 0; i < m.nNum; ++i)
                if (m.ppVtx[i]->nRemaining == 1 && !FillFrom(m, m.ppVtx[i]))
                    goto restart;
            if (m_best.vtx.empty())
            {
                for (uint32_t i = 0; i < m.nNum; ++i)
                    if (m.ppVtx[i]->nRemaining != 0)
                    {
                        if (!FillFrom(m, m.ppVtx[i]))
                            goto restart;
                        break;
                    }
                if (m_best.vtx.empty())
                {
                    Large().pop_back();
                    goto restart;
                }
            }
            if (m_best.Full())
                return -1;
        }
        for (int j = int(m_nVtxMax) - int(m_best.vtx.size()) - 3; j >= 0 && m_nVtxMax - m_best.vtx.size() >= 3;)
        {
            if (!m_lists[j].empty() && Fits(m_lists[j].back()))
            {
                const SMesh m = m_lists[j].back();
                for (uint32_t i = 0; i < m.nNum; ++i)
                    m_best.AddVertex(m.ppVtx[i]);
                for (uint32_t i = 0; i < m.nNum; ++i)
                    for (STri* t : m.ppVtx[i]->tris)
                        if (!t->bUsed && !m_best.Has(t))
                            m_best.AddTriangle(t, false);
                m_lists[j].pop_back();
                j = std::min(j, int(m_nVtxMax) - int(m_best.vtx.size()) - 3);
            }
            else
                --j;
        }
        if (m_best.Full())
            return -1;
        m_work = m_best;
        for (int n = int(m_nVtxMax) - 3; n >= 1; --n)
            if (!m_lists[n].empty())
            {
                m_work.AddVertex(m_lists[n].back().ppVtx[0]);
                AddBestTriangles();
                m_best = m_work;
                return n;
            }
        return -1;
    }

    // A mesh fits when its unwritten triangles fit in what the best option has left.
    bool Fits(const SMesh& m) const
    {
        std::vector<STri*> seen;
        for (uint32_t i = 0; i < m.nNum; ++i)
            for (STri* t : m.ppVtx[i]->tris)
                if (!t->bUsed && !m_best.Has(t) && std::find(seen.begin(), seen.end(), t) == seen.end())
                    seen.push_back(t);
        return m_best.tri.size() + seen.size() <= m_nTriMax;
    }

    std::vector<SVtx> m_vtx;
    std::vector<STri> m_tris;
    std::vector<SEdg> m_pool;
    std::vector<SVtx*> m_list;
    std::vector<std::vector<SMesh>> m_lists;
    uint32_t m_nVtxMax, m_nTriMax;
    COption m_work, m_best, m_scratch[2];
};

// Leftover and repeated-index triangles, in input order, in blocks within both limits.
void Flush(const uint32_t* idx, const std::vector<uint32_t>& tris, uint32_t nVtxMax, uint32_t nTriMax,
           std::vector<uint32_t>& out, std::vector<uint32_t>& blocks, uint32_t& blockTri, std::set<uint32_t>& blockVtx)
{
    for (uint32_t t : tris)
    {
        const std::set<uint32_t> corners(idx + t * 3, idx + t * 3 + 3);
        std::set<uint32_t> joined = blockVtx;
        joined.insert(corners.begin(), corners.end());
        if (blockTri == nTriMax || joined.size() > nVtxMax)
        {
            blocks.push_back(blockTri);
            blockTri = 0;
            blockVtx.clear();
        }
        blockVtx.insert(corners.begin(), corners.end());
        out.insert(out.end(), idx + t * 3, idx + t * 3 + 3);
        ++blockTri;
    }
}

void RenumberByFirstUse(std::vector<uint8_t>& vertices, std::vector<uint32_t>& idx, uint32_t nStride)
{
    std::vector<uint8_t> scratch(vertices.size());
    std::vector<int64_t> newNum(vertices.size() / nStride, -1);
    uint32_t next = 0;
    for (uint32_t& i : idx)
    {
        if (newNum[i] < 0)
        {
            std::memcpy(&scratch[size_t(next) * nStride], &vertices[size_t(i) * nStride], nStride);
            newNum[i] = next++;
        }
        i = uint32_t(newNum[i]);
    }
    std::memcpy(vertices.data(), scratch.data(), size_t(next) * nStride);
}

// ---------------------------------------------------------------------------------------------------
// Triangle strips.

struct CTri;
struct CTriState
{
    CTri* pPrev = nullptr;
    CTri* pNext = nullptr;
    bool bWinding = false;
};
struct CTri
{
    CTriState sCur, sCemented;
    CTri* pAdj[3] = {nullptr, nullptr, nullptr};
    bool bInWalk = false;
    const uint32_t* pIdx = nullptr;

    int FindEdge(uint32_t a, uint32_t b) const
    {
        for (int e = 0; e < 3; ++e)
            if (pIdx[e] == a && pIdx[(e + 1) % 3] == b)
                return e;
        return -1;
    }
    int EdgeFromAdjTri(const CTri* t) const
    {
        for (int e = 0; e < 3; ++e)
            if (pAdj[e] == t)
                return e;
        return -1;
    }
    void Undo() { sCur = sCemented; }
    void Cement() { sCemented = sCur; }
};

class CStrip
{
  public:
    explicit CStrip(const std::vector<uint32_t>& idx) : m_tri(idx.size() / 3)
    {
        for (size_t i = 0; i < m_tri.size(); ++i)
            m_tri[i].pIdx = &idx[i * 3];
        m_nStrips = int64_t(m_tri.size());
        for (size_t i = 0; i < m_tri.size(); ++i)
        {
            CTri& ti = m_tri[i];
            if (IsDegenerate(ti.pIdx))
                continue;
            for (size_t j = 0; j < i; ++j)
            {
                CTri& tj = m_tri[j];
                if (ti.pAdj[0] && ti.pAdj[1] && ti.pAdj[2])
                    break;
                if (IsDegenerate(tj.pIdx))
                    continue;
                for (int e = 0; e < 3; ++e)
                {
                    if (ti.pAdj[e] || ti.EdgeFromAdjTri(&tj) >= 0)
                        continue;
                    const int f = tj.FindEdge(ti.pIdx[(e + 1) % 3], ti.pIdx[e]);
                    if (f >= 0 && !tj.pAdj[f])
                    {
                        ti.pAdj[e] = &tj;
                        tj.pAdj[f] = &ti;
                    }
                }
            }
        }
    }

    void StripFromEdges()
    {
        for (CTri& t : m_tri)
        {
            const int nAdj = !!t.pAdj[0] + !!t.pAdj[1] + !!t.pAdj[2];
            if (nAdj != 1)
                continue;
            CTri* cur = &t;
            int edge = t.pAdj[0] ? 0 : t.pAdj[1] ? 1 : 2;
            std::set<std::pair<CTri*, int>> tried;
            for (;;)
            {
                if (!tried.insert({cur, edge}).second)
                    break;
                while (StripGrow(cur, edge, -1))
                {
                }
                CTri* n1 = cur->pAdj[edge];
                if (!n1)
                    break;
                const int e1 = (n1->EdgeFromAdjTri(cur) + 1) % 3;
                CTri* n2 = n1->pAdj[e1];
                if (!n2)
                    break;
                edge = (n2->EdgeFromAdjTri(n1) + 2) % 3;
                cur = n2;
            }
        }
    }

    void StripImprove()
    {
        struct SKey
        {
            uint32_t nKey;
            CTri* pTri;
        };
        std::vector<SKey> keys(m_tri.size());
        int passes = 2, threshold = 0;
        while (passes != 0)
        {
            --passes;
            for (size_t i = 0; i < m_tri.size(); ++i)
            {
                const uint32_t a = uint32_t(rand());
                const uint32_t b = uint32_t(rand());
                keys[i] = {a * b, &m_tri[i]};
            }
            qsort(keys.data(), keys.size(), sizeof(SKey), [](const void* x, const void* y) {
                return int(int32_t(static_cast<const SKey*>(x)->nKey - static_cast<const SKey*>(y)->nKey));
            });
            bool improved = false;
            for (const SKey& k : keys)
                for (int e = 0; e < 3; ++e)
                    improved = StripGrow(k.pTri, e, threshold) || improved;
            if (improved)
                passes = 2;
            threshold = threshold == 0 ? -1 : 0;
        }
    }

    void Output(std::vector<uint32_t>& idx, std::vector<uint32_t>& len) const
    {
        for (const CTri& t : m_tri)
        {
            if (t.sCur.pPrev)
                continue;
            if (!t.sCur.pNext)
            {
                idx.insert(idx.end(), t.pIdx, t.pIdx + 3);
                len.push_back(1);
                continue;
            }
            switch (t.EdgeFromAdjTri(t.sCur.pNext))
            {
            case 1: idx.insert(idx.end(), {t.pIdx[0], t.pIdx[1]}); break;
            case 2: idx.insert(idx.end(), {t.pIdx[1], t.pIdx[2]}); break;
            default: idx.insert(idx.end(), {t.pIdx[2], t.pIdx[0]}); break;
            }
            uint32_t n = 0;
            for (const CTri* s = &t; s; s = s->sCur.pNext, ++n)
            {
                const uint32_t a = idx[idx.size() - 2], b = idx.back();
                uint32_t third = s->pIdx[0];
                for (int c = 2; c >= 0; --c)
                    if (s->pIdx[c] != a && s->pIdx[c] != b)
                        third = s->pIdx[c];
                idx.push_back(third);
            }
            len.push_back(n);
        }
    }

  private:
    int Link(CTri* t, CTri* p, bool w)
    {
        int r;
        auto detachNext = [](CTri* x) {
            CTri* n = x->sCur.pNext;
            x->sCur.pNext = nullptr;
            n->sCur.pPrev = nullptr;
            if (!n->sCur.bWinding && n->sCur.pNext)
            {
                n->sCur.pNext->sCur.pPrev = nullptr;
                n->sCur.pNext = nullptr;
                return 1;
            }
            return 0;
        };
        if (t->sCur.pPrev && t->sCur.pNext)
        {
            t->sCur.pPrev->sCur.pNext = nullptr;
            t->sCur.pPrev = nullptr;
            r = 1 + detachNext(t);
        }
        else if (t->sCur.pNext)
            r = detachNext(t);
        else if (t->sCur.pPrev)
        {
            t->sCur.pPrev->sCur.pNext = nullptr;
            t->sCur.pPrev = nullptr;
            r = 0;
        }
        else
            r = -1;
        t->sCur.pNext = nullptr;
        t->sCur.pPrev = p;
        if (p)
            p->sCur.pNext = t;
        t->sCur.bWinding = w;
        t->bInWalk = true;
        return r;
    }

    bool StripGrow(CTri* start, int edge, int threshold)
    {
        std::vector<CTri*>& visited = m_visited;
        visited.clear();
        int total = 1;
        bool w = true;
        CTri* prev = nullptr;
        CTri* cur = start;
        while (total > threshold)
        {
            total += Link(cur, prev, w);
            visited.push_back(cur);
            CTri* nb = cur->pAdj[edge];
            if (!nb || nb->bInWalk)
                break;
            const int in = nb->EdgeFromAdjTri(cur);
            edge = w ? (in + 2) % 3 : (in + 1) % 3;
            w = !w;
            prev = cur;
            cur = nb;
        }
        // Everything the walk changed: the visited triangles and their former neighbours.
        std::vector<CTri*>& changed = m_changed;
        changed.clear();
        for (CTri* t : visited)
        {
            changed.push_back(t);
            if (CTri* p = t->sCemented.pPrev)
                changed.push_back(p);
            if (CTri* n = t->sCemented.pNext)
            {
                changed.push_back(n);
                if (n->sCemented.pNext)
                    changed.push_back(n->sCemented.pNext);
            }
        }
        if (total > threshold)
        {
            for (CTri* t : changed)
                t->Undo();
            total = 0;
        }
        else
            for (CTri* t : changed)
                t->Cement();
        for (CTri* t : visited)
            t->bInWalk = false;
        m_nStrips += total;
        return total != 0;
    }

    std::vector<CTri> m_tri;
    std::vector<CTri*> m_visited, m_changed;
    int64_t m_nStrips;
};

// ---------------------------------------------------------------------------------------------------
// Bone batches.

class CBatch
{
  public:
    void SetSize(uint32_t n)
    {
        m_bones.assign(n, 0);
        m_nCount = 0;
    }
    void Clear() { m_nCount = 0; }
    bool Add(float bone)
    {
        if (!(bone >= 0.0f) || bone >= 4294967296.0f)
            return false;
        const uint32_t b = uint32_t(bone);
        if (Contains(b))
            return true;
        if (m_nCount >= m_bones.size())
            return false;
        m_bones[m_nCount++] = b;
        return true;
    }
    bool Contains(uint32_t bone) const
    {
        for (uint32_t i = 0; i < m_nCount; ++i)
            if (m_bones[i] == bone)
                return true;
        return false;
    }
    bool Contains(const CBatch& other) const
    {
        for (uint32_t i = 0; i < other.m_nCount; ++i)
            if (!Contains(other.m_bones[i]))
                return false;
        return true;
    }
    int TestMerge(const CBatch& other) const
    {
        uint32_t n = 0;
        for (uint32_t i = 0; i < other.m_nCount; ++i)
            n += !Contains(other.m_bones[i]);
        return m_nCount + n > m_bones.size() ? -1 : int(n);
    }
    void Merge(const CBatch& other)
    {
        for (uint32_t i = 0; i < other.m_nCount; ++i)
            Add(float(other.m_bones[i]));
    }
    void Write(uint32_t* bones, uint32_t& count) const
    {
        std::copy(m_bones.begin(), m_bones.begin() + m_nCount, bones);
        count = m_nCount;
    }
    void GetVertexBoneIndices(float* idx, const float* weights, uint32_t n) const
    {
        for (uint32_t k = 0; k < n; ++k)
        {
            if (weights[k] == 0.0f)
            {
                idx[k] = 0.0f;
                continue;
            }
            for (uint32_t p = 0; p < m_nCount; ++p)
                if (float(m_bones[p]) == idx[k])
                {
                    idx[k] = float(p);
                    break;
                }
        }
    }

  private:
    std::vector<uint32_t> m_bones;
    uint32_t m_nCount = 0;
};

class CGrowableArray
{
  public:
    explicit CGrowableArray(uint32_t nElement) : m_nElement(nElement) {}
    ~CGrowableArray() { free(m_pData); }
    void Append(const void* data, uint32_t n)
    {
        m_pData = static_cast<uint8_t*>(realloc(m_pData, size_t(m_nCount + n) * m_nElement));
        std::memcpy(m_pData + size_t(m_nCount) * m_nElement, data, size_t(n) * m_nElement);
        m_nCount += n;
    }
    uint8_t* at(uint32_t i) { return m_pData + size_t(i) * m_nElement; }
    uint8_t* last() { return at(m_nCount - 1); }
    uint32_t size() const { return m_nCount; }

  private:
    uint8_t* m_pData = nullptr;
    uint32_t m_nElement;
    uint32_t m_nCount = 0;
};

// ---------------------------------------------------------------------------------------------------
// Tangent space.

struct SWorkRecord
{
    QMXTVECTOR3f tangent[32];
    QMXTVECTOR3f bitangent[32];
    uint32_t nTri[32];
    uint32_t nCount = 0;
};

QMXTVECTOR3f Read3(const uint8_t* p, uint32_t type)
{
    float f[4];
    QMXTVertexRead(f, p, type, 3);
    return {f[0], f[1], f[2]};
}
} // namespace

SSortResult GeometrySort(const std::vector<uint8_t>& vertices, const std::vector<uint32_t>& idx, uint32_t nStride,
                         uint32_t nVertexNum, uint32_t nVtxMax, uint32_t nTriMax, uint32_t nFlags)
{
    SSortResult r;
    r.idx = idx;
    r.vertices = vertices;
    const uint32_t nTri = uint32_t(idx.size() / 3);
    if (nFlags & 1)
    {
        r.idx.clear();
        CObject object(idx.data(), nVertexNum, nTri, nVtxMax, nTriMax);
        object.Sort(r.idx, r.blocks);
        std::vector<uint32_t> leftover, repeated;
        for (uint32_t t = 0; t < nTri; ++t)
        {
            if (IsDegenerate(&idx[t * 3]))
                repeated.push_back(t);
            else if (!object.Used(&idx[t * 3]))
                leftover.push_back(t);
        }
        uint32_t blockTri = 0;
        std::set<uint32_t> blockVtx;
        Flush(idx.data(), leftover, nVtxMax, nTriMax, r.idx, r.blocks, blockTri, blockVtx);
        Flush(idx.data(), repeated, nVtxMax, nTriMax, r.idx, r.blocks, blockTri, blockVtx);
        if (blockTri)
            r.blocks.push_back(blockTri);
    }
    if (!(nFlags & 2))
        RenumberByFirstUse(r.vertices, r.idx, nStride);
    return r;
}
SStripResult TriStrip(const std::vector<uint32_t>& idx)
{
    SStripResult best;
    for (unsigned seed = 0; seed < 5; ++seed)
    {
        srand(seed);
        CStrip strip(idx);
        strip.StripFromEdges();
        strip.StripImprove();
        SStripResult run;
        strip.Output(run.idx, run.len);
        if (seed == 0 || run.len.size() < best.len.size())
            best = run;
    }
    return best;
}

std::vector<uint32_t> TriStripList(const std::vector<uint32_t>& idx)
{
    const SStripResult s = TriStrip(idx);
    std::vector<uint32_t> list;
    size_t start = 0;
    for (uint32_t n : s.len)
    {
        list.insert(list.end(), &s.idx[start], &s.idx[start] + 3);
        for (uint32_t k = 1; k < n; ++k)
        {
            const size_t p = start + 2 + k;
            if (k % 2)
                list.insert(list.end(), {s.idx[p - 1], s.idx[p - 2], s.idx[p]});
            else
                list.insert(list.end(), {s.idx[p - 2], s.idx[p - 1], s.idx[p]});
        }
        start += n + 2;
    }
    return list;
}

SBatchResult BoneBatches(const std::vector<uint8_t>& vertices, uint32_t nVertexNum, const std::vector<uint32_t>& idx,
                         uint32_t nStride, uint32_t nOffsetWeight, uint32_t eTypeWeight, uint32_t nOffsetIdx,
                         uint32_t eTypeIdx, uint32_t nBoneLimit, uint32_t nBonesPerVtx)
{
    SBatchResult r;
    r.idx = idx;
    r.nResult = 1;
    if (nBonesPerVtx < 1 || nBonesPerVtx > 4)
        return r;
    const uint32_t nTri = uint32_t(idx.size() / 3);
    auto read = [&](uint32_t v, float w[4], float i[4]) {
        QMXTVertexRead(w, &vertices[size_t(v) * nStride + nOffsetWeight], eTypeWeight, nBonesPerVtx);
        QMXTVertexRead(i, &vertices[size_t(v) * nStride + nOffsetIdx], eTypeIdx, nBonesPerVtx);
    };
    auto triangleSet = [&](uint32_t t, CBatch& set) {
        set.Clear();
        bool ok = true;
        for (int c = 0; c < 3; ++c)
        {
            float w[4], i[4];
            read(idx[t * 3 + c], w, i);
            for (uint32_t k = 0; k < nBonesPerVtx; ++k)
                if (w[k] != 0.0f)
                    ok = set.Add(i[k]) && ok;
        }
        return ok;
    };

    std::vector<CBatch> list;
    CBatch set;
    set.SetSize(nBoneLimit);
    for (uint32_t t = 0; t < nTri; ++t)
    {
        if (!triangleSet(t, set))
            return r;
        bool placed = false;
        for (CBatch& b : list)
        {
            if (b.Contains(set))
            {
                placed = true;
                break;
            }
            if (set.Contains(b))
            {
                b = set;
                placed = true;
                break;
            }
        }
        if (!placed)
            list.push_back(set);
    }
    for (size_t a = 0; a < list.size(); ++a)
        for (;;)
        {
            int best = -1, bestN = 0;
            for (size_t b = a + 1; b < list.size(); ++b)
            {
                const int n = list[a].TestMerge(list[b]);
                if (n != -1 && (best < 0 || n < bestN))
                {
                    best = int(b);
                    bestN = n;
                }
            }
            if (best < 0 || bestN >= int(nBoneLimit))
                break;
            list[a].Merge(list[best]);
            list.erase(list.begin() + best);
        }
    std::vector<size_t> triBatch(nTri);
    for (uint32_t t = 0; t < nTri; ++t)
    {
        triangleSet(t, set);
        size_t b = 0;
        while (!list[b].Contains(set))
            ++b;
        triBatch[t] = b;
    }

    CGrowableArray out(nStride);
    std::vector<std::vector<uint32_t>> copies(nVertexNum);
    r.bones.assign(list.size() * nBoneLimit, 0);
    r.counts.assign(list.size(), 0);
    r.offsets.assign(list.size(), 0);
    uint32_t written = 0;
    for (size_t b = 0; b < list.size(); ++b)
    {
        list[b].Write(&r.bones[b * nBoneLimit], r.counts[b]);
        r.offsets[b] = written;
        for (uint32_t t = 0; t < nTri; ++t)
        {
            if (triBatch[t] != b)
                continue;
            for (int c = 0; c < 3; ++c)
            {
                const uint32_t v = idx[t * 3 + c];
                float w[4], local[4];
                read(v, w, local);
                list[b].GetVertexBoneIndices(local, w, nBonesPerVtx);
                uint32_t found = UINT32_MAX;
                for (uint32_t copy : copies[v])
                {
                    float stored[4];
                    QMXTVertexRead(stored, out.at(copy) + nOffsetIdx, eTypeIdx, nBonesPerVtx);
                    if (stored[0] == local[0] && stored[1] == local[1] && stored[2] == local[2] &&
                        stored[3] == local[3])
                    {
                        found = copy;
                        break;
                    }
                }
                if (found == UINT32_MAX)
                {
                    out.Append(&vertices[size_t(v) * nStride], 1);
                    found = out.size() - 1;
                    copies[v].push_back(found);
                    QMXTVertexWrite(out.last() + nOffsetIdx, eTypeIdx, nBonesPerVtx, local);
                }
                r.idx[written * 3 + c] = found;
            }
            ++written;
        }
    }
    r.nVertexNum = out.size();
    r.vertices.assign(out.size() ? out.at(0) : nullptr, out.size() ? out.at(0) + size_t(out.size()) * nStride : nullptr);
    r.nResult = 0;
    return r;
}

STangentResult TangentSpace(const std::vector<uint8_t>& vertices, uint32_t nVertexNum, const std::vector<uint32_t>& idx,
                            const STangentLayout& l, float fSplit)
{
    STangentResult r;
    r.nResult = 1;
    r.idx = idx;
    const uint32_t nTri = uint32_t(idx.size() / 3);
    std::vector<uint8_t> out(size_t(nVertexNum) * 3 * l.nStride);
    std::vector<uint32_t> newIdx = idx;
    std::vector<SWorkRecord> work(nVertexNum);
    for (uint32_t t = 0; t < nTri; ++t)
    {
        const uint32_t* tri = &idx[t * 3];
        if (IsDegenerate(tri))
            return r;
        for (int c = 0; c < 3; ++c)
            if (work[tri[c]].nCount == 32)
                return r;
        QMXTVECTOR3f p[3], n[3], uv[3];
        for (int c = 0; c < 3; ++c)
        {
            const uint8_t* rec = &vertices[size_t(tri[c]) * l.nStride];
            p[c] = Read3(rec + l.nOffsetPos, l.eTypePos);
            n[c] = Read3(rec + l.nOffsetNor, l.eTypeNor);
            uv[c] = Read3(rec + l.nOffsetUV, l.eTypeUV);
        }
        for (int c = 0; c < 3; ++c)
        {
            SWorkRecord& w = work[tri[c]];
            QMXTVertexTangentBitangent(w.tangent[w.nCount], w.bitangent[w.nCount], n[c], p[c], p[(c + 1) % 3],
                                       p[(c + 2) % 3], uv[c], uv[(c + 1) % 3], uv[(c + 2) % 3]);
            w.nTri[w.nCount++] = t;
        }
    }
    uint32_t nOut = 0;
    for (uint32_t v = 0; v < nVertexNum; ++v)
    {
        const SWorkRecord& w = work[v];
        std::vector<std::vector<uint32_t>> groups; // members by slot
        for (uint32_t i = 0; i < w.nCount; ++i)
        {
            bool joined = false;
            for (auto& g : groups)
            {
                bool agrees = true;
                for (uint32_t m : g)
                    agrees = agrees && QMXTMatrixVec3DotProductF(w.tangent[i], w.tangent[m]) > fSplit &&
                             QMXTMatrixVec3DotProductF(w.bitangent[i], w.bitangent[m]) > fSplit;
                if (agrees)
                {
                    g.push_back(i);
                    joined = true;
                    break;
                }
            }
            if (!joined)
            {
                if (groups.size() == 32)
                    return r;
                groups.push_back({i});
            }
        }
        for (const auto& g : groups)
        {
            if (nOut == nVertexNum * 3)
                return r;
            QMXTVECTOR3f ts = {0, 0, 0}, bs = {0, 0, 0};
            for (uint32_t m : g)
            {
                ts = {ts.x + w.tangent[m].x, ts.y + w.tangent[m].y, ts.z + w.tangent[m].z};
                bs = {bs.x + w.bitangent[m].x, bs.y + w.bitangent[m].y, bs.z + w.bitangent[m].z};
                for (int c = 0; c < 3; ++c)
                    if (idx[w.nTri[m] * 3 + c] == v)
                        newIdx[w.nTri[m] * 3 + c] = nOut;
            }
            QMXTMatrixVec3NormalizeF(ts, ts);
            QMXTMatrixVec3NormalizeF(bs, bs);
            uint8_t* rec = &out[size_t(nOut) * l.nStride];
            std::memcpy(rec, &vertices[size_t(v) * l.nStride], l.nStride);
            const float tf[3] = {ts.x, ts.y, ts.z}, bf[3] = {bs.x, bs.y, bs.z};
            QMXTVertexWrite(rec + l.nOffsetTan, l.eTypeTan, 3, tf);
            QMXTVertexWrite(rec + l.nOffsetBin, l.eTypeBin, 3, bf);
            ++nOut;
        }
    }
    out.resize(size_t(nOut) * l.nStride);
    r.vertices = out;
    r.nVertexNum = nOut;
    r.idx = newIdx;
    r.nResult = 0;
    return r;
}
} // namespace ref
