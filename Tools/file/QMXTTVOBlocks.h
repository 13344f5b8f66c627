// Block identifiers of the .tvo scene file and their readable names.
//
// A block is a start marker (tag, byte length), its data, and an end marker (tag | eTVOEndBit, 0).
// Containers carry length 0 and hold nested blocks up to their end marker. The writer, the reader and
// the tvoinfo inspector share this one list.
#pragma once

#include <cstddef>
#include <cstdint>

enum ETVOBlock : uint32_t
{
    eTVOEndBit = 0x80000000u,

    eTVOVersion = 1000,
    eTVOScene = 1001,
    eTVOOptions = 1002,
    eTVOHistory = 1003,

    eTVOSceneClearColour = 2000,
    eTVOSceneAmbientColour = 2001,
    eTVOSceneNumCamera = 2002,
    eTVOSceneNumLight = 2003,
    eTVOSceneNumMesh = 2004,
    eTVOSceneNumNode = 2005,
    eTVOSceneNumMeshNode = 2006,
    eTVOSceneNumTexture = 2007,
    eTVOSceneNumMaterial = 2008,
    eTVOSceneNumFrame = 2009,
    eTVOSceneCamera = 2010,
    eTVOSceneLight = 2011,
    eTVOSceneMesh = 2012,
    eTVOSceneNode = 2013,
    eTVOSceneTexture = 2014,
    eTVOSceneMaterial = 2015,
    eTVOSceneFlags = 2016,
    eTVOSceneFPS = 2017,
    eTVOSceneUserData = 2018,

    eTVOMatName = 3000,
    eTVOMatTexDiffuse = 3001,
    eTVOMatOpacity = 3002,
    eTVOMatAmbient = 3003,
    eTVOMatDiffuse = 3004,
    eTVOMatSpecular = 3005,
    eTVOMatShininess = 3006,
    eTVOMatEffectFile = 3007,
    eTVOMatEffectName = 3008,
    eTVOMatTexAmbient = 3009, // 3009 to 3017: texture slots 1 to 9
    eTVOMatTexRefraction = 3017,
    eTVOMatBlendSrcRGB = 3018,
    eTVOMatBlendSrcA = 3019,
    eTVOMatBlendDstRGB = 3020,
    eTVOMatBlendDstA = 3021,
    eTVOMatBlendOpRGB = 3022,
    eTVOMatBlendOpA = 3023,
    eTVOMatBlendColour = 3024,
    eTVOMatBlendFactor = 3025,
    eTVOMatFlags = 3026,
    eTVOMatUserData = 3027,

    eTVOTexName = 4000,

    eTVONodeIdx = 5000,
    eTVONodeName = 5001,
    eTVONodeIdxMaterial = 5002,
    eTVONodeIdxParent = 5003,
    eTVONodeStaticPosition = 5004, // older layout, read only
    eTVONodeStaticRotation = 5005, // older layout, read only
    eTVONodeStaticScale = 5006,    // older layout, read only
    eTVONodeAnimPosition = 5007,
    eTVONodeAnimRotation = 5008,
    eTVONodeAnimScale = 5009,
    eTVONodeAnimMatrix = 5011,
    eTVONodeAnimFlags = 5012,
    eTVONodeAnimPositionIdx = 5013,
    eTVONodeAnimRotationIdx = 5014,
    eTVONodeAnimScaleIdx = 5015,
    eTVONodeAnimMatrixIdx = 5016,
    eTVONodeUserData = 5017,

    eTVOMeshNumVertex = 6000,
    eTVOMeshNumFaces = 6001,
    eTVOMeshNumUVW = 6002,
    eTVOMeshFaces = 6003,
    eTVOMeshStripLength = 6004,
    eTVOMeshNumStrips = 6005,
    eTVOMeshVertex = 6006,
    eTVOMeshNormals = 6007,
    eTVOMeshTangents = 6008,
    eTVOMeshBinormals = 6009,
    eTVOMeshUVW = 6010,
    eTVOMeshVtxColours = 6011,
    eTVOMeshBoneIdx = 6012,
    eTVOMeshBoneWeight = 6013,
    eTVOMeshInterleaved = 6014,
    eTVOMeshBoneBatches = 6015,
    eTVOMeshBoneBatchBoneCnt = 6016,
    eTVOMeshBoneBatchOffset = 6017,
    eTVOMeshBoneBatchBoneMax = 6018,
    eTVOMeshBoneBatchCnt = 6019,
    eTVOMeshUnpackMatrix = 6020,

    eTVOLightIdxTarget = 7000,
    eTVOLightColour = 7001,
    eTVOLightType = 7002,
    eTVOLightConstantAttenuation = 7003,
    eTVOLightLinearAttenuation = 7004,
    eTVOLightQuadraticAttenuation = 7005,
    eTVOLightFalloffAngle = 7006,
    eTVOLightFalloffExponent = 7007,

    eTVOCameraIdxTarget = 8000,
    eTVOCameraFOV = 8001,
    eTVOCameraFar = 8002,
    eTVOCameraNear = 8003,
    eTVOCameraAnimFOV = 8004,

    eTVODataType = 9000,
    eTVODataComponents = 9001,
    eTVODataStride = 9002,
    eTVODataData = 9003
};

// The block of a material's texture slot (ETVOTextureSlot): the diffuse slot has a block of its
// own, slots 1 to 9 follow one another from eTVOMatTexAmbient.
constexpr uint32_t QMXTTVOTextureSlotTag(uint32_t slot)
{
    return slot == 0 ? eTVOMatTexDiffuse : eTVOMatTexAmbient + slot - 1;
}

// The version text of block 1000, written with its zero byte (11 bytes).
constexpr char kTVOVersion[] = "AB.TVO.2.0";
constexpr uint32_t kTVOVersionSize = sizeof(kTVOVersion);

// Readable name of a block identifier ("mesh", "positions", "node name" ...); the end bit is ignored.
// Unknown identifiers give "unknown".
const char* QMXTTVOBlockName(uint32_t tag);

// Whether a block holds nested blocks when met inside a parent of the given identifier (0 for the top
// level): the scene at the top, record containers in the scene, vertex data blocks in a mesh.
bool QMXTTVOIsContainer(uint32_t parentTag, uint32_t tag);

// Whether data starts as every written .tvo file does: the version block (identifier, length and
// version text, little-endian). A reader that fails on data without it can say the data is no .tvo
// file at all rather than a damaged one.
bool QMXTTVOStartsWithVersion(const void* data, size_t size);
