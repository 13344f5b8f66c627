#include "QMXTTVOBlocks.h"

#include <cstring>


namespace
{
struct SBlockName
{
    uint32_t tag;
    const char* name;
};

const SBlockName kNames[] = {
    {eTVOVersion, "version"},
    {eTVOScene, "scene"},
    {eTVOOptions, "options"},
    {eTVOHistory, "history"},
    {eTVOSceneClearColour, "clear colour"},
    {eTVOSceneAmbientColour, "ambient colour"},
    {eTVOSceneNumCamera, "camera count"},
    {eTVOSceneNumLight, "light count"},
    {eTVOSceneNumMesh, "mesh count"},
    {eTVOSceneNumNode, "node count"},
    {eTVOSceneNumMeshNode, "mesh-node count"},
    {eTVOSceneNumTexture, "texture count"},
    {eTVOSceneNumMaterial, "material count"},
    {eTVOSceneNumFrame, "frame count"},
    {eTVOSceneCamera, "camera"},
    {eTVOSceneLight, "light"},
    {eTVOSceneMesh, "mesh"},
    {eTVOSceneNode, "node"},
    {eTVOSceneTexture, "texture"},
    {eTVOSceneMaterial, "material"},
    {eTVOSceneFlags, "scene flags"},
    {eTVOSceneFPS, "frames per second"},
    {eTVOSceneUserData, "scene user data"},
    {eTVOMatName, "material name"},
    {eTVOMatTexDiffuse, "texture slot 0"},
    {eTVOMatOpacity, "opacity"},
    {eTVOMatAmbient, "ambient"},
    {eTVOMatDiffuse, "diffuse"},
    {eTVOMatSpecular, "specular"},
    {eTVOMatShininess, "shininess"},
    {eTVOMatEffectFile, "effect file"},
    {eTVOMatEffectName, "effect name"},
    {QMXTTVOTextureSlotTag(1), "texture slot 1"},
    {QMXTTVOTextureSlotTag(2), "texture slot 2"},
    {QMXTTVOTextureSlotTag(3), "texture slot 3"},
    {QMXTTVOTextureSlotTag(4), "texture slot 4"},
    {QMXTTVOTextureSlotTag(5), "texture slot 5"},
    {QMXTTVOTextureSlotTag(6), "texture slot 6"},
    {QMXTTVOTextureSlotTag(7), "texture slot 7"},
    {QMXTTVOTextureSlotTag(8), "texture slot 8"},
    {QMXTTVOTextureSlotTag(9), "texture slot 9"},
    {eTVOMatBlendSrcRGB, "blend source colour"},
    {eTVOMatBlendSrcA, "blend source alpha"},
    {eTVOMatBlendDstRGB, "blend destination colour"},
    {eTVOMatBlendDstA, "blend destination alpha"},
    {eTVOMatBlendOpRGB, "blend operation colour"},
    {eTVOMatBlendOpA, "blend operation alpha"},
    {eTVOMatBlendColour, "blend colour"},
    {eTVOMatBlendFactor, "blend factor"},
    {eTVOMatFlags, "material flags"},
    {eTVOMatUserData, "material user data"},
    {eTVOTexName, "texture name"},
    {eTVONodeIdx, "node index"},
    {eTVONodeName, "node name"},
    {eTVONodeIdxMaterial, "node material"},
    {eTVONodeIdxParent, "node parent"},
    {eTVONodeStaticPosition, "static position"},
    {eTVONodeStaticRotation, "static rotation"},
    {eTVONodeStaticScale, "static scale"},
    {eTVONodeAnimPosition, "position"},
    {eTVONodeAnimRotation, "rotation"},
    {eTVONodeAnimScale, "scale"},
    {eTVONodeAnimMatrix, "matrix"},
    {eTVONodeAnimFlags, "animation flags"},
    {eTVONodeAnimPositionIdx, "position indices"},
    {eTVONodeAnimRotationIdx, "rotation indices"},
    {eTVONodeAnimScaleIdx, "scale indices"},
    {eTVONodeAnimMatrixIdx, "matrix indices"},
    {eTVONodeUserData, "node user data"},
    {eTVOMeshNumVertex, "vertex count"},
    {eTVOMeshNumFaces, "face count"},
    {eTVOMeshNumUVW, "UVW count"},
    {eTVOMeshFaces, "faces"},
    {eTVOMeshStripLength, "strip lengths"},
    {eTVOMeshNumStrips, "strip count"},
    {eTVOMeshVertex, "positions"},
    {eTVOMeshNormals, "normals"},
    {eTVOMeshTangents, "tangents"},
    {eTVOMeshBinormals, "binormals"},
    {eTVOMeshUVW, "UVW"},
    {eTVOMeshVtxColours, "vertex colours"},
    {eTVOMeshBoneIdx, "bone indices"},
    {eTVOMeshBoneWeight, "bone weights"},
    {eTVOMeshInterleaved, "interleaved data"},
    {eTVOMeshBoneBatches, "batch bones"},
    {eTVOMeshBoneBatchBoneCnt, "batch bone counts"},
    {eTVOMeshBoneBatchOffset, "batch offsets"},
    {eTVOMeshBoneBatchBoneMax, "batch bone maximum"},
    {eTVOMeshBoneBatchCnt, "batch count"},
    {eTVOMeshUnpackMatrix, "unpack matrix"},
    {eTVOLightIdxTarget, "light target"},
    {eTVOLightColour, "light colour"},
    {eTVOLightType, "light type"},
    {eTVOLightConstantAttenuation, "constant attenuation"},
    {eTVOLightLinearAttenuation, "linear attenuation"},
    {eTVOLightQuadraticAttenuation, "quadratic attenuation"},
    {eTVOLightFalloffAngle, "falloff angle"},
    {eTVOLightFalloffExponent, "falloff exponent"},
    {eTVOCameraIdxTarget, "camera target"},
    {eTVOCameraFOV, "field of view"},
    {eTVOCameraFar, "far plane"},
    {eTVOCameraNear, "near plane"},
    {eTVOCameraAnimFOV, "field-of-view animation"},
    {eTVODataType, "data type"},
    {eTVODataComponents, "component count"},
    {eTVODataStride, "stride"},
    {eTVODataData, "data"},
};

bool IsVertexDataBlock(uint32_t tag)
{
    return tag == eTVOMeshFaces || (tag >= eTVOMeshVertex && tag <= eTVOMeshBoneWeight);
}
} // namespace

const char* QMXTTVOBlockName(uint32_t tag)
{
    tag &= ~static_cast<uint32_t>(eTVOEndBit);
    for (const SBlockName& n : kNames)
        if (n.tag == tag)
            return n.name;
    return "unknown";
}

bool QMXTTVOIsContainer(uint32_t parentTag, uint32_t tag)
{
    switch (parentTag)
    {
    case 0:
        return tag == eTVOScene;
    case eTVOScene:
        return tag >= eTVOSceneCamera && tag <= eTVOSceneMaterial;
    case eTVOSceneMesh:
        return IsVertexDataBlock(tag);
    default:
        return false;
    }
}

bool QMXTTVOStartsWithVersion(const void* data, size_t size)
{
    const size_t header = 8; // identifier and length
    if (!data || size < header || size - header < kTVOVersionSize)
        return false;
    const unsigned char* b = static_cast<const unsigned char*>(data);
    auto u32 = [b](size_t at) {
        return uint32_t(b[at]) | uint32_t(b[at + 1]) << 8 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 3]) << 24;
    };
    return u32(0) == eTVOVersion && u32(4) == kTVOVersionSize &&
           std::memcmp(b + header, kTVOVersion, kTVOVersionSize) == 0;
}
