#include "OptionsTables.h"

#include "OstrexStrings.h"

using S = COstrexStrings;

const SPrimitiveTypeRow g_primitiveTypeRows[4] = {
    {S::eStrTriangleList, ePrimTriangleList, false},
    {S::eStrIndexedTriangleList, ePrimTriangleList, true},
    {S::eStrTriangleStrips, ePrimTriangleStrips, false},
    {S::eStrIndexedTriangleStrips, ePrimTriangleStrips, true},
};

const STriSortRow g_triSortRows[4] = {
    {S::eStrNone, eTriSortNone},
    {S::eStrGeometrySort, eTriSortGeometrySort},
    {S::eStrD3DX, eTriSortD3DX},
    {S::eStrTriStrip, eTriSortStrips},
};

const SDataTypeRow g_dataTypeRows[17] = {
    {S::eStrFloat, EQMXTDataFloat},
    {S::eStrInt, EQMXTDataInt},
    {S::eStrUnsignedShort, EQMXTDataUnsignedShort},
    {S::eStrRGBA, EQMXTDataRGBA},
    {S::eStrARGB, EQMXTDataARGB},
    {S::eStrD3DCOLOR, EQMXTDataD3DCOLOR},
    {S::eStrUBYTE4, EQMXTDataUBYTE4},
    {S::eStrDEC3N, EQMXTDataDEC3N},
    {S::eStrFixed16_16, EQMXTDataFixed16_16},
    {S::eStrUnsignedByte, EQMXTDataUnsignedByte},
    {S::eStrShort, EQMXTDataShort},
    {S::eStrShortNorm, EQMXTDataShortNorm},
    {S::eStrByte, EQMXTDataByte},
    {S::eStrByteNorm, EQMXTDataByteNorm},
    {S::eStrUnsignedByteNorm, EQMXTDataUnsignedByteNorm},
    {S::eStrUnsignedShortNorm, EQMXTDataUnsignedShortNorm},
    {S::eStrUnsignedInt, EQMXTDataUnsignedInt},
};

int PrimitiveTypeRowOf(EPrimType primType, bool indexed)
{
    return (primType == ePrimTriangleStrips ? 2 : 0) + (indexed ? 1 : 0);
}

int TriSortRowOf(ETriSortMethod sort)
{
    for (int i = 0; i < 4; ++i)
        if (g_triSortRows[i].eSort == sort)
            return i;
    return -1;
}

int DataTypeRowOf(EQMXTDataType type)
{
    for (int i = 0; i < 17; ++i)
        if (g_dataTypeRows[i].eType == type)
            return i;
    return -1;
}

int VectorFormatText(COptionsData::EVectorFormats format)
{
    static const int texts[COptionsData::eNumVectorFormats] = {
        S::eStrPosition, S::eStrNormal, S::eStrTangent, S::eStrBinormal, S::eStrColour,
        S::eStrBoneIndices, S::eStrBoneWeights, S::eStrUVW0, S::eStrUVW1, S::eStrUVW2,
        S::eStrUVW3, S::eStrUVW4, S::eStrUVW5, S::eStrUVW6, S::eStrUVW7};
    return format >= 0 && format < COptionsData::eNumVectorFormats ? texts[format] : -1;
}

unsigned VertexDataAlignment(const COptionsData& options)
{
    unsigned alignment = 1;
    for (int i = 0; i < COptionsData::eNumVectorFormats; ++i)
    {
        const CVectorOpt& format = options.GetOption(static_cast<COptionsData::EVectorFormats>(i));
        if (!format.GetOption(CVectorOpt::eExport))
            continue;
        const unsigned size = QMXTModelTVODataTypeSize(format.GetOption(CVectorOpt::eDataType));
        if (size > alignment)
            alignment = size;
    }
    return alignment > 4 ? 4 : alignment;
}

int AlignmentText(unsigned alignment)
{
    if (alignment >= 4)
        return S::eStrAlignData32;
    return alignment == 2 ? S::eStrAlignData16 : S::eStrAlignData8;
}

bool IsSmallIntegerType(EQMXTDataType type)
{
    switch (type)
    {
    case EQMXTDataUnsignedShort:
    case EQMXTDataUnsignedByte:
    case EQMXTDataShort:
    case EQMXTDataShortNorm:
    case EQMXTDataByte:
    case EQMXTDataByteNorm:
    case EQMXTDataUnsignedByteNorm:
    case EQMXTDataUnsignedShortNorm:
        return true;
    default:
        return false;
    }
}

QString RangeCaption(int minimum, int maximum)
{
    return QString::asprintf(" (%i .. %i)", minimum, maximum);
}
