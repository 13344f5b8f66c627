// The builder's message table: texts no export test brings out, and the answer to a bad index. (The
// other texts are checked as logged by the export, scene-generation and post-export tests.)
#include <gtest/gtest.h>

#include "TVOBuilderStrings.h"

TEST(BuilderStrings, TextsByIndexAndNothingOutOfRange)
{
    // First use, before any explicit Initialise, already answers in British English.
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eBoneBatchTooManyVertices),
                 "Bone batch generation failed due to the creation of too many vertices.");
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eTangentSpaceFailed),
                 "Tangent-space generation failed.");
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eNumStrings), "");
    EXPECT_STREQ(CTVOBuilderStrings::CStrText(-1), "");
    EXPECT_STREQ(CTVOBuilderStrings::LangNameAsCStrText(CTVOBuilderStrings::eLangBritishEnglish),
                 "British English");
}
