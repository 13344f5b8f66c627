// The preferences file itself: where it is made and from what template, how damaged files are
// recovered and reported, and how failing writes leave the old file alone.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "TempFiles.h"
#include "QMXPreferences.h"

namespace
{
const char* const kTemplate = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                              "<plist version=\"1.0\">\n"
                              "<dict/>\n"
                              "</plist>\n";
const char* const kDeclaration =
    "WARNING: No declaration found at the start. The declaration will be recreated.\n";
const char* const kNoPlist = "WARNING: No root <plist> tag found. Tag will be recreated.\n";
const char* const kNoDict = "WARNING: No <dict> tag found. Tag will be recreated.\n";

class PrefsFile : public ::testing::Test
{
  protected:
    // Writes text as the file of set "Test" and loads it; returns the load's messages.
    std::string LoadText(const std::string& text, bool expectLoaded = true)
    {
        mkdir((home.Path() + "/.qmxconfig").c_str(), 0775);
        mkdir((home.Path() + "/.qmxconfig/Corvell").c_str(), 0775);
        WriteAll(path, text);
        CQMXTString errors;
        EXPECT_EQ(prefs.Load(errors), expectLoaded);
        return errors.c_str();
    }
    // A warning as the store reports it: the file's path, a newline, the warning.
    std::string Warning(const char* text) const { return path + "\n" + text; }

    CTempHome home;
    std::string path = home.PrefsFile("Test");
    CQMXPreferences prefs{"Test"};
};
} // namespace

TEST_F(PrefsFile, MissingFileIsMadeFromTheTemplate)
{
    const mode_t old = umask(0);
    CQMXTString errors;
    EXPECT_TRUE(prefs.Load(errors));
    umask(old);
    EXPECT_STREQ(errors.c_str(), "");
    EXPECT_STREQ(prefs.GetFilePath().c_str(), path.c_str());
    EXPECT_EQ(ReadAll(path), kTemplate);
    struct stat st;
    ASSERT_EQ(stat((home.Path() + "/.qmxconfig").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0775u);
    ASSERT_EQ(stat((home.Path() + "/.qmxconfig/Corvell").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0775u);
    EXPECT_FALSE(prefs.IsDirty());
}

TEST_F(PrefsFile, MissingSkeletonPartsAreRecreatedWithWarnings)
{
    EXPECT_EQ(LoadText("<plist version=\"1.0\"><dict><key>A</key><integer>1</integer></dict></plist>"),
              Warning(kDeclaration));
    EXPECT_FALSE(prefs.IsDirty()); // recreation alone changes nothing on disk
    int value = 0;
    EXPECT_EQ(prefs.GetValue("A", value), 0);
    EXPECT_EQ(value, 1);
    prefs.Save(true);
    EXPECT_EQ(ReadAll(path).rfind("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<plist version=\"1.0\">", 0),
              0u);

    EXPECT_EQ(LoadText("<?xml version=\"1.0\"?>\n<other/>"), Warning(kNoPlist) + Warning(kNoDict));
    EXPECT_EQ(prefs.SetValue("B", 2), 0);
    EXPECT_EQ(LoadText("<?xml version=\"1.0\"?>\n<plist version=\"1.0\"><array/></plist>"), Warning(kNoDict));
    EXPECT_FALSE(prefs.KeyExists("B")); // the reload dropped the unsaved value
}

TEST_F(PrefsFile, UnparsableFilesLoseTheirValuesButLoad)
{
    // Binary junk, a truncated document, hostile nesting and an oversized file all end as an empty
    // skeleton with the three warnings; the file on disk stays as it was until something is saved.
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<dict a=\"/>\"><!-- </dict> -->"; // no closing tag that counts
    std::string truncated =
        "<?xml version=\"1.0\"?>\n<plist version=\"1.0\"><dict><key>Kept</key><integer>1</inte";
    std::string huge = "<?xml version=\"1.0\"?><plist><dict><key>A</key><string>" +
                       std::string(17u << 20, 'x') + "</string></dict></plist>";
    const std::string junk("\x01\xff<\x00\x89PNG\r\n<<>>&&", 16);
    for (const std::string& text : {junk, truncated, deep, huge, std::string()})
    {
        const std::string messages = LoadText(text);
        EXPECT_EQ(messages.rfind(Warning(kDeclaration) + Warning(kNoPlist) + Warning(kNoDict), 0), 0u)
            << messages.substr(0, 300);
        EXPECT_FALSE(prefs.KeyExists("Kept"));
        EXPECT_FALSE(prefs.IsDirty());
        EXPECT_EQ(ReadAll(path).size(), text.size());
    }
    ASSERT_EQ(prefs.SetValue("New", 1), 0);
    ASSERT_TRUE(prefs.Save());
    CQMXPreferences reader("Test");
    CQMXTString errors;
    ASSERT_TRUE(reader.Load(errors));
    EXPECT_STREQ(errors.c_str(), "");
    EXPECT_TRUE(reader.KeyExists("New"));
}

TEST_F(PrefsFile, BrokenPairsAreReportedWithTheirLines)
{
    const std::string messages =
        LoadText("<?xml version=\"1.0\"?>\n"
                 "<plist version=\"1.0\">\n"
                 "<dict>\n"
                 "<integer>1</integer>\n"                // line 4: no key
                 "<key>Good</key><integer>2</integer>\n" // line 5
                 "<key>Lonely</key>\n"                   // line 6: key after key
                 "<key>List</key><array>\n"              // line 7
                 "<key>Inner</key>\n"                    // line 8: key in an array
                 "<dict><string>x</string></dict>\n"     // line 9: no key in a nested dict
                 "</array>\n"
                 "<key>Last</key>\n" // a key with no value at all
                 "</dict>\n"
                 "</plist>\n");
    EXPECT_EQ(messages, "ERROR: Missing <key> tag on line: 4\n"
                        "ERROR: Key missing value on line: 6\n"
                        "ERROR: Array elements cannot contain a <key> tag! Line: 8\n"
                        "ERROR: Missing <key> tag on line: 9\n"
                        "ERROR: Key missing value!");
    // The pairs that are whole can still be read.
    int value = 0;
    EXPECT_EQ(prefs.GetValue("Good", value), 0);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(prefs.GetValue("Lonely", value, 0), eQMXPrefNoValue);
}

TEST_F(PrefsFile, DamagedContentIsSavedInAFormThatReadsBack)
{
    // Each of these once made TinyXML write a file that it then read differently, losing values:
    // a declaration with markup in its version, bytes that are not UTF-8 (a lead byte swallowing
    // the closing quote), and a key with mixed content, which the writer re-indents.
    const std::string files[] = {
        "<?xml version=\"<?x ?>\"?><plist><dict><key>Kept</key><integer>1</integer></dict></plist>",
        "<?xml version=\"1.0\"?><plist v=\"\xc7\xc7\"><dict><key>Kept</key><integer>1</integer>"
        "<key>Latin</key><string>caf\xe9</string></dict></plist>",
        "<?xml version=\"1.0\"?><plist><dict>junk<key>Kept<x/>tail</key><integer>1</integer>"
        "<key>Fuzz<!-- c --></key></dict></plist>",
    };
    for (const std::string& text : files)
    {
        LoadText(text);
        int value = 0;
        EXPECT_EQ(prefs.GetValue("Kept", value), eQMXPrefSuccess) << text;
        ASSERT_EQ(prefs.SetValue("Fuzz/Value", 2), eQMXPrefSuccess) << text;
        ASSERT_TRUE(prefs.Save());
        CQMXPreferences reader("Test");
        CQMXTString errors;
        ASSERT_TRUE(reader.Load(errors));
        EXPECT_STREQ(errors.c_str(), "") << ReadAll(path);
        EXPECT_EQ(reader.GetValue("Kept", value), eQMXPrefSuccess);
        EXPECT_EQ(reader.GetValue("Fuzz/Value", value), eQMXPrefSuccess);
        EXPECT_EQ(value, 2);
    }
    // The stray Latin-1 byte was read as the character it stands for.
    CQMXTString latin;
    LoadText(files[1]);
    EXPECT_EQ(prefs.GetValue("Latin", latin), eQMXPrefSuccess);
    EXPECT_STREQ(latin.c_str(), "caf\xc3\xa9");
}

TEST_F(PrefsFile, NoUsableHomeGivesMessagesAndCodes)
{
    // HOME naming a regular file: nothing can be created below it, even for root.
    WriteAll(home.Path() + "/plain", "x");
    setenv("HOME", (home.Path() + "/plain").c_str(), 1);
    CQMXTString errors("before. ");
    EXPECT_FALSE(prefs.Load(errors));
    EXPECT_STREQ(errors.c_str(), "before. ERROR: Failed to open filed, or write temporary file!");
    int value = 0;
    EXPECT_EQ(prefs.GetValue("A", value, 9), eQMXPrefCriticalError);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(prefs.SetValue("A", 1), eQMXPrefCriticalError);
    EXPECT_FALSE(prefs.Save(true));

    unsetenv("HOME");
    CQMXPreferences noHome("Test");
    errors.clear();
    EXPECT_FALSE(noHome.Load(errors));
    EXPECT_STREQ(errors.c_str(), "ERROR: Failed to open filed, or write temporary file!");
    EXPECT_STREQ(noHome.GetFilePath().c_str(), "");
    EXPECT_STREQ(CQMXPreferences("../escape").GetFilePath().c_str(), ""); // a name that is no file name
}

TEST_F(PrefsFile, AFailedWriteKeepsTheOldFile)
{
    CQMXTString errors;
    ASSERT_TRUE(prefs.Load(errors));
    ASSERT_EQ(prefs.SetValue("Small", 1), 0);
    ASSERT_TRUE(prefs.Save());
    const std::string before = ReadAll(path);

    // A child process whose files may not grow past 4 KiB stands in for a full disk.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit limit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        CQMXPreferences writer("Test");
        CQMXTString childErrors;
        const bool loaded = writer.Load(childErrors);
        writer.SetValue("Big", std::string(64 * 1024, 'b').c_str());
        const bool saved = writer.Save();
        _exit(loaded && !saved && writer.IsDirty() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the save did not report the failure";
    EXPECT_EQ(ReadAll(path), before);
    EXPECT_EQ(SortedEntries(home.Path() + "/.qmxconfig/Corvell"),
              std::vector<std::string>{"com.veldra.Test.plist"});
}
