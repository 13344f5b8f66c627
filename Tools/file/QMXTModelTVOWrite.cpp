// The .tvo writer: the scene model as a tree of tagged little-endian blocks.
//
// Containers are written with length 0 and closed by their end marker; leaves carry their byte count.
// A leaf whose array or string is absent (or empty) is not written at all. Every multi-byte value goes
// through CLEWriter, so the file is the same whatever the host's byte order.
// Cost: one pass over the scene's data; memory use is the writer's 64 KiB buffer.
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include "QMXTModelTVO.h"
#include "QMXTModelTVOFile.h"
#include "QMXTSink.h"
#include "QMXTTVOBlocks.h"

namespace
{
class CBlockWriter
{
  public:
    explicit CBlockWriter(CLEWriter& out) : m_out(out) {}

    bool Ok() const { return m_bOk && m_out.Ok(); }
    void Fail() { m_bOk = false; }

    void Begin(uint32_t tag) { Marker(tag, 0); }
    void End(uint32_t tag) { Marker(tag | eTVOEndBit, 0); }

    void U32(uint32_t tag, uint32_t v)
    {
        Marker(tag, 4);
        m_out.U32(v);
        End(tag);
    }
    void I32(uint32_t tag, int32_t v) { U32(tag, static_cast<uint32_t>(v)); }
    void F32(uint32_t tag, float v)
    {
        Marker(tag, 4);
        m_out.F32(v);
        End(tag);
    }
    // A fixed-size float field (colours, matrices), always written.
    void F32s(uint32_t tag, const float* v, uint32_t count)
    {
        Marker(tag, 4 * count);
        for (uint32_t i = 0; i < count; ++i)
            m_out.F32(v[i]);
        End(tag);
    }
    // count elements of elementSize bytes; nothing when the array is absent or empty.
    void Array(uint32_t tag, const void* data, uint64_t count, uint32_t elementSize)
    {
        if (!data || count == 0 || !Ok())
            return;
        const uint64_t bytes = count * elementSize;
        if (bytes > std::numeric_limits<uint32_t>::max())
        {
            Fail();
            return;
        }
        Marker(tag, static_cast<uint32_t>(bytes));
        m_out.Elements(data, static_cast<size_t>(count), elementSize);
        End(tag);
    }
    // A string with its zero byte; nothing when absent.
    void String(uint32_t tag, const char* s)
    {
        if (s)
            Array(tag, s, std::strlen(s) + 1, 1);
    }
    void Marker(uint32_t tag, uint32_t length)
    {
        m_out.U32(tag);
        m_out.U32(length);
    }

    CLEWriter& Out() { return m_out; }

  private:
    CLEWriter& m_out;
    bool m_bOk = true;
};

// An absent stream leaves no block. The offset of an interleaved stream without components means nothing.
bool IsEmpty(const CTVOData& d, bool isOffset)
{
    return d.eType == EQMXTDataNone && d.n == 0 && d.nStride == 0 && (isOffset || d.pData == nullptr);
}

// A vertex data block. elements is the vertex count (the stream holds stride / size elements a vertex)
// or, for faces, the index count. A stream of an interleaved mesh carries its offset instead of data.
void WriteData(CBlockWriter& w, uint32_t tag, const CTVOData& d, uint32_t count, bool isOffset, bool isFaces,
               bool always)
{
    if (!always && IsEmpty(d, isOffset))
        return;
    w.Begin(tag);
    w.U32(eTVODataType, d.eType);
    w.U32(eTVODataComponents, d.n);
    w.U32(eTVODataStride, d.nStride);
    if (isOffset)
    {
        if (d.n)
            w.U32(eTVODataData, QMXTModelTVODataOffset(d));
    }
    else if (d.pData)
    {
        const uint32_t size = QMXTModelTVODataTypeSize(d.eType);
        if (size == 0)
            w.Fail(); // data of an unknown type cannot be written element by element
        else
            w.Array(eTVODataData, d.pData, isFaces ? count : static_cast<uint64_t>(d.nStride / size) * count,
                    size);
    }
    w.End(tag);
}

// Block 6014: every vertex, its streams in offset order, the gaps between them as zero bytes.
void WriteInterleaved(CBlockWriter& w, const STVOMesh& m)
{
    if (!QMXTTVOInterleavedLayoutValid(m))
    {
        w.Fail();
        return;
    }
    const uint32_t stride = m.sVertex.nStride;
    const uint64_t bytes = static_cast<uint64_t>(m.nNumVertex) * stride;
    if (bytes > std::numeric_limits<uint32_t>::max())
    {
        w.Fail();
        return;
    }
    const std::vector<const CTVOData*> streams = QMXTTVOInterleavedStreams(m);
    w.Marker(eTVOMeshInterleaved, static_cast<uint32_t>(bytes));
    CLEWriter& out = w.Out();
    for (uint32_t v = 0; v < m.nNumVertex && out.Ok(); ++v)
    {
        const uint8_t* vertex = m.pInterleaved + static_cast<size_t>(v) * stride;
        uint32_t at = 0;
        for (const CTVOData* s : streams)
        {
            const uint32_t offset = QMXTModelTVODataOffset(*s);
            const uint32_t size = QMXTModelTVODataTypeSize(s->eType);
            out.Zeros(offset - at);
            out.Elements(vertex + offset, s->n, size);
            at = offset + size * s->n;
        }
        out.Zeros(stride - at);
    }
    w.End(eTVOMeshInterleaved);
}

void WriteMesh(CBlockWriter& w, const STVOMesh& m)
{
    if (m.nNumUVW && !m.psUVW)
    {
        w.Fail();
        return;
    }
    const bool interleaved = m.pInterleaved != nullptr;
    w.Begin(eTVOSceneMesh);
    w.U32(eTVOMeshNumVertex, m.nNumVertex);
    w.U32(eTVOMeshNumFaces, m.nNumFaces);
    w.U32(eTVOMeshNumUVW, m.nNumUVW);
    w.Array(eTVOMeshStripLength, m.pnStripLength, m.nNumStrips, 4);
    w.U32(eTVOMeshNumStrips, m.nNumStrips);
    if (interleaved)
        WriteInterleaved(w, m);
    const CQMXTBoneBatches& b = m.sBoneBatch;
    w.U32(eTVOMeshBoneBatchBoneMax, b.nBatchBoneMax);
    w.U32(eTVOMeshBoneBatchCnt, b.nBatchCnt);
    w.Array(eTVOMeshBoneBatches, b.pnBatches, static_cast<uint64_t>(b.nBatchBoneMax) * b.nBatchCnt, 4);
    w.Array(eTVOMeshBoneBatchBoneCnt, b.pnBatchBoneCnt, b.nBatchCnt, 4);
    w.Array(eTVOMeshBoneBatchOffset, b.pnBatchOffset, b.nBatchCnt, 4);
    w.F32s(eTVOMeshUnpackMatrix, m.mUnpackMatrix, 16);
    WriteData(w, eTVOMeshFaces, m.sFaces, QMXTModelTVOCountIndices(m), false, true, false);
    const struct
    {
        uint32_t tag;
        const CTVOData* data;
    } before[] = {{eTVOMeshVertex, &m.sVertex},
                  {eTVOMeshNormals, &m.sNormals},
                  {eTVOMeshTangents, &m.sTangents},
                  {eTVOMeshBinormals, &m.sBinormals}},
      after[] = {{eTVOMeshVtxColours, &m.sVtxColours},
                 {eTVOMeshBoneIdx, &m.sBoneIdx},
                 {eTVOMeshBoneWeight, &m.sBoneWeight}};
    for (const auto& s : before)
        WriteData(w, s.tag, *s.data, m.nNumVertex, interleaved, false, false);
    for (uint32_t i = 0; i < m.nNumUVW; ++i)
        WriteData(w, eTVOMeshUVW, m.psUVW[i], m.nNumVertex, interleaved, false, true);
    for (const auto& s : after)
        WriteData(w, s.tag, *s.data, m.nNumVertex, interleaved, false, false);
    w.End(eTVOSceneMesh);
}

void WriteNode(CBlockWriter& w, const STVONode& n, uint32_t frameCount)
{
    w.Begin(eTVOSceneNode);
    w.I32(eTVONodeIdx, n.nIdx);
    w.String(eTVONodeName, n.pszName);
    w.I32(eTVONodeIdxMaterial, n.nIdxMaterial);
    w.I32(eTVONodeIdxParent, n.nIdxParent);
    w.U32(eTVONodeAnimFlags, n.nAnimationFlags);
    const struct
    {
        uint32_t idxTag, valTag, flag, keySize;
        const uint32_t* idx;
        const float* values;
    } channels[] = {
        {eTVONodeAnimPositionIdx, eTVONodeAnimPosition, eTVOHasPositionAnimation, 3, n.pnAnimPositionIdx,
         n.pfAnimPosition},
        {eTVONodeAnimRotationIdx, eTVONodeAnimRotation, eTVOHasRotationAnimation, 4, n.pnAnimRotationIdx,
         n.pfAnimRotation},
        {eTVONodeAnimScaleIdx, eTVONodeAnimScale, eTVOHasScaleAnimation, 7, n.pnAnimScaleIdx, n.pfAnimScale},
        {eTVONodeAnimMatrixIdx, eTVONodeAnimMatrix, eTVOHasMatrixAnimation, 16, n.pnAnimMatrixIdx,
         n.pfAnimMatrix},
    };
    for (const auto& c : channels)
    {
        w.Array(c.idxTag, c.idx, frameCount, 4);
        const uint64_t floats =
            QMXTTVOChannelFloats(c.idx, (n.nAnimationFlags & c.flag) != 0, frameCount, c.keySize);
        w.Array(c.valTag, c.values, floats, 4);
    }
    w.Array(eTVONodeUserData, n.pUserData, n.nUserDataSize, 1);
    w.End(eTVOSceneNode);
}

void WriteMaterial(CBlockWriter& w, const STVOMaterial& m)
{
    w.Begin(eTVOSceneMaterial);
    w.U32(eTVOMatFlags, m.nFlags);
    w.String(eTVOMatName, m.pszName);
    for (uint32_t i = 0; i < eTVOTexSlotCount; ++i)
        w.I32(QMXTTVOTextureSlotTag(i), m.nIdxTexture[i]);
    w.F32(eTVOMatOpacity, m.fMatOpacity);
    w.F32s(eTVOMatAmbient, m.pfMatAmbient, 3);
    w.F32s(eTVOMatDiffuse, m.pfMatDiffuse, 3);
    w.F32s(eTVOMatSpecular, m.pfMatSpecular, 3);
    w.F32(eTVOMatShininess, m.fMatShininess);
    w.String(eTVOMatEffectFile, m.pszEffectFile);
    w.String(eTVOMatEffectName, m.pszEffectName);
    w.U32(eTVOMatBlendSrcRGB, m.eBlendSrcRGB);
    w.U32(eTVOMatBlendSrcA, m.eBlendSrcA);
    w.U32(eTVOMatBlendDstRGB, m.eBlendDstRGB);
    w.U32(eTVOMatBlendDstA, m.eBlendDstA);
    w.U32(eTVOMatBlendOpRGB, m.eBlendOpRGB);
    w.U32(eTVOMatBlendOpA, m.eBlendOpA);
    w.F32s(eTVOMatBlendColour, m.pfBlendColour, 4);
    w.F32s(eTVOMatBlendFactor, m.pfBlendFactor, 4);
    w.Array(eTVOMatUserData, m.pUserData, m.nUserDataSize, 1);
    w.End(eTVOSceneMaterial);
}

void WriteCamera(CBlockWriter& w, const STVOCamera& c, uint32_t frameCount)
{
    w.Begin(eTVOSceneCamera);
    w.I32(eTVOCameraIdxTarget, c.nIdxTarget);
    w.F32(eTVOCameraFOV, c.fFOV);
    w.F32(eTVOCameraFar, c.fFar);
    w.F32(eTVOCameraNear, c.fNear);
    w.Array(eTVOCameraAnimFOV, c.pfAnimFOV, frameCount, 4);
    w.End(eTVOSceneCamera);
}

void WriteLight(CBlockWriter& w, const STVOLight& l)
{
    w.Begin(eTVOSceneLight);
    w.I32(eTVOLightIdxTarget, l.nIdxTarget);
    w.F32s(eTVOLightColour, l.pfColour, 3);
    w.U32(eTVOLightType, l.eType);
    if (l.eType != eTVOLightDirectional)
    {
        w.F32(eTVOLightConstantAttenuation, l.fConstantAttenuation);
        w.F32(eTVOLightLinearAttenuation, l.fLinearAttenuation);
        w.F32(eTVOLightQuadraticAttenuation, l.fQuadraticAttenuation);
    }
    if (l.eType == eTVOLightSpot)
    {
        w.F32(eTVOLightFalloffAngle, l.fFalloffAngle);
        w.F32(eTVOLightFalloffExponent, l.fFalloffExponent);
    }
    w.End(eTVOSceneLight);
}

// Record arrays must exist for their counts; a model that claims records it lacks cannot be written.
bool RecordsPresent(const STVOScene& s)
{
    return (!s.nNumCamera || s.pCamera) && (!s.nNumLight || s.pLight) && (!s.nNumMesh || s.pMesh) &&
           (!s.nNumNode || s.pNode) && (!s.nNumTexture || s.pTexture) && (!s.nNumMaterial || s.pMaterial);
}

void WriteScene(CBlockWriter& w, const STVOScene& s)
{
    w.Begin(eTVOScene);
    w.F32s(eTVOSceneClearColour, s.pfColourBackground, 3);
    w.F32s(eTVOSceneAmbientColour, s.pfColourAmbient, 3);
    w.U32(eTVOSceneNumCamera, s.nNumCamera);
    w.U32(eTVOSceneNumLight, s.nNumLight);
    w.U32(eTVOSceneNumMesh, s.nNumMesh);
    w.U32(eTVOSceneNumNode, s.nNumNode);
    w.U32(eTVOSceneNumMeshNode, s.nNumMeshNode);
    w.U32(eTVOSceneNumTexture, s.nNumTexture);
    w.U32(eTVOSceneNumMaterial, s.nNumMaterial);
    w.U32(eTVOSceneNumFrame, s.nNumFrame);
    if (s.nNumFrame)
        w.U32(eTVOSceneFPS, s.nFPS);
    w.U32(eTVOSceneFlags, s.nFlags);
    w.Array(eTVOSceneUserData, s.pUserData, s.nUserDataSize, 1);
    for (uint32_t i = 0; i < s.nNumCamera && w.Ok(); ++i)
        WriteCamera(w, s.pCamera[i], s.nNumFrame);
    for (uint32_t i = 0; i < s.nNumLight && w.Ok(); ++i)
        WriteLight(w, s.pLight[i]);
    for (uint32_t i = 0; i < s.nNumMaterial && w.Ok(); ++i)
        WriteMaterial(w, s.pMaterial[i]);
    for (uint32_t i = 0; i < s.nNumMesh && w.Ok(); ++i)
        WriteMesh(w, s.pMesh[i]);
    for (uint32_t i = 0; i < s.nNumNode && w.Ok(); ++i)
        WriteNode(w, s.pNode[i], s.nNumFrame);
    for (uint32_t i = 0; i < s.nNumTexture && w.Ok(); ++i)
    {
        w.Begin(eTVOSceneTexture);
        w.String(eTVOTexName, s.pTexture[i].pszName);
        w.End(eTVOSceneTexture);
    }
    w.End(eTVOScene);
}
} // namespace

int QMXTTVOWriteScene(const STVOScene& scene, CSink& sink, const char* options, const char* history)
{
    if (!RecordsPresent(scene))
        return 1;
    CLEWriter out(sink);
    CBlockWriter w(out);
    w.Marker(eTVOVersion, kTVOVersionSize);
    out.Bytes(kTVOVersion, kTVOVersionSize);
    w.End(eTVOVersion);
    if (options && *options)
        w.String(eTVOOptions, options);
    if (history && *history)
        w.String(eTVOHistory, history);
    WriteScene(w, scene);
    const bool ok = w.Ok();
    return out.Flush() && ok ? 0 : 1;
}

int CQMXTModelTVO::SaveTVO(CSink& sink, const char* options, const char* history) const
{
    // The writer lists interleaved streams in a std::vector; running out of memory fails the save.
    try
    {
        return QMXTTVOWriteScene(*this, sink, options, history);
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
}

int CQMXTModelTVO::SaveTVO(const char* path, const char* options, const char* history) const
{
    if (!path || !*path)
        return 1;
    // Written under a temporary name and renamed when complete, so a failed write leaves no partial
    // file behind (and an older file of that name untouched).
    std::string temporary;
    try
    {
        temporary = std::string(path) + ".tmp";
    }
    catch (const std::bad_alloc&)
    {
        return 1;
    }
    FILE* file = std::fopen(temporary.c_str(), "wb+");
    if (!file)
        return 1;
    CSinkFile sink(file);
    int result = SaveTVO(sink, options, history);
    if (std::fclose(file) != 0)
        result = 1;
    if (result == 0 && std::rename(temporary.c_str(), path) != 0)
        result = 1;
    if (result != 0)
        std::remove(temporary.c_str());
    return result;
}
