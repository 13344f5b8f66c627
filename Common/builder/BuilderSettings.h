// The export options the builder reads, gathered in one record by FromOptions so that the builder's
// loops (one call a face corner) don't go through the option tables, and tests can set them
// directly. A default record holds the default options.
//
// Coordinate systems (cS): the scene content is in the host's right-handed system, which is also
// OpenGL's, so eCoordSystemHost and eCoordSystemOpenGL write it unchanged. eCoordSystemDirectX
// mirrors the scene into a left-handed system: z is negated in node animation, positions, normals,
// tangents and binormals; triangle winding is reversed, so faces stay counter-clockwise seen from
// the front; and the V texture coordinate becomes 1 - V (bFlipTextureV flips it back).
// Export formats (eExpFormat): binary .tvo, or a header or source file that embeds the .tvo (the
// same text for both).
#pragma once

#include <cstdint>
#include <string>

#include "Options.h"

struct SBuilderSettings
{
    SBuilderSettings(); // the default options
    explicit SBuilderSettings(const COptions& options);
    static SBuilderSettings FromOptions(const COptions& options) { return SBuilderSettings(options); }

    bool bFlipTextureV;
    bool bIndexed;
    bool bInterleaved;
    bool bTangentSpace;
    bool bExportAnimations;
    bool bIndexAnimations;
    bool bExportGeometry;
    bool bExportMatrices;
    bool bExportMaterials;
    bool bExportModelSpace;
    bool bMerge;
    bool bUnpackMatrix;
    bool bExportBoneGeometry;
    bool bAlignData;
    float fTangentSpaceVtxSplit;
    EExportFormat eExpFormat;
    ECoordSystem eCoordSystem;
    ETriSortMethod eTriSort;
    EPrimType ePrimType;
    uint32_t uiStaticFrame;
    uint32_t uiBoneLimit;
    uint32_t uiPadDataTo;
    uint32_t uiTSUseUVW;
    CVectorOpt formats[COptionsData::eNumVectorFormats];
    // The file whose materials are merged: sMergeSrc, or the export target when that is empty.
    std::string sMergeSource;

    bool IsDirectX() const { return eCoordSystem == eCoordSystemDirectX; }
    bool Exported(COptionsData::EVectorFormats f) const { return formats[f].GetOption(CVectorOpt::eExport); }
    bool ExportNormals() const { return Exported(COptionsData::eVcOptNor); }
    bool ExportColours() const { return Exported(COptionsData::eVcOptCol); }
};
