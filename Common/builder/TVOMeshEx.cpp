#include "TVOMeshEx.h"

#include <cmath>
#include <cstdlib>
#include <algorithm>
#include <cstring>
#include "QMXTLargeArray.h"

namespace
{
float AsFloat(uint32_t bits)
{
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

uint32_t AsBits(float f)
{
    uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    return bits;
}

// 64-bit mixing of one word into a running hash; keeps distinct grid coordinates well spread.
uint64_t MixWord(uint64_t h, uint32_t w)
{
    h ^= w;
    h *= 0xff51afd7ed558ccdull;
    return h ^ (h >> 32);
}

uint32_t FinishHash(uint64_t h)
{
    h ^= h >> 33;
    h *= 0xc4ceb9fe1a85ec53ull;
    h ^= h >> 33;
    return static_cast<uint32_t>(h);
}

constexpr uint32_t kRecentSize = 16384; // a power of two

bool SameBytes(const void* a, const void* b, size_t bytes)
{
    if (bytes == 0 || a == b)
        return true;
    if (!a || !b)
        return false;
    return std::memcmp(a, b, bytes) == 0;
}
} // namespace

bool SOneVertex::operator==(const SOneVertex& o) const
{
    for (int i = 0; i < 3; ++i)
        if (!(position[i] == o.position[i]) || !(normal[i] == o.normal[i]))
            return false;
    if (group != o.group || colour != o.colour || uvw.size() != o.uvw.size())
        return false;
    for (size_t i = 0; i < uvw.size(); ++i)
        if (!(uvw[i].x == o.uvw[i].x) || !(uvw[i].y == o.uvw[i].y) || !(uvw[i].z == o.uvw[i].z))
            return false;
    return true;
}

// ---- CVertex ----

void CVertex::Init(uint32_t uvwCount)
{
    Clear();
    m_nUVW = uvwCount;
    m_nColourWord = 7 + 3 * uvwCount;
    m_nKeyWords = m_nColourWord + 2;
    m_scratch.assign(m_nKeyWords, 0);
    m_boneStart.push_back(0);
    m_table.assign(1024, 0);
    m_nTableLimit = 768;
    m_recent.assign(kRecentSize, 0);
}

void CVertex::Clear()
{
    m_nCount = 0;
    m_nMaxInfluences = 0;
    QMXTLargeVector<uint32_t>().swap(m_key);
    QMXTLargeVector<uint64_t>().swap(m_table);
    std::vector<uint64_t>().swap(m_recent);
    m_nTableLimit = 0;
    QMXTLargeVector<uint32_t>().swap(m_boneStart);
    QMXTLargeVector<int>().swap(m_boneIdx);
    QMXTLargeVector<float>().swap(m_boneWt);
    std::vector<uint32_t>().swap(m_scratch);
}

void CVertex::MakeKey(const SOneVertex& v, uint32_t* key) const
{
    for (int i = 0; i < 3; ++i)
    {
        key[i] = AsBits(v.position[i]);
        key[4 + i] = AsBits(v.normal[i]);
    }
    key[3] = static_cast<uint32_t>(v.group);
    for (uint32_t s = 0; s < m_nUVW; ++s)
    {
        const QMXTVECTOR3f t = s < v.uvw.size() ? v.uvw[s] : QMXTVECTOR3f{0.0f, 0.0f, 0.0f};
        key[7 + 3 * s] = AsBits(t.x);
        key[8 + 3 * s] = AsBits(t.y);
        key[9 + 3 * s] = AsBits(t.z);
    }
    key[m_nColourWord] = v.colour.empty() ? 0u : 1u;
    key[m_nColourWord + 1] = v.colour.empty() ? 0u : v.colour[0];
}

bool CVertex::KeyEqual(const uint32_t* a, const uint32_t* b) const
{
    // Words 3 (group) and the colour pair are integers; all others are floats.
    for (uint32_t i = 0; i < m_nColourWord; ++i)
    {
        if (i == 3)
        {
            if (a[i] != b[i])
                return false;
        }
        else if (!(AsFloat(a[i]) == AsFloat(b[i])))
            return false;
    }
    return a[m_nColourWord] == b[m_nColourWord] && a[m_nColourWord + 1] == b[m_nColourWord + 1];
}

uint32_t CVertex::HashKey(const uint32_t* key) const
{
    uint64_t h = 0x9e3779b97f4a7c15ull;
    for (uint32_t i = 0; i < m_nKeyWords; ++i)
    {
        uint32_t w = key[i];
        // 0 and -0 are equal floats, so they must hash alike.
        if (i != 3 && i < m_nColourWord && w == 0x80000000u)
            w = 0;
        h = MixWord(h, w);
    }
    return FinishHash(h);
}

void CVertex::GrowTable()
{
    QMXTLargeVector<uint64_t> old;
    old.swap(m_table);
    m_table.assign(old.size() * 2, 0);
    m_nTableLimit = static_cast<uint32_t>(m_table.size() / 4 * 3);
    const uint32_t mask = static_cast<uint32_t>(m_table.size()) - 1;
    for (uint64_t entry : old)
        if (entry)
        {
            uint32_t slot = static_cast<uint32_t>(entry >> 32) & mask;
            while (m_table[slot])
                slot = (slot + 1) & mask;
            m_table[slot] = entry;
        }
}

uint32_t CVertex::Append(const SOneVertex& v, const uint32_t* key)
{
    std::memcpy(m_key.grow(m_nKeyWords), key, m_nKeyWords * sizeof(uint32_t));
    const size_t influences =
        v.boneIndices.size() < v.boneWeights.size() ? v.boneIndices.size() : v.boneWeights.size();
    for (size_t k = 0; k < influences; ++k)
    {
        m_boneIdx.push_back(v.boneIndices[k]);
        m_boneWt.push_back(v.boneWeights[k]);
    }
    m_boneStart.push_back(static_cast<uint32_t>(m_boneIdx.size()));
    if (influences > m_nMaxInfluences)
        m_nMaxInfluences = static_cast<uint32_t>(influences);
    return m_nCount++;
}

uint32_t CVertex::Prepare(const SOneVertex& v, uint32_t* key) const
{
    MakeKey(v, key);
    const uint32_t hash = HashKey(key);
    // Start fetching both table slots; the caller prepares several corners before looking up.
    __builtin_prefetch(&m_recent[hash & (kRecentSize - 1)]);
    __builtin_prefetch(&m_table[hash & (m_table.size() - 1)]);
    return hash;
}

uint32_t CVertex::FindOrCreate(const SOneVertex* v, bool useHash)
{
    if (m_scratch.size() != m_nKeyWords)
        Init(m_nUVW);
    uint32_t* key = m_scratch.data();
    const uint32_t hash = Prepare(*v, key);
    if (!useHash)
    {
        for (uint32_t i = m_nCount; i-- > 0;)
            if (KeyEqual(Key(i), key))
                return i;
    }
    return FindOrCreate(*v, key, hash, useHash);
}

uint32_t CVertex::FindOrCreate(const SOneVertex& v, const uint32_t* key, uint32_t hash, bool useHash)
{
    uint64_t& recent = m_recent[hash & (kRecentSize - 1)];
    if (useHash && recent && static_cast<uint32_t>(recent >> 32) == hash)
    {
        const uint32_t i = static_cast<uint32_t>(recent) - 1;
        if (KeyEqual(Key(i), key))
            return i;
    }
    if (m_nCount >= m_nTableLimit)
        GrowTable();
    const uint32_t mask = static_cast<uint32_t>(m_table.size()) - 1;
    uint32_t slot = hash & mask;
    while (const uint64_t entry = m_table[slot])
    {
        if (useHash && static_cast<uint32_t>(entry >> 32) == hash)
        {
            const uint32_t i = static_cast<uint32_t>(entry) - 1;
            if (KeyEqual(Key(i), key))
            {
                recent = entry;
                return i;
            }
        }
        slot = (slot + 1) & mask;
    }
    const uint32_t index = Append(v, key);
    m_table[slot] = (static_cast<uint64_t>(hash) << 32) | (index + 1u);
    recent = m_table[slot];
    return index;
}

uint32_t CVertex::KeyWords() const
{
    return m_nKeyWords;
}

// ---- CCornerMemo ----

namespace
{
const size_t kMemoChannelsMax = 8; // geometry with more sets is keyed corner by corner
}

CCornerMemo::CCornerMemo(size_t positionCount, size_t channelCount)
    : m_nStride(channelCount <= kMemoChannelsMax ? 5 + channelCount : 0), m_words(positionCount * m_nStride, 0u)
{
}

void CCornerMemo::Record(uint32_t owner, const SFace& face, int corner, const SGeomData& geom, uint32_t faceIndex,
                         uint32_t* out) const
{
    out[0] = owner;
    out[2] = static_cast<uint32_t>(face.normal[corner]);
    out[3] = static_cast<uint32_t>(face.colour[corner]);
    out[4] = static_cast<uint32_t>(face.group);
    for (size_t s = 0; s + 5 < m_nStride; ++s)
        out[5 + s] = static_cast<uint32_t>(geom.channels[s].faces[faceIndex].idx[corner]);
}

uint32_t CCornerMemo::Find(uint32_t owner, const SFace& face, int corner, const SGeomData& geom,
                           uint32_t faceIndex) const
{
    if (m_nStride == 0)
        return UINT32_MAX;
    const uint32_t* known = &m_words[static_cast<size_t>(face.pos[corner]) * m_nStride];
    if (known[0] != owner)
        return UINT32_MAX;
    uint32_t record[5 + kMemoChannelsMax];
    Record(owner, face, corner, geom, faceIndex, record);
    for (size_t i = 2; i < m_nStride; ++i)
        if (record[i] != known[i])
            return UINT32_MAX;
    return known[1];
}

void CCornerMemo::Remember(uint32_t owner, const SFace& face, int corner, const SGeomData& geom,
                           uint32_t faceIndex, uint32_t vertex)
{
    if (m_nStride == 0)
        return;
    uint32_t* known = &m_words[static_cast<size_t>(face.pos[corner]) * m_nStride];
    Record(owner, face, corner, geom, faceIndex, known);
    known[1] = vertex;
}

// ---- CTris ----

void CTris::Init(uint32_t n)
{
    Clear();
    // A node split by material gives each part the node's face count; start with a modest part of
    // it and let realloc grow the store without copying.
    const size_t start = n < 65536 ? n : 65536;
    m_tris.reserve(start * 3);
    m_next.reserve(start);
}

void CTris::Clear()
{
    QMXTLargeVector<uint32_t>().swap(m_tris);
    QMXTLargeVector<uint32_t>().swap(m_head);
    QMXTLargeVector<uint32_t>().swap(m_next);
}

uint32_t CTris::FindOrCreate(const uint32_t* tri)
{
    if (tri[0] >= m_head.size())
        m_head.resize(std::max<size_t>({static_cast<size_t>(tri[0]) + 1, m_head.size() * 2, 1024}), 0);
    for (uint32_t t = m_head[tri[0]]; t; t = m_next[t - 1])
    {
        const uint32_t* other = &m_tris[static_cast<size_t>(t - 1) * 3];
        if (other[1] == tri[1] && other[2] == tri[2])
            return t - 1;
    }
    const uint32_t index = Count();
    m_tris.push_back(tri[0]);
    m_tris.push_back(tri[1]);
    m_tris.push_back(tri[2]);
    m_next.push_back(m_head[tri[0]]);
    m_head[tri[0]] = index + 1;
    return index;
}

// ---- mesh records ----

STVOMesh EmptyTVOMesh()
{
    STVOMesh m{};
    m.ePrimitiveType = eTVOIndexedTriangleList;
    QMXTMATRIXf identity;
    QMXTMatrixIdentityF(identity);
    std::memcpy(m.mUnpackMatrix, identity.f, sizeof m.mUnpackMatrix);
    return m;
}

void FreeTVOMesh(STVOMesh& m)
{
    QMXTModelTVOFreeMesh(m);
    m = EmptyTVOMesh();
}

uint32_t PackColour(const QMXTVECTOR4f& c)
{
    const float in[4] = {c.x, c.y, c.z, c.w};
    uint32_t bytes[4];
    for (int i = 0; i < 4; ++i)
    {
        const float v = in[i] * 255.0f;
        // Clamping before the conversion keeps huge values and NaN defined.
        bytes[i] = v >= 255.0f ? 255u : (v > 0.0f ? static_cast<uint32_t>(v) : 0u);
    }
    return (bytes[3] << 24) | (bytes[2] << 16) | (bytes[1] << 8) | bytes[0];
}

// ---- CTVOMeshEx ----

CTVOMeshEx::CTVOMeshEx() : mesh(EmptyTVOMesh()) {}

CTVOMeshEx::~CTVOMeshEx()
{
    FreeTVOMesh(mesh);
}

void CTVOMeshEx::Init(uint32_t faceCount, uint32_t uvwCount)
{
    tris.Init(faceCount);
    vertices.Init(uvwCount);
    m_nUVW = uvwCount;
}

void CTVOMeshEx::AddFace(uint32_t faceIndex, const SGeomData* geom, const SBonedVtx* skin,
                         const SBuilderSettings& settings)
{
    const SFace& face = geom->faces[faceIndex];
    if (face.IsDegenerate())
        return;
    const size_t channels = geom->channels.size();
    const uint32_t words = vertices.KeyWords();
    if (m_keys.size() != 3 * static_cast<size_t>(words))
        m_keys.assign(3 * static_cast<size_t>(words), 0);
    uint32_t hash[3];
    uint32_t tri[3] = {UINT32_MAX, UINT32_MAX, UINT32_MAX};
    for (int c = 0; c < 3; ++c)
    {
        if (m_pMemo)
        {
            tri[c] = m_pMemo->Find(m_nMemoOwner, face, c, *geom, faceIndex);
            if (tri[c] != UINT32_MAX)
                continue;
        }
        SOneVertex& v = m_corner[c];
        v.uvw.resize(channels);
        const QMXTVECTOR3f& p = geom->positions[face.pos[c]];
        v.position[0] = p.x;
        v.position[1] = p.y;
        v.position[2] = p.z;
        v.group = face.group;
        if (settings.ExportNormals())
        {
            const QMXTVECTOR3f& n = geom->normals[face.normal[c]];
            v.normal[0] = n.x;
            v.normal[1] = n.y;
            v.normal[2] = n.z;
        }
        else
            v.normal[0] = v.normal[1] = v.normal[2] = 0.0f;
        for (size_t s = 0; s < channels; ++s)
        {
            const SMappingChannel& ch = geom->channels[s];
            v.uvw[s] = ch.uvw[ch.faces[faceIndex].idx[c]];
        }
        v.colour.clear();
        if (settings.ExportColours() && face.colour[c] >= 0)
            v.colour.push_back(PackColour(geom->colours[face.colour[c]]));
        v.boneIndices.clear();
        v.boneWeights.clear();
        if (skin)
            for (const CBoneWeight& w : skin[face.pos[c]].weights)
            {
                v.boneIndices.push_back(w.bone);
                v.boneWeights.push_back(w.weight);
            }
        hash[c] = vertices.Prepare(v, &m_keys[c * words]);
    }
    // The lookups run after all the keys are known, so their memory accesses overlap.
    for (int c = 0; c < 3; ++c)
    {
        if (tri[c] != UINT32_MAX)
            continue;
        tri[c] = vertices.FindOrCreate(m_corner[c], &m_keys[c * words], hash[c], true);
        if (m_pMemo)
            m_pMemo->Remember(m_nMemoOwner, face, c, *geom, faceIndex, tri[c]);
    }
    tris.FindOrCreate(tri);
}

namespace
{
// A stream of count components of the type for nv vertices; no array when count or nv is 0.
bool MakeStream(CTVOData& d, EQMXTDataType type, uint32_t count, uint32_t nv)
{
    d.eType = type;
    d.n = count;
    d.nStride = QMXTModelTVODataTypeSize(type) * count;
    d.pData = nullptr;
    if (count == 0 || nv == 0)
        return true;
    d.pData = static_cast<uint8_t*>(QMXTLargeAlloc(static_cast<size_t>(d.nStride) * nv));
    return d.pData != nullptr;
}
} // namespace

bool CTVOMeshEx::Finalise(const SBuilderSettings& settings)
{
    UseCornerMemo(nullptr, 0); // the memo lives only while the faces are added
    FreeTVOMesh(mesh);
    const uint32_t nv = vertices.Count();
    const uint32_t nt = tris.Count();
    const uint32_t nUVW = m_nUVW;
    mesh.nNumVertex = nv;
    mesh.nNumFaces = nt;

    bool ok = MakeStream(mesh.sFaces, EQMXTDataUnsignedInt, 1, nt * 3);
    if (ok && nt)
        std::memcpy(mesh.sFaces.pData, tris.Data(), static_cast<size_t>(nt) * 12);

    ok = ok && MakeStream(mesh.sVertex, EQMXTDataFloat, 3, nv);
    ok = ok && MakeStream(mesh.sNormals, EQMXTDataFloat, settings.ExportNormals() ? 3 : 0, nv);
    ok = ok && MakeStream(mesh.sTangents, EQMXTDataFloat, 0, nv);
    ok = ok && MakeStream(mesh.sBinormals, EQMXTDataFloat, 0, nv);
    float* pos = reinterpret_cast<float*>(mesh.sVertex.pData);
    float* nor = reinterpret_cast<float*>(mesh.sNormals.pData);
    for (uint32_t i = 0; ok && i < nv; ++i)
    {
        std::memcpy(pos + 3 * static_cast<size_t>(i), vertices.Position(i), 12);
        if (nor)
            std::memcpy(nor + 3 * static_cast<size_t>(i), vertices.Normal(i), 12);
    }

    if (ok && nUVW)
    {
        mesh.psUVW = static_cast<CTVOData*>(std::calloc(nUVW, sizeof(CTVOData)));
        ok = mesh.psUVW != nullptr;
        if (ok)
            mesh.nNumUVW = nUVW;
    }
    const bool flipV = settings.IsDirectX() != settings.bFlipTextureV;
    for (uint32_t s = 0; ok && s < nUVW; ++s)
    {
        ok = MakeStream(mesh.psUVW[s], EQMXTDataFloat, 3, nv);
        float* uvw = reinterpret_cast<float*>(mesh.psUVW[s].pData);
        for (uint32_t i = 0; ok && i < nv; ++i)
        {
            float* t = uvw + 3 * static_cast<size_t>(i);
            std::memcpy(t, vertices.UVW(i, s), 12);
            if (flipV)
                t[1] = 1.0f - t[1];
        }
    }

    // Colours: present when any vertex has one; a vertex without takes opaque white.
    bool anyColour = false;
    for (uint32_t i = 0; i < nv && !anyColour; ++i)
        anyColour = vertices.HasColour(i);
    ok = ok && MakeStream(mesh.sVtxColours, EQMXTDataARGB, anyColour ? 1 : 0, nv);
    for (uint32_t i = 0; ok && anyColour && i < nv; ++i)
    {
        const uint32_t c = vertices.HasColour(i) ? vertices.Colour(i) : 0xFFFFFFFFu;
        std::memcpy(mesh.sVtxColours.pData + 4 * static_cast<size_t>(i), &c, 4);
    }

    // Skin: as many components as the most influences of any vertex, unused slots index 0 weight 0.
    const uint32_t m = vertices.MaxInfluences();
    ok = ok && MakeStream(mesh.sBoneIdx, EQMXTDataFloat, m, nv);
    ok = ok && MakeStream(mesh.sBoneWeight, EQMXTDataFloat, m, nv);
    for (uint32_t i = 0; ok && m && i < nv; ++i)
    {
        float* idx = reinterpret_cast<float*>(mesh.sBoneIdx.pData) + static_cast<size_t>(i) * m;
        float* wt = reinterpret_cast<float*>(mesh.sBoneWeight.pData) + static_cast<size_t>(i) * m;
        const uint32_t k = vertices.InfluenceCount(i);
        for (uint32_t j = 0; j < m; ++j)
        {
            idx[j] = j < k ? static_cast<float>(vertices.BoneIndices(i)[j]) : 0.0f;
            wt[j] = j < k ? vertices.BoneWeights(i)[j] : 0.0f;
        }
    }

    vertices.Clear();
    tris.Clear();
    if (!ok)
        FreeTVOMesh(mesh);
    return ok;
}

namespace
{
bool SameStream(const CTVOData& a, const CTVOData& b, uint32_t count, bool interleaved)
{
    if (a.eType != b.eType || a.n != b.n || a.nStride != b.nStride)
        return false;
    if (interleaved)
        return a.pData == b.pData; // both are offsets within the vertex
    return a.n == 0 || SameBytes(a.pData, b.pData, static_cast<size_t>(a.nStride) * count);
}
} // namespace

bool CTVOMeshEx::Compare(const CTVOMeshEx& other) const
{
    const STVOMesh& a = mesh;
    const STVOMesh& b = other.mesh;
    if (a.nNumVertex != b.nNumVertex || a.nNumFaces != b.nNumFaces || a.nNumUVW != b.nNumUVW ||
        a.nNumStrips != b.nNumStrips || a.ePrimitiveType != b.ePrimitiveType ||
        (a.pInterleaved == nullptr) != (b.pInterleaved == nullptr))
        return false;
    if (std::memcmp(a.mUnpackMatrix, b.mUnpackMatrix, sizeof a.mUnpackMatrix) != 0)
        return false;
    if (!SameBytes(a.pnStripLength, b.pnStripLength, sizeof(uint32_t) * a.nNumStrips))
        return false;
    const bool interleaved = a.pInterleaved != nullptr;
    if (!SameStream(a.sFaces, b.sFaces, QMXTModelTVOCountIndices(a), false))
        return false;
    const CTVOData* sa[] = {&a.sVertex,     &a.sNormals, &a.sTangents,  &a.sBinormals,
                            &a.sVtxColours, &a.sBoneIdx, &a.sBoneWeight};
    const CTVOData* sb[] = {&b.sVertex,     &b.sNormals, &b.sTangents,  &b.sBinormals,
                            &b.sVtxColours, &b.sBoneIdx, &b.sBoneWeight};
    for (size_t i = 0; i < sizeof sa / sizeof sa[0]; ++i)
        if (!SameStream(*sa[i], *sb[i], a.nNumVertex, interleaved))
            return false;
    for (uint32_t i = 0; i < a.nNumUVW; ++i)
        if (!SameStream(a.psUVW[i], b.psUVW[i], a.nNumVertex, interleaved))
            return false;
    if (interleaved &&
        !SameBytes(a.pInterleaved, b.pInterleaved, static_cast<size_t>(a.sVertex.nStride) * a.nNumVertex))
        return false;
    const CQMXTBoneBatches& ba = a.sBoneBatch;
    const CQMXTBoneBatches& bb = b.sBoneBatch;
    if (ba.nBatchCnt != bb.nBatchCnt || ba.nBatchBoneMax != bb.nBatchBoneMax)
        return false;
    const size_t batches = ba.nBatchCnt;
    return SameBytes(ba.pnBatches, bb.pnBatches, sizeof(uint32_t) * batches * ba.nBatchBoneMax) &&
           SameBytes(ba.pnBatchBoneCnt, bb.pnBatchBoneCnt, sizeof(uint32_t) * batches) &&
           SameBytes(ba.pnBatchOffset, bb.pnBatchOffset, sizeof(uint32_t) * batches);
}

void CTVOMeshEx::Reset()
{
    FreeTVOMesh(mesh);
    vertices.Clear();
    tris.Clear();
}

STVOMesh CTVOMeshEx::Release()
{
    const STVOMesh out = mesh;
    mesh = EmptyTVOMesh();
    return out;
}
