// Export-option profiles through the preferences store, as the command line and the options window
// use them.
#include <gtest/gtest.h>

#include "Log.h"
#include "OptionsProfiles.h"
#include "OptionsTestSupport.h"
#include "TempFiles.h"
#include "QMXPreferences.h"

namespace
{
using O = COptionsData;

class OptionsProfilesTest : public ::testing::Test
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

TEST_F(OptionsProfilesTest, ThreeProfilesRoundTripInOrder)
{
    COptionsProfiles profiles;
    const char* captions[] = {"Phone: small", "GLES 2: skinned: 16 bones", "Strips"};
    for (int i = 0; i < 3; ++i)
    {
        COptionsProfiles::SProfile profile;
        profile.sCaption = captions[i];
        profile.options.SetOption(O::eBoneLimit, 8u * (i + 1));
        profiles.m_profiles.push_back(profile);
    }
    profiles.m_profiles[1].options = NonDefaultOptions();
    profiles.m_profiles[2].options.SetFromString("ePrimType=1\nbIndexed=0\nbUseCustomOptSettings=0\n");
    profiles.m_store.m_sLastExportPath = "/exports";
    ASSERT_TRUE(profiles.Save(prefs, "Options"));

    CQMXPreferences reader("Ostrex");
    CQMXTString errors;
    ASSERT_TRUE(reader.Load(errors));
    CRecordingLogSink log;
    COptionsProfiles loaded;
    EXPECT_EQ(loaded.Load(reader, "Options"), 3);
    EXPECT_TRUE(log.entries.empty());
    ASSERT_EQ(loaded.m_profiles.size(), 3u);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_STREQ(loaded.m_profiles[i].sCaption.c_str(), captions[i]);
        EXPECT_TRUE(loaded.m_profiles[i].options == profiles.m_profiles[i].options) << i;
    }
    EXPECT_EQ(loaded.m_profiles[0].options.GetOption(O::eBoneLimit), 8u);
    EXPECT_EQ(loaded.m_profiles[2].options.GetOption(O::eTriSort), eTriSortStrips);
    EXPECT_STREQ(loaded.m_store.m_sLastExportPath.c_str(), "/exports");
    ASSERT_NE(loaded.Find("Strips"), nullptr);
    EXPECT_EQ(loaded.Find("Strips")->options.GetOption(O::ePrimType), ePrimTriangleStrips);
    EXPECT_EQ(loaded.Find("strips"), nullptr);
}
