// Several stores on one file: reload on change, merging saves, and two processes hammering the file.
#include <gtest/gtest.h>

#include <filesystem>

#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "TempFiles.h"
#include "QMXPreferences.h"
#include "QMXPreferencesUnix.h"

namespace
{
class PrefsSharing : public ::testing::Test
{
  protected:
    static void LoadOrFail(CQMXPreferences& prefs, bool track)
    {
        CQMXTString errors;
        ASSERT_TRUE(prefs.Load(errors, track)) << errors.c_str();
    }

    static int IntAt(CQMXPreferences& prefs, const char* key)
    {
        int value = -1;
        prefs.GetValue(key, value, -1);
        return value;
    }

    CTempHome home;
};
} // namespace

TEST_F(PrefsSharing, TrackingReloadsWhatAnotherWriterSaved)
{
    CQMXPreferences writer("Shared"), tracking("Shared"), fixed("Shared");
    LoadOrFail(writer, true);
    LoadOrFail(tracking, true);
    LoadOrFail(fixed, false);
    ASSERT_EQ(writer.SetValue("X", 1), 0);
    ASSERT_TRUE(writer.Save());
    EXPECT_EQ(IntAt(tracking, "X"), 1);
    EXPECT_EQ(IntAt(fixed, "X"), -1); // without tracking the first read stays

    // Several saves within one second are all seen.
    for (int i = 2; i < 6; ++i)
    {
        ASSERT_EQ(writer.SetValue("X", i), 0);
        ASSERT_TRUE(writer.Save());
        EXPECT_EQ(IntAt(tracking, "X"), i);
    }

    // A deleted file comes back as the template on the next access.
    ASSERT_EQ(std::remove(home.PrefsFile("Shared").c_str()), 0);
    EXPECT_EQ(IntAt(tracking, "X"), -1);
    EXPECT_TRUE(std::filesystem::exists(home.PrefsFile("Shared")));
}

TEST_F(PrefsSharing, PendingChangesAreNotReloadedAwayAndSavesMerge)
{
    CQMXPreferences a("Shared"), b("Shared");
    LoadOrFail(a, true);
    LoadOrFail(b, true);
    ASSERT_EQ(a.SetValue("Profiles/Custom/0:one/BoneLimit", 9), 0);
    ASSERT_EQ(a.SetValue("Old", 1), 0);
    ASSERT_TRUE(a.Save());

    ASSERT_EQ(b.SetValue("B", 2), 0); // b is dirty now
    ASSERT_EQ(a.SetValue("A", 1), 0);
    ASSERT_EQ(a.ClearKey("Profiles/Custom"), 0);
    ASSERT_EQ(a.ClearKey("Old"), 0);
    ASSERT_TRUE(a.Save());
    EXPECT_EQ(IntAt(b, "A"), -1); // b keeps its own view until it saves
    ASSERT_TRUE(b.Save());        // ... and then merges: A stays, the cleared keys stay gone

    CQMXPreferences check("Shared");
    LoadOrFail(check, false);
    EXPECT_EQ(IntAt(check, "A"), 1);
    EXPECT_EQ(IntAt(check, "B"), 2);
    EXPECT_FALSE(check.KeyExists("Profiles/Custom"));
    EXPECT_FALSE(check.KeyExists("Old"));
    EXPECT_EQ(IntAt(b, "A"), 1);
}

namespace
{
// One writer process: each round sets its counter, saves, and reads its own and the other's counter
// through change tracking. Returns the number of faults seen.
int RunWriter(int id, int rounds)
{
    const std::string own = "Writer" + std::to_string(id) + "/Counter";
    const std::string other = "Writer" + std::to_string(1 - id) + "/Counter";
    // Without the flush to disk, which only guards against power loss and is slow on a busy disk.
    CQMXPreferences prefs("Stress", ePreferenceUser, std::make_unique<CQMXPreferencesUnix>(false));
    CQMXTString errors;
    if (!prefs.Load(errors, true))
        return 1;
    int faults = 0, lastSeen = -1;
    for (int i = 0; i < rounds; ++i)
    {
        int value = -1;
        faults += prefs.SetValue(own.c_str(), i) != 0 || !prefs.Save() ||
                  prefs.GetValue(own.c_str(), value) != 0 || value != i;
        const int result = prefs.GetValue(other.c_str(), value, -1);
        // Unreadable, the other writer's counter going backwards, or a reload that met a damaged file.
        faults += (result != 0 && result != eQMXPrefNoValue) || value < lastSeen ||
                  !prefs.GetLastLoadMessages().empty();
        lastSeen = value;
    }
    return faults;
}
} // namespace

TEST_F(PrefsSharing, TwoProcessesWritingAndReadingTheSameFile)
{
    const int rounds = 500;
    {
        CQMXPreferences create("Stress");
        LoadOrFail(create, false);
    }
    pid_t children[2];
    for (int id = 0; id < 2; ++id)
    {
        children[id] = fork();
        ASSERT_GE(children[id], 0);
        if (children[id] == 0)
        {
            const int faults = RunWriter(id, rounds);
            if (faults)
                std::fprintf(stderr, "writer %d: %d faults\n", id, faults);
            _exit(faults ? 1 : 0);
        }
    }
    for (pid_t child : children)
    {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status)) << "writer crashed";
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    CQMXPreferences check("Stress");
    LoadOrFail(check, false);
    EXPECT_EQ(IntAt(check, "Writer0/Counter"), rounds - 1);
    EXPECT_EQ(IntAt(check, "Writer1/Counter"), rounds - 1);
    EXPECT_EQ(SortedEntries(home.Path() + "/.qmxconfig/Corvell"),
              std::vector<std::string>{"com.veldra.Stress.plist"});
}
