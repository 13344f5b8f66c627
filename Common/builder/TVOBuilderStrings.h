// The builder's message texts, looked up by index in a per-language table.
//
// All texts of all languages live in one read-only block of consecutive NUL-terminated strings with a
// table of offsets into it (entry eNumStrings x language + index). The pointer table is built on
// first use; British English is the only language.
#pragma once

class CTVOBuilderStrings
{
  public:
    enum ELanguages
    {
        eLangBritishEnglish = 0,
        eNumLanguages
    };

    enum EStringVals
    {
        eBoneBatchFailed = 0,
        eBoneBatchTooManyVertices,
        eMaxFourBones,
        eFailedToWriteOutput,
        eFailedToOpenIn,
        eUnablePostExport,
        eTangentSpaceFailed,
        eTangentSpaceTooManySplits,
        eInstancingMesh,
        eProcessingMesh,
        eExportStage1,
        eExportStage2,
        eExportStage3,
        eComplete,
        eFinalExportStage,
        eSaving,
        eOpeningIn,
        eSplitIntoMeshes,
        eTangentSpaceNoUVW,
        eIgnoringSkin,
        eNumStrings
    };

    // Text of index n in the current language; builds the lookup table on first use. An index out
    // of range yields the empty string.
    static const char* CStrText(int n);
    static void Initialise(ELanguages language);
    static void SetLanguage(ELanguages language);
    static const char* LangNameAsCStrText(ELanguages language);
};
