#include "BuilderSettings.h"

SBuilderSettings::SBuilderSettings() : SBuilderSettings(COptions()) {}

SBuilderSettings::SBuilderSettings(const COptions& o)
{
    using O = COptionsData;
    bFlipTextureV = o.GetOption(O::eFlipTextureV);
    bIndexed = o.GetOption(O::eIndexed);
    bInterleaved = o.GetOption(O::eInterleaved);
    bTangentSpace = o.GetOption(O::eTangentSpace);
    bExportAnimations = o.GetOption(O::eExportAnimations);
    bIndexAnimations = o.GetOption(O::eIndexAnimations);
    bExportGeometry = o.GetOption(O::eExportGeometry);
    bExportMatrices = o.GetOption(O::eExportMatrices);
    bExportMaterials = o.GetOption(O::eExportMaterials);
    bExportModelSpace = o.GetOption(O::eExportModelSpace);
    bMerge = o.GetOption(O::eMerge);
    bUnpackMatrix = o.GetOption(O::eUnpackMatrix);
    bExportBoneGeometry = o.GetOption(O::eExportBoneGeometry);
    bAlignData = o.GetOption(O::eAlignData);
    fTangentSpaceVtxSplit = o.GetOption(O::eTangentSpaceVtxSplit);
    eExpFormat = o.GetOption(O::eExpFormat);
    eCoordSystem = o.GetOption(O::eCS);
    eTriSort = o.GetOption(O::eTriSort);
    ePrimType = o.GetOption(O::ePrimType);
    uiStaticFrame = o.GetOption(O::eStaticFrame);
    uiBoneLimit = o.GetOption(O::eBoneLimit);
    uiPadDataTo = o.GetOption(O::ePadDataTo);
    uiTSUseUVW = o.GetOption(O::eTSUseUVW);
    for (int i = 0; i < O::eNumVectorFormats; ++i)
        formats[i] = o.GetOption(static_cast<O::EVectorFormats>(i));
    const CQMXTString merge = o.GetOption(O::eMergeSrc);
    sMergeSource = merge.empty() ? o.m_sPath.c_str() : merge.c_str();
}
