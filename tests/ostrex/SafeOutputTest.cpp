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
    static void WriteText(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

    CTempDir m_work;
    const std::string m_dir = m_work.Path();
};
} // namespace

TEST_F(SafeOutputTest, CommitReplacesTheTargetAndKeepsTheBaseName)
{
    const std::string target = m_dir + "/scene.h";
    WriteText(target, "old");
    {
        CSafeOutput out(target);
        std::string error;
        ASSERT_TRUE(out.Begin(error)) << error;
        EXPECT_NE(out.TempPath(), target);
        EXPECT_EQ(out.TempPath().substr(out.TempPath().rfind('/')), "/scene.h");
        WriteText(out.TempPath(), "new");
        EXPECT_EQ(ReadAll(target), "old"); // untouched until the commit
        ASSERT_TRUE(out.Commit(error)) << error;
    }
    EXPECT_EQ(ReadAll(target), "new");
    EXPECT_EQ(m_work.Entries(), std::vector<std::string>{"scene.h"});
}

TEST_F(SafeOutputTest, AbandonedWriteLeavesTheTargetAndNoDebris)
{
    const std::string target = m_dir + "/scene.tvo";
    WriteText(target, "old");
    {
        CSafeOutput out(target);
        std::string error;
        ASSERT_TRUE(out.Begin(error)) << error;
        WriteText(out.TempPath(), "half");
    }
    EXPECT_EQ(ReadAll(target), "old");
    EXPECT_EQ(m_work.Entries(), std::vector<std::string>{"scene.tvo"});
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

    CSafeOutput unwritten(m_dir + "/scene.tvo"); // the writer never wrote
    ASSERT_TRUE(unwritten.Begin(error)) << error;
    EXPECT_FALSE(unwritten.Commit(error));
    EXPECT_NE(error.find("nothing was written"), std::string::npos) << error;
}

TEST_F(SafeOutputTest, WriteFileSafelyWritesAllBytes)
{
    const std::string path = m_dir + "/tex.bin";
    const std::string bytes("a\0b\xff", 4);
    std::string error;
    ASSERT_TRUE(WriteFileSafely(path, bytes.data(), bytes.size(), error)) << error;
    EXPECT_EQ(ReadAll(path), bytes);
    EXPECT_FALSE(WriteFileSafely(m_dir + "/missing/tex.bin", bytes.data(), bytes.size(), error));
    EXPECT_EQ(m_work.Entries(), std::vector<std::string>{"tex.bin"});
}
