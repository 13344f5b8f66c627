// The check that refuses option sets which cannot produce a file: each row is an options text and
// the start of the one line the check gives ("" when the set is accepted, at the edges of each rule).
#include <gtest/gtest.h>

#include "Options.h"
#include "OptionsRules.h"

TEST(OptionsRules, ImpossibleSetsAreRefusedNamingTheOptionAndEdgesPass)
{
    const std::pair<const char*, std::string> rows[] = {
        {"", ""},
        {"sVcOptPos.bExport=0\n", "sVcOptPos.bExport=0: meshes cannot be written without positions"},
        {"bExportGeometry=0\nsVcOptPos.bExport=0\n", ""},
        {"sVcOptPos.nEnable=0\n", "sVcOptPos.nEnable=0 selects no component"},
        {"sVcOptNor.nEnable=128\n", "sVcOptNor.nEnable=128 selects no component"},
        {"sVcOptNor.nEnable=8\n", ""},
        {"bAlignData=1\nuiPadDataTo=9\n", "uiPadDataTo=9 is no alignment"},
        {"bAlignData=1\nuiPadDataTo=12\n", "uiPadDataTo=12 is no alignment"},
        {"bAlignData=1\nuiPadDataTo=0\n", "uiPadDataTo=0 is no alignment"},
        {"bAlignData=1\nuiPadDataTo=512\n", "uiPadDataTo=512 is no alignment"},
        {"bAlignData=1\nuiPadDataTo=256\n", ""},
        {"bAlignData=1\nuiPadDataTo=1\n", ""},
        {"bAlignData=1\nbInterleaved=0\nuiPadDataTo=12\n", ""},
        {"cS=3\n", "cS=3 is no choice"},
        {"cS=2\n", ""},
        {"bTangentSpace=1\nuiTSUseUVW=8\n", "uiTSUseUVW=8 names no mapping channel"},
        {"bTangentSpace=1\nuiTSUseUVW=7\n", ""},
    };
    for (const auto& [text, reason] : rows)
    {
        COptions options;
        options.SetFromString(text);
        std::string error;
        EXPECT_EQ(CheckExportOptions(options, error), reason.empty()) << text;
        EXPECT_EQ(error.substr(0, reason.size()), reason) << text;
        if (reason.empty())
        {
            EXPECT_EQ(error, "") << text;
        }
    }
}
