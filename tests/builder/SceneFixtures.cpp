#include "SceneFixtures.h"

#include <cmath>

void AddCornerTriangle(SGeomData& g, const QMXTVECTOR3f p[3], const QMXTVECTOR3f& normal, int material,
                       const QMXTVECTOR3f* uv)
{
    if (g.channels.empty())
        g.channels.resize(1);
    SMappingChannel& ch = g.channels[0];
    SFace f;
    CTriIdx t;
    for (int c = 0; c < 3; ++c)
    {
        f.pos[c] = static_cast<int>(g.positions.size());
        f.normal[c] = static_cast<int>(g.normals.size());
        t.idx[c] = static_cast<int>(ch.uvw.size());
        g.positions.push_back(p[c]);
        g.normals.push_back(normal);
        ch.uvw.push_back(uv ? uv[c] : QMXTVECTOR3f{p[c].x, p[c].y, 0.0f});
    }
    f.material = material;
    g.faces.push_back(f);
    ch.faces.push_back(t);
}

SGeomData CubeGeometry(int matA, int matB, float size)
{
    const float h = size * 0.5f;
    // Each side: outward normal and the four corners counter-clockwise seen from outside.
    struct SSide
    {
        QMXTVECTOR3f n;
        QMXTVECTOR3f c[4];
    };
    const SSide sides[6] = {
        {{0, 0, 1}, {{-h, -h, h}, {h, -h, h}, {h, h, h}, {-h, h, h}}},
        {{0, 0, -1}, {{h, -h, -h}, {-h, -h, -h}, {-h, h, -h}, {h, h, -h}}},
        {{1, 0, 0}, {{h, -h, h}, {h, -h, -h}, {h, h, -h}, {h, h, h}}},
        {{-1, 0, 0}, {{-h, -h, -h}, {-h, -h, h}, {-h, h, h}, {-h, h, -h}}},
        {{0, 1, 0}, {{-h, h, h}, {h, h, h}, {h, h, -h}, {-h, h, -h}}},
        {{0, -1, 0}, {{-h, -h, -h}, {h, -h, -h}, {h, -h, h}, {-h, -h, h}}},
    };
    const QMXTVECTOR3f uv[4] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    SGeomData g;
    int face = 0;
    for (const SSide& s : sides)
    {
        const QMXTVECTOR3f a[3] = {s.c[0], s.c[1], s.c[2]};
        const QMXTVECTOR3f b[3] = {s.c[0], s.c[2], s.c[3]};
        const QMXTVECTOR3f uva[3] = {uv[0], uv[1], uv[2]};
        const QMXTVECTOR3f uvb[3] = {uv[0], uv[2], uv[3]};
        AddCornerTriangle(g, a, s.n, face < 6 ? matA : matB, uva);
        ++face;
        AddCornerTriangle(g, b, s.n, face < 6 ? matA : matB, uvb);
        ++face;
    }
    return g;
}

CNode MeshNode(const std::string& name, const SGeomData& geom)
{
    CNode n;
    n.name = name;
    n.type = eNodeMesh;
    n.geom = geom;
    return n;
}

SGeomData TubeGeometry(int rings, int sides)
{
    SGeomData g;
    auto corner = [&](int r, int s)
    {
        const float a = 6.2831853f * static_cast<float>(s % sides) / static_cast<float>(sides);
        return QMXTVECTOR3f{std::cos(a), static_cast<float>(r), std::sin(a)};
    };
    // Indexed positions (one per ring corner) so a skin can weight them; normals and uv per corner.
    for (int r = 0; r <= rings; ++r)
        for (int s = 0; s < sides; ++s)
        {
            g.positions.push_back(corner(r, s));
            g.normals.push_back({corner(r, s).x, 0.0f, corner(r, s).z});
        }
    g.channels.resize(1);
    SMappingChannel& ch = g.channels[0];
    for (int r = 0; r <= rings; ++r)
        for (int s = 0; s <= sides; ++s)
            ch.uvw.push_back({static_cast<float>(s) / sides, static_cast<float>(r) / rings, 0.0f});
    for (int r = 0; r < rings; ++r)
        for (int s = 0; s < sides; ++s)
        {
            const int p00 = r * sides + s, p01 = r * sides + (s + 1) % sides;
            const int p10 = p00 + sides, p11 = p01 + sides;
            const int u00 = r * (sides + 1) + s, u01 = u00 + 1, u10 = u00 + sides + 1, u11 = u10 + 1;
            SFace a, b;
            a.pos[0] = p00, a.pos[1] = p10, a.pos[2] = p11;
            b.pos[0] = p00, b.pos[1] = p11, b.pos[2] = p01;
            for (int c = 0; c < 3; ++c)
            {
                a.normal[c] = a.pos[c];
                b.normal[c] = b.pos[c];
            }
            g.faces.push_back(a);
            g.faces.push_back(b);
            ch.faces.push_back(CTriIdx{{u00, u10, u11}});
            ch.faces.push_back(CTriIdx{{u00, u11, u01}});
        }
    return g;
}

SModifier TubeSkin(const SGeomData& tube, int rings, int sides, const std::vector<int>& bones)
{
    SModifier skin;
    skin.name = "skinCluster1";
    skin.kind = eModifierSkin;
    skin.enabled = true;
    const int nb = static_cast<int>(bones.size());
    for (size_t p = 0; p < tube.positions.size(); ++p)
    {
        const int ring = static_cast<int>(p) / sides;
        const int b = ring * nb / (rings + 1);
        SBonedVtx v;
        if (b + 1 < nb)
            v.weights = {{bones[b], 0.5f}, {bones[b + 1], 0.5f}};
        else
            v.weights = {{bones[b], 1.0f}};
        skin.vertices.push_back(v);
    }
    return skin;
}

SGeomData GridGeometry(int n)
{
    SGeomData g;
    const float step = 1.0f / static_cast<float>(n);
    const QMXTVECTOR3f up{0.0f, 0.0f, 1.0f};
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
        {
            const QMXTVECTOR3f p00{x * step, y * step, 0}, p10{(x + 1) * step, y * step, 0};
            const QMXTVECTOR3f p01{x * step, (y + 1) * step, 0}, p11{(x + 1) * step, (y + 1) * step, 0};
            const QMXTVECTOR3f a[3] = {p00, p10, p11};
            const QMXTVECTOR3f b[3] = {p00, p11, p01};
            AddCornerTriangle(g, a, up, 0);
            AddCornerTriangle(g, b, up, 0);
        }
    return g;
}
