// Source wrapping: the exact text of header, word array, footer and file output as the exporter
// writes them, and in one test the forms only other users of the wrapper ask for.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Bintuck.h"
#include "Log.h"
#include "SceneFixtures.h"

TEST(Bintuck, HeaderAndNamesFromPaths)
{
    std::ostringstream header;
    WriteHeader(header, 0);
    EXPECT_EQ(header.str(), "// This file was created by Bintuck 1.1\n"
                            "// Little endian mode\n"
                            "// DO NOT EDIT\n\n"
                            "#include \"../QMXTMemoryFileSystem.h\"\n\n"
                            "// using 32 bit to guarantee alignment.\n"
                            "#ifndef A32BIT\n"
                            " #define A32BIT static const unsigned int\n"
                            "#endif\n\n");
    EXPECT_EQ(BaseName("/tmp/out/scene.tvo"), "scene.tvo");
    EXPECT_EQ(BaseName("C:\\data\\scene.tvo"), "scene.tvo");
    EXPECT_EQ(BaseName("dir/sub\\x.tvo"), "x.tvo");
    EXPECT_EQ(BaseName("plain"), "plain");
    EXPECT_EQ(FileToVarName("my-scene.tvo"), "_my_scene_tvo");
    EXPECT_EQ(FileToVarName("a b+1.TVO"), "_a_b_1_TVO");
}

TEST(Bintuck, ShortTailsArePaddedSixtyFourWordsALineAndTheTrueSizeIsRegistered)
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

    const std::vector<uint8_t> zeros(65 * 4);
    std::ostringstream lines;
    WriteBinary(lines, zeros.data(), zeros.size(), "z", "_z", 0);
    std::string line;
    for (int i = 0; i < 64; ++i)
        line += "0x0,";
    EXPECT_EQ(lines.str(), "A32BIT _z[] = {\n" + line + "\n0x0,\n};\n\n");
    std::ostringstream empty;
    WriteBinary(empty, nullptr, 0, "e", "_e", 0);
    EXPECT_EQ(empty.str(), "A32BIT _e[] = {\n0x0,\n};\n\n");
}

TEST(Bintuck, FileOutWritesTheTextOrLogsTheFailure)
{
    const CTempDir dir;
    std::ostringstream text;
    text << "int x;\n";
    ASSERT_TRUE(FileOut((dir / "out.h").c_str(), text, std::ios_base::trunc));
    EXPECT_EQ(ReadAll(dir / "out.h"), "int x;\n");
    CRecordingLogSink sink;
    const std::string noDir = dir / "no/such/dir/out.h";
    EXPECT_FALSE(FileOut(noDir.c_str(), text, std::ios_base::trunc));
    EXPECT_TRUE(sink.Has(eLogError, "Could not open output file " + noDir));
}

// Big-endian words, plain data without registration and the string-literal form.
TEST(Bintuck, FormsForOtherUsers)
{
    const uint8_t bytes[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    std::ostringstream big;
    WriteBinary(big, bytes, 8, "scene.tvo", "_scene_tvo", eBintuckBigEndian);
    EXPECT_EQ(big.str(), "A32BIT _scene_tvo[] = {\n0x10203,0x4050607,\n};\n\n");
    std::ostringstream header;
    WriteHeader(header, eBintuckNoRegistration | eBintuckBigEndian);
    EXPECT_EQ(header.str().find("#include"), std::string::npos);
    EXPECT_NE(header.str().find("// Big endian mode\n"), std::string::npos);
    std::ostringstream plain;
    WriteDataFooter(plain, 5, "my-scene.tvo", "_my_scene_tvo", eBintuckNoRegistration);
    EXPECT_EQ(plain.str(), "static int _my_scene_tvo_size = 5;\n\n");

    const std::string input = std::string("a\\b\"c\td\n\x01"
                                          "F\x7f") +
                              std::string(1, '\0') + "\a\r\f\v";
    std::ostringstream literal;
    WriteString(literal, reinterpret_cast<const uint8_t*>(input.data()), input.size(), "t.txt", "_t_txt", 0);
    EXPECT_EQ(literal.str(), "static const char _t_txt[] = "
                             "\n\t\"a\\\\b\\\"c\\td\\n\"\n\t\"\\x01\"\"F\\x7f\\x00\\a\\r\\f\\v\";\n\n");
}
