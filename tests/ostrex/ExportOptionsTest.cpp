// Export options of a command line: defaults, then profile, configuration file and --set in that
// order, and the output kind from the extension. (Refused settings and files: CliTest.)
#include <gtest/gtest.h>

#include <fstream>

#include "ExportOptions.h"
#include "OptionsProfiles.h"
#include "QMXPreferences.h"
#include "TestSupport.h"

namespace
{
using O = COptionsData;

// A fresh HOME for the preferences file.
class ExportOptionsTest : public ::testing::Test
{
  protected:
    SCommandLine Line(const std::string& output, std::vector<std::string> settings = {})
    {
        SCommandLine cl;
        cl.action = eCommandExport;
        cl.input = "in.gltf";
        cl.output = output;
        cl.settings = std::move(settings);
        return cl;
    }

    CTempHome m_home;
    const std::string m_dir = m_home.Path();
};
} // namespace

TEST_F(ExportOptionsTest, DefaultsAndTheOutputKindFromTheExtension)
{
    COptions options;
    options.SetOption(O::eExportSkin, true); // replaced by the defaults
    ASSERT_TRUE(PrepareExportOptions(Line("out/scene.CPP"), options).ok);
    EXPECT_FALSE(options.GetOption(O::eExportSkin));
    EXPECT_EQ(options.GetOption(O::eExpFormat), eExportFormatSource);
    EXPECT_STREQ(options.m_sPath.c_str(), "out/scene.CPP");
    // Without an extension the options keep their kind.
    ASSERT_TRUE(PrepareExportOptions(Line("scene", {"eExpFormat=1"}), options).ok);
    EXPECT_EQ(options.GetOption(O::eExpFormat), eExportFormatHeader);
    ASSERT_TRUE(PrepareExportOptions(Line("scene.tvo", {"eExpFormat=1"}), options).ok);
    EXPECT_EQ(options.GetOption(O::eExpFormat), eExportFormatBinary);
}

TEST_F(ExportOptionsTest, ProfileThenConfigThenSettingsInOrder)
{
    {
        CQMXPreferences prefs(kOstrexPreferencesName);
        CQMXTString errors;
        ASSERT_TRUE(prefs.Load(errors, false));
        COptionsProfiles profiles;
        COptionsProfiles::SProfile mobile;
        mobile.sCaption = "Mobile";
        mobile.options.SetOption(O::eBoneLimit, 7u);
        mobile.options.SetOption(O::eTangentSpace, true);
        mobile.options.SetOption(O::eExportSkin, true);
        profiles.m_profiles.push_back(mobile);
        ASSERT_TRUE(profiles.Save(prefs, kOstrexProfilesPrefix));
    }
    const std::string config = m_dir + "/base.cfg";
    std::ofstream(config) << "uiBoneLimit=12\nbExportAnimations=1\n";

    SCommandLine cl = Line("scene.tvo", {"uiBoneLimit=20", "exportSkin=0"});
    cl.profile = "Mobile";
    cl.configFile = config;
    COptions options;
    const SOptionsOutcome outcome = PrepareExportOptions(cl, options);
    ASSERT_TRUE(outcome.ok) << outcome.error;
    EXPECT_TRUE(options.GetOption(O::eTangentSpace));     // from the profile
    EXPECT_TRUE(options.GetOption(O::eExportAnimations)); // from the file
    EXPECT_EQ(options.GetOption(O::eBoneLimit), 20u);     // --set last, by key
    EXPECT_FALSE(options.GetOption(O::eExportSkin));      // --set by alias

    cl.profile = "Desktop";
    const SOptionsOutcome unknown = PrepareExportOptions(cl, options);
    EXPECT_FALSE(unknown.ok);
    EXPECT_EQ(unknown.exitCode, eExitUsage);
    EXPECT_EQ(unknown.error, "no profile named 'Desktop' (profiles: 'Mobile')");
}
