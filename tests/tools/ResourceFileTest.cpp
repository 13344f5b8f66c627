// Resource files and the memory file system (whose use by generated sources is tested there): the
// read path, memory fall-back, registration order, copies, growth and the release at exit.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "QMXTMemoryFileSystem.h"
#include "QMXTResourceFile.h"

namespace
{
void WriteFile(const std::string& path, const std::string& bytes)
{
    FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

struct SReadPath
{
    explicit SReadPath(const std::string& path) { CQMXTResourceFile::SetReadPath(path.c_str()); }
    ~SReadPath() { CQMXTResourceFile::SetReadPath(""); }
};
} // namespace

TEST(ResourceFile, DiskFileThroughTheReadPathElseTheMemoryFileOrThePlatformsLoader)
{
    const std::string dir = testing::TempDir();
    WriteFile(dir + "res-disk.bin", "disk bytes");
    SReadPath readPath(dir);
    {
        CQMXTResourceFile f("res-disk.bin");
        EXPECT_FALSE(f.IsMemoryFile());
        EXPECT_EQ(std::string(static_cast<const char*>(f.DataPtr()), f.Size()), "disk bytes");
    }

    // A disk file of size 0 is not open; a memory file of the same (bare) name is used instead.
    WriteFile(dir + "res-empty.bin", "");
    EXPECT_FALSE(CQMXTResourceFile("res-empty.bin").IsOpen());
    static const char memory[] = "memory bytes";
    ASSERT_TRUE(CQMXTMemoryFileSystem::RegisterMemoryFile("res-empty.bin", memory, 12));
    CQMXTResourceFile f("res-empty.bin");
    EXPECT_TRUE(f.IsMemoryFile());
    EXPECT_EQ(f.DataPtr(), memory);

    EXPECT_FALSE(CQMXTResourceFile("res-nowhere.bin").IsOpen());
    std::remove((dir + "res-disk.bin").c_str());
    std::remove((dir + "res-empty.bin").c_str());

    // A platform's own loader replaces the disk read; its release runs when the file goes.
    static int releases = 0;
    static const char custom[] = "custom";
    CQMXTResourceFile::SetLoadReleaseFunctions(
        [](const char*, const void** data, uint32_t* size) -> void*
        {
            *data = custom;
            *size = 6;
            return const_cast<char*>(custom);
        },
        [](void* handle) { releases += handle == custom; });
    EXPECT_EQ(CQMXTResourceFile("res-disk.bin").Size(), 6u);
    EXPECT_EQ(releases, 1);
    CQMXTResourceFile::SetLoadReleaseFunctions(nullptr, nullptr);
}

TEST(MemoryFileSystem, RegistrationLookupAndEnumeration)
{
    const uint32_t before = CQMXTMemoryFileSystem::GetNumFiles();
    static const char first[] = "first", second[] = "second";
    static CQMXTMemoryFileSystem registerFirst("mfs-twice.bin", first, 5);
    CQMXTMemoryFileSystem::RegisterMemoryFile("mfs-twice.bin", second, 6);

    // Copies survive the caller's buffers.
    {
        std::string name = "mfs-copied.bin", data = "copied data";
        ASSERT_TRUE(CQMXTMemoryFileSystem::RegisterMemoryFile(name.c_str(), data.data(), 11, true));
        name[0] = 'X';
        data[0] = 'X';
    }
    const void* data = nullptr;
    uint32_t size = 0;
    ASSERT_TRUE(CQMXTMemoryFileSystem::GetFile("mfs-twice.bin", &data, &size));
    EXPECT_EQ(data, first); // the first registration wins
    ASSERT_TRUE(CQMXTMemoryFileSystem::GetFile("mfs-copied.bin", &data, &size));
    EXPECT_EQ(std::string(static_cast<const char*>(data), size), "copied data");
    EXPECT_FALSE(CQMXTMemoryFileSystem::GetFile("MFS-TWICE.BIN"));

    // Growth past ten records keeps every earlier record, in order.
    for (int i = 0; i < 25; ++i)
        CQMXTMemoryFileSystem::RegisterMemoryFile(("mfs-" + std::to_string(i)).c_str(), first, 5, true);
    ASSERT_EQ(CQMXTMemoryFileSystem::GetNumFiles(), before + 28);
    EXPECT_STREQ(CQMXTMemoryFileSystem::GetFilename(before + 2), "mfs-copied.bin");
    EXPECT_STREQ(CQMXTMemoryFileSystem::GetFilename(before + 27), "mfs-24");
    EXPECT_EQ(CQMXTMemoryFileSystem::GetFilename(before + 28), nullptr);

    // The at-exit release frees the copies and empties the table (the sanitizer checks the frees).
    {
        CQMXTMemoryFileSystem::CAtExit release;
    }
    EXPECT_EQ(CQMXTMemoryFileSystem::GetNumFiles(), 0u);
}
