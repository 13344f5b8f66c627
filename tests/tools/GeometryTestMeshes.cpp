// Index lists for the geometry tests (see the header).
#include "GeometryTestMeshes.h"

#include <algorithm>
#include <numeric>

namespace geomtest
{
namespace
{
// The triangles of m in a random order.
void ShuffleTriangles(SIndexMesh& m, std::mt19937& rng)
{
    std::vector<uint32_t> order(m.TriNum()), idx;
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), rng);
    for (uint32_t t : order)
        idx.insert(idx.end(), &m.idx[size_t(t) * 3], &m.idx[size_t(t) * 3] + 3);
    m.idx = idx;
}
} // namespace

SIndexMesh Grid(uint32_t w, uint32_t h, bool checker)
{
    SIndexMesh m;
    m.nVertexNum = (w + 1) * (h + 1);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x)
        {
            const uint32_t a = y * (w + 1) + x, b = a + 1, c = a + w + 1, d = c + 1;
            if (checker && (x + y) % 2)
                m.idx.insert(m.idx.end(), {a, b, c, b, d, c});
            else
                m.idx.insert(m.idx.end(), {a, b, d, a, d, c});
        }
    return m;
}

SIndexMesh Fan(uint32_t n, bool closed)
{
    SIndexMesh m;
    m.nVertexNum = closed ? n + 1 : n + 2;
    for (uint32_t i = 0; i < n; ++i)
        m.idx.insert(m.idx.end(), {0, 1 + i, closed ? 1 + (i + 1) % n : 2 + i});
    return m;
}

SIndexMesh Strip(uint32_t n)
{
    SIndexMesh m;
    m.nVertexNum = n + 2;
    for (uint32_t i = 0; i < n; ++i)
        if (i % 2)
            m.idx.insert(m.idx.end(), {i + 1, i, i + 2});
        else
            m.idx.insert(m.idx.end(), {i, i + 1, i + 2});
    return m;
}

SIndexMesh Random(std::mt19937& rng, uint32_t nTri, uint32_t nVertexPool, uint32_t nPieces, bool degenerate)
{
    SIndexMesh m;
    nVertexPool = std::max(nVertexPool, 3u);
    m.nVertexNum = nVertexPool * nPieces;
    std::uniform_int_distribution<uint32_t> vtx(0, nVertexPool - 1), piece(0, nPieces - 1), pct(0, 99);
    for (uint32_t t = 0; t < nTri; ++t)
    {
        const uint32_t base = piece(rng) * nVertexPool;
        if (!m.idx.empty() && pct(rng) < 12)
        {
            // Repeat or flip an earlier triangle, or reuse one of its edges (non-manifold edges).
            std::uniform_int_distribution<uint32_t> earlier(0, m.TriNum() - 1);
            const uint32_t* e = &m.idx[size_t(earlier(rng)) * 3];
            const uint32_t a = e[0], b = e[1], c = e[2];
            const uint32_t kind = pct(rng) % 3;
            if (kind == 0)
                m.idx.insert(m.idx.end(), {a, b, c});
            else if (kind == 1)
                m.idx.insert(m.idx.end(), {a, c, b});
            else
                m.idx.insert(m.idx.end(), {b, a, base + vtx(rng) % nVertexPool});
        }
        else
        {
            uint32_t a = base + vtx(rng), b = base + vtx(rng), c = base + vtx(rng);
            while (b == a)
                b = base + vtx(rng);
            while (c == a || c == b)
                c = base + vtx(rng);
            m.idx.insert(m.idx.end(), {a, b, c});
        }
        uint32_t* tri = &m.idx[m.idx.size() - 3];
        if (degenerate && pct(rng) < 5)
            tri[pct(rng) % 3] = tri[(pct(rng) % 2 + 1) % 3];
        else if (!degenerate && (tri[0] == tri[1] || tri[1] == tri[2] || tri[0] == tri[2]))
            m.idx.resize(m.idx.size() - 3);
    }
    return m;
}

SIndexMesh DamagedGrid(std::mt19937& rng, uint32_t w, uint32_t h)
{
    SIndexMesh g = Grid(w, h, rng() % 2);
    SIndexMesh m;
    m.nVertexNum = g.nVertexNum;
    std::uniform_int_distribution<uint32_t> pct(0, 99);
    for (uint32_t t = 0; t < g.TriNum(); ++t)
    {
        const uint32_t r = pct(rng);
        if (r < 10)
            continue; // hole
        const uint32_t* tri = &g.idx[size_t(t) * 3];
        if (r < 15)
            m.idx.insert(m.idx.end(), {tri[0], tri[2], tri[1]}); // flipped
        else
            m.idx.insert(m.idx.end(), tri, tri + 3);
        if (r >= 97)
            m.idx.insert(m.idx.end(), tri, tri + 3); // duplicate
    }
    ShuffleTriangles(m, rng);
    return m;
}

SIndexMesh Concatenate(const std::vector<SIndexMesh>& parts, std::mt19937* shuffle)
{
    SIndexMesh m;
    for (const SIndexMesh& p : parts)
    {
        for (uint32_t i : p.idx)
            m.idx.push_back(i + m.nVertexNum);
        m.nVertexNum += p.nVertexNum;
    }
    if (shuffle)
        ShuffleTriangles(m, *shuffle);
    return m;
}

std::vector<SIndexMesh> MeshZoo(uint32_t seed, uint32_t nRandom, uint32_t nMaxTri)
{
    std::mt19937 rng(seed);
    std::vector<SIndexMesh> zoo;
    zoo.push_back(Grid(1, 1));
    zoo.push_back(Grid(3, 2, true));
    zoo.push_back(Grid(8, 8));
    zoo.push_back(Grid(12, 5, true));
    zoo.push_back(Fan(7));
    zoo.push_back(Fan(12, true));
    zoo.push_back(Strip(9));
    zoo.push_back(Strip(40));
    zoo.push_back(Concatenate({Grid(2, 2), Fan(5), Strip(6), Grid(1, 1), Fan(3, true), Grid(6, 3)}, &rng));
    for (uint32_t i = 0; i < nRandom; ++i)
    {
        std::uniform_int_distribution<uint32_t> tri(1, nMaxTri);
        switch (i % 5)
        {
        case 0:
        case 1:
        {
            const uint32_t n = tri(rng);
            std::uniform_int_distribution<uint32_t> pool(3, std::max(4u, n)), pieces(1, 4);
            zoo.push_back(Random(rng, n, pool(rng), pieces(rng), i % 2));
            break;
        }
        case 2:
        {
            std::uniform_int_distribution<uint32_t> side(1, 10);
            zoo.push_back(DamagedGrid(rng, side(rng), side(rng)));
            break;
        }
        case 3:
        {
            std::uniform_int_distribution<uint32_t> side(1, 6), kind(0, 3), n(1, 20);
            std::vector<SIndexMesh> parts;
            for (uint32_t k = 0, count = 1 + rng() % 6; k < count; ++k)
            {
                const uint32_t shape = kind(rng);
                if (shape == 0)
                    parts.push_back(Grid(side(rng), side(rng), rng() % 2));
                else if (shape == 1)
                    parts.push_back(Fan(n(rng), rng() % 2 && n(rng) > 2));
                else if (shape == 2)
                    parts.push_back(Strip(n(rng)));
                else
                    parts.push_back(Random(rng, n(rng), 3 + rng() % 8, 1, false));
            }
            zoo.push_back(Concatenate(parts, rng() % 2 ? &rng : nullptr));
            break;
        }
        default:
        {
            // Few vertices, many triangles: dense non-manifold clusters.
            std::uniform_int_distribution<uint32_t> pool(3, 7);
            zoo.push_back(Random(rng, tri(rng), pool(rng), 1 + rng() % 2, false));
            break;
        }
        }
    }
    zoo.erase(std::remove_if(zoo.begin(), zoo.end(), [](const SIndexMesh& m) { return m.idx.empty(); }),
              zoo.end());
    return zoo;
}
} // namespace geomtest
