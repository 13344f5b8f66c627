// The TVO scene model: plain records for the scene, its nodes, meshes, materials, textures, cameras
// and lights, held in flat C-heap arrays and cross-referenced by index, plus the animation queries.
//
// Node order is a contract with the builder: mesh-instance nodes first, then one node per light (in
// light order), then one per camera (in camera order), then every other node.
//
// Animation channels: a node's position (3 floats a key), rotation (quaternion x, y, z, w), scale
// (7 floats a key, the first three the scale factors) and matrix (16 floats) each hold one static key
// when their animation flag is clear; with the flag set, either one key a frame, or (with an index
// array of one entry a frame) keys starting at the float offsets the index array names.
#pragma once

#include <array>
#include <cstdint>

#include "QMXTBoneBatches.h"
#include "QMXTMath.h"
#include "QMXTVertexData.h"

enum ETVOLightType : uint32_t
{
    eTVOLightPoint = 0,
    eTVOLightDirectional = 1,
    eTVOLightSpot = 2
};

enum ETVOPrimitiveType : uint32_t
{
    eTVOIndexedTriangleList = 0,
    eTVOIndexedTriangleStrip = 1
};

// Blend factors and equations carry the OpenGL enumerant values, so a renderer passes them through.
enum ETVOBlendFunc : uint32_t
{
    eTVOBlendZero = 0,
    eTVOBlendOne = 1,
    eTVOBlendSrcColour = 0x0300,
    eTVOBlendOneMinusSrcColour = 0x0301,
    eTVOBlendSrcAlpha = 0x0302,
    eTVOBlendOneMinusSrcAlpha = 0x0303,
    eTVOBlendDstAlpha = 0x0304,
    eTVOBlendOneMinusDstAlpha = 0x0305,
    eTVOBlendDstColour = 0x0306,
    eTVOBlendOneMinusDstColour = 0x0307,
    eTVOBlendSrcAlphaSaturate = 0x0308,
    eTVOBlendConstantColour = 0x8001,
    eTVOBlendOneMinusConstantColour = 0x8002,
    eTVOBlendConstantAlpha = 0x8003,
    eTVOBlendOneMinusConstantAlpha = 0x8004
};

enum ETVOBlendOp : uint32_t
{
    eTVOBlendOpAdd = 0x8006,
    eTVOBlendOpMin = 0x8007,
    eTVOBlendOpMax = 0x8008,
    eTVOBlendOpSubtract = 0x800A,
    eTVOBlendOpReverseSubtract = 0x800B
};

// Bytes of packed skinning data (CQMXTModelTVO::CreateSkinIdxWeight): bone indices up to 255, and
// byte weights that always add up to 255.
enum : uint32_t
{
    eTVOMaxByteBoneIndex = 255,
    eTVOByteWeightTotal = 255
};

// Index streams: 16-bit indices address up to 65536 vertices; larger meshes keep 32-bit indices.
enum : uint32_t
{
    eTVOMaxShortIndexedVertices = 65536
};

// Texture slots of a material, in record (and file) order.
enum ETVOTextureSlot : uint32_t
{
    eTVOTexDiffuse = 0,
    eTVOTexAmbient,
    eTVOTexSpecularColour,
    eTVOTexSpecularLevel,
    eTVOTexBump,
    eTVOTexEmissive,
    eTVOTexGlossiness,
    eTVOTexOpacity,
    eTVOTexReflection,
    eTVOTexRefraction,
    eTVOTexSlotCount
};

// Animation flag bits of STVONode::nAnimationFlags.
enum : uint32_t
{
    eTVOHasPositionAnimation = 1u << 0,
    eTVOHasRotationAnimation = 1u << 1,
    eTVOHasScaleAnimation = 1u << 2,
    eTVOHasMatrixAnimation = 1u << 3
};

// Scene flag bits of STVOScene::nFlags.
enum : uint32_t
{
    eTVOSceneFixedPoint = 1u << 0
};

struct STVONode
{
    int32_t nIdx;           // into meshes, lights or cameras, by the node's place in the node array
    char* pszName;
    int32_t nIdxMaterial;
    int32_t nIdxParent;     // negative for a root
    uint32_t nAnimationFlags;
    uint32_t* pnAnimPositionIdx;
    float* pfAnimPosition;
    uint32_t* pnAnimRotationIdx;
    float* pfAnimRotation;
    uint32_t* pnAnimScaleIdx;
    float* pfAnimScale;
    uint32_t* pnAnimMatrixIdx;
    float* pfAnimMatrix;
    uint32_t nUserDataSize;
    uint8_t* pUserData;
};

struct STVOMesh
{
    uint32_t nNumVertex;
    uint32_t nNumFaces; // triangles
    uint32_t nNumUVW;
    CTVOData sFaces;    // unsigned short or unsigned int indices, one component
    uint32_t* pnStripLength; // triangles in each strip; absent for a triangle list
    uint32_t nNumStrips;
    CTVOData sVertex;
    CTVOData sNormals;
    CTVOData sTangents;
    CTVOData sBinormals;
    CTVOData* psUVW;     // nNumUVW entries
    CTVOData sVtxColours;
    CTVOData sBoneIdx;
    CTVOData sBoneWeight;
    uint8_t* pInterleaved; // all vertex streams in one block, or absent
    CQMXTBoneBatches sBoneBatch;
    uint32_t ePrimitiveType; // ETVOPrimitiveType
    float mUnpackMatrix[16];
};

struct STVOMaterial
{
    char* pszName;
    int32_t nIdxTexture[eTVOTexSlotCount]; // -1 for none
    float fMatOpacity;
    float pfMatAmbient[3];
    float pfMatDiffuse[3];
    float pfMatSpecular[3];
    float fMatShininess;
    char* pszEffectFile;
    char* pszEffectName;
    uint32_t eBlendSrcRGB; // ETVOBlendFunc
    uint32_t eBlendSrcA;
    uint32_t eBlendDstRGB;
    uint32_t eBlendDstA;
    uint32_t eBlendOpRGB; // ETVOBlendOp
    uint32_t eBlendOpA;
    float pfBlendColour[4];
    float pfBlendFactor[4];
    uint32_t nFlags;
    uint32_t nUserDataSize;
    uint8_t* pUserData;
};

struct STVOTexture
{
    char* pszName;
};

struct STVOCamera
{
    int32_t nIdxTarget;
    float fFOV; // radians
    float fFar;
    float fNear;
    float* pfAnimFOV; // frame count entries, or absent
};

struct STVOLight
{
    int32_t nIdxTarget;
    float pfColour[3];
    uint32_t eType; // ETVOLightType
    float fConstantAttenuation;
    float fLinearAttenuation;
    float fQuadraticAttenuation;
    float fFalloffAngle;
    float fFalloffExponent;
};

struct STVOScene
{
    float pfColourBackground[3];
    float pfColourAmbient[3];
    uint32_t nNumCamera;
    STVOCamera* pCamera;
    uint32_t nNumLight;
    STVOLight* pLight;
    uint32_t nNumMesh;
    STVOMesh* pMesh;
    uint32_t nNumNode;
    uint32_t nNumMeshNode;
    STVONode* pNode;
    uint32_t nNumTexture;
    STVOTexture* pTexture;
    uint32_t nNumMaterial;
    STVOMaterial* pMaterial;
    uint32_t nNumFrame;
    uint32_t nFPS;
    uint32_t nFlags;
    uint32_t nUserDataSize;
    uint8_t* pUserData;
};

struct SQMXTModelTVOImpl;
class CSource;
class CSink;

class CQMXTModelTVO : public STVOScene
{
  public:
    CQMXTModelTVO();
    ~CQMXTModelTVO();
    CQMXTModelTVO(const CQMXTModelTVO&) = delete;
    CQMXTModelTVO& operator=(const CQMXTModelTVO&) = delete;

    bool IsLoaded() const { return m_pImpl != nullptr; }

    // Frees any old private part and allocates one for nNumNode nodes, zeroed, then FlushCache.
    // Returns 0 on success, 1 when an allocation fails.
    int InitImpl();
    void DestroyImpl();
    // Acts only when the private part exists: unless the arrays are caller-owned, frees every array
    // of every record and clears pointers and counts; then releases the private part.
    void Destroy();

    // Sets the current animation frame (truncated to the integer frame, the rest is the blend).
    // Animated channels clamp to the last frame, so querying it never reads past a key array.
    void SetFrame(float frame);
    float GetFrame() const;

    // Channel sampling of node at the current frame.
    void GetTranslation(QMXTVECTOR3f& out, const STVONode& node) const; // leaves out untouched without an array
    void GetTranslationMatrix(QMXTMATRIXf& out, const STVONode& node) const;
    QMXTMATRIXf GetTranslationMatrix(const STVONode& node) const;
    void GetRotationMatrix(QMXTMATRIXf& out, const STVONode& node) const;
    QMXTMATRIXf GetRotationMatrix(const STVONode& node) const;
    void GetScalingMatrix(QMXTMATRIXf& out, const STVONode& node) const;
    QMXTMATRIXf GetScalingMatrix(const STVONode& node) const;
    void GetTransformationMatrix(QMXTMATRIXf& out, const STVONode& node) const;
    QMXTMATRIXf GetTransformationMatrix(const STVONode& node) const;

    // Local matrix times the parent chain, computed afresh.
    void GetWorldMatrixNoCache(QMXTMATRIXf& out, const STVONode& node) const;
    QMXTMATRIXf GetWorldMatrixNoCache(const STVONode& node) const;
    // The same through the world-matrix cache (frame 0 always answers from the frame-0 cache).
    void GetWorldMatrix(QMXTMATRIXf& out, const STVONode& node);
    QMXTMATRIXf GetWorldMatrix(const STVONode& node);
    // Skinning matrix of a bone for a mesh: world(mesh) x inverse(world(bone)) at frame 0, times
    // world(bone) at the current frame.
    void GetBoneWorldMatrix(QMXTMATRIXf& out, const STVONode& meshNode, const STVONode& boneNode);
    QMXTMATRIXf GetBoneWorldMatrix(const STVONode& meshNode, const STVONode& boneNode);
    // Sets frame 0 and rebuilds the frame-0 cache; call after any change to nodes or animation.
    void FlushCache();

    void GetLight(QMXTVECTOR3f& position, QMXTVECTOR3f& direction, uint32_t lightIdx);
    QMXTVECTOR3f GetLightPosition(uint32_t lightIdx);
    QMXTVECTOR3f GetLightDirection(uint32_t lightIdx);
    // Camera placement; both return the field of view at the current frame.
    float GetCamera(QMXTVECTOR3f& from, QMXTVECTOR3f& to, QMXTVECTOR3f& up, uint32_t cameraIdx);
    float GetCameraPos(QMXTVECTOR3f& from, QMXTVECTOR3f& to, uint32_t cameraIdx);

    // Packs up to four influences into four index bytes and four weight bytes summing to 255.
    // Returns true on FAILURE (a bone index above 255, or all byte weights zero), false on success.
    static bool CreateSkinIdxWeight(uint8_t* pIdx, uint8_t* pWeight, int count, const int* pBoneIdx,
                                    const float* pBoneWeight);

    // Writes the scene as a .tvo file: the version block, the options and history texts (each only
    // when given and not empty), then the scene. The file appears only when complete: it is written
    // next to path under a temporary name and renamed. Returns 0 on success, 1 on failure.
    int SaveTVO(const char* path, const char* options = nullptr, const char* history = nullptr) const;
    // The same into any byte sink (a memory buffer, an open file).
    int SaveTVO(CSink& sink, const char* options = nullptr, const char* history = nullptr) const;

    // Reads a .tvo file through CQMXTResourceFile (disk, else the memory file system). With an options
    // or history buffer only those texts are read (at most the buffer size each, not terminated when
    // cut) and the scene is left untouched; otherwise the current scene is destroyed and replaced.
    // Returns 0 on success, 1 on failure (a failed scene read leaves the scene empty).
    int ReadFromFile(const char* path, char* optionsBuffer = nullptr, uint32_t optionsSize = 0,
                     char* historyBuffer = nullptr, uint32_t historySize = 0);
    // The same over a block of memory holding a whole file; the scene gets arrays of its own.
    int ReadFromMemory(const void* data, uint32_t size, char* optionsBuffer = nullptr, uint32_t optionsSize = 0,
                       char* historyBuffer = nullptr, uint32_t historySize = 0);
    // The same over any source; on failure source.GetError() says where and why.
    int ReadFromSource(CSource& source, char* optionsBuffer = nullptr, uint32_t optionsSize = 0,
                       char* historyBuffer = nullptr, uint32_t historySize = 0);
    // Takes over a scene record shallowly: its arrays stay the caller's and Destroy frees none of them.
    int ReadFromMemory(const STVOScene& scene);
    // Deep copy of a scene record (QMXTModelTVOCopyScene): every array is newly allocated and owned.
    int CopyFromMemory(const STVOScene& scene);

    // Arrays belong to the caller (shallow read from memory): Destroy frees none of them.
    bool IsCallerOwned() const;
    void SetCallerOwned(bool callerOwned);

  private:
    QMXTMATRIXf LocalMatrix(const STVONode& node) const;

    SQMXTModelTVOImpl* m_pImpl;
};

// Frees a node's transform channels (keys and their indices), clearing them and its animation flags.
void QMXTModelTVOFreeNodeChannels(STVONode& node);
// Frees every array of a node (name, channels, user data) and leaves the record zeroed.
void QMXTModelTVOFreeNode(STVONode& node);
// Frees every array of a material (name, effect file and name, user data) and leaves it zeroed.
void QMXTModelTVOFreeMaterial(STVOMaterial& material);
// Frees every array a mesh owns (streams or interleaved block, strips, bone batches); the record
// itself is left with dangling pointers for the caller to clear or drop.
void QMXTModelTVOFreeMesh(STVOMesh& mesh);

// The seven fixed vertex streams of a mesh in file order: positions, normals, tangents, binormals,
// colours, bone indices, bone weights (files keep the UVW streams after them).
inline std::array<CTVOData*, 7> QMXTModelTVOFixedStreams(STVOMesh& m)
{
    return {&m.sVertex, &m.sNormals, &m.sTangents, &m.sBinormals, &m.sVtxColours, &m.sBoneIdx, &m.sBoneWeight};
}
inline std::array<const CTVOData*, 7> QMXTModelTVOFixedStreams(const STVOMesh& m)
{
    return {&m.sVertex, &m.sNormals, &m.sTangents, &m.sBinormals, &m.sVtxColours, &m.sBoneIdx, &m.sBoneWeight};
}

// Frees every array of every record of a scene (the record arrays too) and zeroes the record.
void QMXTModelTVOFreeArrays(STVOScene& scene);

// Floats of one animation channel: frameCount x keySize without an index array, else the largest
// index + keySize. keySize is 3, 4, 7 or 16.
uint32_t QMXTModelTVOGetAnimArraySize(const uint32_t* pIdx, uint32_t frameCount, uint32_t keySize);
// Indices of a mesh: faces x 3 for a list, faces + 2 x strips for strips.
uint32_t QMXTModelTVOCountIndices(const STVOMesh& mesh);
