// The string class: editing, clamped positions, searches, substitution, formatting and the path and
// white-space helpers.
#include <gtest/gtest.h>

#include <vector>

#include "QMXTString.h"

TEST(String, AssignsAppendsAndInsertsIncludingItsOwnText)
{
    CQMXTString s;
    EXPECT_STREQ(s.c_str(), "");
    EXPECT_EQ(s.append("abc"), 0);
    s += 'd';
    s += CQMXTString("ef");
    EXPECT_STREQ(s.c_str(), "abcdef");
    EXPECT_EQ(s.length(), 6u);

    s.append(s);                 // whole self
    s.append(s.c_str() + 10, 2); // a piece of self, while the buffer may move
    EXPECT_STREQ(s.c_str(), "abcdefabcdefef");
    s.insert(0, &s[12]);
    EXPECT_STREQ(s.c_str(), "efabcdefabcdefef");
    s.assign(s.c_str() + 2, 4);
    EXPECT_STREQ(s.c_str(), "abcd");
    s.replace(1, 2, "XYZ");
    EXPECT_STREQ(s.c_str(), "aXYZd");

    // Growth of a long run of appends keeps every character.
    CQMXTString t;
    for (int i = 0; i < 1000; ++i)
        t += static_cast<char>('a' + i % 26);
    EXPECT_EQ(t.length(), 1000u);
    EXPECT_EQ(t[999], 'a' + 999 % 26);

    EXPECT_STREQ((CQMXTString("x") + "y" + CQMXTString("z") + '!').c_str(), "xyz!");
    EXPECT_STREQ(("<" + CQMXTString("p")).c_str(), "<p");
    s = nullptr;
    EXPECT_TRUE(s.empty());
}

TEST(String, ComparesByteWiseWithPrefixFirst)
{
    EXPECT_TRUE(CQMXTString("abc") == "abc");
    EXPECT_TRUE(CQMXTString("ab") < CQMXTString("abc"));
    EXPECT_TRUE(CQMXTString("abd") > CQMXTString("abc"));
    EXPECT_TRUE("abc" != CQMXTString("abC"));
    EXPECT_LT(CQMXTString("B").compare("a"), 0);
    // An embedded zero is a character like any other.
    EXPECT_TRUE(CQMXTString("a\0b", 3) > CQMXTString("a\0a", 3));
    EXPECT_FALSE(CQMXTString("a\0b", 3) == "a");
}

TEST(String, ClampsPositionsPastTheEnd)
{
    CQMXTString s("hello");
    EXPECT_STREQ(s.substr(3).c_str(), "lo");
    EXPECT_STREQ(s.substr(9, 2).c_str(), "");
    EXPECT_STREQ(s.substr(1, 100).c_str(), "ello");
    EXPECT_STREQ(s.left(2).c_str(), "he");
    EXPECT_STREQ(s.right(3).c_str(), "llo");
    EXPECT_STREQ(s.right(50).c_str(), "hello");
    EXPECT_EQ(s[5], '\0');
    EXPECT_EQ(s[1000], '\0');
    s[1000] = 'x'; // lost, harmlessly
    EXPECT_STREQ(s.c_str(), "hello");
    s[0] = 'j';
    s.insert(99, "!");
    s.erase(99);
    EXPECT_STREQ(s.c_str(), "jello!");
    s.erase(4, 99);
    EXPECT_STREQ(s.c_str(), "jell");
}

TEST(String, ResizesAndRefusesImpossibleLengths)
{
    CQMXTString s("abc");
    EXPECT_EQ(s.resize(5, '-'), 0);
    EXPECT_STREQ(s.c_str(), "abc--");
    EXPECT_EQ(s.resize(2), 0);
    EXPECT_STREQ(s.c_str(), "ab");
    EXPECT_EQ(s.resize(CQMXTString::max_size() + 1), 1);
    EXPECT_EQ(s.reserve(CQMXTString::npos), 1);
    EXPECT_EQ(s.append(CQMXTString::max_size(), 'x'), 1);
    EXPECT_STREQ(s.c_str(), "ab");
    CQMXTString t("zz");
    s.swap(t);
    EXPECT_STREQ(s.c_str(), "zz");
    EXPECT_STREQ(t.c_str(), "ab");
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
}

TEST(String, CountsAndWalksOccurrences)
{
    const CQMXTString s("a,b,,c,");
    EXPECT_EQ(s.find_number_of(','), 4u);
    EXPECT_EQ(s.find_number_of(',', 4), 2u);
    EXPECT_EQ(CQMXTString("aaaa").find_number_of("aa"), 2u); // non-overlapping
    EXPECT_EQ(s.find_number_of(""), 0u);

    std::vector<size_t> forward, backward;
    for (size_t p = s.find_next_occurance_of(',', CQMXTString::npos); p != CQMXTString::npos;
         p = s.find_next_occurance_of(',', p))
        forward.push_back(p);
    for (size_t p = s.find_previous_occurance_of(',', CQMXTString::npos); p != CQMXTString::npos;
         p = s.find_previous_occurance_of(',', p))
        backward.push_back(p);
    EXPECT_EQ(forward, (std::vector<size_t>{1, 3, 4, 6}));
    EXPECT_EQ(backward, (std::vector<size_t>{6, 4, 3, 1}));
    EXPECT_EQ(s.find_next_occurance_of(",c", 0), 4u);
    EXPECT_EQ(s.find_previous_occurance_of(",,", 3), CQMXTString::npos);
    EXPECT_EQ(s.find_previous_occurance_of(",,", 4), 3u);

    EXPECT_EQ(s.find_first_ofn(",", 3), 4u);
    EXPECT_EQ(s.find_first_ofn(",c", 4), 5u);
    EXPECT_EQ(s.find_first_ofn(",", 2, 2), 4u);
    EXPECT_EQ(s.find_first_ofn(",", 5), CQMXTString::npos);
    EXPECT_EQ(s.find_first_ofn(",", 0), CQMXTString::npos);
}

TEST(String, ChangesCaseAndSubstitutes)
{
    CQMXTString s("Wood_Grain-01.PNG");
    EXPECT_STREQ(s.toLower().c_str(), "wood_grain-01.png");
    EXPECT_STREQ(s.toUpper().c_str(), "WOOD_GRAIN-01.PNG");

    s = "a-b-c";
    EXPECT_STREQ(s.substitute('-', '/').c_str(), "a/b-c");
    EXPECT_STREQ(s.substitute('-', '/', true).c_str(), "a/b/c");

    s = "x.y.x.y";
    EXPECT_EQ(s.substitute(".y", "!"), 0);
    EXPECT_STREQ(s.c_str(), "x!.x.y");
    EXPECT_EQ(s.substitute("x", "xx", true), 0); // inserted text is not searched again
    EXPECT_STREQ(s.c_str(), "xx!.xx.y");
    EXPECT_EQ(s.substitute("xx", "", true), 0);
    EXPECT_STREQ(s.c_str(), "!..y");
    s = "aaa";
    EXPECT_EQ(s.substitute("aa", "b", true), 0);
    EXPECT_STREQ(s.c_str(), "ba");
    EXPECT_EQ(s.substitute("", "z", true), 0);
    EXPECT_EQ(s.substitute("q", "z"), 0);
    EXPECT_STREQ(s.c_str(), "ba");
}

TEST(String, FormatsTextOfAnyLength)
{
    CQMXTString s;
    EXPECT_EQ(s.format("%s=%d", "fScale", 42), 0);
    EXPECT_STREQ(s.c_str(), "fScale=42");

    const CQMXTString sLong(5000, 'q');
    EXPECT_EQ(s.format("[%s]%05.1f", sLong.c_str(), 2.25), 0);
    ASSERT_EQ(s.length(), 5007u);
    EXPECT_EQ(s.substr(1, 5000), sLong);
    EXPECT_STREQ(s.right(6).c_str(), "]002.2");

    s = "abc";
    EXPECT_EQ(s.format("%s-%s", s.c_str(), s.c_str()), 0); // its own text as an argument
    EXPECT_STREQ(s.c_str(), "abc-abc");

    EXPECT_EQ(QMXTStringFromFormattedStr("%s%s", sLong.c_str(), sLong.c_str()).length(), 10000u);
}

TEST(String, SplitsPaths)
{
    struct Case
    {
        const char *path, *dir, *name, *ext;
    };
    const Case cases[] = {
        {"/home/u/scene.tvo", "/home/u/", "scene.tvo", "tvo"},
        {"scene.TVO", "", "scene.TVO", "TVO"},
        {"/home/u.v1/scene", "/home/u.v1/", "scene", ""},
        {"/home/u.v1/", "/home/u.v1/", "", ""},
        {"C:\\maps\\wood.grain.png", "C:\\maps\\", "wood.grain.png", "png"},
        {"/a/.profile", "/a/", ".profile", ""},
        {"/a/.hidden.txt", "/a/", ".hidden.txt", "txt"},
        {"name.", "", "name.", ""},
        {"/", "/", "", ""},
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

TEST(String, StripsWhiteSpace)
{
    CQMXTString s(" \t\r\n key = value \v\f\n");
    EXPECT_STREQ(QMXTStringStripWhiteSpaceFromStartOf(s).c_str(), "key = value \v\f\n");
    EXPECT_STREQ(QMXTStringStripWhiteSpaceFromEndOf(s).c_str(), "key = value");
    s = " \t \n";
    EXPECT_TRUE(QMXTStringStripWhiteSpaceFromEndOf(s).empty());
    s = "  ";
    EXPECT_TRUE(QMXTStringStripWhiteSpaceFromStartOf(s).empty());
}
