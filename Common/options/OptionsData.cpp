// Option tables: names, defaults, access and comparison.
#include "OptionsData.h"

namespace
{
struct SBoolDefault
{
    SOptionNames names;
    bool bDefault;
};

const SBoolDefault kBools[COptionsData::eNumBools] = {
    {{"bFlipTextureV", nullptr, "/FlipTextureV"}, false},
    {{"bIndexed", nullptr, "/Indexed"}, true},
    {{"bInterleaved", nullptr, "/Interleaved"}, true},
    {{"bSortVertices", "bSortVtx", "/SortVertices"}, true},
    {{"bTangentSpace", nullptr, "/TangentSpace"}, false},
    {{"bExportAnimations", "exportControllers", "/ExportAnimations"}, false},
    {{"bIndexAnimations", nullptr, "/IndexAnimations"}, false},
    {{"bExportGeometry", "exportGeom", "/ExportGeometry"}, true},
    {{"bExportMatrices", "exportMatrices", "/ExportMatrices"}, false},
    {{"bExportMappingChannels", "exportMappingChannel", "/ExportMappingChannels"}, false},
    {{"bExportMaterials", "exportMaterials", "/ExportMaterials"}, true},
    {{"bExportSkin", "exportSkin", "/ExportSkin"}, false},
    {{"bInvertTransparency", "m_bInvertTransparency", "/InvertTransparency"}, false},
    {{"bExportModelSpace", "exportObjectSpace", "/ExportModelSpace"}, true},
    {{"bMerge", nullptr, "/Merge"}, false},
    {{"bUseCustomOptSettings", nullptr, "/UseCustomOptSettings"}, false},
    {{"bExportUserData", nullptr, "/ExportUserData"}, false},
    {{"bUnpackMatrix", nullptr, "/UnpackMatrix"}, false},
    {{"bExportBoneGeometry", "exportBoneGeometry", "/ExportBoneGeometry"}, false},
    {{"bAlignData", nullptr, "/AlignData"}, true},
    {{"bDisplayInDravik", "m_bDisplayInDravik", "/DisplayInDravik"}, false},
    {{"bUsePostExportCL", nullptr, "/UsePostExportCL"}, false},
};

const SOptionNames kFloat = {"fTangentSpaceVtxSplit", nullptr, "/fTangentSpaceVtxSplit"};
const SOptionNames kExportFormat = {"eExpFormat", nullptr, "/ExportFormat"};
const SOptionNames kCoordSystem = {"cS", nullptr, "/CS"};
const SOptionNames kTriSort = {"eTriSort", nullptr, "/TriangleSort"};
const SOptionNames kPrimType = {"ePrimType", nullptr, "/PrimitiveType"};

const SOptionNames kStrings[COptionsData::eNumStrings] = {
    {"sClPostTarget", nullptr, "/ClPostTarget"},   {"sClPostArgs", nullptr, "/ClPostArgs"},
    {"sClPostCWD", nullptr, "/ClPostCWD"},         {"sPathToDravik", nullptr, "/PathToDravik"},
    {"sMergeSrc", "m_sMergeSrc", "/MergeSrc"},     {"sScriptFile", "m_sScriptFile", "/ScriptFile"},
};

struct SIntDefault
{
    SOptionNames names;
    uint32_t uiDefault;
};

const SIntDefault kInts[COptionsData::eNumInts] = {
    {{"uiStaticFrame", "staticFrame", "/StaticFrame"}, 0},
    {{"uiBoneLimit", "dwBoneLimit", "/BoneLimit"}, 9},
    {{"uiPadDataTo", nullptr, "/PadDataTo"}, 4},
    {{"uiTSUseUVW", nullptr, "/TSUseUVW"}, 0},
};

struct SVectorDefault
{
    SOptionNames names;
    CVectorOpt value;
    uint32_t uiAllowed;
};

// Component masks of the defaults: x, y, z (u, v) with or without the options window's flag.
const uint32_t kXY = CVectorOpt::eMaskX | CVectorOpt::eMaskY;
const uint32_t kXYZ = kXY | CVectorOpt::eMaskZ;
const uint32_t kAll = CVectorOpt::eMaskComponents;
const uint32_t kHide = CVectorOpt::eMaskHideLast;

const SVectorDefault kVectors[COptionsData::eNumVectorFormats] = {
    {{"sVcOptPos", nullptr, "/Position"}, {true, EQMXTDataFloat, kXYZ | kHide}, kAll | kHide},
    {{"sVcOptNor", nullptr, "/Normal"}, {true, EQMXTDataFloat, kXYZ | kHide}, kAll | kHide},
    {{"sVcOptTan", nullptr, "/Tangent"}, {true, EQMXTDataFloat, kXYZ | kHide}, kAll | kHide},
    {{"sVcOptBin", nullptr, "/Binormal"}, {true, EQMXTDataFloat, kXYZ | kHide}, kAll | kHide},
    {{"sVcOptCol", nullptr, "/Colour"}, {false, EQMXTDataARGB, kAll}, kAll},
    {{"sVcOptBoneInd", nullptr, "/BoneIndices"}, {true, EQMXTDataUnsignedByte, kAll}, kAll},
    {{"sVcOptBoneWt", nullptr, "/BoneWeights"}, {true, EQMXTDataFloat, kAll}, kAll},
    {{"psVcOptUVW[0]", nullptr, "/UVW0"}, {true, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[1]", nullptr, "/UVW1"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[2]", nullptr, "/UVW2"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[3]", nullptr, "/UVW3"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[4]", nullptr, "/UVW4"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[5]", nullptr, "/UVW5"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[6]", nullptr, "/UVW6"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
    {{"psVcOptUVW[7]", nullptr, "/UVW7"}, {false, EQMXTDataFloat, kXY | kHide}, kAll | kHide},
};

const SOptionNames kNoNames = {nullptr, nullptr, nullptr};
const CVectorOpt kNoVector;

template <typename E> bool InRange(E option, int count)
{
    return static_cast<int>(option) >= 0 && static_cast<int>(option) < count;
}
} // namespace

COptionsData::COptionsData()
{
    COptionsData::ConfigDefault();
}

COptionsData::COptionsData(const COptionsData& other) : CQMXPrefsStorable()
{
    CopyFrom(other);
}

COptionsData& COptionsData::operator=(const COptionsData& other)
{
    if (this != &other)
        CopyFrom(other);
    return *this;
}

COptionsData::~COptionsData() = default;

void COptionsData::CopyFrom(const COptionsData& other)
{
    for (int i = 0; i < eNumBools; ++i)
        SetOption(static_cast<EBools>(i), other.GetOption(static_cast<EBools>(i)));
    for (int i = 0; i < eNumFloats; ++i)
        SetOption(static_cast<EFloats>(i), other.GetOption(static_cast<EFloats>(i)));
    SetOption(eExpFormat, other.GetOption(eExpFormat));
    SetOption(eCS, other.GetOption(eCS));
    SetOption(eTriSort, other.GetOption(eTriSort));
    SetOption(ePrimType, other.GetOption(ePrimType));
    for (int i = 0; i < eNumStrings; ++i)
        SetOption(static_cast<EStrings>(i), other.GetOption(static_cast<EStrings>(i)));
    for (int i = 0; i < eNumInts; ++i)
        SetOption(static_cast<EInts>(i), other.GetOption(static_cast<EInts>(i)));
    for (int i = 0; i < eNumVectorFormats; ++i)
        SetOption(static_cast<EVectorFormats>(i), other.GetOption(static_cast<EVectorFormats>(i)));
    EnforceAllowedAxes();
}

void COptionsData::ConfigDefault()
{
    for (int i = 0; i < eNumBools; ++i)
        m_bBools[i] = kBools[i].bDefault;
    m_fFloats[eTangentSpaceVtxSplit] = 0.0f;
    m_eExportFormat = eExportFormatBinary;
    m_eCoordSystem = eCoordSystemOpenGL;
    m_eTriSort = eTriSortGeometrySort;
    m_ePrimType = ePrimTriangleList;
    for (CQMXTString& text : m_sStrings)
        text.clear();
    for (int i = 0; i < eNumInts; ++i)
        m_uiInts[i] = kInts[i].uiDefault;
    for (int i = 0; i < eNumVectorFormats; ++i)
        m_vectorOpts[i] = kVectors[i].value;
    HandleOptimisations();
    EnforceAllowedAxes();
}

ETriSortMethod COptionsData::AutomaticTriSort(EPrimType primType)
{
    return primType == ePrimTriangleStrips ? eTriSortStrips : eTriSortGeometrySort;
}

void COptionsData::HandleOptimisations()
{
    if (m_bBools[eUseCustomOptSettings])
        return;
    m_bBools[eSortVertices] = m_bBools[eIndexed];
    m_eTriSort = AutomaticTriSort(m_ePrimType);
}

void COptionsData::EnforceAllowedAxes()
{
    for (int i = 0; i < eNumVectorFormats; ++i)
    {
        CVectorOpt& vector = m_vectorOpts[i];
        vector.SetOption(CVectorOpt::eEnable, vector.GetOption(CVectorOpt::eEnable) & kVectors[i].uiAllowed);
    }
}

uint32_t COptionsData::AllowedMask(EVectorFormats option)
{
    return InRange(option, eNumVectorFormats) ? kVectors[option].uiAllowed : 0;
}

void COptionsData::SetOption(EBools option, bool value)
{
    if (InRange(option, eNumBools))
        m_bBools[option] = value;
}
bool COptionsData::GetOption(EBools option) const
{
    return InRange(option, eNumBools) && m_bBools[option];
}
void COptionsData::SetOption(EFloats option, float value)
{
    if (InRange(option, eNumFloats))
        m_fFloats[option] = value;
}
float COptionsData::GetOption(EFloats option) const
{
    return InRange(option, eNumFloats) ? m_fFloats[option] : 0.0f;
}
void COptionsData::SetOption(EInts option, unsigned int value)
{
    if (InRange(option, eNumInts))
        m_uiInts[option] = value;
}
unsigned int COptionsData::GetOption(EInts option) const
{
    return InRange(option, eNumInts) ? m_uiInts[option] : 0;
}
void COptionsData::SetOption(EExportFormats, EExportFormat value)
{
    m_eExportFormat = value;
}
EExportFormat COptionsData::GetOption(EExportFormats) const
{
    return m_eExportFormat;
}
void COptionsData::SetOption(ECoordSystems, ECoordSystem value)
{
    m_eCoordSystem = value;
}
ECoordSystem COptionsData::GetOption(ECoordSystems) const
{
    return m_eCoordSystem;
}
void COptionsData::SetOption(ETriSortMethods, ETriSortMethod value)
{
    m_eTriSort = value;
}
ETriSortMethod COptionsData::GetOption(ETriSortMethods) const
{
    return m_eTriSort;
}
void COptionsData::SetOption(EPrimTypes, EPrimType value)
{
    m_ePrimType = value;
}
EPrimType COptionsData::GetOption(EPrimTypes) const
{
    return m_ePrimType;
}
void COptionsData::SetOption(EStrings option, const CQMXTString& value)
{
    if (InRange(option, eNumStrings))
        m_sStrings[option] = value;
}
CQMXTString COptionsData::GetOption(EStrings option) const
{
    return InRange(option, eNumStrings) ? m_sStrings[option] : CQMXTString();
}

void COptionsData::SetOption(EVectorFormats option, const CVectorOpt& value)
{
    if (!InRange(option, eNumVectorFormats))
        return;
    m_vectorOpts[option] = value;
    SetOption(option, CVectorOpt::eEnable, value.GetOption(CVectorOpt::eEnable));
}
const CVectorOpt& COptionsData::GetOption(EVectorFormats option) const
{
    return InRange(option, eNumVectorFormats) ? m_vectorOpts[option] : kNoVector;
}
void COptionsData::SetOption(EVectorFormats option, CVectorOpt::EBools which, bool value)
{
    if (InRange(option, eNumVectorFormats))
        m_vectorOpts[option].SetOption(which, value);
}
bool COptionsData::GetOption(EVectorFormats option, CVectorOpt::EBools which) const
{
    return GetOption(option).GetOption(which);
}
void COptionsData::SetOption(EVectorFormats option, CVectorOpt::EDataTypes which, EQMXTDataType value)
{
    if (InRange(option, eNumVectorFormats))
        m_vectorOpts[option].SetOption(which, value);
}
EQMXTDataType COptionsData::GetOption(EVectorFormats option, CVectorOpt::EDataTypes which) const
{
    return GetOption(option).GetOption(which);
}
void COptionsData::SetOption(EVectorFormats option, CVectorOpt::EUnsignedInts which, uint32_t value)
{
    if (InRange(option, eNumVectorFormats))
        m_vectorOpts[option].SetOption(which, value & kVectors[option].uiAllowed);
}
uint32_t COptionsData::GetOption(EVectorFormats option, CVectorOpt::EUnsignedInts which) const
{
    return GetOption(option).GetOption(which);
}

bool COptionsData::operator==(const COptionsData& other) const
{
    for (int i = 0; i < eNumBools; ++i)
        if (m_bBools[i] != other.m_bBools[i])
            return false;
    for (int i = 0; i < eNumFloats; ++i)
        if (m_fFloats[i] != other.m_fFloats[i])
            return false;
    if (m_eExportFormat != other.m_eExportFormat || m_eCoordSystem != other.m_eCoordSystem ||
        m_eTriSort != other.m_eTriSort || m_ePrimType != other.m_ePrimType)
        return false;
    for (int i = 0; i < eNumStrings; ++i)
        if (m_sStrings[i] != other.m_sStrings[i])
            return false;
    for (int i = 0; i < eNumInts; ++i)
        if (m_uiInts[i] != other.m_uiInts[i])
            return false;
    for (int i = 0; i < eNumVectorFormats; ++i)
        if (m_vectorOpts[i] != other.m_vectorOpts[i])
            return false;
    return true;
}

const SOptionNames& COptionsData::Names(EBools option)
{
    return InRange(option, eNumBools) ? kBools[option].names : kNoNames;
}
const SOptionNames& COptionsData::Names(EFloats option)
{
    return InRange(option, eNumFloats) ? kFloat : kNoNames;
}
const SOptionNames& COptionsData::Names(EExportFormats)
{
    return kExportFormat;
}
const SOptionNames& COptionsData::Names(ECoordSystems)
{
    return kCoordSystem;
}
const SOptionNames& COptionsData::Names(ETriSortMethods)
{
    return kTriSort;
}
const SOptionNames& COptionsData::Names(EPrimTypes)
{
    return kPrimType;
}
const SOptionNames& COptionsData::Names(EStrings option)
{
    return InRange(option, eNumStrings) ? kStrings[option] : kNoNames;
}
const SOptionNames& COptionsData::Names(EInts option)
{
    return InRange(option, eNumInts) ? kInts[option].names : kNoNames;
}
const SOptionNames& COptionsData::Names(EVectorFormats option)
{
    return InRange(option, eNumVectorFormats) ? kVectors[option].names : kNoNames;
}
