// Whole configuration files: WriteConfig, and ReadConfig for headers, plain text, property lists.
#include <gtest/gtest.h>

#include <string>

#include "Options.h"
#include "OptionsTestSupport.h"
#include "TempFiles.h"

namespace
{
using O = COptionsData;

class OptionsConfig : public ::testing::Test
{
  protected:
    std::string PathOf(const std::string& name) const { return home.Path() + "/" + name; }
    // A generated header around the options text, as the exporter writes it.
    static std::string Header(const std::string& options, bool closed, const char* lineEnd = "\n")
    {
        std::string text = "/*\n\tExpOpt{\n" + options + (closed ? "\t}ExpOpt\n" : "") +
                           "\n\tHistory{\nExported by test\n\t}History\n*/\n"
                           "// This file was created by Bintuck 1.1\n"
                           "A32BIT _scene_tvo[] = {\n0x1,\n};\n";
        std::string converted;
        for (char c : text)
            converted += c == '\n' ? std::string(lineEnd) : std::string(1, c);
        return converted;
    }
    CTempHome home;
};
} // namespace

TEST_F(OptionsConfig, WrittenConfigurationsReadBack)
{
    COptions options;
    options = NonDefaultOptions();
    const std::string path = PathOf("export.cfg");
    ASSERT_EQ(options.WriteConfig(path.c_str()), 1);
    EXPECT_EQ(ReadAll(path), options.ToString().c_str());
    EXPECT_EQ(SortedEntries(home.Path()), std::vector<std::string>{"export.cfg"});

    COptions read;
    EXPECT_EQ(read.ReadConfig(path.c_str()), kOptionLines);
    EXPECT_TRUE(static_cast<const COptionsData&>(read) == options);

    EXPECT_EQ(options.WriteConfig(nullptr), 0);
    EXPECT_EQ(options.WriteConfig(""), 0);
    EXPECT_EQ(options.WriteConfig(PathOf("missing/dir/export.cfg").c_str()), 0);
    EXPECT_EQ(SortedEntries(home.Path()), std::vector<std::string>{"export.cfg"});
}

TEST_F(OptionsConfig, HeaderBlockIsReadOnlyWhenClosed)
{
    const COptionsData source = NonDefaultOptions();
    const std::string text = source.ToString().c_str();
    for (const char* lineEnd : {"\n", "\r\n"})
    {
        WriteAll(PathOf("scene.h"), Header(text, true, lineEnd));
        COptions read;
        EXPECT_EQ(read.ReadConfig(PathOf("scene.h").c_str()), kOptionLines);
        EXPECT_TRUE(static_cast<const COptionsData&>(read) == source);
    }
    // The extension is compared without case.
    WriteAll(PathOf("SCENE.H"), Header("bMerge=1\n", true));
    COptions upper;
    EXPECT_EQ(upper.ReadConfig(PathOf("SCENE.H").c_str()), 1);
    EXPECT_TRUE(upper.GetOption(O::eMerge));

    // Without "\t}ExpOpt\n" nothing is set.
    WriteAll(PathOf("open.h"), Header(text, false));
    COptions unclosed;
    const COptions defaults;
    EXPECT_EQ(unclosed.ReadConfig(PathOf("open.h").c_str()), 0);
    EXPECT_TRUE(unclosed == defaults);
    // A header without the block, and a marker that is not a whole line, set nothing either.
    WriteAll(PathOf("plain.h"), "int x;\n  \tExpOpt{\nbMerge=1\n\t}ExpOpt\n");
    EXPECT_EQ(unclosed.ReadConfig(PathOf("plain.h").c_str()), 0);
}

TEST_F(OptionsConfig, OtherExtensions)
{
    WriteAll(PathOf("settings.plist"), "bMerge=1\n");
    COptions options;
    EXPECT_EQ(options.ReadConfig(PathOf("settings.plist").c_str()), 0);
    EXPECT_FALSE(options.GetOption(O::eMerge));

    WriteAll(PathOf("noextension"), "bMerge=1\n");
    EXPECT_EQ(options.ReadConfig(PathOf("noextension").c_str()), 0);

    WriteAll(PathOf("options.TXT"), "bMerge=1\nexportGeom=0\n");
    EXPECT_EQ(options.ReadConfig(PathOf("options.TXT").c_str()), 2);
    EXPECT_TRUE(options.GetOption(O::eMerge));
    EXPECT_FALSE(options.GetOption(O::eExportGeometry));

    EXPECT_EQ(options.ReadConfig(PathOf("absent.cfg").c_str()), 0);
    WriteAll(PathOf("empty.cfg"), "");
    EXPECT_EQ(options.ReadConfig(PathOf("empty.cfg").c_str()), 0);
    EXPECT_EQ(options.ReadConfig(nullptr), 0);
}

TEST_F(OptionsConfig, PlainFilesAreReadUpTo10239Bytes)
{
    // "bMerge=1" ends exactly at byte 10239 in the first file and one byte later in the second.
    const std::string line = "bMerge=1";
    const std::string fits = std::string(10239 - line.size() - 1, 'x') + "\n" + line + "\nuiPadDataTo=8\n";
    const std::string beyond = std::string(10239 - line.size(), 'x') + "\n" + line + "\n";
    WriteAll(PathOf("fits.cfg"), fits);
    WriteAll(PathOf("beyond.cfg"), beyond);
    COptions options;
    EXPECT_EQ(options.ReadConfig(PathOf("fits.cfg").c_str()), 1);
    EXPECT_TRUE(options.GetOption(O::eMerge));
    EXPECT_EQ(options.GetOption(O::ePadDataTo), 4u);
    COptions cut;
    EXPECT_EQ(cut.ReadConfig(PathOf("beyond.cfg").c_str()), 0); // "bMerge=" without its value
    EXPECT_FALSE(cut.GetOption(O::eMerge));

    // Binary junk is read as text and changes nothing it cannot name.
    std::string junk;
    for (int i = 0; i < 20000; ++i)
        junk += static_cast<char>((i * 7919) % 251 + 1);
    WriteAll(PathOf("junk.cfg"), junk);
    COptions fromJunk;
    EXPECT_EQ(fromJunk.ReadConfig(PathOf("junk.cfg").c_str()), 0);
}
