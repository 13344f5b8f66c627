// Values through the store: key paths, result codes, defaults, the types the exporter keeps, string
// lists, binary data, key removal, and what each leaves in the written XML.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <tinyxml.h>

#include "TempFiles.h"
#include "QMXPreferences.h"

namespace
{
class PrefsValues : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        CQMXTString errors;
        ASSERT_TRUE(prefs.Load(errors)) << errors.c_str();
        ASSERT_STREQ(errors.c_str(), "");
    }

    // Saves, then parses the written file and returns the top-level dict.
    TiXmlElement* SavedRoot()
    {
        EXPECT_TRUE(prefs.Save());
        xml.Clear();
        EXPECT_TRUE(xml.LoadFile(home.PrefsFile("Test").c_str()));
        TiXmlElement* plist = xml.FirstChildElement("plist");
        return plist ? plist->FirstChildElement("dict") : nullptr;
    }

    CTempHome home;
    CQMXPreferences prefs{"Test"};
    TiXmlDocument xml;
};

std::string Text(const TiXmlElement* element)
{
    return element && element->GetText() ? element->GetText() : "";
}

// The value element after <key>name</key> in dict, or null.
const TiXmlElement* ValueAt(const TiXmlElement* dict, const char* name)
{
    for (const TiXmlElement* key = dict ? dict->FirstChildElement("key") : nullptr; key;
         key = key->NextSiblingElement("key"))
        if (Text(key) == name)
            return key->NextSiblingElement();
    return nullptr;
}

// The value at key, which must be there with that type.
template <typename T> T Get(CQMXPreferences& prefs, const char* key)
{
    T value{};
    EXPECT_EQ(prefs.GetValue(key, value), eQMXPrefSuccess) << key;
    return value;
}
} // namespace

TEST_F(PrefsValues, PathsIgnoreOuterSlashesAndEmptyComponents)
{
    ASSERT_EQ(prefs.SetValue("/Profiles/[Current]/BoneLimit/", 9), eQMXPrefSuccess);
    EXPECT_EQ(Get<int>(prefs, "Profiles/[Current]/BoneLimit"), 9);
    EXPECT_EQ(Get<int>(prefs, "Profiles//[Current]/BoneLimit"), 9);

    // Profiles/[Current]/BoneLimit is the key BoneLimit in the dict under [Current] under Profiles.
    const TiXmlElement* root = SavedRoot();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(Text(ValueAt(ValueAt(ValueAt(root, "Profiles"), "[Current]"), "BoneLimit")), "9");
    EXPECT_EQ(root->FirstChildElement()->NextSiblingElement()->NextSiblingElement(), nullptr); // one pair
}

TEST_F(PrefsValues, ResultCodesAndDefaults)
{
    int value = 0;
    EXPECT_EQ(prefs.GetValue("Missing", value, 42), eQMXPrefNoValue);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(prefs.GetValue("", value, 7), eQMXPrefEmptyKey);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(prefs.GetValue("//", value, 8), eQMXPrefEmptyKey);
    EXPECT_EQ(prefs.SetValue("/", 1), eQMXPrefEmptyKey);
    EXPECT_FALSE(prefs.IsDirty());

    // An int stored as a string: incorrect type, and the default is delivered.
    ASSERT_EQ(prefs.SetValue("Number", "12"), eQMXPrefSuccess);
    EXPECT_EQ(prefs.GetValue("Number", value, -5), eQMXPrefIncorrectType);
    EXPECT_EQ(value, -5);
    // A path that runs through a value which is not a dict.
    EXPECT_EQ(prefs.GetValue("Number/Deeper", value, 3), eQMXPrefIncorrectType);
    EXPECT_EQ(prefs.SetValue("Number/Deeper", 3), eQMXPrefIncorrectType);
}

TEST_F(PrefsValues, UnparsableOrEmptyElementsInTheFile)
{
    prefs.Save(true);
    WriteAll(home.PrefsFile("Test"),
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
             "<key>Empty</key><integer></integer>"
             "<key>Trailing</key><integer>12abc</integer>"
             "<key>Huge</key><integer>99999999999</integer>"
             "<key>Spaced</key><integer> -17 </integer>"
             "<key>Real</key><real>1e400</real>"
             "<key>EmptyString</key><string/>"
             "<key>Wrong</key><string>text</string>"
             "</dict></plist>");
    CQMXTString errors;
    ASSERT_TRUE(prefs.Load(errors));
    int value = 0;
    EXPECT_EQ(prefs.GetValue("Empty", value, 1), eQMXPrefNoValue);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(prefs.GetValue("Trailing", value, 2), eQMXPrefIncorrectType);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(prefs.GetValue("Huge", value, 3), eQMXPrefIncorrectType);
    EXPECT_EQ(Get<int>(prefs, "Spaced"), -17);
    double real = 0;
    EXPECT_EQ(prefs.GetValue("Real", real, 0.5), eQMXPrefIncorrectType);
    EXPECT_EQ(real, 0.5);
    CQMXTString text("x");
    EXPECT_EQ(prefs.GetValue("EmptyString", text, "default"), eQMXPrefSuccess);
    EXPECT_STREQ(text.c_str(), "");
    bool flag = true;
    EXPECT_EQ(prefs.GetValue("Wrong", flag, false), eQMXPrefIncorrectType);
    EXPECT_FALSE(flag);
}

TEST_F(PrefsValues, ScalarsStringListsAndDataRoundTripThroughTheFile)
{
    ASSERT_EQ(prefs.SetValue("Int/Min", INT_MIN), 0);
    ASSERT_EQ(prefs.SetValue("Int/Max", INT_MAX), 0);
    ASSERT_EQ(prefs.SetValue("Real/Tenth", 0.1), 0);
    ASSERT_EQ(prefs.SetValue("Real/Tiny", 1e-300), 0);
    ASSERT_EQ(prefs.SetValue("Text/Markup", "<a href=\"x\">&amp;'</a>"), 0);
    ASSERT_EQ(prefs.SetValue("Text/Spaces", CQMXTString("  two  spaces\n\tand lines  ")), 0);
    ASSERT_EQ(prefs.SetValue("Text/Empty", ""), 0);
    ASSERT_EQ(prefs.SetValue("Bool/On", true), 0);
    ASSERT_EQ(prefs.SetValue("Names", std::vector<const char*>{"0:a", "1:b:c", ""}), 0);
    ASSERT_EQ(prefs.SetValue("Word", "Man", 3), 0);
    unsigned char all[256];
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<unsigned char>(i);
    ASSERT_EQ(prefs.SetValue("All", all, sizeof all), 0);
    TiXmlElement* root = SavedRoot();
    ASSERT_NE(root, nullptr);

    CQMXPreferences reader("Test");
    CQMXTString errors;
    ASSERT_TRUE(reader.Load(errors));
    EXPECT_EQ(Get<int>(reader, "Int/Min"), INT_MIN);
    EXPECT_EQ(Get<int>(reader, "Int/Max"), INT_MAX);
    EXPECT_EQ(Get<double>(reader, "Real/Tenth"), 0.1);
    EXPECT_EQ(Get<double>(reader, "Real/Tiny"), 1e-300);
    EXPECT_STREQ(Get<CQMXTString>(reader, "Text/Markup").c_str(), "<a href=\"x\">&amp;'</a>");
    EXPECT_STREQ(Get<CQMXTString>(reader, "Text/Spaces").c_str(), "  two  spaces\n\tand lines  ");
    EXPECT_STREQ(Get<CQMXTString>(reader, "Text/Empty").c_str(), "");
    EXPECT_TRUE(Get<bool>(reader, "Bool/On"));
    const auto names = Get<std::vector<CQMXTString>>(reader, "Names");
    ASSERT_EQ(names.size(), 3u);
    EXPECT_STREQ(names[1].c_str(), "1:b:c");
    EXPECT_STREQ(names[2].c_str(), "");
    uint8_t* data = nullptr;
    uint32_t length = 0;
    ASSERT_EQ(reader.GetValue("All", data, length), 0);
    ASSERT_EQ(length, 256u);
    EXPECT_EQ(0, std::memcmp(data, all, 256));
    std::free(data);

    // Reals in their shortest exact form, data as base64.
    EXPECT_EQ(Text(ValueAt(ValueAt(root, "Real"), "Tenth")), "0.1");
    EXPECT_STREQ(ValueAt(ValueAt(root, "Text"), "Empty")->Value(), "string");
    EXPECT_EQ(Text(ValueAt(ValueAt(root, "Int"), "Min")), "-2147483648");
    EXPECT_EQ(Text(ValueAt(root, "Word")), "TWFu");

    // A list of another element type, or no list at all: incorrect type and an empty result.
    std::vector<int> ints{1};
    EXPECT_EQ(reader.GetValue("Names", ints), eQMXPrefIncorrectType);
    EXPECT_TRUE(ints.empty());
    EXPECT_EQ(reader.GetValue("Int/Min", ints), eQMXPrefIncorrectType);
    ASSERT_EQ(reader.SetValue("Nothing", "", 0), 0);
    EXPECT_EQ(reader.GetValue("Nothing", data, length), eQMXPrefNoValue);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(reader.GetValue("Word/Below", data, length), eQMXPrefIncorrectType);
}

TEST_F(PrefsValues, SettingAnotherValueReplacesTheElement)
{
    // Text, then an integer, then true, then false on one key: each element replaces the last.
    ASSERT_EQ(prefs.SetValue("Value", "text"), 0);
    ASSERT_EQ(prefs.SetValue("Value", 5), 0);
    EXPECT_EQ(Get<int>(prefs, "Value"), 5);
    for (bool flag : {true, false})
    {
        ASSERT_EQ(prefs.SetValue("Value", flag), 0);
        TiXmlElement* root = SavedRoot();
        ASSERT_NE(root, nullptr);
        const TiXmlElement* element = root->FirstChildElement("key")->NextSiblingElement();
        EXPECT_STREQ(element->Value(), flag ? "true" : "false");
        EXPECT_EQ(element->FirstChild(), nullptr);         // the old text "5" is gone
        EXPECT_EQ(element->NextSiblingElement(), nullptr); // replaced, not added
        EXPECT_EQ(Get<bool>(prefs, "Value"), flag);
    }
}

TEST_F(PrefsValues, KeysExistAndClear)
{
    ASSERT_EQ(prefs.SetValue("P/Custom/0:a/X", 1), 0);
    ASSERT_EQ(prefs.SetValue("P/Custom/1:b/X", 2), 0);
    ASSERT_EQ(prefs.SetValue("P/Other", 3), 0);
    EXPECT_TRUE(prefs.KeyExists("P/Custom/0:a"));
    EXPECT_TRUE(prefs.KeyExists("/P/Custom/1:b/X/"));
    EXPECT_FALSE(prefs.KeyExists("P/Custom/2:c"));

    EXPECT_EQ(prefs.ClearKey("P/Custom/"), 0);
    EXPECT_FALSE(prefs.KeyExists("P/Custom/0:a/X"));
    EXPECT_EQ(prefs.ClearKey("P/Custom"), eQMXPrefNoValue);
    EXPECT_EQ(prefs.ClearKey(""), eQMXPrefEmptyKey);
    EXPECT_EQ(Get<int>(prefs, "P/Other"), 3);

    TiXmlElement* root = SavedRoot();
    ASSERT_NE(root, nullptr);
    const TiXmlElement* p = root->FirstChildElement("dict");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(Text(p->FirstChildElement("key")), "Other");
    EXPECT_EQ(p->FirstChildElement("dict"), nullptr);
}

TEST_F(PrefsValues, SavingOnlyWhenNeededAndThroughANewFile)
{
    const std::string path = home.PrefsFile("Test");
    const std::string before = ReadAll(path);
    struct stat st1, st2;
    ASSERT_EQ(stat(path.c_str(), &st1), 0);
    int value = 0;
    prefs.GetValue("Anything", value, 1);
    EXPECT_TRUE(prefs.Save());
    ASSERT_EQ(stat(path.c_str(), &st2), 0);
    EXPECT_EQ(st1.st_ino, st2.st_ino); // nothing changed: not rewritten
    EXPECT_EQ(ReadAll(path), before);

    EXPECT_TRUE(prefs.Save(true)); // forced: rewritten through a new file
    ASSERT_EQ(stat(path.c_str(), &st2), 0);
    EXPECT_NE(st1.st_ino, st2.st_ino);

    ASSERT_EQ(prefs.SetValue("Key", 1), 0);
    EXPECT_TRUE(prefs.Save());
    EXPECT_FALSE(prefs.IsDirty());
    EXPECT_NE(ReadAll(path).find("<key>Key</key>"), std::string::npos);
    // Only the preferences file is left in the directory: no temporary files.
    EXPECT_EQ(SortedEntries(home.Path() + "/.qmxconfig/Corvell"),
              std::vector<std::string>{"com.veldra.Test.plist"});
}
