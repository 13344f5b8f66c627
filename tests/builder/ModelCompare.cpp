#include "ModelCompare.h"

#include <cstring>

namespace
{
bool SameBytes(const void* a, const void* b, size_t n)
{
    if (n == 0)
        return true;
    if (!a || !b)
        return a == b;
    return std::memcmp(a, b, n) == 0;
}

bool SameString(const char* a, const char* b)
{
    return (a ? std::string(a) : std::string()) == (b ? std::string(b) : std::string());
}

std::string Where(const char* what, uint32_t i)
{
    return std::string(what) + " " + std::to_string(i);
}

std::string CompareStream(const STVOMesh& ma, const CTVOData& a, const STVOMesh& mb, const CTVOData& b,
                          uint32_t count, bool isFaces = false)
{
    if (a.eType != b.eType || a.n != b.n || a.nStride != b.nStride)
        return "stream layout";
    const bool interleaved = ma.pInterleaved != nullptr && !isFaces;
    if (interleaved != (mb.pInterleaved != nullptr && !isFaces))
        return "interleaving";
    if (interleaved)
        return a.pData == b.pData ? "" : "stream offset";
    return SameBytes(a.pData, b.pData, static_cast<size_t>(a.nStride) * count) ? "" : "stream data";
}

std::string CompareMesh(const STVOMesh& a, const STVOMesh& b)
{
    if (a.nNumVertex != b.nNumVertex || a.nNumFaces != b.nNumFaces || a.nNumUVW != b.nNumUVW ||
        a.nNumStrips != b.nNumStrips || a.ePrimitiveType != b.ePrimitiveType)
        return "counts";
    if (!SameBytes(a.pnStripLength, b.pnStripLength, 4u * a.nNumStrips) ||
        !SameBytes(a.mUnpackMatrix, b.mUnpackMatrix, sizeof a.mUnpackMatrix))
        return "strips or unpack matrix";
    std::string d = CompareStream(a, a.sFaces, b, b.sFaces, QMXTModelTVOCountIndices(a), true);
    if (!d.empty())
        return "faces " + d;
    const CTVOData* sa[] = {&a.sVertex,     &a.sNormals, &a.sTangents,  &a.sBinormals,
                            &a.sVtxColours, &a.sBoneIdx, &a.sBoneWeight};
    const CTVOData* sb[] = {&b.sVertex,     &b.sNormals, &b.sTangents,  &b.sBinormals,
                            &b.sVtxColours, &b.sBoneIdx, &b.sBoneWeight};
    static const char* const names[] = {"positions", "normals",      "tangents",    "binormals",
                                        "colours",   "bone indices", "bone weights"};
    for (int i = 0; i < 7 && d.empty(); ++i)
    {
        d = CompareStream(a, *sa[i], b, *sb[i], a.nNumVertex);
        if (!d.empty())
            d = std::string(names[i]) + " " + d;
    }
    for (uint32_t i = 0; i < a.nNumUVW && d.empty(); ++i)
    {
        d = CompareStream(a, a.psUVW[i], b, b.psUVW[i], a.nNumVertex);
        if (!d.empty())
            d = Where("uvw", i) + " " + d;
    }
    if (!d.empty())
        return d;
    if ((a.pInterleaved != nullptr) &&
        !SameBytes(a.pInterleaved, b.pInterleaved, static_cast<size_t>(a.sVertex.nStride) * a.nNumVertex))
        return "interleaved block";
    const CQMXTBoneBatches& x = a.sBoneBatch;
    const CQMXTBoneBatches& y = b.sBoneBatch;
    if (x.nBatchCnt != y.nBatchCnt || x.nBatchBoneMax != y.nBatchBoneMax ||
        !SameBytes(x.pnBatches, y.pnBatches, 4u * x.nBatchCnt * x.nBatchBoneMax) ||
        !SameBytes(x.pnBatchBoneCnt, y.pnBatchBoneCnt, 4u * x.nBatchCnt) ||
        !SameBytes(x.pnBatchOffset, y.pnBatchOffset, 4u * x.nBatchCnt))
        return "bone batches";
    return "";
}

std::string CompareNode(const STVONode& a, const STVONode& b, uint32_t frames)
{
    if (a.nIdx != b.nIdx || a.nIdxMaterial != b.nIdxMaterial || a.nIdxParent != b.nIdxParent ||
        a.nAnimationFlags != b.nAnimationFlags || !SameString(a.pszName, b.pszName))
        return "fields";
    struct SChannel
    {
        const uint32_t *ia, *ib;
        const float *fa, *fb;
        uint32_t key, flag;
    };
    const SChannel channels[] = {
        {a.pnAnimPositionIdx, b.pnAnimPositionIdx, a.pfAnimPosition, b.pfAnimPosition, 3,
         eTVOHasPositionAnimation},
        {a.pnAnimRotationIdx, b.pnAnimRotationIdx, a.pfAnimRotation, b.pfAnimRotation, 4,
         eTVOHasRotationAnimation},
        {a.pnAnimScaleIdx, b.pnAnimScaleIdx, a.pfAnimScale, b.pfAnimScale, 7, eTVOHasScaleAnimation},
        {a.pnAnimMatrixIdx, b.pnAnimMatrixIdx, a.pfAnimMatrix, b.pfAnimMatrix, 16, eTVOHasMatrixAnimation},
    };
    for (const SChannel& c : channels)
    {
        const uint32_t n = (a.nAnimationFlags & c.flag) ? frames : 1;
        if ((c.ia != nullptr) != (c.ib != nullptr) || (c.fa != nullptr) != (c.fb != nullptr) ||
            (c.ia && !SameBytes(c.ia, c.ib, 4u * n)) ||
            (c.fa && !SameBytes(c.fa, c.fb, 4u * QMXTModelTVOGetAnimArraySize(c.ia, n, c.key))))
            return "animation";
    }
    if (a.nUserDataSize != b.nUserDataSize || !SameBytes(a.pUserData, b.pUserData, a.nUserDataSize))
        return "user data";
    return "";
}

std::string CompareMaterial(const STVOMaterial& a, const STVOMaterial& b)
{
    if (!SameString(a.pszName, b.pszName) || !SameString(a.pszEffectFile, b.pszEffectFile) ||
        !SameString(a.pszEffectName, b.pszEffectName))
        return "names";
    if (!SameBytes(a.nIdxTexture, b.nIdxTexture, sizeof a.nIdxTexture) || a.fMatOpacity != b.fMatOpacity ||
        !SameBytes(a.pfMatAmbient, b.pfMatAmbient, 12) || !SameBytes(a.pfMatDiffuse, b.pfMatDiffuse, 12) ||
        !SameBytes(a.pfMatSpecular, b.pfMatSpecular, 12) || a.fMatShininess != b.fMatShininess)
        return "colours or textures";
    if (a.eBlendSrcRGB != b.eBlendSrcRGB || a.eBlendSrcA != b.eBlendSrcA ||
        a.eBlendDstRGB != b.eBlendDstRGB || a.eBlendDstA != b.eBlendDstA || a.eBlendOpRGB != b.eBlendOpRGB ||
        a.eBlendOpA != b.eBlendOpA || !SameBytes(a.pfBlendColour, b.pfBlendColour, 16) ||
        !SameBytes(a.pfBlendFactor, b.pfBlendFactor, 16) || a.nFlags != b.nFlags)
        return "blending";
    if (a.nUserDataSize != b.nUserDataSize || !SameBytes(a.pUserData, b.pUserData, a.nUserDataSize))
        return "user data";
    return "";
}
} // namespace

std::string DescribeModelDifference(const STVOScene& a, const STVOScene& b)
{
    if (!SameBytes(a.pfColourBackground, b.pfColourBackground, 12) ||
        !SameBytes(a.pfColourAmbient, b.pfColourAmbient, 12))
        return "scene colours";
    if (a.nNumCamera != b.nNumCamera || a.nNumLight != b.nNumLight || a.nNumMesh != b.nNumMesh ||
        a.nNumNode != b.nNumNode || a.nNumMeshNode != b.nNumMeshNode || a.nNumTexture != b.nNumTexture ||
        a.nNumMaterial != b.nNumMaterial || a.nNumFrame != b.nNumFrame || a.nFlags != b.nFlags)
        return "scene counts";
    if (a.nNumFrame && a.nFPS != b.nFPS)
        return "frame rate";
    if (a.nUserDataSize != b.nUserDataSize || !SameBytes(a.pUserData, b.pUserData, a.nUserDataSize))
        return "scene user data";
    for (uint32_t i = 0; i < a.nNumCamera; ++i)
    {
        const STVOCamera &x = a.pCamera[i], &y = b.pCamera[i];
        if (x.nIdxTarget != y.nIdxTarget || x.fFOV != y.fFOV || x.fFar != y.fFar || x.fNear != y.fNear ||
            (x.pfAnimFOV != nullptr) != (y.pfAnimFOV != nullptr) ||
            (x.pfAnimFOV && !SameBytes(x.pfAnimFOV, y.pfAnimFOV, 4u * a.nNumFrame)))
            return Where("camera", i);
    }
    for (uint32_t i = 0; i < a.nNumLight; ++i)
        if (!SameBytes(&a.pLight[i], &b.pLight[i], sizeof(STVOLight)))
            return Where("light", i);
    for (uint32_t i = 0; i < a.nNumTexture; ++i)
        if (!SameString(a.pTexture[i].pszName, b.pTexture[i].pszName))
            return Where("texture", i);
    for (uint32_t i = 0; i < a.nNumMaterial; ++i)
    {
        const std::string d = CompareMaterial(a.pMaterial[i], b.pMaterial[i]);
        if (!d.empty())
            return Where("material", i) + ": " + d;
    }
    for (uint32_t i = 0; i < a.nNumMesh; ++i)
    {
        const std::string d = CompareMesh(a.pMesh[i], b.pMesh[i]);
        if (!d.empty())
            return Where("mesh", i) + ": " + d;
    }
    for (uint32_t i = 0; i < a.nNumNode; ++i)
    {
        const std::string d = CompareNode(a.pNode[i], b.pNode[i], a.nNumFrame);
        if (!d.empty())
            return Where("node", i) + ": " + d;
    }
    return "";
}
