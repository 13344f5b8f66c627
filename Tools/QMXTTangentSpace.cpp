// Tangent space generation with vertex splitting where the triangles around a vertex disagree.
//
// The corners of each vertex are gathered into one flat array (counted first, then filled in triangle
// order), so memory follows the number of corners rather than 32 slots for every vertex.
#include "QMXTTangentSpace.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

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
        pnGroup[i] = g;
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
    try
    {
        // Corners a vertex, with the failures of a degenerate triangle or a crowded vertex.
        std::vector<uint32_t> start(size_t(nVertexNum) + 1, 0);
        for (size_t t = 0; t < nTriNum; ++t)
        {
            const uint32_t* tri = pnIdx + t * 3;
            if (tri[0] == tri[1] || tri[1] == tri[2] || tri[0] == tri[2])
                return 1;
            for (int c = 0; c < 3; ++c)
                if (tri[c] >= nVertexNum || ++start[tri[c] + 1] > kMaxVertexTriangles)
                    return 1;
        }
        for (uint32_t v = 0; v < nVertexNum; ++v)
            start[v + 1] += start[v];

        // Each corner's frame, placed at its vertex in triangle order.
        std::vector<SCorner> corners(nIdxNum);
        std::vector<uint32_t> fill(start.begin(), start.end() - 1);
        for (size_t t = 0; t < nTriNum; ++t)
        {
            const uint32_t* tri = pnIdx + t * 3;
            QMXTVECTOR3f pos[3], nor[3], uv[3];
            for (int c = 0; c < 3; ++c)
            {
                const uint8_t* rec = pVertices + size_t(tri[c]) * nStride;
                pos[c] = Read3(rec + nOffsetPos, eTypePos);
                nor[c] = Read3(rec + nOffsetNor, eTypeNor);
                uv[c] = Read3(rec + nOffsetUV, eTypeUV);
            }
            for (int c = 0; c < 3; ++c)
            {
                const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
                SCorner& corner = corners[fill[tri[c]]++];
                QMXTVertexTangentBitangent(corner.tangent, corner.bitangent, nor[c], pos[c], pos[c1], pos[c2], uv[c],
                                           uv[c1], uv[c2]);
                corner.nIdxPos = static_cast<uint32_t>(t * 3 + c);
            }
        }

        // Group every vertex's corners; each group becomes one output vertex, in input order.
        std::vector<uint8_t> cornerGroup(nIdxNum);
        std::vector<uint32_t> firstOut(nVertexNum);
        uint64_t nOut = 0;
        for (uint32_t v = 0; v < nVertexNum; ++v)
        {
            firstOut[v] = static_cast<uint32_t>(nOut);
            nOut += GroupCorners(corners.data() + start[v], start[v + 1] - start[v], fSplitDifference,
                                 cornerGroup.data() + start[v]);
        }
        if (nOut > uint64_t(nVertexNum) * 3 || nOut * nStride > SIZE_MAX / 2)
            return 1;
        uint8_t* block = static_cast<uint8_t*>(std::malloc(nOut ? size_t(nOut) * nStride : 1));
        if (!block)
            return 1;
        std::vector<uint32_t> newIdx(nIdxNum);
        for (uint32_t v = 0; v < nVertexNum; ++v)
        {
            const SCorner* pc = corners.data() + start[v];
            const uint8_t* pg = cornerGroup.data() + start[v];
            const uint32_t n = start[v + 1] - start[v];
            const uint32_t nGroups = (v + 1 < nVertexNum ? firstOut[v + 1] : uint32_t(nOut)) - firstOut[v];
            for (uint32_t g = 0; g < nGroups; ++g)
            {
                QMXTVECTOR3f t = {0, 0, 0}, b = {0, 0, 0};
                for (uint32_t i = 0; i < n; ++i)
                    if (pg[i] == g)
                    {
                        t = {t.x + pc[i].tangent.x, t.y + pc[i].tangent.y, t.z + pc[i].tangent.z};
                        b = {b.x + pc[i].bitangent.x, b.y + pc[i].bitangent.y, b.z + pc[i].bitangent.z};
                        newIdx[pc[i].nIdxPos] = firstOut[v] + g;
                    }
                QMXTMatrixVec3NormalizeF(t, t);
                QMXTMatrixVec3NormalizeF(b, b);
                uint8_t* rec = block + size_t(firstOut[v] + g) * nStride;
                std::memcpy(rec, pVertices + size_t(v) * nStride, nStride);
                Write3(rec + nOffsetTan, eTypeTan, t);
                Write3(rec + nOffsetBin, eTypeBin, b);
            }
        }
        std::copy(newIdx.begin(), newIdx.end(), pnIdx);
        *pnOutVtxNum = static_cast<uint32_t>(nOut);
        *ppOutVtx = block;
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}
