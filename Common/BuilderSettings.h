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

// Vertex formats, in option order: the stream each option steers.
enum EVertexFormatIndex : uint32_t
{
    eVFPosition = 0,
    eVFNormal,
    eVFTangent,
    eVFBinormal,
    eVFColour,
    eVFBoneIndices,
    eVFBoneWeights,
    eVFUVW0, // UVW set i is eVFUVW0 + i, up to set 7
    eVFCount = eVFUVW0 + 8
};

// Output format of one vertex stream: written or not, data type, component mask (bits 0-3 select
// x, y, z, w; bit 7 belongs to the options window).
struct SVertexFormat
{
    bool bExport;
    uint32_t eType;
    uint32_t nMask;
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
    bool bUnpackMatrix = false;
    SVertexFormat formats[eVFCount] = {
        {true, 1, 0x87},  {true, 1, 0x87},  {true, 1, 0x87},  {true, 1, 0x87},  {false, 5, 0x0F},
        {true, 10, 0x0F}, {true, 1, 0x0F},  {true, 1, 0x83},  {false, 1, 0x83}, {false, 1, 0x83},
        {false, 1, 0x83}, {false, 1, 0x83}, {false, 1, 0x83}, {false, 1, 0x83}, {false, 1, 0x83},
    };

    bool IsDirectX() const { return eCoordSystem == eCSDirectX; }
    bool ExportNormals() const { return formats[eVFNormal].bExport; }
    bool ExportColours() const { return formats[eVFColour].bExport; }
};
