// Scene model lifetime and animation queries.
#include "QMXTModelTVO.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "QMXTError.h"

struct SQMXTModelTVOImpl
{
    float fFrame;       // current frame as given
    float fBlend;       // blend within the integer frame
    uint32_t nFrame;    // integer frame
    float* pfCacheFrame; // per node: the frame of the cached world matrix
    QMXTMATRIXf* pmCache;
    QMXTMATRIXf* pmCacheFrame0;
    bool bCallerOwned;
};

namespace
{
const float* Key(const float* values, const uint32_t* indices, uint32_t frame, uint32_t keySize)
{
    return indices ? values + indices[frame] : values + static_cast<size_t>(frame) * keySize;
}

// The two keys around the current frame of an animated channel, or the static key twice. Frames are
// clamped to the last one, so the last frame (and anything past it) answers with the last key
// instead of reading past the array.
void ChannelKeys(const float* values, const uint32_t* indices, bool animated, uint32_t frame, uint32_t frameCount,
                 uint32_t keySize, const float*& a, const float*& b)
{
    if (!animated || frameCount == 0)
    {
        a = b = values;
        return;
    }
    const uint32_t last = frameCount - 1;
    a = Key(values, indices, frame < last ? frame : last, keySize);
    b = Key(values, indices, frame < last ? frame + 1 : last, keySize);
}

} // namespace

void QMXTModelTVOFreeNodeChannels(STVONode& n)
{
    for (uint32_t* idx : {n.pnAnimPositionIdx, n.pnAnimRotationIdx, n.pnAnimScaleIdx, n.pnAnimMatrixIdx})
        std::free(idx);
    for (float* keys : {n.pfAnimPosition, n.pfAnimRotation, n.pfAnimScale, n.pfAnimMatrix})
        std::free(keys);
    n.pnAnimPositionIdx = n.pnAnimRotationIdx = n.pnAnimScaleIdx = n.pnAnimMatrixIdx = nullptr;
    n.pfAnimPosition = n.pfAnimRotation = n.pfAnimScale = n.pfAnimMatrix = nullptr;
    n.nAnimationFlags = 0;
}

void QMXTModelTVOFreeNode(STVONode& n)
{
    QMXTModelTVOFreeNodeChannels(n);
    std::free(n.pszName);
    std::free(n.pUserData);
    n = STVONode();
}

void QMXTModelTVOFreeMaterial(STVOMaterial& m)
{
    std::free(m.pszName);
    std::free(m.pszEffectFile);
    std::free(m.pszEffectName);
    std::free(m.pUserData);
    m = STVOMaterial();
}

void QMXTModelTVOFreeMesh(STVOMesh& m)
{
    const bool interleaved = m.pInterleaved != nullptr;
    m.sFaces.Reset();
    std::free(m.pnStripLength);
    for (CTVOData* s : QMXTModelTVOFixedStreams(m))
        s->Reset(interleaved);
    for (uint32_t i = 0; m.psUVW && i < m.nNumUVW; ++i)
        m.psUVW[i].Reset(interleaved);
    std::free(m.psUVW);
    std::free(m.pInterleaved);
    m.sBoneBatch.Release();
}

CQMXTModelTVO::CQMXTModelTVO() : STVOScene(), m_pImpl(nullptr)
{
    std::memset(static_cast<STVOScene*>(this), 0, sizeof(STVOScene));
}

CQMXTModelTVO::~CQMXTModelTVO()
{
    Destroy();
}

int CQMXTModelTVO::InitImpl()
{
    const bool callerOwned = m_pImpl && m_pImpl->bCallerOwned;
    DestroyImpl();
    m_pImpl = static_cast<SQMXTModelTVOImpl*>(std::calloc(1, sizeof(SQMXTModelTVOImpl)));
    if (!m_pImpl)
        return 1;
    m_pImpl->bCallerOwned = callerOwned;
    const size_t n = nNumNode ? nNumNode : 1;
    m_pImpl->pfCacheFrame = static_cast<float*>(std::calloc(n, sizeof(float)));
    m_pImpl->pmCache = static_cast<QMXTMATRIXf*>(std::calloc(n, sizeof(QMXTMATRIXf)));
    m_pImpl->pmCacheFrame0 = static_cast<QMXTMATRIXf*>(std::calloc(n, sizeof(QMXTMATRIXf)));
    if (!m_pImpl->pfCacheFrame || !m_pImpl->pmCache || !m_pImpl->pmCacheFrame0)
    {
        DestroyImpl();
        return 1;
    }
    FlushCache();
    return 0;
}

void CQMXTModelTVO::DestroyImpl()
{
    if (!m_pImpl)
        return;
    std::free(m_pImpl->pfCacheFrame);
    std::free(m_pImpl->pmCache);
    std::free(m_pImpl->pmCacheFrame0);
    std::free(m_pImpl);
    m_pImpl = nullptr;
}

void CQMXTModelTVO::Destroy()
{
    if (!m_pImpl)
        return;
    if (!m_pImpl->bCallerOwned)
        QMXTModelTVOFreeArrays(*this);
    std::memset(static_cast<STVOScene*>(this), 0, sizeof(STVOScene));
    DestroyImpl();
}

bool CQMXTModelTVO::IsCallerOwned() const
{
    return m_pImpl && m_pImpl->bCallerOwned;
}

void CQMXTModelTVO::SetCallerOwned(bool callerOwned)
{
    if (m_pImpl)
        m_pImpl->bCallerOwned = callerOwned;
}

void CQMXTModelTVO::SetFrame(float frame)
{
    if (!m_pImpl)
        return;
    m_pImpl->fFrame = frame;
    if (nNumFrame)
    {
        // Truncation saturates: a negative, huge or NaN frame would make the conversion undefined.
        if (!(frame > 0.0f))
            m_pImpl->nFrame = 0;
        else if (frame >= 4294967296.0f)
            m_pImpl->nFrame = UINT32_MAX;
        else
            m_pImpl->nFrame = static_cast<uint32_t>(frame);
        m_pImpl->fBlend = frame - static_cast<float>(m_pImpl->nFrame);
    }
    else
    {
        m_pImpl->nFrame = 0;
        m_pImpl->fBlend = 0.0f;
    }
}

float CQMXTModelTVO::GetFrame() const
{
    return m_pImpl ? m_pImpl->fFrame : 0.0f;
}

void CQMXTModelTVO::GetTranslation(QMXTVECTOR3f& out, const STVONode& node) const
{
    if (!node.pfAnimPosition || !m_pImpl)
        return;
    const float *a, *b;
    ChannelKeys(node.pfAnimPosition, node.pnAnimPositionIdx, node.nAnimationFlags & eTVOHasPositionAnimation,
                m_pImpl->nFrame, nNumFrame, 3, a, b);
    const QMXTVECTOR3f va = {a[0], a[1], a[2]}, vb = {b[0], b[1], b[2]};
    QMXTMatrixVec3LerpF(out, va, vb, m_pImpl->fBlend);
}

void CQMXTModelTVO::GetTranslationMatrix(QMXTMATRIXf& out, const STVONode& node) const
{
    QMXTVECTOR3f t = {0.0f, 0.0f, 0.0f};
    GetTranslation(t, node);
    QMXTMatrixTranslationF(out, t.x, t.y, t.z);
}

void CQMXTModelTVO::GetRotationMatrix(QMXTMATRIXf& out, const STVONode& node) const
{
    if (!node.pfAnimRotation || !m_pImpl)
    {
        QMXTMatrixIdentityF(out);
        return;
    }
    const float *a, *b;
    ChannelKeys(node.pfAnimRotation, node.pnAnimRotationIdx, node.nAnimationFlags & eTVOHasRotationAnimation,
                m_pImpl->nFrame, nNumFrame, 4, a, b);
    const QMXTQUATERNIONf qa = {a[0], a[1], a[2], a[3]}, qb = {b[0], b[1], b[2], b[3]};
    QMXTQUATERNIONf q = qa;
    if (a != b)
        QMXTMatrixQuaternionSlerpF(q, qa, qb, m_pImpl->fBlend);
    QMXTMatrixRotationQuaternionF(out, q);
}

void CQMXTModelTVO::GetScalingMatrix(QMXTMATRIXf& out, const STVONode& node) const
{
    if (!node.pfAnimScale || !m_pImpl)
    {
        QMXTMatrixIdentityF(out);
        return;
    }
    const float *a, *b;
    ChannelKeys(node.pfAnimScale, node.pnAnimScaleIdx, node.nAnimationFlags & eTVOHasScaleAnimation,
                m_pImpl->nFrame, nNumFrame, 7, a, b);
    const float t = m_pImpl->fBlend;
    QMXTMatrixScalingF(out, a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]), a[2] + t * (b[2] - a[2]));
}

void CQMXTModelTVO::GetTransformationMatrix(QMXTMATRIXf& out, const STVONode& node) const
{
    if (!node.pfAnimMatrix || !m_pImpl)
    {
        QMXTMatrixIdentityF(out);
        return;
    }
    const float *key, *next;
    ChannelKeys(node.pfAnimMatrix, node.pnAnimMatrixIdx, node.nAnimationFlags & eTVOHasMatrixAnimation,
                m_pImpl->nFrame, nNumFrame, 16, key, next);
    std::memcpy(out.f, key, sizeof out.f);
}

QMXTMATRIXf CQMXTModelTVO::LocalMatrix(const STVONode& node) const
{
    QMXTMATRIXf local;
    if (node.pfAnimMatrix)
    {
        GetTransformationMatrix(local, node);
        return local;
    }
    QMXTMATRIXf s, r, t;
    GetScalingMatrix(s, node);
    GetRotationMatrix(r, node);
    GetTranslationMatrix(t, node);
    QMXTMatrixMultiplyF(local, s, r);
    return QMXTMatrixMultiplyF(local, local, t);
}

void CQMXTModelTVO::GetWorldMatrixNoCache(QMXTMATRIXf& out, const STVONode& node) const
{
    out = LocalMatrix(node);
    // Walk up the chain; the node count bounds the walk so a corrupt parent cycle cannot hang.
    const STVONode* n = &node;
    for (uint32_t depth = 0; n->nIdxParent >= 0 && static_cast<uint32_t>(n->nIdxParent) < nNumNode &&
                             depth < nNumNode;
         ++depth)
    {
        n = &pNode[n->nIdxParent];
        const QMXTMATRIXf parent = LocalMatrix(*n);
        QMXTMatrixMultiplyF(out, out, parent);
    }
}

void CQMXTModelTVO::GetWorldMatrix(QMXTMATRIXf& out, const STVONode& node)
{
    const std::ptrdiff_t i = &node - pNode;
    if (!m_pImpl || !pNode || i < 0 || static_cast<uint32_t>(i) >= nNumNode)
    {
        GetWorldMatrixNoCache(out, node);
        return;
    }
    if (m_pImpl->fFrame == 0.0f)
    {
        out = m_pImpl->pmCacheFrame0[i];
        return;
    }
    if (m_pImpl->pfCacheFrame[i] == m_pImpl->fFrame)
    {
        out = m_pImpl->pmCache[i];
        return;
    }
    GetWorldMatrixNoCache(out, node);
    m_pImpl->pmCache[i] = out;
    m_pImpl->pfCacheFrame[i] = m_pImpl->fFrame;
}

void CQMXTModelTVO::FlushCache()
{
    if (!m_pImpl)
        return;
    SetFrame(0.0f);
    for (uint32_t i = 0; i < nNumNode; ++i)
    {
        GetWorldMatrixNoCache(m_pImpl->pmCacheFrame0[i], pNode[i]);
        m_pImpl->pmCache[i] = m_pImpl->pmCacheFrame0[i];
        m_pImpl->pfCacheFrame[i] = 0.0f;
    }
}

void CQMXTModelTVO::GetBoneWorldMatrix(QMXTMATRIXf& out, const STVONode& meshNode, const STVONode& boneNode)
{
    const float frame = GetFrame();
    SetFrame(0.0f);
    QMXTMATRIXf mesh0, bone0, boneInv0;
    GetWorldMatrix(mesh0, meshNode);
    GetWorldMatrix(bone0, boneNode);
    QMXTMatrixInverseF(boneInv0, bone0);
    SetFrame(frame);
    QMXTMATRIXf boneNow;
    GetWorldMatrix(boneNow, boneNode);
    QMXTMatrixMultiplyF(out, mesh0, boneInv0);
    QMXTMatrixMultiplyF(out, out, boneNow);
}

void CQMXTModelTVO::GetLight(QMXTVECTOR3f& position, QMXTVECTOR3f& direction, uint32_t lightIdx)
{
    QMXTMATRIXf w;
    GetWorldMatrix(w, pNode[nNumMeshNode + lightIdx]);
    position = {w[12], w[13], w[14]};
    direction = {-w[4], -w[5], -w[6]};
}

QMXTVECTOR3f CQMXTModelTVO::GetLightPosition(uint32_t lightIdx)
{
    QMXTVECTOR3f p, d;
    GetLight(p, d, lightIdx);
    return p;
}

QMXTVECTOR3f CQMXTModelTVO::GetLightDirection(uint32_t lightIdx)
{
    QMXTVECTOR3f p, d;
    GetLight(p, d, lightIdx);
    return d;
}

float CQMXTModelTVO::GetCamera(QMXTVECTOR3f& from, QMXTVECTOR3f& to, QMXTVECTOR3f& up, uint32_t cameraIdx)
{
    const STVONode& node = pNode[nNumMeshNode + nNumLight + cameraIdx];
    QMXTMATRIXf w;
    GetWorldMatrix(w, node);
    from = {w[12], w[13], w[14]};
    to = {from.x - w[4], from.y - w[5], from.z - w[6]};
    up = {-w[8], -w[9], -w[10]};
    const STVOCamera& cam = pCamera[node.nIdx];
    if (cam.pfAnimFOV && m_pImpl)
    {
        const uint32_t last = nNumFrame ? nNumFrame - 1 : 0;
        const uint32_t f = m_pImpl->nFrame < last ? m_pImpl->nFrame : last;
        const float a = cam.pfAnimFOV[f];
        const float b = (f + 1 <= last) ? cam.pfAnimFOV[f + 1] : a;
        return a + m_pImpl->fBlend * (b - a);
    }
    return cam.fFOV;
}

float CQMXTModelTVO::GetCameraPos(QMXTVECTOR3f& from, QMXTVECTOR3f& to, uint32_t cameraIdx)
{
    QMXTVECTOR3f up;
    return GetCamera(from, to, up, cameraIdx);
}

QMXTMATRIXf CQMXTModelTVO::GetTranslationMatrix(const STVONode& node) const
{
    QMXTMATRIXf m;
    GetTranslationMatrix(m, node);
    return m;
}
QMXTMATRIXf CQMXTModelTVO::GetRotationMatrix(const STVONode& node) const
{
    QMXTMATRIXf m;
    GetRotationMatrix(m, node);
    return m;
}
QMXTMATRIXf CQMXTModelTVO::GetScalingMatrix(const STVONode& node) const
{
    QMXTMATRIXf m;
    GetScalingMatrix(m, node);
    return m;
}
QMXTMATRIXf CQMXTModelTVO::GetTransformationMatrix(const STVONode& node) const
{
    QMXTMATRIXf m;
    GetTransformationMatrix(m, node);
    return m;
}
QMXTMATRIXf CQMXTModelTVO::GetWorldMatrixNoCache(const STVONode& node) const
{
    QMXTMATRIXf m;
    GetWorldMatrixNoCache(m, node);
    return m;
}
QMXTMATRIXf CQMXTModelTVO::GetWorldMatrix(const STVONode& node)
{
    QMXTMATRIXf m;
    GetWorldMatrix(m, node);
    return m;
}
QMXTMATRIXf CQMXTModelTVO::GetBoneWorldMatrix(const STVONode& meshNode, const STVONode& boneNode)
{
    QMXTMATRIXf m;
    GetBoneWorldMatrix(m, meshNode, boneNode);
    return m;
}

bool CQMXTModelTVO::CreateSkinIdxWeight(uint8_t* pIdx, uint8_t* pWeight, int count, const int* pBoneIdx,
                                        const float* pBoneWeight)
{
    constexpr int slots = eQMXTMaxBonesPerVertex;
    constexpr int total = eTVOByteWeightTotal;
    if (count < 0)
        count = 0;
    if (count > slots)
        count = slots;
    uint8_t idx[slots] = {0, 0, 0, 0};
    int w[slots] = {0, 0, 0, 0};
    for (int i = 0; i < count; ++i)
    {
        if (pBoneIdx[i] > static_cast<int>(eTVOMaxByteBoneIndex))
        {
            QMXTErrorOutputDebug("Too many bones (highest index is 255).\n");
            return true;
        }
        idx[i] = static_cast<uint8_t>(pBoneIdx[i] < 0 ? 0 : pBoneIdx[i]);
        const float scaled = pBoneWeight[i] * static_cast<float>(total);
        // Truncate and clamp to 0..total (NaN counts as 0).
        w[i] = !(scaled > 0.0f) ? 0 : (scaled >= static_cast<float>(total) ? total : static_cast<int>(scaled));
    }
    if (count > 0)
    {
        int sum = w[0] + w[1] + w[2] + w[3];
        if (sum == 0)
            return true;
        for (int slot = 0; sum < total; slot = (slot + 1) % slots)
        {
            if (w[slot] != 0)
            {
                ++w[slot];
                ++sum;
            }
        }
    }
    for (int i = 0; i < slots; ++i)
    {
        pIdx[i] = idx[i];
        pWeight[i] = static_cast<uint8_t>(w[i]);
    }
    return false;
}

void QMXTModelTVOFreeArrays(STVOScene& scene)
{
    for (uint32_t i = 0; scene.pCamera && i < scene.nNumCamera; ++i)
        std::free(scene.pCamera[i].pfAnimFOV);
    for (uint32_t i = 0; scene.pNode && i < scene.nNumNode; ++i)
        QMXTModelTVOFreeNode(scene.pNode[i]);
    for (uint32_t i = 0; scene.pMesh && i < scene.nNumMesh; ++i)
        QMXTModelTVOFreeMesh(scene.pMesh[i]);
    for (uint32_t i = 0; scene.pMaterial && i < scene.nNumMaterial; ++i)
        QMXTModelTVOFreeMaterial(scene.pMaterial[i]);
    for (uint32_t i = 0; scene.pTexture && i < scene.nNumTexture; ++i)
        std::free(scene.pTexture[i].pszName);
    std::free(scene.pCamera);
    std::free(scene.pLight);
    std::free(scene.pMesh);
    std::free(scene.pNode);
    std::free(scene.pTexture);
    std::free(scene.pMaterial);
    std::free(scene.pUserData);
    std::memset(&scene, 0, sizeof(STVOScene));
}

uint32_t QMXTModelTVOGetAnimArraySize(const uint32_t* pIdx, uint32_t frameCount, uint32_t keySize)
{
    if (!pIdx)
        return frameCount * keySize;
    uint32_t largest = 0;
    for (uint32_t i = 0; i < frameCount; ++i)
        if (pIdx[i] > largest)
            largest = pIdx[i];
    return largest + keySize;
}

uint32_t QMXTModelTVOCountIndices(const STVOMesh& mesh)
{
    if (mesh.nNumStrips)
        return mesh.nNumFaces + 2 * mesh.nNumStrips;
    return mesh.nNumFaces * 3;
}
