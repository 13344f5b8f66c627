// Profile storage on its own: the list layout, built-in entries, captions with ":" and "/", and
// listed profiles whose values are missing.
#include <gtest/gtest.h>

#include <memory>

#include "TempFiles.h"
#include "ProfileStore.h"
#include "QMXPreferences.h"

namespace
{
// A stand-in for the export options: one number under prefix + "/Value".
class CNumber : public CQMXPrefsStorable
{
  public:
    explicit CNumber(int value = 0) : m_iValue(value) {}
    bool Save(CQMXPreferences& prefs, const char* prefix) const override
    {
        return prefs.SetValue((std::string(prefix) + "/Value").c_str(), m_iValue) == eQMXPrefSuccess;
    }
    bool Load(CQMXPreferences& prefs, const char* prefix) override
    {
        return prefs.GetValue((std::string(prefix) + "/Value").c_str(), m_iValue, m_iValue) !=
               eQMXPrefCriticalError;
    }
    int m_iValue;
};

struct SLoaded
{
    std::vector<std::string> captions;
    std::vector<std::unique_ptr<CNumber>> numbers;
    std::vector<std::string> messages;
};

class ProfileStore : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        CQMXTString errors;
        ASSERT_TRUE(prefs.Load(errors));
    }

    int LoadInto(SLoaded& loaded, CProfileStore& store)
    {
        return store.Load(
            prefs, "Options",
            [&](const CQMXTString& caption) -> CQMXPrefsStorable*
            {
                loaded.captions.push_back(caption.c_str());
                loaded.numbers.push_back(std::make_unique<CNumber>(-1));
                return loaded.numbers.back().get();
            },
            [&](const CQMXTString& message) { loaded.messages.push_back(message.c_str()); });
    }

    CTempHome home;
    CQMXPreferences prefs{"Ostrex"};
};
} // namespace

TEST_F(ProfileStore, ListEntriesSubtreesAndProfilesInOrder)
{
    const CNumber current(1), defaults(2), first(10), second(20), third(30);
    CProfileStore store;
    store.m_sLastImportPath = "/home/u/in";
    ASSERT_TRUE(store.Save(prefs, "Options",
                           {{"[Current]", &current, true},
                            {"Mobile: low", &first, false},
                            {"Default Settings", &defaults, true},
                            {"a:b:c", &second, false},
                            {"GLES/2", &third, false}}));
    EXPECT_FALSE(prefs.IsDirty()); // saved by the store

    // Subtrees are named number:caption ("/" in a caption nests a level); the list keeps captions;
    // built-in entries are not stored.
    for (const char* entry : {"0:Mobile: low", "1:a:b:c", "2:GLES"})
        EXPECT_TRUE(prefs.KeyExists((std::string("Options/Custom/") + entry).c_str())) << entry;
    std::vector<CQMXTString> listed;
    ASSERT_EQ(prefs.GetValue("Options/Custom/List", listed), eQMXPrefSuccess);
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_STREQ(listed[2].c_str(), "2:GLES/2");
    const std::string file = ReadAll(home.PrefsFile("Ostrex"));
    EXPECT_EQ(file.find("Current"), std::string::npos);
    EXPECT_EQ(file.find("Default Settings"), std::string::npos);

    CProfileStore reloaded;
    reloaded.m_sLastExportPath = "/kept";
    SLoaded loaded;
    EXPECT_EQ(LoadInto(loaded, reloaded), 3);
    EXPECT_EQ(loaded.captions, (std::vector<std::string>{"Mobile: low", "a:b:c", "GLES/2"}));
    ASSERT_EQ(loaded.numbers.size(), 3u);
    EXPECT_EQ(loaded.numbers[0]->m_iValue, 10);
    EXPECT_EQ(loaded.numbers[1]->m_iValue, 20);
    EXPECT_EQ(loaded.numbers[2]->m_iValue, 30);
    EXPECT_TRUE(loaded.messages.empty());
    EXPECT_STREQ(reloaded.m_sLastImportPath.c_str(), "/home/u/in");
    EXPECT_STREQ(reloaded.m_sLastExportPath.c_str(), ""); // stored empty, so read back empty

    // Saving a shorter list removes the subtrees of the profiles that went.
    ASSERT_TRUE(store.Save(prefs, "Options", {{"only", &second}}));
    EXPECT_FALSE(prefs.KeyExists("Options/Custom/1:a:b:c"));
    EXPECT_TRUE(prefs.KeyExists("Options/Custom/0:only/Value"));
}

TEST_F(ProfileStore, ListedProfilesWithoutValuesAreSkippedWithAMessage)
{
    ASSERT_EQ(prefs.SetValue("Options/Custom/List",
                             std::vector<const char*>{"0:Ghost", "1:Real", "NoNumber", "3:Gone: too"}),
              0);
    ASSERT_EQ(prefs.SetValue("Options/Custom/1:Real/Value", 5), 0);
    ASSERT_EQ(prefs.SetValue("Options/Custom/NoNumber/Value", 6), 0);
    CProfileStore store;
    SLoaded loaded;
    EXPECT_EQ(LoadInto(loaded, store), 2);
    EXPECT_EQ(loaded.captions, (std::vector<std::string>{"Real", "NoNumber"}));
    EXPECT_EQ(loaded.messages,
              (std::vector<std::string>{"Failed to load profile Ghost. Entry does not exist",
                                        "Failed to load profile Gone: too. Entry does not exist"}));

    // No list at all: nothing, and no message.
    CProfileStore other;
    EXPECT_EQ(other.Load(prefs, "Elsewhere", nullptr, nullptr), 0);
}
