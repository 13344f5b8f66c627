// Export options of a command line: defaults, then profile, configuration file and --set in that
// order, the output kind from the extension, usage errors, and the listing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "ExportOptions.h"
#include "OptionsProfiles.h"
#include "QMXPreferences.h"
#include "TestSupport.h"

namespace
{
using O = COptionsData;

// A fresh HOME for the preferences file; the real one is restored and left untouched.
class ExportOptionsTest : public ::testing::Test
{
  protected:
    void SetUp() override { setenv("HOME", m_dir.c_str(), 1); }
    void TearDown() override { setenv("HOME", m_oldHome.c_str(), 1); }

    SCommandLine Line(const std::string& output, std::vector<std::string> settings = {})
    {
        SCommandLine cl;
        cl.action = eCommandExport;
        cl.input = "in.gltf";
        cl.output = output;
        cl.settings = std::move(settings);
        return cl;
    }

    CTempDir m_home;
    const std::string m_dir = m_home.Path();
    const std::string m_oldHome = std::getenv("HOME") ? std::getenv("HOME") : "";
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
    ASSERT_TRUE(PrepareExportOptions(Line("scene.h"), options).ok);
    EXPECT_EQ(options.GetOption(O::eExpFormat), eExportFormatHeader);
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

// Settings that set nothing are usage errors; a config file that cannot be read or holds nothing
// fails naming the file.
TEST_F(ExportOptionsTest, BadSettingsAndConfigFilesAreRefused)
{
    COptions options;
    for (const char* bad : {"bNoSuchOption=1", "sVcOptPos.eType=99", "fTangentSpaceVtxSplit=nan", "bMerge="})
    {
        const SOptionsOutcome outcome = PrepareExportOptions(Line("a.tvo", {"uiBoneLimit=3", bad}), options);
        EXPECT_FALSE(outcome.ok) << bad;
        EXPECT_EQ(outcome.exitCode, eExitUsage) << bad;
        EXPECT_EQ(outcome.error.rfind("--set " + std::string(bad) + " sets nothing", 0), 0u) << outcome.error;
    }
    SCommandLine cl = Line("a.tvo");
    cl.configFile = m_dir + "/missing.cfg";
    SOptionsOutcome outcome = PrepareExportOptions(cl, options);
    EXPECT_EQ(outcome.exitCode, eExitFailure);
    EXPECT_EQ(outcome.subject, cl.configFile);
    EXPECT_EQ(outcome.error, "cannot open: No such file or directory");
    cl.configFile = m_dir + "/notes.txt";
    std::ofstream(cl.configFile) << "nothing to see\n";
    outcome = PrepareExportOptions(cl, options);
    EXPECT_EQ(outcome.exitCode, eExitFailure);
    EXPECT_EQ(outcome.error, "holds no export options");
}

TEST_F(ExportOptionsTest, ListingShowsEveryOptionWithItsCaption)
{
    COptions options;
    ASSERT_TRUE(PrepareExportOptions(Line("a.h", {"uiBoneLimit=5"}), options).ok);
    const std::string list = ListExportOptions(options);
    const std::string text = options.ToString().c_str();
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), std::count(text.begin(), text.end(), '\n'));
    EXPECT_NE(list.find("uiBoneLimit=5                       Matrix palette size\n"), std::string::npos);
    EXPECT_NE(list.find("psVcOptUVW[3].eType=1               UVW 3: data type\n"), std::string::npos);
}
