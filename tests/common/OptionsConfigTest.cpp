// Whole configuration files: WriteConfig, and ReadConfig of plain text, headers and scene files.
#include <gtest/gtest.h>

#include <string>

#include "Options.h"
#include "OptionsTestSupport.h"
#include "QMXTModelTVO.h"
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
    // An empty scene file saved with the given options text.
    void SaveScene(const std::string& name, const std::string& options)
    {
        CQMXTModelTVO model;
        ASSERT_EQ(model.SaveTVO(PathOf(name).c_str(), options.c_str(), "Exported by test"), 0);
    }
    CTempHome home;
};
} // namespace

TEST_F(OptionsConfig, EveryFormCarriesEveryOption)
{
    const COptionsData source = NonDefaultOptions();
    const std::string text = source.ToString().c_str();
    COptions writer;
    writer = source;
    ASSERT_EQ(writer.WriteConfig(PathOf("export.cfg").c_str()), 1);
    EXPECT_EQ(ReadAll(PathOf("export.cfg")), text);
    EXPECT_EQ(writer.WriteConfig(nullptr), 0);
    EXPECT_EQ(writer.WriteConfig(""), 0);
    EXPECT_EQ(writer.WriteConfig(PathOf("missing/dir/export.cfg").c_str()), 0);
    EXPECT_EQ(SortedEntries(home.Path()), std::vector<std::string>{"export.cfg"});

    WriteAll(PathOf("scene.h"), Header(text, true));
    WriteAll(PathOf("crlf.H"), Header(text, true, "\r\n")); // the extension is compared without case
    SaveScene("scene.TVO", text);
    for (const char* name : {"export.cfg", "scene.h", "crlf.H", "scene.TVO"})
    {
        COptions read;
        EXPECT_EQ(read.ReadConfig(PathOf(name).c_str()), kOptionLines) << name;
        EXPECT_TRUE(static_cast<const COptionsData&>(read) == source) << name;
    }
}

TEST_F(OptionsConfig, OnlyTheFirst10239BytesCountAndOtherFilesGiveNothing)
{
    // "bMerge=1" ends exactly at byte 10239 in fits.cfg and one byte later in beyond.cfg.
    const std::string line = "bMerge=1";
    WriteAll(PathOf("fits.cfg"),
             std::string(10239 - line.size() - 1, 'x') + "\n" + line + "\nuiPadDataTo=8\n");
    COptions fits;
    EXPECT_EQ(fits.ReadConfig(PathOf("fits.cfg").c_str()), 1);
    EXPECT_TRUE(fits.GetOption(O::eMerge));
    EXPECT_EQ(fits.GetOption(O::ePadDataTo), 4u);

    std::string junk;
    for (int i = 0; i < 20000; ++i)
        junk += static_cast<char>((i * 7919) % 251 + 1);
    WriteAll(PathOf("beyond.cfg"), std::string(10239 - line.size(), 'x') + "\n" + line + "\n");
    WriteAll(PathOf("junk.cfg"), junk); // read as text: nothing in it names an option
    WriteAll(PathOf("empty.cfg"), "");
    WriteAll(PathOf("settings.plist"), "bMerge=1\n");
    WriteAll(PathOf("noextension"), "bMerge=1\n");
    WriteAll(PathOf("open.h"), Header("bMerge=1\n", false));                   // without "\t}ExpOpt\n"
    WriteAll(PathOf("plain.h"), "int x;\n  \tExpOpt{\nbMerge=1\n\t}ExpOpt\n"); // the marker is no whole line
    WriteAll(PathOf("junk.tvo"), "bMerge=1\nnot a scene file at all");
    SaveScene("bare.tvo", "");
    SaveScene("beyond.tvo", "x=" + std::string(10239 - 2 - 1, 'y') + "\n" + line + "\n");
    const COptions defaults;
    for (const char* name : {"beyond.cfg", "junk.cfg", "empty.cfg", "settings.plist", "noextension", "open.h",
                             "plain.h", "junk.tvo", "bare.tvo", "beyond.tvo", "absent.cfg", "absent.tvo"})
    {
        COptions options;
        EXPECT_EQ(options.ReadConfig(PathOf(name).c_str()), 0) << name;
        EXPECT_TRUE(options == defaults) << name;
    }
    EXPECT_EQ(COptions().ReadConfig(nullptr), 0);
}
