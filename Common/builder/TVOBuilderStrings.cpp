#include "TVOBuilderStrings.h"

#include "QMXTStringTable.h"

namespace
{
// Every text of every language, one after the other; the offsets below index into it.
const char g_szBlock[] =
    "Bone batch generation failed.\0"
    "Bone batch generation failed due to the creation of too many vertices.\0"
    "A maximum of four bones may be used per vertex.\0"
    "Failed to write output file\0"
    "Error: Failed to open '%s' in '%s'.\0"
    "Error: Unable to perform post-export options.\0"
    "Tangent-space generation failed.\0"
    "Tangent-space generation failed due to too many split vertices.\0"
    "Instancing mesh\0"
    "Processing mesh %i\0"
    "Export stage 1\0"
    "Export stage 2\0"
    "Export stage 3\0"
    "Complete\0"
    "Final export stage\0"
    "Saving\0"
    "Opening '%s' in '%s'.\0"
    "Warning: '%s' has been split up into %i meshes as it uses multiple materials.\0"
    "Warning: Tangent-space generation skipped due to no UVW data in mapping channel %i.\0"
    "Warning: Ignoring skinning information as some/all vertices do not have data.";

const char* const g_pszLanguageNames[CTVOBuilderStrings::eNumLanguages] = {"British English"};

CQMXTStringTable<CTVOBuilderStrings::eNumStrings, CTVOBuilderStrings::eNumLanguages> g_table(
    g_szBlock, sizeof g_szBlock, g_pszLanguageNames);
} // namespace

void CTVOBuilderStrings::Initialise(ELanguages language)
{
    g_table.Initialise(language);
}

void CTVOBuilderStrings::SetLanguage(ELanguages language)
{
    g_table.SetLanguage(language);
}

const char* CTVOBuilderStrings::LangNameAsCStrText(ELanguages language)
{
    return g_table.LanguageName(language);
}

const char* CTVOBuilderStrings::CStrText(int n)
{
    if (!g_table.IsInitialised())
        Initialise(eLangBritishEnglish);
    return g_table.Text(n);
}
