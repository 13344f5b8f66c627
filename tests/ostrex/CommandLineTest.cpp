// Parsing of the ostrex command line: values, repeated options, batches, usage errors, output kinds.
// (That input, output, --config, --animation and -v reach the export: CliTest.)
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "CommandLine.h"

namespace
{
SCommandLine Parse(std::vector<const char*> args)
{
    args.insert(args.begin(), "ostrex");
    return ParseCommandLine(static_cast<int>(args.size()), args.data());
}
} // namespace

TEST(CommandLine, ExportBatchHelpAndListingLinesKeepEveryValueInOrder)
{
    SCommandLine cl =
        Parse({"scene.gltf", "out/scene.tvo", "--config", "base.h", "--set", "bExportSkin=1", "--select",
               "Arm", "--set=sScriptFile=a=b", "--profile", "Mobile", "--select=Leg", "--fps", "24",
               "--animation", "Walk", "--verbose", "--threads=3"});
    ASSERT_EQ(cl.action, eCommandExport) << cl.error;
    EXPECT_EQ(cl.settings, (std::vector<std::string>{"bExportSkin=1", "sScriptFile=a=b"}));
    EXPECT_EQ(cl.selection, (std::vector<std::string>{"Arm", "Leg"}));
    EXPECT_EQ(cl.profile, "Mobile");
    EXPECT_EQ(cl.fps, 24);
    EXPECT_EQ(cl.threads, 3);

    cl = Parse({"-q", "--", "-odd name.obj", "--out.tvo"});
    ASSERT_EQ(cl.action, eCommandExport) << cl.error;
    EXPECT_EQ(cl.input, "-odd name.obj");
    EXPECT_EQ(cl.output, "--out.tvo");
    EXPECT_EQ(cl.verbosity, eVerbosityQuiet);

    cl = Parse({"--out-dir", "out", "-j", "3", "--format=h", "a.gltf", "b c.obj"});
    ASSERT_EQ(cl.action, eCommandBatch) << cl.error;
    EXPECT_EQ(cl.inputs, (std::vector<std::string>{"a.gltf", "b c.obj"}));
    EXPECT_EQ(cl.jobs, 3);
    EXPECT_EQ(cl.format, "h");

    EXPECT_EQ(Parse({"in.obj", "-h", "--fps", "3"}).action, eCommandHelp); // help wins
    cl = Parse({"--list-options", "--config", "x.tvo", "--set", "bMerge=1"});
    EXPECT_EQ(cl.action, eCommandListOptions) << cl.error;
    EXPECT_EQ(cl.configFile, "x.tvo");
}

TEST(CommandLine, UsageErrorsNameTheReason)
{
    std::vector<std::pair<std::vector<const char*>, std::string>> rows = {
        {{}, "missing INPUT and OUTPUT"},
        {{"in.obj"}, "missing OUTPUT"},
        {{"a", "b", "extra"}, "unexpected argument 'extra'"},
        {{"a", "b", "--frobnicate"}, "unknown option '--frobnicate'"},
        {{"a", "b", "--fps"}, "--fps needs a value"},
        {{"a", "b", "--config="}, "non-empty value"},
        {{"a", "b", "--quiet=1"}, "takes no value"},
        {{"a", "b", "-q", "-v"}, "exclude each other"},
        {{"a", "b", "--config", "a", "--config", "b"}, "more than once"},
        {{"", "b"}, "must not be empty"},
        {{"--list-options", "in.obj"}, "takes no INPUT"},
        {{"--list-options", "--fps", "10"}, "only combines"},
        {{"a", "b", "--set", "bMerge"}, "KEY=VALUE"},
        {{"a", "b", "--set", "=1"}, "KEY=VALUE"},
        {{"--out-dir", "o"}, "--out-dir needs at least one SCENE"},
        {{"--out-dir", "o", "-j", "0", "a"}, "-j needs a whole number from 1 to 256, not '0'"},
        {{"--out-dir", "o", "--format", "obj", "a"}, "--format needs tvo, h or cpp, not 'obj'"},
        {{"--out-dir", "o", "--depfile", "d", "a"},
         "--depfile, --report-json and --view name one export; they do not combine with --out-dir"},
        {{"a", "b", "-j", "2"}, "-j and --format only apply with --out-dir"},
    };
    for (const char* bad : {"0", "2.5", "24fps", "1001", "99999999999"})
        rows.push_back({{"a", "b", "--fps", bad}, "--fps needs a whole number"});
    for (const char* bad : {"0", "257", "two"})
        rows.push_back({{"a", "b", "--threads", bad}, "--threads needs a whole number from 1 to 256"});
    for (const auto& [args, reason] : rows)
    {
        const SCommandLine cl = Parse(args);
        EXPECT_EQ(cl.action, eCommandUsageError) << reason;
        EXPECT_NE(cl.error.find(reason), std::string::npos) << "error was: " << cl.error;
    }
    EXPECT_EQ(Parse({"a", "b", "--fps=1000"}).fps, 1000);
    EXPECT_EQ(Parse({"a", "b", "--fps", "1"}).fps, 1);
}

TEST(CommandLine, SettingsSplitAtTheFirstEqualsAndTheOutputKindFollowsTheExtension)
{
    std::string key, value;
    ASSERT_TRUE(SplitSetting("sClPostArgs=-a=b", key, value));
    EXPECT_EQ(key, "sClPostArgs");
    EXPECT_EQ(value, "-a=b");
    ASSERT_TRUE(SplitSetting("bMerge=", key, value)); // an empty value is the options text's business
    EXPECT_EQ(value, "");
    // Lower-cased; a dot in the first place is no extension.
    const std::pair<const char*, int> rows[] = {
        {"scene.cpp", 2}, {"dir/SCENE.CPP", 2}, {"scene.h", 1}, {"scene.H", 1},
        {"scene.tvo", 0}, {"scene.hpp", 0},     {"scene", -1},  {".h", -1}};
    for (const auto& [path, kind] : rows)
        EXPECT_EQ(OutputFormatForPath(path), kind) << path;
}
