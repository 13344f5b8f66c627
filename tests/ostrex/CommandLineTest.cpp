// Parsing of the ostrex command line: values, repeated options, usage errors, output kinds.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "CommandLine.h"

namespace
{
SCommandLine Parse(std::initializer_list<const char*> args)
{
    std::vector<const char*> argv = {"ostrex"};
    argv.insert(argv.end(), args.begin(), args.end());
    return ParseCommandLine(static_cast<int>(argv.size()), argv.data());
}

void ExpectUsageError(std::initializer_list<const char*> args, const std::string& fragment)
{
    const SCommandLine cl = Parse(args);
    EXPECT_EQ(cl.action, eCommandUsageError) << fragment;
    EXPECT_NE(cl.error.find(fragment), std::string::npos) << "error was: " << cl.error;
}
} // namespace

TEST(CommandLine, FullExportLineKeepsEveryValueInOrder)
{
    const SCommandLine cl =
        Parse({"scene.gltf", "out/scene.tvo", "--config", "base.h", "--set", "bExportSkin=1", "--select",
               "Arm", "--set=sScriptFile=a=b", "--profile", "Mobile", "--select=Leg", "--fps", "24",
               "--animation", "Walk", "--verbose"});
    ASSERT_EQ(cl.action, eCommandExport) << cl.error;
    EXPECT_EQ(cl.input, "scene.gltf");
    EXPECT_EQ(cl.output, "out/scene.tvo");
    EXPECT_EQ(cl.configFile, "base.h");
    EXPECT_EQ(cl.settings, (std::vector<std::string>{"bExportSkin=1", "sScriptFile=a=b"}));
    EXPECT_EQ(cl.selection, (std::vector<std::string>{"Arm", "Leg"}));
    EXPECT_EQ(cl.profile, "Mobile");
    EXPECT_EQ(cl.fps, 24);
    EXPECT_EQ(cl.animation, "Walk");
    EXPECT_EQ(cl.verbosity, eVerbosityVerbose);
}

TEST(CommandLine, DefaultsAndPositionalsAfterDoubleDash)
{
    const SCommandLine cl = Parse({"--", "-odd name.obj", "--out.tvo"});
    ASSERT_EQ(cl.action, eCommandExport) << cl.error;
    EXPECT_EQ(cl.input, "-odd name.obj");
    EXPECT_EQ(cl.output, "--out.tvo");
    EXPECT_EQ(cl.fps, 0);
    EXPECT_TRUE(cl.animation.empty());
    EXPECT_TRUE(cl.settings.empty());
    EXPECT_EQ(cl.verbosity, eVerbosityNormal);
    EXPECT_EQ(Parse({"a", "b", "-q"}).verbosity, eVerbosityQuiet);
}

TEST(CommandLine, HelpWinsOverEverythingElse)
{
    EXPECT_EQ(Parse({"--help"}).action, eCommandHelp);
    EXPECT_EQ(Parse({"in.obj", "-h", "--fps", "3"}).action, eCommandHelp);
    const std::string help = CommandLineHelp();
    for (const char* option :
         {"--config", "--set", "--profile", "--select", "--fps", "--animation", "--quiet", "--verbose",
          "--list-options", "--help", ".cpp", ".h", "Exit status"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

TEST(CommandLine, ListOptionsTakesOnlyOptionSources)
{
    const SCommandLine cl = Parse({"--list-options", "--config", "x.tvo", "--set", "bMerge=1"});
    EXPECT_EQ(cl.action, eCommandListOptions) << cl.error;
    EXPECT_EQ(cl.configFile, "x.tvo");
    ExpectUsageError({"--list-options", "in.obj"}, "takes no INPUT");
    ExpectUsageError({"--list-options", "--fps", "10"}, "only combines");
}

TEST(CommandLine, UsageErrors)
{
    ExpectUsageError({}, "missing INPUT and OUTPUT");
    ExpectUsageError({"in.obj"}, "missing OUTPUT");
    ExpectUsageError({"in.obj", "out.tvo", "extra"}, "unexpected argument 'extra'");
    ExpectUsageError({"in.obj", "out.tvo", "--frobnicate"}, "unknown option '--frobnicate'");
    ExpectUsageError({"in.obj", "out.tvo", "-x"}, "unknown option '-x'");
    ExpectUsageError({"in.obj", "out.tvo", "--fps"}, "--fps needs a value");
    ExpectUsageError({"in.obj", "out.tvo", "--config="}, "non-empty value");
    ExpectUsageError({"in.obj", "out.tvo", "--quiet=1"}, "takes no value");
    ExpectUsageError({"in.obj", "out.tvo", "-q", "-v"}, "exclude each other");
    ExpectUsageError({"in.obj", "out.tvo", "--config", "a", "--config", "b"}, "more than once");
    ExpectUsageError({"in.obj", "out.tvo", "--animation", "a", "--animation", "b"}, "more than once");
    ExpectUsageError({"", "out.tvo"}, "must not be empty");
}

TEST(CommandLine, FpsMustBeAWholeNumberInRange)
{
    for (const char* bad : {"0", "-5", "2.5", "abc", "24fps", "1001", "99999999999"})
        ExpectUsageError({"in.obj", "out.tvo", "--fps", bad}, "--fps needs a whole number");
    EXPECT_EQ(Parse({"in.obj", "out.tvo", "--fps", "1"}).fps, 1);
    EXPECT_EQ(Parse({"in.obj", "out.tvo", "--fps=1000"}).fps, 1000);
    for (const char* bad : {"0", "-1", "257", "two"})
        ExpectUsageError({"in.obj", "out.tvo", "--threads", bad}, "--threads needs a whole number from 1 to 256");
    EXPECT_EQ(Parse({"in.obj", "out.tvo", "--threads=3"}).threads, 3);
}

TEST(CommandLine, SetNeedsKeyEqualsValue)
{
    ExpectUsageError({"in.obj", "out.tvo", "--set", "bMerge"}, "KEY=VALUE");
    ExpectUsageError({"in.obj", "out.tvo", "--set", "=1"}, "KEY=VALUE");
    std::string key, value;
    ASSERT_TRUE(SplitSetting("sClPostArgs=-a=b", key, value));
    EXPECT_EQ(key, "sClPostArgs");
    EXPECT_EQ(value, "-a=b");
    ASSERT_TRUE(SplitSetting("bMerge=", key, value)); // an empty value is the options text's business
    EXPECT_EQ(value, "");
}

TEST(CommandLine, OutputKindFollowsTheLowerCasedExtension)
{
    // A dot in the first place is no extension.
    const std::pair<const char*, int> rows[] = {
        {"scene.cpp", 2}, {"dir/SCENE.CPP", 2}, {"scene.h", 1}, {"scene.H", 1},
        {"scene.tvo", 0}, {"scene.hpp", 0},     {"scene", -1},  {".h", -1}};
    for (const auto& [path, kind] : rows)
        EXPECT_EQ(OutputFormatForPath(path), kind) << path;
}
