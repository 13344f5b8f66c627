// Tangent space generation with vertex splitting where the triangles around a vertex disagree.
//
// The corners of each vertex are gathered into one flat list (counted first, then filled in triangle
// order), so memory follows the number of corners rather than 32 slots for every vertex; frames are
// computed vertex by vertex from positions, normals and UVs decoded once.
#include "QMXTTangentSpace.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>
#include "QMXTLargeArray.h"

namespace
{
constexpr uint32_t kMaxVertexTriangles = 32;

QMXTVECTOR3f Sub(const QMXTVECTOR3f& a, const QMXTVECTOR3f& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

QMXTVECTOR3f Scale(const QMXTVECTOR3f& a, float s)
{
    return {a.x * s, a.y * s, a.z * s};
}

float Dot(const QMXTVECTOR3f& a, const QMXTVECTOR3f& b)
{
    return QMXTMatrixVec3DotProductF(a, b);
}

// True for a finite vector of (about) unit length, as a successful normalisation leaves it.
bool IsUnit(const QMXTVECTOR3f& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z) && Dot(v, v) > 0.25f;
}

// v with its component along the unit vector n removed, normalised.
QMXTVECTOR3f Flatten(const QMXTVECTOR3f& v, const QMXTVECTOR3f& n)
{
    QMXTVECTOR3f out = Sub(v, Scale(n, Dot(n, v)));
    return QMXTMatrixVec3NormalizeF(out, out);
}

// A unit vector perpendicular to n: n crossed with the axis least aligned with it.
QMXTVECTOR3f Perpendicular(const QMXTVECTOR3f& n)
{
    const float ax = std::fabs(n.x), ay = std::fabs(n.y), az = std::fabs(n.z);
    const QMXTVECTOR3f axis = (ax <= ay && ax <= az) ? QMXTVECTOR3f{1, 0, 0}
                              : (ay <= az)           ? QMXTVECTOR3f{0, 1, 0}
                                                     : QMXTVECTOR3f{0, 0, 1};
    QMXTVECTOR3f p;
    QMXTMatrixVec3CrossProductF(p, n, axis);
    QMXTMatrixVec3NormalizeF(p, p);
    return IsUnit(p) ? p : QMXTVECTOR3f{1, 0, 0};
}

bool ComponentFits(uint32_t offset, uint32_t type, uint32_t stride)
{
    if (type == EQMXTDataNone || type >= EQMXTDataTypeCount)
        return false;
    return uint64_t(offset) + QMXTModelTVODataElementBytes(type, 3) <= stride;
}

QMXTVECTOR3f Read3(const uint8_t* p, uint32_t type)
{
    float f[4];
    QMXTVertexRead(f, p, type, 3);
    return {f[0], f[1], f[2]};
}

void Write3(uint8_t* p, uint32_t type, const QMXTVECTOR3f& v)
{
    const float f[3] = {v.x, v.y, v.z};
    QMXTVertexWrite(p, type, 3, f);
}

struct SFreeDeleter
{
    void operator()(void* p) const { std::free(p); }
};

struct SVertexFrameData
{
    QMXTVECTOR3f pos, nor, uv;
};

// One triangle corner at a vertex: its frame and where its index lives.
struct SCorner
{
    QMXTVECTOR3f tangent;
    QMXTVECTOR3f bitangent;
    uint32_t nIdxPos; // position in the index list
};

// Groups a vertex's corners (in triangle order) by agreement; writes each corner's group number and
// returns the group count.
uint32_t GroupCorners(const SCorner* pCorner, uint32_t n, float fSplit, uint8_t* pnGroup)
{
    uint32_t nGroups = 0;
    for (uint32_t i = 0; i < n; ++i)
    {
        uint32_t g = 0;
        for (; g < nGroups; ++g)
        {
            bool agrees = true;
            for (uint32_t j = 0; j < i && agrees; ++j)
                if (pnGroup[j] == g)
                    agrees = Dot(pCorner[i].tangent, pCorner[j].tangent) > fSplit &&
                             Dot(pCorner[i].bitangent, pCorner[j].bitangent) > fSplit;
            if (agrees)
                break;
        }
        pnGroup[i] = static_cast<uint8_t>(g);
        if (g == nGroups)
            ++nGroups;
    }
    return nGroups;
}
} // namespace

void QMXTVertexTangentBitangent(QMXTVECTOR3f& tangent, QMXTVECTOR3f& bitangent, const QMXTVECTOR3f& normal,
                                const QMXTVECTOR3f& p0, const QMXTVECTOR3f& p1, const QMXTVECTOR3f& p2,
                                const QMXTVECTOR3f& uv0, const QMXTVECTOR3f& uv1, const QMXTVECTOR3f& uv2)
{
    QMXTVECTOR3f n;
    QMXTMatrixVec3NormalizeF(n, normal);
    if (!IsUnit(n))
        n = {0, 0, 0};
    const QMXTVECTOR3f e1 = Sub(p1, p0), e2 = Sub(p2, p0);
    const float du1 = uv1.x - uv0.x, dv1 = uv1.y - uv0.y;
    const float du2 = uv2.x - uv0.x, dv2 = uv2.y - uv0.y;
    const float r = 1.0f / (du1 * dv2 - du2 * dv1);

    // Solve e1 = du1 T + dv1 B, e2 = du2 T + dv2 B when the UVs span an area.
    QMXTVECTOR3f t = e1, b = {0, 0, 0};
    const bool fromUV = std::isfinite(r);
    if (fromUV)
    {
        t = Scale(Sub(Scale(e1, dv2), Scale(e2, dv1)), r);
        b = Scale(Sub(Scale(e2, du1), Scale(e1, du2)), r);
    }
    t = Flatten(t, n);
    if (!IsUnit(t))
        t = Flatten(e1, n);
    if (!IsUnit(t))
        t = Perpendicular(n);
    if (fromUV)
        b = Flatten(Flatten(b, n), t);
    if (!fromUV || !IsUnit(b))
    {
        QMXTMatrixVec3CrossProductF(b, n, t);
        QMXTMatrixVec3NormalizeF(b, b);
        if (!IsUnit(b))
            b = Perpendicular(t);
    }
    tangent = t;
    bitangent = b;
}

int QMXTVertexGenerateTangentSpace(uint32_t* pnOutVtxNum, uint8_t** ppOutVtx, uint32_t* pnIdx, uint32_t nVertexNum,
                                   const uint8_t* pVertices, uint32_t nStride, uint32_t nOffsetPos,
                                   EQMXTDataType eTypePos, uint32_t nOffsetNor, EQMXTDataType eTypeNor,
                                   uint32_t nOffsetUV, EQMXTDataType eTypeUV, uint32_t nOffsetTan,
                                   EQMXTDataType eTypeTan, uint32_t nOffsetBin, EQMXTDataType eTypeBin,
                                   uint32_t nTriNum, float fSplitDifference)
{
    if (!pnOutVtxNum || !ppOutVtx || (nTriNum && !pnIdx) || (nVertexNum && !pVertices) || nStride == 0)
        return 1;
    if (!ComponentFits(nOffsetPos, eTypePos, nStride) || !ComponentFits(nOffsetNor, eTypeNor, nStride) ||
        !ComponentFits(nOffsetUV, eTypeUV, nStride) || !ComponentFits(nOffsetTan, eTypeTan, nStride) ||
        !ComponentFits(nOffsetBin, eTypeBin, nStride))
        return 1;
    const size_t nIdxNum = size_t(nTriNum) * 3;
    if (uint64_t(nVertexNum) * 3 * nStride > SIZE_MAX / 2)
        return 1;
    try
    {
        // Corners a vertex, with the failures of a degenerate triangle or a crowded vertex.
        QMXTLargeVector<uint32_t> start(size_t(nVertexNum) + 1, 0);
        for (size_t t = 0; t < nTriNum; ++t)
        {
            const uint32_t* tri = pnIdx + t * 3;
            if (tri[0] == tri[1] || tri[1] == tri[2] || tri[0] == tri[2])
                return 1;
            for (int c = 0; c < 3; ++c)
                if (tri[c] >= nVertexNum || ++start[tri[c] + 1] > kMaxVertexTriangles)
                    return 1;
        }
        // Positions, normals and UVs of the vertices in use, read once.
        QMXTLargeVector<SVertexFrameData> vtx(nVertexNum);
        for (uint32_t v = 0; v < nVertexNum; ++v)
            if (start[v + 1] != 0)
            {
                const uint8_t* rec = pVertices + size_t(v) * nStride;
                vtx[v] = {Read3(rec + nOffsetPos, eTypePos), Read3(rec + nOffsetNor, eTypeNor),
                          Read3(rec + nOffsetUV, eTypeUV)};
            }
        for (uint32_t v = 0; v < nVertexNum; ++v)
            start[v + 1] += start[v];
        // Each vertex's corners (positions in the index list), in triangle order.
        QMXTLargeVector<uint32_t> corners(nIdxNum);
        {
            QMXTLargeVector<uint32_t> fill(start.begin(), start.end() - 1);
            for (size_t i = 0; i < nIdxNum; ++i)
                corners[fill[pnIdx[i]]++] = static_cast<uint32_t>(i);
        }

        // The output block has room for three copies of every vertex and is shrunk at the end.
        std::unique_ptr<uint8_t, SFreeDeleter> block(
            static_cast<uint8_t*>(QMXTLargeAlloc(nVertexNum ? size_t(nVertexNum) * 3 * nStride : 1)));
        if (!block)
            return 1;
        QMXTLargeVector<uint32_t> newIdx(nIdxNum);
        const uint64_t nOutMax = uint64_t(nVertexNum) * 3;
        uint32_t nOut = 0;
        SCorner frame[kMaxVertexTriangles];
        uint8_t group[kMaxVertexTriangles];
        for (uint32_t v = 0; v < nVertexNum; ++v)
        {
            const uint32_t n = start[v + 1] - start[v];
            for (uint32_t i = 0; i < n; ++i)
            {
                // The frame of the corner, with the corners rotated so that it comes first.
                const uint32_t pos = corners[start[v] + i];
                const uint32_t* tri = pnIdx + (pos - pos % 3);
                const int c = int(pos % 3), c1 = (c + 1) % 3, c2 = (c + 2) % 3;
                const SVertexFrameData &a = vtx[tri[c]], &b = vtx[tri[c1]], &d = vtx[tri[c2]];
                QMXTVertexTangentBitangent(frame[i].tangent, frame[i].bitangent, a.nor, a.pos, b.pos, d.pos, a.uv,
                                           b.uv, d.uv);
                frame[i].nIdxPos = pos;
            }
            const uint32_t nGroups = GroupCorners(frame, n, fSplitDifference, group);
            if (nOut + uint64_t(nGroups) > nOutMax)
                return 1;
            for (uint32_t g = 0; g < nGroups; ++g, ++nOut)
            {
                QMXTVECTOR3f t = {0, 0, 0}, b = {0, 0, 0};
                for (uint32_t i = 0; i < n; ++i)
                    if (group[i] == g)
                    {
                        t = {t.x + frame[i].tangent.x, t.y + frame[i].tangent.y, t.z + frame[i].tangent.z};
                        b = {b.x + frame[i].bitangent.x, b.y + frame[i].bitangent.y, b.z + frame[i].bitangent.z};
                        newIdx[frame[i].nIdxPos] = nOut;
                    }
                QMXTMatrixVec3NormalizeF(t, t);
                QMXTMatrixVec3NormalizeF(b, b);
                uint8_t* rec = block.get() + size_t(nOut) * nStride;
                std::memcpy(rec, pVertices + size_t(v) * nStride, nStride);
                Write3(rec + nOffsetTan, eTypeTan, t);
                Write3(rec + nOffsetBin, eTypeBin, b);
            }
        }
        if (void* shrunk = QMXTLargeRealloc(block.get(), nOut ? size_t(nOut) * nStride : 1))
        {
            block.release();
            block.reset(static_cast<uint8_t*>(shrunk));
        }
        std::copy(newIdx.begin(), newIdx.end(), pnIdx);
        *pnOutVtxNum = nOut;
        *ppOutVtx = block.release();
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}
