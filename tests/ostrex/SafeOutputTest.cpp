// Safe output: the target changes only on commit, and nothing is left behind otherwise.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "SafeOutput.h"
#include "TestSupport.h"

namespace
{
class SafeOutputTest : public ::testing::Test
{
  protected:
    CTempDir m_work;
    const std::string m_dir = m_work.Path();
};
} // namespace

TEST_F(SafeOutputTest, TheTargetChangesOnlyOnCommitAndNoDebrisIsLeft)
{
    const std::string target = m_dir + "/scene.h";
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
    ASSERT_TRUE(WriteFileSafely(m_dir + "/tex.bin", bytes.data(), bytes.size(), error)) << error;
    EXPECT_EQ(ReadAll(m_dir + "/tex.bin"), bytes);
    EXPECT_EQ(m_work.Entries(), (std::vector<std::string>{"scene.h", "tex.bin"}));
}

TEST_F(SafeOutputTest, UnusableTargetsAndUnwrittenFilesAreRefusedWithAReason)
{
    std::string error;
    CSafeOutput missingDir(m_dir + "/no/such/dir/scene.tvo");
    EXPECT_FALSE(missingDir.Begin(error));
    EXPECT_NE(error.find("cannot write in"), std::string::npos) << error;
    CSafeOutput directory(m_dir);
    EXPECT_FALSE(directory.Begin(error));
    EXPECT_NE(error.find("is a directory"), std::string::npos) << error;
    CSafeOutput noName(m_dir + "/");
    EXPECT_FALSE(noName.Begin(error));
    EXPECT_FALSE(WriteFileSafely(m_dir + "/missing/tex.bin", "x", 1, error));

    CSafeOutput unwritten(m_dir + "/scene.tvo"); // the writer never wrote
    ASSERT_TRUE(unwritten.Begin(error)) << error;
    EXPECT_FALSE(unwritten.Commit(error));
    EXPECT_NE(error.find("nothing was written"), std::string::npos) << error;
}
