// Safe output: the target changes only on commit, no debris is left, and unusable targets and
// unwritten files are refused.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "SafeOutput.h"
#include "TestSupport.h"

TEST(SafeOutput, TheTargetChangesOnlyOnCommitAndUnusableTargetsAreRefused)
{
    const CTempDir dir;
    const std::string target = dir / "scene.h";
    std::ofstream(target) << "old";
    std::string error;
    {
        CSafeOutput abandoned(target);
        ASSERT_TRUE(abandoned.Begin(error)) << error;
        std::ofstream(abandoned.TempPath()) << "half";
    }
    EXPECT_EQ(ReadAll(target), "old");
    {
        CSafeOutput out(target);
        ASSERT_TRUE(out.Begin(error)) << error;
        EXPECT_NE(out.TempPath(), target);
        EXPECT_EQ(out.TempPath().substr(out.TempPath().rfind('/')), "/scene.h"); // tools see the base name
        std::ofstream(out.TempPath()) << "new";
        EXPECT_EQ(ReadAll(target), "old");
        ASSERT_TRUE(out.Commit(error)) << error;
    }
    EXPECT_EQ(ReadAll(target), "new");
    const std::string bytes("a\0b\xff", 4);
    ASSERT_TRUE(WriteFileSafely(dir / "tex.bin", bytes.data(), bytes.size(), error)) << error;
    EXPECT_EQ(ReadAll(dir / "tex.bin"), bytes);
    EXPECT_FALSE(WriteFileSafely(dir / "missing/tex.bin", "x", 1, error));
    EXPECT_EQ(dir.Entries(), (std::vector<std::string>{"scene.h", "tex.bin"}));

    const std::pair<std::string, const char*> refused[] = {
        {dir / "no/such/dir/scene.tvo", "cannot write in"}, {dir.Path(), "is a directory"}, {dir / "", ""}};
    for (const auto& [path, reason] : refused)
    {
        CSafeOutput out(path);
        EXPECT_FALSE(out.Begin(error)) << path;
        EXPECT_NE(error.find(reason), std::string::npos) << error;
    }
    CSafeOutput unwritten(dir / "scene.tvo"); // the writer never wrote
    ASSERT_TRUE(unwritten.Begin(error)) << error;
    EXPECT_FALSE(unwritten.Commit(error));
    EXPECT_NE(error.find("nothing was written"), std::string::npos) << error;
}
