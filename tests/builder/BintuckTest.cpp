// Source wrapping: the exact text of header, word array, string literal, footer and file output.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Bintuck.h"
#include "Log.h"
#include "SceneFixtures.h"

TEST(Bintuck, HeaderWithAndWithoutRegistration)
{
    std::ostringstream plain;
    WriteHeader(plain, 0);
    EXPECT_EQ(plain.str(), "// This file was created by Bintuck 1.1\n"
                           "// Little endian mode\n"
                           "// DO NOT EDIT\n\n"
                           "#include \"../QMXTMemoryFileSystem.h\"\n\n"
                           "// using 32 bit to guarantee alignment.\n"
                           "#ifndef A32BIT\n"
                           " #define A32BIT static const unsigned int\n"
                           "#endif\n\n");
    std::ostringstream bare;
    WriteHeader(bare, eBintuckNoRegistration | eBintuckBigEndian);
    EXPECT_EQ(bare.str(), "// This file was created by Bintuck 1.1\n"
                          "// Big endian mode\n"
                          "// DO NOT EDIT\n\n"
                          "// using 32 bit to guarantee alignment.\n"
                          "#ifndef A32BIT\n"
                          " #define A32BIT static const unsigned int\n"
                          "#endif\n\n");
}

TEST(Bintuck, NamesFromPaths)
{
    EXPECT_EQ(BaseName("/tmp/out/scene.tvo"), "scene.tvo");
    EXPECT_EQ(BaseName("C:\\data\\scene.tvo"), "scene.tvo");
    EXPECT_EQ(BaseName("dir/sub\\x.tvo"), "x.tvo");
    EXPECT_EQ(BaseName("plain"), "plain");
    EXPECT_EQ(FileToVarName("scene.tvo"), "_scene_tvo");
    EXPECT_EQ(FileToVarName("my-scene.tvo"), "_my_scene_tvo");
    EXPECT_EQ(FileToVarName("a b+1.TVO"), "_a_b_1_TVO");
}

TEST(Bintuck, WordsAreHexSixtyFourALineInTheChosenByteOrder)
{
    const std::vector<uint8_t> zeros(65 * 4);
    std::ostringstream little;
    WriteBinary(little, zeros.data(), zeros.size(), "z", "_z", 0);
    std::string line;
    for (int i = 0; i < 64; ++i)
        line += "0x0,";
    EXPECT_EQ(little.str(), "A32BIT _z[] = {\n" + line + "\n0x0,\n};\n\n");

    const uint8_t bytes[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    std::ostringstream big;
    WriteBinary(big, bytes, 8, "scene.tvo", "_scene_tvo", eBintuckBigEndian);
    EXPECT_EQ(big.str(), "A32BIT _scene_tvo[] = {\n0x10203,0x4050607,\n};\n\n");
}

TEST(Bintuck, ShortTailsArePaddedAndTheTrueSizeIsRegistered)
{
    const uint8_t data[5] = {0xff, 0, 0, 0, 0x01};
    std::ostringstream out;
    WrapData(out, data, sizeof data, "my-scene.tvo", 0);
    EXPECT_EQ(
        out.str(),
        "// ******** Start: my-scene.tvo ********\n\n"
        "// File data\n"
        "A32BIT _my_scene_tvo[] = {\n0xff,0x1,\n};\n\n"
        "// Register my-scene.tvo in memory file system at application startup time\n"
        "static CQMXTMemoryFileSystem RegisterFile_my_scene_tvo(\"my-scene.tvo\", _my_scene_tvo, 5);\n\n"
        "// ******** End: my-scene.tvo ********\n\n");
    std::ostringstream plain;
    WriteDataFooter(plain, 5, "my-scene.tvo", "_my_scene_tvo", eBintuckNoRegistration);
    EXPECT_EQ(plain.str(), "static int _my_scene_tvo_size = 5;\n\n");

    std::ostringstream empty;
    WriteBinary(empty, nullptr, 0, "e", "_e", 0);
    EXPECT_EQ(empty.str(), "A32BIT _e[] = {\n0x0,\n};\n\n");
}

TEST(Bintuck, TextFormEscapesAndBreaksLinesAfterNewlines)
{
    const std::string input = std::string("a\\b\"c\td\n\x01"
                                          "F\x7f") +
                              std::string(1, '\0') + "\a\r\f\v";
    std::ostringstream out;
    WriteString(out, reinterpret_cast<const uint8_t*>(input.data()), input.size(), "t.txt", "_t_txt", 0);
    EXPECT_EQ(out.str(), "static const char _t_txt[] = "
                         "\n\t\"a\\\\b\\\"c\\td\\n\"\n\t\"\\x01\"\"F\\x7f\\x00\\a\\r\\f\\v\";\n\n");
    std::ostringstream none;
    WriteString(none, nullptr, 0, "t.txt", "_t_txt", 0);
    EXPECT_EQ(none.str(), "static const char _t_txt[] = \"\";\n\n");
}

TEST(Bintuck, WrapFilesWritesHeaderAndEveryFileOrReportsTheFailure)
{
    const CTempDir dir;
    const std::string input = dir / "in.tvo";
    const std::string output = dir / "out.h";
    {
        std::ofstream f(input, std::ios::binary);
        f.write("ABCDEFGH", 8);
    }
    const char* names[] = {input.c_str()};
    ASSERT_TRUE(WrapFiles(output.c_str(), std::ios_base::trunc, 0, 1, names));
    const std::string text = ReadAll(output);
    const std::string base = BaseName(input);
    EXPECT_EQ(text.rfind("// This file was created by Bintuck 1.1\n", 0), 0u);
    EXPECT_NE(text.find("// ******** Start: " + base + " ********\n\n// File data\nA32BIT " +
                        FileToVarName(base) + "[] = {\n0x44434241,0x48474645,\n};\n\n"),
              std::string::npos);
    EXPECT_NE(text.find("// ******** End: " + base + " ********\n\n"), std::string::npos);

    CRecordingLogSink sink;
    const std::string missing = dir / "missing.tvo";
    const char* bad[] = {missing.c_str()};
    EXPECT_FALSE(WrapFiles(output.c_str(), std::ios_base::trunc, 0, 1, bad));
    EXPECT_TRUE(sink.Has(eLogError, "Could not open " + missing + " for reading\n"));
    EXPECT_EQ(ReadAll(output), text); // the earlier output is untouched

    const std::string noDir = dir / "no/such/dir/out.h";
    EXPECT_FALSE(WrapFiles(noDir.c_str(), std::ios_base::trunc, 0, 1, names));
    EXPECT_TRUE(sink.Has(eLogError, "Could not open output file " + noDir));
}
