// The export options the builder reads, gathered in one record so that hot loops (one call a face
// corner) don't go through the option tables. Filled from COptions in one place, FromOptions.
#pragma once

#include <cstdint>

// Coordinate systems (option cS). The scene content is in the host's right-handed system, which is
// also OpenGL's. eCSDirectX mirrors the scene into a left-handed system: z is negated in node
// animation, positions, normals, tangents and binormals; triangle winding is reversed; and the V
// texture coordinate becomes 1 - V. Every other value leaves the data as the host gave it.
enum ECoordSystemValue : uint32_t
{
    eCSNone = 0,
    eCSDirectX = 1,
    eCSOpenGL = 2
};

// Output forms (option eExpFormat).
enum EExportFormatValue : uint32_t
{
    eExpBinary = 0, // .tvo
    eExpHeader = 1, // .h wrapping the .tvo
    eExpSource = 2  // .cpp wrapping the .tvo (same text as the header)
};

struct SBuilderSettings
{
    bool bFlipTextureV = false;
    bool bIndexed = true;
    bool bInterleaved = true;
    bool bTangentSpace = false;
    bool bExportAnimations = false;
    bool bIndexAnimations = false;
    bool bExportGeometry = true;
    bool bExportMatrices = false;
    bool bExportMaterials = true;
    bool bExportModelSpace = true;
    bool bMerge = false;
    bool bExportBoneGeometry = false;
    bool bAlignData = true;
    float fTangentSpaceVtxSplit = 0.0f;
    uint32_t eCoordSystem = eCSOpenGL;
    uint32_t eTriSort = 1;
    uint32_t ePrimType = 0;
    uint32_t uiStaticFrame = 0;
    uint32_t uiBoneLimit = 9;
    uint32_t uiPadDataTo = 4;
    uint32_t uiTSUseUVW = 0;
    // Export flags of the vertex formats the assembly and geometry pass look at.
    bool bExportNormals = true;
    bool bExportColours = false;
    bool bExportTangents = true;
    bool bExportBinormals = true;

    bool IsDirectX() const { return eCoordSystem == eCSDirectX; }
};
