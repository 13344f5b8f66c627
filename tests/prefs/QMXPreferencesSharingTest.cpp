// Several stores on one file: reload on change and merging saves.
#include <gtest/gtest.h>

#include <filesystem>

#include <cstdio>
#include <string>

#include "TempFiles.h"
#include "QMXPreferences.h"

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
