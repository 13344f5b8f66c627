// Export options in the preferences store: where each option goes, round trips, and reading values
// that are absent, of the wrong type or out of range.
#include <gtest/gtest.h>

#include <string>

#include "OptionsData.h"
#include "OptionsTestSupport.h"
#include "TempFiles.h"
#include "QMXPreferences.h"

namespace
{
using O = COptionsData;
const char* const kPrefix = "Profiles/[Current]";

class OptionsStore : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        CQMXTString errors;
        ASSERT_TRUE(prefs.Load(errors));
    }
    CTempHome home;
    CQMXPreferences prefs{"Ostrex"};
};
} // namespace

TEST_F(OptionsStore, EveryOptionGoesUnderItsPathWithItsTypeAndReadsBack)
{
    COptionsData options = NonDefaultOptions();
    options.SetOption(O::eTangentSpaceVtxSplit, 0.123456f); // the store keeps what text would round
    ASSERT_TRUE(options.Save(prefs, kPrefix));
    ASSERT_TRUE(prefs.Save());

    CQMXPreferences reader("Ostrex");
    CQMXTString errors;
    ASSERT_TRUE(reader.Load(errors));
    bool flag = true;
    EXPECT_EQ(reader.GetValue("Profiles/[Current]/ExportGeometry", flag), eQMXPrefSuccess);
    EXPECT_FALSE(flag);
    double real = 0;
    EXPECT_EQ(reader.GetValue("Profiles/[Current]/fTangentSpaceVtxSplit", real), eQMXPrefSuccess);
    EXPECT_EQ(real, 0.123456f);
    int value = 0;
    const std::pair<const char*, int> ints[] = {
        {"ExportFormat", 2},     {"CS", 1},
        {"TriangleSort", 2},     {"PrimitiveType", 1},
        {"BoneLimit", 101},      {"PadDataTo", 102},
        {"TSUseUVW", 103},       {"StaticFrame", static_cast<int>(4000000000u)},
        {"UVW7/DataType", 16},   {"Colour/Enable", 0x01},
        {"Normal/Enable", 0x82},
    };
    for (const auto& [path, expected] : ints)
    {
        EXPECT_EQ(reader.GetValue((std::string(kPrefix) + "/" + path).c_str(), value), eQMXPrefSuccess)
            << path;
        EXPECT_EQ(value, expected) << path;
    }
    EXPECT_EQ(reader.GetValue("Profiles/[Current]/Normal/Export", flag), eQMXPrefSuccess);
    EXPECT_FALSE(flag);
    CQMXTString text;
    EXPECT_EQ(reader.GetValue("Profiles/[Current]/MergeSrc", text), eQMXPrefSuccess);
    EXPECT_STREQ(text.c_str(), "value 4 = x");

    // Nothing but the options' own paths: 22 + 1 + 4 + 6 + 4 values and 15 format dicts.
    const std::string file = ReadAll(home.PrefsFile("Ostrex"));
    size_t keys = 0;
    for (size_t at = file.find("<key>"); at != std::string::npos; at = file.find("<key>", at + 1))
        ++keys;
    EXPECT_EQ(keys, 2u + 37u + 15u * 4u);

    COptionsData loaded;
    ASSERT_TRUE(loaded.Load(reader, kPrefix));
    EXPECT_TRUE(loaded == options) << loaded.ToString().c_str();
    // Defaults too (empty strings included) over a set that held other values.
    const COptionsData defaults;
    ASSERT_TRUE(defaults.Save(reader, kPrefix));
    ASSERT_TRUE(loaded.Load(reader, kPrefix));
    EXPECT_TRUE(loaded == defaults) << loaded.ToString().c_str();
}

TEST_F(OptionsStore, AbsentWrongOrInvalidValuesKeepTheCurrentOnes)
{
    const COptionsData current = NonDefaultOptions();
    COptionsData loaded = current;
    ASSERT_TRUE(loaded.Load(prefs, "Nowhere"));
    EXPECT_TRUE(loaded == current);

    ASSERT_EQ(prefs.SetValue("P/BoneLimit", "twelve"), eQMXPrefSuccess);
    ASSERT_EQ(prefs.SetValue("P/ExportGeometry", 1), eQMXPrefSuccess);
    ASSERT_EQ(prefs.SetValue("P/Position/DataType", 0), eQMXPrefSuccess);
    ASSERT_EQ(prefs.SetValue("P/Normal/DataType", 99), eQMXPrefSuccess);
    ASSERT_EQ(prefs.SetValue("P/Colour/Enable", 255), eQMXPrefSuccess);
    ASSERT_EQ(prefs.SetValue("P/Tangent/DataType", 8), eQMXPrefSuccess);
    ASSERT_TRUE(loaded.Load(prefs, "P"));
    // Only valid values are taken; a mask is cut to the allowed components.
    COptionsData expected = current;
    expected.SetOption(O::eVcOptCol, CVectorOpt::eEnable, 0x0Fu);
    expected.SetOption(O::eVcOptTan, CVectorOpt::eDataType, EQMXTDataDEC3N);
    EXPECT_TRUE(loaded == expected) << loaded.ToString().c_str();

    CQMXPreferences notLoaded("Other");
    EXPECT_FALSE(loaded.Load(notLoaded, kPrefix));
    EXPECT_FALSE(current.Save(notLoaded, kPrefix));
}
