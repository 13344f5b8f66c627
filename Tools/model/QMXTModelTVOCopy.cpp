// Deep copies of scene model records: every array of the copy is allocated afresh.
#include <cstdlib>
#include <cstring>

#include "QMXTError.h"
#include "QMXTLargeArray.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"

namespace
{
// Copies count elements of src into a new array; a null source or a count of 0 gives null.
template <typename T> bool DupArray(T*& dst, const T* src, size_t count)
{
    dst = nullptr;
    if (!src || count == 0)
        return true;
    dst = static_cast<T*>(QMXTMallocArray(count, sizeof(T)));
    if (!dst)
        return false;
    std::memcpy(dst, src, count * sizeof(T));
    return true;
}

bool DupString(char*& dst, const char* src)
{
    return DupArray(dst, src, src ? std::strlen(src) + 1 : 0);
}

// Copies one animation channel: with its flag set, one key a frame (or the keys its index array
// reaches); otherwise the one static key.
bool DupChannel(uint32_t*& dstIdx, float*& dstVal, const uint32_t* idx, const float* val, bool animated,
                uint32_t frameCount, uint32_t keySize)
{
    const uint32_t* usedIdx = animated && frameCount ? idx : nullptr;
    const size_t floats = !val ? 0
                          : animated && frameCount ? QMXTModelTVOGetAnimArraySize(usedIdx, frameCount, keySize)
                                                   : keySize;
    return DupArray(dstIdx, usedIdx, frameCount) && DupArray(dstVal, val, floats);
}

void ClearNodeArrays(STVONode& n)
{
    n.pszName = nullptr;
    n.pnAnimPositionIdx = n.pnAnimRotationIdx = n.pnAnimScaleIdx = n.pnAnimMatrixIdx = nullptr;
    n.pfAnimPosition = n.pfAnimRotation = n.pfAnimScale = n.pfAnimMatrix = nullptr;
    n.pUserData = nullptr;
}

// Clears every owned pointer of a shallow copy; stream offsets of an interleaved mesh stay.
void ClearMeshArrays(STVOMesh& m)
{
    const bool interleaved = m.pInterleaved != nullptr;
    m.sFaces.pData = nullptr;
    m.pnStripLength = nullptr;
    m.pInterleaved = nullptr;
    m.psUVW = nullptr;
    QMXTForEachStream(m, [&](CTVOData& s) {
        if (!interleaved)
            s.pData = nullptr;
    });
    m.sBoneBatch.pnBatches = m.sBoneBatch.pnBatchBoneCnt = m.sBoneBatch.pnBatchOffset = nullptr;
}

void FreeMeshArrays(STVOMesh& m, bool interleaved)
{
    m.sFaces.Reset();
    std::free(m.pnStripLength);
    QMXTForEachStream(m, [&](CTVOData& s) { s.Reset(interleaved); });
    std::free(m.psUVW);
    std::free(m.pInterleaved);
    m.sBoneBatch.Release();
    m = STVOMesh();
}

bool CopyMeshArrays(const STVOMesh& src, STVOMesh& m)
{
    const bool interleaved = src.pInterleaved != nullptr;
    bool ok = QMXTModelTVOCopyCTVOData(src.sFaces, m.sFaces, QMXTModelTVOCountIndices(src), false) == 0 &&
              DupArray(m.pnStripLength, src.pnStripLength, src.nNumStrips) &&
              DupArray(m.pInterleaved, src.pInterleaved,
                       static_cast<size_t>(src.nNumVertex) * QMXTInterleavedStride(src)) &&
              DupArray(m.psUVW, src.psUVW, src.nNumUVW);
    if (!ok)
        return false;
    // The UVW records still carry the source's arrays: clear them before anything can fail.
    for (uint32_t i = 0; m.psUVW && i < src.nNumUVW; ++i)
        m.psUVW[i] = CTVOData();
    const auto from = QMXTModelTVOFixedStreams(src);
    const auto to = QMXTModelTVOFixedStreams(m);
    for (int i = 0; i < 7 && ok; ++i)
        ok = QMXTModelTVOCopyCTVOData(*from[i], *to[i], src.nNumVertex, interleaved) == 0;
    for (uint32_t i = 0; ok && src.psUVW && i < src.nNumUVW; ++i)
        ok = QMXTModelTVOCopyCTVOData(src.psUVW[i], m.psUVW[i], src.nNumVertex, interleaved) == 0;
    const CQMXTBoneBatches& b = src.sBoneBatch;
    return ok && DupArray(m.sBoneBatch.pnBatches, b.pnBatches, static_cast<size_t>(b.nBatchCnt) * b.nBatchBoneMax) &&
           DupArray(m.sBoneBatch.pnBatchBoneCnt, b.pnBatchBoneCnt, b.nBatchCnt) &&
           DupArray(m.sBoneBatch.pnBatchOffset, b.pnBatchOffset, b.nBatchCnt);
}

// Hands a finished copy over to dst, or frees what a failed one had made (release leaves it
// zeroed); 0 for success, 1 for failure.
template <typename T, typename F> int Deliver(T& copy, T& dst, bool ok, F release)
{
    if (!ok)
        release(copy);
    dst = copy;
    return ok ? 0 : 1;
}

// Zeroed records for count copies of a record array (null for none); fails when the source array
// is missing although its count says there are records.
template <typename T> bool NewRecords(T*& records, uint32_t& count, const T* src, uint32_t wanted)
{
    records = nullptr;
    count = 0;
    if (wanted == 0)
        return true;
    if (!src)
    {
        QMXTErrorOutputDebug("CopyScene: the scene counts %u records of a kind but has no array of them.\n", wanted);
        return false;
    }
    records = static_cast<T*>(QMXTLargeCalloc(wanted, sizeof(T)));
    if (!records)
        return false;
    count = wanted;
    return true;
}

// Copies count records with copy(source, destination); stops at the first failure.
template <typename T, typename F> bool CopyRecords(const T* src, T* dst, uint32_t count, F copy)
{
    for (uint32_t i = 0; i < count; ++i)
        if (copy(src[i], dst[i]) != 0)
            return false;
    return true;
}
} // namespace

int QMXTModelTVOCopyCTVOData(const CTVOData& src, CTVOData& dst, uint32_t vertexCount, bool interleaved)
{
    dst = src;
    if (interleaved)
        return 0; // pData is an offset into the mesh's block
    const uint32_t stride = src.nStride ? src.nStride : QMXTModelTVODataStride(src);
    if (!DupArray(dst.pData, src.pData, static_cast<size_t>(vertexCount) * stride))
    {
        dst = CTVOData();
        return 1;
    }
    return 0;
}

int QMXTModelTVOCopyNode(const STVONode& src, STVONode& dst, uint32_t frameCount)
{
    STVONode n = src;
    ClearNodeArrays(n);
    const uint32_t f = src.nAnimationFlags;
    const bool ok =
        DupString(n.pszName, src.pszName) &&
        DupChannel(n.pnAnimPositionIdx, n.pfAnimPosition, src.pnAnimPositionIdx, src.pfAnimPosition,
                   f & eTVOHasPositionAnimation, frameCount, 3) &&
        DupChannel(n.pnAnimRotationIdx, n.pfAnimRotation, src.pnAnimRotationIdx, src.pfAnimRotation,
                   f & eTVOHasRotationAnimation, frameCount, 4) &&
        DupChannel(n.pnAnimScaleIdx, n.pfAnimScale, src.pnAnimScaleIdx, src.pfAnimScale, f & eTVOHasScaleAnimation,
                   frameCount, 7) &&
        DupChannel(n.pnAnimMatrixIdx, n.pfAnimMatrix, src.pnAnimMatrixIdx, src.pfAnimMatrix,
                   f & eTVOHasMatrixAnimation, frameCount, 16) &&
        DupArray(n.pUserData, src.pUserData, src.nUserDataSize);
    return Deliver(n, dst, ok, QMXTModelTVOFreeNode);
}

int QMXTModelTVOCopyMesh(const STVOMesh& src, STVOMesh& dst)
{
    STVOMesh m = src;
    ClearMeshArrays(m);
    const bool interleaved = src.pInterleaved != nullptr;
    return Deliver(m, dst, CopyMeshArrays(src, m), [interleaved](STVOMesh& r) { FreeMeshArrays(r, interleaved); });
}

int QMXTModelTVOCopyMaterial(const STVOMaterial& src, STVOMaterial& dst)
{
    STVOMaterial m = src;
    m.pszName = m.pszEffectFile = m.pszEffectName = nullptr;
    m.pUserData = nullptr;
    const bool ok = DupString(m.pszName, src.pszName) && DupString(m.pszEffectFile, src.pszEffectFile) &&
                    DupString(m.pszEffectName, src.pszEffectName) &&
                    DupArray(m.pUserData, src.pUserData, src.nUserDataSize);
    return Deliver(m, dst, ok, QMXTModelTVOFreeMaterial);
}

int QMXTModelTVOCopyTexture(const STVOTexture& src, STVOTexture& dst)
{
    dst = STVOTexture();
    return DupString(dst.pszName, src.pszName) ? 0 : 1;
}

int QMXTModelTVOCopyCamera(const STVOCamera& src, STVOCamera& dst, uint32_t frameCount)
{
    dst = src;
    if (DupArray(dst.pfAnimFOV, src.pfAnimFOV, frameCount))
        return 0;
    dst = STVOCamera();
    return 1;
}

int QMXTModelTVOCopyLight(const STVOLight& src, STVOLight& dst)
{
    dst = src; // a light owns no arrays
    return 0;
}

int QMXTModelTVOCopyScene(const STVOScene& src, STVOScene& dst, bool withMeshes)
{
    dst = STVOScene();
    std::memcpy(dst.pfColourBackground, src.pfColourBackground, sizeof dst.pfColourBackground);
    std::memcpy(dst.pfColourAmbient, src.pfColourAmbient, sizeof dst.pfColourAmbient);
    dst.nNumMeshNode = src.nNumMeshNode;
    dst.nNumFrame = src.nNumFrame;
    dst.nFPS = src.nFPS;
    dst.nFlags = src.nFlags;
    const uint32_t frames = src.nNumFrame;
    bool ok = DupArray(dst.pUserData, src.pUserData, src.nUserDataSize);
    dst.nUserDataSize = dst.pUserData ? src.nUserDataSize : 0;
    ok = ok && NewRecords(dst.pCamera, dst.nNumCamera, src.pCamera, src.nNumCamera) &&
         NewRecords(dst.pLight, dst.nNumLight, src.pLight, src.nNumLight) &&
         NewRecords(dst.pNode, dst.nNumNode, src.pNode, src.nNumNode) &&
         NewRecords(dst.pTexture, dst.nNumTexture, src.pTexture, src.nNumTexture) &&
         NewRecords(dst.pMaterial, dst.nNumMaterial, src.pMaterial, src.nNumMaterial) &&
         (!withMeshes || NewRecords(dst.pMesh, dst.nNumMesh, src.pMesh, src.nNumMesh));
    ok = ok &&
         CopyRecords(src.pCamera, dst.pCamera, dst.nNumCamera,
                     [frames](const STVOCamera& s, STVOCamera& d) { return QMXTModelTVOCopyCamera(s, d, frames); }) &&
         CopyRecords(src.pLight, dst.pLight, dst.nNumLight, QMXTModelTVOCopyLight) &&
         CopyRecords(src.pNode, dst.pNode, dst.nNumNode,
                     [frames](const STVONode& s, STVONode& d) { return QMXTModelTVOCopyNode(s, d, frames); }) &&
         CopyRecords(src.pTexture, dst.pTexture, dst.nNumTexture, QMXTModelTVOCopyTexture) &&
         CopyRecords(src.pMaterial, dst.pMaterial, dst.nNumMaterial, QMXTModelTVOCopyMaterial) &&
         CopyRecords(src.pMesh, dst.pMesh, dst.nNumMesh, QMXTModelTVOCopyMesh);
    if (ok)
        return 0;
    QMXTModelTVOFreeArrays(dst);
    return 1;
}

int CQMXTModelTVO::CopyFromMemory(const STVOScene& scene)
{
    if (&scene == static_cast<const STVOScene*>(this))
        return IsLoaded() ? 0 : 1;
    Destroy();
    if (QMXTModelTVOCopyScene(scene, *this) != 0)
        return 1;
    if (InitImpl() == 0)
        return 0;
    QMXTModelTVOFreeArrays(*this);
    return 1;
}
