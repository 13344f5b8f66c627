// The builder's message table: every text by its index, as the log shows it.
#include <gtest/gtest.h>

#include <string>

#include "TVOBuilderStrings.h"

TEST(BuilderStrings, EveryIndexGivesItsEnglishText)
{
    const char* const expected[] = {
        "Bone batch generation failed.",
        "Bone batch generation failed due to the creation of too many vertices.",
        "A maximum of four bones may be used per vertex.",
        "Failed to write output file",
        "Error: Failed to open '%s' in '%s'.",
        "Error: Unable to perform post-export options.",
        "Tangent-space generation failed.",
        "Tangent-space generation failed due to too many split vertices.",
        "Instancing mesh",
        "Processing mesh %i",
        "Export stage 1",
        "Export stage 2",
        "Export stage 3",
        "Complete",
        "Final export stage",
        "Saving",
        "Opening '%s' in '%s'.",
        "Warning: '%s' has been split up into %i meshes as it uses multiple materials.",
        "Warning: Tangent-space generation skipped due to no UVW data in mapping channel %i.",
        "Warning: Ignoring skinning information as some/all vertices do not have data.",
    };
    static_assert(sizeof expected / sizeof expected[0] == CTVOBuilderStrings::eNumStrings, "twenty texts");
    // First use, before any explicit Initialise, already answers in British English.
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eComplete), "Complete");
    for (int i = 0; i < CTVOBuilderStrings::eNumStrings; ++i)
        EXPECT_STREQ(CTVOBuilderStrings::CStrText(i), expected[i]) << i;
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(20), "");
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(-1), "");
    EXPECT_STREQ(CTVOBuilderStrings::LangNameAsCStrText(CTVOBuilderStrings::eLangBritishEnglish),
                 "British English");
}
