#include "TVOTestScenes.h"

#include <cstdlib>
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <vector>

namespace tvotest
{
char* Str(const char* s)
{
    char* p = static_cast<char*>(std::malloc(std::strlen(s) + 1));
    std::strcpy(p, s);
    return p;
}

float* Floats(uint32_t count, float first, float step)
{
    float* p = static_cast<float*>(std::malloc(count * sizeof(float)));
    for (uint32_t i = 0; i < count; ++i)
        p[i] = first + step * static_cast<float>(i);
    return p;
}

namespace
{
uint32_t* Words(std::initializer_list<uint32_t> values)
{
    uint32_t* p = static_cast<uint32_t*>(std::malloc(values.size() * sizeof(uint32_t)));
    std::copy(values.begin(), values.end(), p);
    return p;
}

uint8_t* Bytes(uint32_t count, uint8_t seed)
{
    uint8_t* p = static_cast<uint8_t*>(std::malloc(count ? count : 1));
    for (uint32_t i = 0; i < count; ++i)
        p[i] = static_cast<uint8_t>(seed + i * 31u);
    return p;
}

// A stream of count vertices filled with a byte pattern (type size x components a vertex).
void Stream(CTVOData& d, EQMXTDataType type, uint32_t components, uint32_t count, uint8_t seed)
{
    d.eType = type;
    d.n = components;
    d.nStride = QMXTModelTVODataTypeSize(type) * components;
    d.pData = Bytes(d.nStride * count, seed);
}

// Moves every present stream of a mesh into one interleaved block, each stream at a 4-byte aligned
// offset in the order positions, normals, tangents, binormals, colours, bone indices, bone weights, UVWs.
void Interleave(STVOMesh& m)
{
    CTVOData* streams[] = {&m.sVertex,     &m.sNormals, &m.sTangents,   &m.sBinormals,
                           &m.sVtxColours, &m.sBoneIdx, &m.sBoneWeight, nullptr,
                           nullptr,        nullptr,     nullptr};
    for (uint32_t i = 0; i < m.nNumUVW && i < 4; ++i)
        streams[7 + i] = &m.psUVW[i];
    uint32_t stride = 0, offsets[11] = {};
    for (int i = 0; i < 11; ++i)
    {
        if (!streams[i] || !streams[i]->n)
            continue;
        offsets[i] = stride;
        stride += (streams[i]->nStride + 3) & ~3u;
    }
    m.pInterleaved = static_cast<uint8_t*>(std::calloc(m.nNumVertex ? m.nNumVertex * stride : 1, 1));
    for (int i = 0; i < 11; ++i)
    {
        CTVOData* d = streams[i];
        if (!d || !d->n)
            continue;
        for (uint32_t v = 0; v < m.nNumVertex; ++v)
            std::memcpy(m.pInterleaved + v * stride + offsets[i], d->pData + v * d->nStride, d->nStride);
        std::free(d->pData);
        QMXTModelTVODataSetOffset(*d, offsets[i]);
        d->nStride = stride;
    }
}

void Faces(STVOMesh& m, EQMXTDataType type, const std::vector<uint32_t>& indices)
{
    m.sFaces.eType = type;
    m.sFaces.n = 1;
    m.sFaces.nStride = QMXTModelTVODataTypeSize(type);
    m.sFaces.pData = static_cast<uint8_t*>(std::malloc(indices.size() * m.sFaces.nStride + 4));
    uint32_t i = 0;
    for (uint32_t index : indices)
        QMXTVertexWrite(m.sFaces.pData + m.sFaces.nStride * i++, type, index);
}

void Identity(float* m)
{
    for (int i = 0; i < 16; ++i)
        m[i] = (i % 5 == 0) ? 1.0f : 0.0f;
}

void MakeMeshes(CQMXTModelTVO& s)
{
    s.nNumMesh = 3;
    s.pMesh = static_cast<STVOMesh*>(std::calloc(3, sizeof(STVOMesh)));

    STVOMesh& a = s.pMesh[0]; // interleaved list with bone batches
    a.nNumVertex = 6;
    a.nNumFaces = 4;
    Faces(a, EQMXTDataUnsignedShort, {0, 1, 2, 2, 1, 3, 3, 4, 5, 5, 4, 0});
    Stream(a.sVertex, EQMXTDataFloat, 3, 6, 1);
    Stream(a.sNormals, EQMXTDataShortNorm, 3, 6, 2);
    Stream(a.sVtxColours, EQMXTDataRGBA, 1, 6, 3);
    Stream(a.sBoneIdx, EQMXTDataUBYTE4, 1, 6, 4);
    Stream(a.sBoneWeight, EQMXTDataUnsignedByteNorm, 4, 6, 5);
    a.nNumUVW = 2;
    a.psUVW = static_cast<CTVOData*>(std::calloc(2, sizeof(CTVOData)));
    Stream(a.psUVW[0], EQMXTDataUnsignedShort, 2, 6, 6);
    Stream(a.psUVW[1], EQMXTDataFloat, 2, 6, 7);
    Interleave(a);
    a.sBoneBatch.nBatchBoneMax = 2;
    a.sBoneBatch.nBatchCnt = 2;
    a.sBoneBatch.pnBatches = Words({7, 0, 7, 3});
    a.sBoneBatch.pnBatchBoneCnt = Words({2, 1});
    a.sBoneBatch.pnBatchOffset = Words({0, 2});
    a.ePrimitiveType = eTVOIndexedTriangleList;
    Identity(a.mUnpackMatrix);

    STVOMesh& b = s.pMesh[1]; // separate streams in strips of 2 and 1 triangles
    b.nNumVertex = 5;
    b.nNumFaces = 3;
    b.nNumStrips = 2;
    b.pnStripLength = Words({2, 1});
    Faces(b, EQMXTDataUnsignedInt, {0, 1, 2, 3, 2, 3, 4});
    Stream(b.sVertex, EQMXTDataShort, 3, 5, 11);
    Stream(b.sNormals, EQMXTDataFloat, 3, 5, 12);
    Stream(b.sTangents, EQMXTDataByteNorm, 3, 5, 13);
    Stream(b.sBinormals, EQMXTDataDEC3N, 1, 5, 14);
    b.nNumUVW = 1;
    b.psUVW = static_cast<CTVOData*>(std::calloc(1, sizeof(CTVOData)));
    Stream(b.psUVW[0], EQMXTDataUnsignedShortNorm, 2, 5, 15);
    b.ePrimitiveType = eTVOIndexedTriangleStrip;
    Identity(b.mUnpackMatrix);
    b.mUnpackMatrix[0] = 0.5f;
    b.mUnpackMatrix[12] = -3.0f;

    Identity(s.pMesh[2].mUnpackMatrix); // empty
}

void MakeNodes(CQMXTModelTVO& s)
{
    s.nNumNode = 8;
    s.nNumMeshNode = 2;
    s.pNode = static_cast<STVONode*>(std::calloc(8, sizeof(STVONode)));
    const char* names[8] = {"MeshA", "MeshB", "Lamp", "Sun", "Spot", "Cam", "Cam2", "Root"};
    const int32_t idx[8] = {0, 1, 0, 1, 2, 0, 1, -1};
    for (int i = 0; i < 8; ++i)
    {
        STVONode& n = s.pNode[i];
        n.pszName = Str(names[i]);
        n.nIdx = idx[i];
        n.nIdxMaterial = i < 2 ? i : -1;
        n.nIdxParent = i == 7 ? -1 : 7;
        n.pfAnimPosition = Floats(3, static_cast<float>(i), 1.0f);
    }
    STVONode& a = s.pNode[0]; // position indexed, rotation one key a frame, static scale, user data
    a.nAnimationFlags = eTVOHasPositionAnimation | eTVOHasRotationAnimation;
    std::free(a.pfAnimPosition);
    a.pnAnimPositionIdx = Words({0, 3, 3, 6});
    a.pfAnimPosition = Floats(9, 0.0f, 0.5f);
    a.pfAnimRotation = Floats(16, 0.0f, 0.25f);
    a.pfAnimScale = Floats(7, 1.0f, 0.0f);
    a.nUserDataSize = 5;
    a.pUserData = Bytes(5, 40);

    STVONode& b = s.pNode[1]; // indexed matrix animation
    b.nAnimationFlags = eTVOHasMatrixAnimation;
    b.pnAnimMatrixIdx = Words({0, 16, 0, 16});
    b.pfAnimMatrix = Floats(32, 1.0f, 0.125f);

    STVONode& root = s.pNode[7]; // scale animated, one key a frame
    root.nAnimationFlags = eTVOHasScaleAnimation;
    root.pfAnimScale = Floats(28, 1.0f, 0.01f);
}

void MakeLightsAndCameras(CQMXTModelTVO& s)
{
    s.nNumLight = 3;
    s.pLight = static_cast<STVOLight*>(std::calloc(3, sizeof(STVOLight)));
    for (uint32_t i = 0; i < 3; ++i) // point, directional, spot
        s.pLight[i] = {i == 2 ? 7 : -1, {1, 0.5f + 0.1f * float(i), 0.25f}, i, 1, 0.5f, 0.25f, 0.7f, 2};
    s.nNumCamera = 2;
    s.pCamera = static_cast<STVOCamera*>(std::calloc(2, sizeof(STVOCamera)));
    s.pCamera[0] = {7, 0.8f, 1000.0f, 0.5f, Floats(4, 0.8f, 0.05f)};
    s.pCamera[1] = {-1, 1.2f, 50.0f, 0.1f, nullptr};
}

void MakeMaterials(CQMXTModelTVO& s)
{
    s.nNumTexture = 2;
    s.pTexture = static_cast<STVOTexture*>(std::calloc(2, sizeof(STVOTexture)));
    s.pTexture[0].pszName = Str("wood.png");
    s.pTexture[1].pszName = Str("wood_bump.png");
    s.nNumMaterial = 2;
    s.pMaterial = static_cast<STVOMaterial*>(std::calloc(2, sizeof(STVOMaterial)));
    for (uint32_t i = 0; i < 2; ++i)
    {
        STVOMaterial& m = s.pMaterial[i];
        for (int32_t& t : m.nIdxTexture)
            t = -1;
        m.fMatOpacity = 1.0f - 0.5f * static_cast<float>(i);
        for (int c = 0; c < 3; ++c)
        {
            m.pfMatAmbient[c] = 0.1f * static_cast<float>(c);
            m.pfMatDiffuse[c] = 0.2f * static_cast<float>(c);
            m.pfMatSpecular[c] = 0.3f * static_cast<float>(c);
        }
        m.fMatShininess = 20.0f;
        m.eBlendSrcRGB = m.eBlendSrcA = eTVOBlendOne;
        m.eBlendDstRGB = m.eBlendDstA = eTVOBlendZero;
        m.eBlendOpRGB = m.eBlendOpA = eTVOBlendOpAdd;
    }
    STVOMaterial& wood = s.pMaterial[0];
    wood.pszName = Str("wood");
    wood.nIdxTexture[eTVOTexDiffuse] = 0;
    wood.nIdxTexture[eTVOTexBump] = 1;
    wood.pszEffectFile = Str("shaders.xef");
    wood.pszEffectName = Str("Lit");
    wood.eBlendSrcRGB = eTVOBlendSrcAlpha;
    wood.eBlendDstRGB = eTVOBlendOneMinusSrcAlpha;
    wood.pfBlendColour[3] = 1.0f;
    wood.pfBlendFactor[0] = 0.5f;
    wood.nFlags = 3;
    wood.nUserDataSize = 3;
    wood.pUserData = Bytes(3, 90);
    s.pMaterial[1].pszName = Str("plain");
}
} // namespace

void MakeRichScene(CQMXTModelTVO& s)
{
    s.pfColourBackground[0] = 0.2f;
    s.pfColourBackground[2] = 0.4f;
    s.pfColourAmbient[1] = 0.1f;
    s.nNumFrame = 4;
    s.nFPS = 25;
    s.nUserDataSize = 7;
    s.pUserData = Bytes(7, 200);
    MakeMeshes(s);
    MakeNodes(s);
    MakeLightsAndCameras(s);
    MakeMaterials(s);
    s.InitImpl();
}

void MakeBigScene(CQMXTModelTVO& s, uint32_t vertexCount, bool interleaved)
{
    s.nNumMesh = 1;
    s.pMesh = static_cast<STVOMesh*>(std::calloc(1, sizeof(STVOMesh)));
    STVOMesh& m = s.pMesh[0];
    m.nNumVertex = vertexCount;
    m.nNumFaces = vertexCount > 2 ? vertexCount - 2 : 0;
    std::vector<uint32_t> indices;
    for (uint32_t t = 0; t < m.nNumFaces; ++t)
        indices.insert(indices.end(), {t, t + 1, t + 2});
    Faces(m, EQMXTDataUnsignedInt, indices);
    Stream(m.sVertex, EQMXTDataFloat, 3, vertexCount, 1);
    Stream(m.sNormals, EQMXTDataFloat, 3, vertexCount, 2);
    m.nNumUVW = 1;
    m.psUVW = static_cast<CTVOData*>(std::calloc(1, sizeof(CTVOData)));
    Stream(m.psUVW[0], EQMXTDataUnsignedShort, 2, vertexCount, 3);
    Identity(m.mUnpackMatrix);
    if (interleaved)
        Interleave(m);
    s.nNumNode = s.nNumMeshNode = 1;
    s.pNode = static_cast<STVONode*>(std::calloc(1, sizeof(STVONode)));
    s.pNode[0].pszName = Str("Big");
    s.pNode[0].nIdxParent = -1;
    s.pNode[0].nIdxMaterial = -1;
    s.InitImpl();
}
} // namespace tvotest
