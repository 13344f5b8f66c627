// The choice tables of the options window, free of widgets: each row holds the string-table index
// of its caption and the option values it stands for.
#pragma once

#include <QString>

#include "OptionsData.h"

// Primitive type: sets both ePrimType and bIndexed.
struct SPrimitiveTypeRow
{
    int iText;
    EPrimType ePrimType;
    bool bIndexed;
};
extern const SPrimitiveTypeRow g_primitiveTypeRows[4];
// The row of these values (every combination has one).
int PrimitiveTypeRowOf(EPrimType primType, bool indexed);

struct STriSortRow
{
    int iText;
    ETriSortMethod eSort;
};
extern const STriSortRow g_triSortRows[4];
// The row of this method, -1 for a value no row stands for.
int TriSortRowOf(ETriSortMethod sort);

// The vertex component types with their captions, in the order of their ids (1..17).
struct SDataTypeRow
{
    int iText;
    EQMXTDataType eType;
};
extern const SDataTypeRow g_dataTypeRows[17];
int DataTypeRowOf(EQMXTDataType type);

// Caption of each vertex attribute row ("Position", ..., "UVW 7").
int VectorFormatText(COptionsData::EVectorFormats format);

// Alignment of the vertex data in bytes (1, 2 or 4): the largest component size among the exported
// attributes; 1 when none is exported. The caption of the "Align vertex data" box follows it.
unsigned VertexDataAlignment(const COptionsData& options);
int AlignmentText(unsigned alignment);

// True for data types of 8 or 16 bits per component, where a position unpack matrix helps.
bool IsSmallIntegerType(EQMXTDataType type);

// The range caption appended to numeric controls: " (min .. max)".
QString RangeCaption(int minimum, int maximum);
