// The core types: the string class (editing also with its own text, clamped positions, limits,
// searches, formatting, path helpers), the growable array and the FNV-1 hashes.
#include <gtest/gtest.h>

#include "QMXTArray.h"
#include "QMXTHash.h"
#include "QMXTString.h"

TEST(String, EditsIncludingWithItsOwnTextAndClampsPositions)
{
    CQMXTString s("abc");
    s += 'd';
    s += CQMXTString("ef");
    s.append(s);                 // whole self
    s.append(s.c_str() + 10, 2); // a piece of self, while the buffer may move
    EXPECT_STREQ(s.c_str(), "abcdefabcdefef");
    s.insert(0, &s[12]);
    EXPECT_STREQ(s.c_str(), "efabcdefabcdefef");
    s.assign(s.c_str() + 2, 4);
    s.replace(1, 2, "XYZ");
    EXPECT_STREQ(s.c_str(), "aXYZd");

    s = "hello";
    EXPECT_STREQ(s.substr(9, 2).c_str(), "");
    EXPECT_STREQ(s.substr(1, 100).c_str(), "ello");
    EXPECT_EQ(s[1000], '\0');
    s[1000] = 'x'; // lost, harmlessly
    s.insert(99, "!");
    s.erase(2, 2);
    EXPECT_STREQ(s.c_str(), "heo!");

    // Impossible lengths are refused and leave the text alone; an embedded zero compares as a character.
    EXPECT_EQ(s.resize(CQMXTString::max_size() + 1), 1);
    EXPECT_EQ(s.append(CQMXTString::max_size(), 'x'), 1);
    EXPECT_STREQ(s.c_str(), "heo!");
    EXPECT_TRUE(CQMXTString("a\0b", 3) > CQMXTString("a\0a", 3));
    EXPECT_FALSE(CQMXTString("a\0b", 3) == "a");
}

TEST(String, FindFamilies)
{
    const CQMXTString s("one/two.three/four.tvo");
    EXPECT_EQ(s.find('/'), 3u);
    EXPECT_EQ(s.find("t", 5), 8u);
    EXPECT_EQ(s.find("tvo"), 19u);
    EXPECT_EQ(s.find('o', 100), CQMXTString::npos);
    EXPECT_EQ(s.find("", 22), 22u);
    EXPECT_EQ(s.find("", 23), CQMXTString::npos);
    EXPECT_EQ(s.rfind('/'), 13u);
    EXPECT_EQ(s.rfind('/', 12), 3u);
    EXPECT_EQ(s.rfind("o", 100), 21u);
    EXPECT_EQ(s.find_first_of("./"), 3u);
    EXPECT_EQ(s.find_last_of("./"), 18u);
    EXPECT_EQ(s.find_last_of("./", 17), 13u);
    EXPECT_EQ(s.find_first_not_of("oen"), 3u);
    EXPECT_EQ(s.find_last_not_of("tvo."), 17u);
    EXPECT_EQ(CQMXTString().rfind('a'), CQMXTString::npos);
    EXPECT_EQ(CQMXTString().find_last_of("a"), CQMXTString::npos);
    EXPECT_EQ(CQMXTString("aaaa").find_number_of("aa"), 2u); // non-overlapping
}

TEST(String, FormatsSubstitutesWalksStripsAndChangesCase)
{
    CQMXTString s;
    const CQMXTString sLong(5000, 'q');
    EXPECT_EQ(s.format("[%s]%05.1f", sLong.c_str(), 2.25), 0);
    ASSERT_EQ(s.length(), 5007u);
    EXPECT_EQ(s.substr(1, 5000), sLong);
    s = "abc";
    EXPECT_EQ(s.format("%s-%s", s.c_str(), s.c_str()), 0); // its own text as an argument
    EXPECT_STREQ(s.c_str(), "abc-abc");
    EXPECT_STREQ(CQMXTString("Wood-01.PNG").toLower().c_str(), "wood-01.png");

    s = "a-b-c";
    EXPECT_STREQ(s.substitute('-', '/').c_str(), "a/b-c");
    EXPECT_STREQ(s.substitute('-', '/', true).toUpper().c_str(), "A/B/C");
    s = "x.x";
    EXPECT_EQ(s.substitute("x", "xx", true), 0); // inserted text is not searched again
    EXPECT_STREQ(s.c_str(), "xx.xx");
    s = "aaa";
    EXPECT_EQ(s.substitute("aa", "b", true), 0);
    EXPECT_STREQ(s.c_str(), "ba");
    s = "a,,b,c";
    std::string walked;
    for (size_t p = s.find_next_occurance_of(',', CQMXTString::npos); p != CQMXTString::npos;
         p = s.find_next_occurance_of(',', p))
        walked += std::to_string(p);
    EXPECT_EQ(walked, "124");
    EXPECT_EQ(s.find_previous_occurance_of(',', 4), 2u);
    EXPECT_EQ(s.find_first_ofn(",", 3), 4u);
    s = " \t key = value \v\f\n";
    EXPECT_STREQ(QMXTStringStripWhiteSpaceFromEndOf(QMXTStringStripWhiteSpaceFromStartOf(s)).c_str(),
                 "key = value");
}

TEST(String, SplitsPaths)
{
    struct Case
    {
        const char *path, *dir, *name, *ext;
    };
    const Case cases[] = {
        {"/home/u/scene.tvo", "/home/u/", "scene.tvo", "tvo"},
        {"/home/u.v1/scene", "/home/u.v1/", "scene", ""},
        {"/home/u.v1/", "/home/u.v1/", "", ""},
        {"C:\\maps\\wood.grain.png", "C:\\maps\\", "wood.grain.png", "png"},
        {"/a/.hidden.txt", "/a/", ".hidden.txt", "txt"},
        {"name.", "", "name.", ""},
        {"", "", "", ""},
    };
    for (const Case& c : cases)
    {
        const CQMXTString p(c.path);
        EXPECT_STREQ(QMXTStringGetContainingDirectoryPath(p).c_str(), c.dir) << c.path;
        EXPECT_STREQ(QMXTStringGetFileName(p).c_str(), c.name) << c.path;
        EXPECT_STREQ(QMXTStringGetFileExtension(p).c_str(), c.ext) << c.path;
        EXPECT_EQ(QMXTStringGetContainingDirectoryPath(p) + QMXTStringGetFileName(p), p) << c.path;
    }
}

TEST(Array, GrowsByTheRuleRemovesInOrderAndCopiesDeeply)
{
    CQMXTArray<CQMXTString> a;
    EXPECT_EQ(a.GetCapacity(), 16u);
    for (int i = 0; i < 16; ++i)
        a.Append(QMXTStringFromFormattedStr("e%d", i));
    EXPECT_EQ(a.Append(a[3]), 16);   // a[3] lives in the storage that growth replaces
    EXPECT_EQ(a.GetCapacity(), 32u); // doubled at the seventeenth
    EXPECT_STREQ(a[16].c_str(), "e3");
    EXPECT_EQ(a.SetCapacity(0xFFFFFFFF), 1);
    EXPECT_EQ(a.Remove(1), 0);
    EXPECT_STREQ(a[1].c_str(), "e2");
    EXPECT_EQ(a.Remove(16), 1);
    CQMXTArray<CQMXTString> b(a);
    b[0] = "changed";
    EXPECT_STREQ(a[0].c_str(), "e0");
}

TEST(Hash, MatchesFnv1VectorsAndHashedStringsCompareByIt)
{
    CQMXTHash h;
    const unsigned char a = 0x61;
    // 0x811C9DC5 x 16777619 mod 2^32 = 0x050C5D1F; XOR 0x61 gives 0x050C5D7E.
    EXPECT_EQ(h.MakeHash(&a, 1, 1), 0x050C5D7Eu);
    EXPECT_EQ(CQMXTHash("foobar", 1, 6).GetHash(), 0x31F0B262u);
    EXPECT_EQ(CQMXTHash("ab", 2, 1).GetHash(), CQMXTHash("ab", 1, 2).GetHash()); // only the byte count counts
    EXPECT_EQ(CQMXTHash::Continue(CQMXTHash("foo", 1, 3).GetHash(), "bar", 3), 0x31F0B262u);
    EXPECT_EQ(h.MakeHash("abc", 1, 0), 0u);
    EXPECT_EQ(h.MakeHash(nullptr, 4, 3), 0u);

    // A hashed string stays current through edits and compares by hash with its own kind only.
    CQMXTStringHash s("foo");
    s += CQMXTString("bar");
    EXPECT_EQ(s.GetHash(), 0x31F0B262u);
    // "creamwove" and "quists" share the FNV-1 value 0xC3E7B8C8.
    const CQMXTStringHash cream("creamwove"), quists("quists");
    EXPECT_TRUE(cream == quists);
    EXPECT_FALSE(cream == CQMXTString("quists"));
    EXPECT_TRUE(cream == "creamwove");
}
