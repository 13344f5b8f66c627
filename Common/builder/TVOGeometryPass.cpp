// The geometry pass and GenD.
#include <cstdlib>
#include <cstring>
#include <new>

#include "Log.h"
#include "OrderedWork.h"
#include "QMXTBoneBatches.h"
#include "QMXTGeometrySort.h"
#include "QMXTModelTVOTransform.h"
#include "QMXTTriStrip.h"
#include "QMXTTangentSpace.h"
#include "QMXTVertexData.h"
#include "TVOBuilderStrings.h"
#include "TVOMeshPasses.h"
#include "TVOSceneEx.h"
#include "QMXTLargeArray.h"

namespace
{
uint32_t Stride(const STVOMesh& m)
{
    return m.sVertex.nStride;
}

uint32_t Offset(const CTVOData& d)
{
    return QMXTModelTVODataOffset(d);
}

bool AddEmptyFloatStream(CTVOData& d, uint32_t vertexCount)
{
    d.Reset();
    d.eType = EQMXTDataFloat;
    d.n = 3;
    d.nStride = 12;
    d.pData = static_cast<uint8_t*>(QMXTLargeCalloc(vertexCount ? vertexCount : 1, 12));
    return d.pData != nullptr;
}

// Reorders the triangles of one range of the index list as eTriSort asks. A failure fails the
// export rather than writing the triangles unordered.
void OrderTriangles(uint8_t* vertices, uint32_t* indices, uint32_t stride, uint32_t vertexCount,
                    uint32_t triangleCount, const SBuilderSettings& s)
{
    int result = 0;
    if (triangleCount == 0)
        return;
    if (s.eTriSort == 1)
        result = QMXTGeometrySort(vertices, indices, stride, vertexCount, triangleCount, 32, 64, 3);
    else if (s.eTriSort == 3)
        result = QMXTTriStripList(indices, triangleCount);
    RequireMemory(result == 0);
}

bool BatchBones(STVOMesh& m, const SBuilderSettings& s)
{
    uint32_t outCount = 0;
    uint8_t* out = nullptr;
    const int result = m.sBoneBatch.Create(&outCount, &out, reinterpret_cast<uint32_t*>(m.sFaces.pData),
                                           m.nNumVertex, m.pInterleaved, Stride(m), Offset(m.sBoneWeight),
                                           m.sBoneWeight.eType, Offset(m.sBoneIdx), m.sBoneIdx.eType,
                                           m.nNumFaces, s.uiBoneLimit, m.sBoneWeight.n);
    if (result != CQMXTBoneBatches::eSuccess)
    {
        std::free(out);
        Log(eLogError, "%s",
            CTVOBuilderStrings::CStrText(result == CQMXTBoneBatches::eTooManyVertices
                                             ? CTVOBuilderStrings::eBoneBatchTooManyVertices
                                             : CTVOBuilderStrings::eBoneBatchFailed));
        return false;
    }
    std::free(m.pInterleaved);
    m.pInterleaved = out;
    m.nNumVertex = outCount;
    return true;
}

// Takes the empty tangent and binormal streams out again, when no tangent space could be made.
bool DropTangentStreams(STVOMesh& m)
{
    RequireMemory(QMXTModelTVOToggleInterleaved(m, 1) == 0);
    m.sTangents.Reset();
    m.sBinormals.Reset();
    m.sTangents.eType = m.sBinormals.eType = EQMXTDataFloat;
    RequireMemory(QMXTModelTVOToggleInterleaved(m, 1) == 0);
    return true;
}

bool GenerateTangentSpace(STVOMesh& m, const SBuilderSettings& s)
{
    uint32_t outCount = 0;
    uint8_t* out = nullptr;
    const CTVOData& uv = m.psUVW[s.uiTSUseUVW];
    const int result = QMXTVertexGenerateTangentSpace(
        &outCount, &out, reinterpret_cast<uint32_t*>(m.sFaces.pData), m.nNumVertex, m.pInterleaved, Stride(m),
        Offset(m.sVertex), m.sVertex.eType, Offset(m.sNormals), m.sNormals.eType, Offset(uv), uv.eType,
        Offset(m.sTangents), m.sTangents.eType, Offset(m.sBinormals), m.sBinormals.eType, m.nNumFaces,
        s.fTangentSpaceVtxSplit);
    if (result != 0)
    {
        std::free(out);
        Log(eLogError, "%s",
            CTVOBuilderStrings::CStrText(result == 2 ? CTVOBuilderStrings::eTangentSpaceFailed
                                                     : CTVOBuilderStrings::eTangentSpaceTooManySplits));
        return DropTangentStreams(m);
    }
    std::free(m.pInterleaved);
    m.pInterleaved = out;
    m.nNumVertex = outCount;
    return true;
}
} // namespace

void RequireMemory(bool done)
{
    if (!done)
        throw std::bad_alloc();
}

bool GeometryPass(STVOMesh& m, const SBuilderSettings& s)
{
    bool tangents =
        s.bTangentSpace && (s.Exported(COptionsData::eVcOptTan) || s.Exported(COptionsData::eVcOptBin));
    if (tangents && m.nNumUVW <= s.uiTSUseUVW)
    {
        Log(eLogWarning, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eTangentSpaceNoUVW),
            static_cast<int>(s.uiTSUseUVW));
        tangents = false;
    }
    if (tangents)
        RequireMemory(AddEmptyFloatStream(m.sTangents, m.nNumVertex) &&
                      AddEmptyFloatStream(m.sBinormals, m.nNumVertex));
    // Mirroring z for DirectX turns every triangle over; reversing the corners keeps it facing out.
    if (s.IsDirectX() && m.nNumFaces)
        RequireMemory(QMXTModelTVOReorderFaces(m, 0, 2, 1) == 0);
    // Batching, tangent space and de-indexing work on one interleaved block.
    if (!m.pInterleaved)
        RequireMemory(QMXTModelTVOToggleInterleaved(m, 1) == 0);

    if (m.sBoneWeight.n > eQMXTMaxBonesPerVertex)
    {
        Log(eLogError, "%s", CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eMaxFourBones));
        return false;
    }
    if (s.uiBoneLimit != 0 && m.sBoneWeight.n != 0 && m.nNumFaces != 0)
    {
        if (!BatchBones(m, s))
            return false;
    }
    else
        m.sBoneBatch.Release();

    if (tangents && m.nNumFaces && !GenerateTangentSpace(m, s))
        return false;

    uint32_t* indices = reinterpret_cast<uint32_t*>(m.sFaces.pData);
    const CQMXTBoneBatches& b = m.sBoneBatch;
    if (b.nBatchCnt)
        for (uint32_t i = 0; i < b.nBatchCnt; ++i)
        {
            const uint32_t first = b.pnBatchOffset[i];
            const uint32_t end = i + 1 < b.nBatchCnt ? b.pnBatchOffset[i + 1] : m.nNumFaces;
            OrderTriangles(m.pInterleaved, indices + 3 * static_cast<size_t>(first), Stride(m), m.nNumVertex,
                           end - first, s);
        }
    else
        OrderTriangles(m.pInterleaved, indices, Stride(m), m.nNumVertex, m.nNumFaces, s);

    std::free(m.pnStripLength);
    m.pnStripLength = nullptr;
    m.nNumStrips = 0;
    m.ePrimitiveType = eTVOIndexedTriangleList;
    if (s.ePrimType == 1 && m.nNumFaces)
    {
        RequireMemory(QMXTModelTVOToggleStrips(m) == 0);
        m.ePrimitiveType = eTVOIndexedTriangleStrip;
    }
    if (!s.bIndexed)
        RequireMemory(QMXTModelTVODeIndex(m) == 0);
    if (!m.pInterleaved)
        RequireMemory(QMXTModelTVOToggleInterleaved(m, 1) == 0);
    return true;
}

bool CTVOSceneEx::GenD(const SBuilderSettings& settings)
{
    // The meshes are independent: their passes run on the scene's threads, and their messages and
    // bone resolution follow in mesh order, as a loop over the meshes gives them.
    return RunInOrder(
        nNumMesh, m_nThreads, [&](uint32_t i) { return GeometryPass(pMesh[i], settings); },
        [](uint32_t i) {
            Log(eLogInfo, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eProcessingMesh), static_cast<int>(i));
        },
        [&](uint32_t i) {
            ResolveBones(pMesh[i]);
            return true;
        });
}
