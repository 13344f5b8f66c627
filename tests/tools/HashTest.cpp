// FNV-1 hash values against published and hand-computed vectors, and the hashed string's rules.
#include <gtest/gtest.h>

#include <cstring>

#include "QMXTHash.h"

TEST(Hash, MatchesFnv1Vectors)
{
    CQMXTHash h;
    const unsigned char a = 0x61;
    // 0x811C9DC5 x 16777619 mod 2^32 = 0x050C5D1F; XOR 0x61 gives 0x050C5D7E.
    EXPECT_EQ(h.MakeHash(&a, 1, 1), 0x050C5D1Fu ^ 0x61u);
    EXPECT_EQ(h.GetHash(), 0x050C5D7Eu);
    EXPECT_EQ(CQMXTHash("foobar", 1, 6).GetHash(), 0x31F0B262u);

    // Element size and count only give the byte count: two bytes as one u16 or as two chars.
    const unsigned char ab[2] = {'a', 'b'};
    uint16_t u16;
    std::memcpy(&u16, ab, 2);
    EXPECT_EQ(CQMXTHash(&u16, 2, 1).GetHash(), 0x70772D38u);
    EXPECT_EQ(CQMXTHash(ab, 1, 2).GetHash(), 0x70772D38u);

    // Hashing continues byte by byte.
    EXPECT_EQ(CQMXTHash::Continue(CQMXTHash("foo", 1, 3).GetHash(), "bar", 3), 0x31F0B262u);
}

TEST(Hash, NoBytesHashToZero)
{
    CQMXTHash h("x", 1, 1);
    EXPECT_EQ(h.MakeHash("abc", 1, 0), 0u);
    EXPECT_EQ(h.GetHash(), 0u);
    EXPECT_EQ(h.MakeHash(nullptr, 4, 3), 0u);
    EXPECT_EQ(CQMXTHash().GetHash(), 0u);
    EXPECT_EQ(CQMXTStringHash("").GetHash(), 0u);
}

TEST(StringHash, StaysCurrentThroughAssignAndAppend)
{
    CQMXTStringHash s;
    EXPECT_EQ(s.append("a"), 0);
    EXPECT_EQ(s.GetHash(), 0x050C5D7Eu);
    s = "foo";
    s += CQMXTString("bar");
    EXPECT_STREQ(s.c_str(), "foobar");
    EXPECT_EQ(s.GetHash(), 0x31F0B262u);

    s.append(s.GetString()); // its own text
    EXPECT_STREQ(s.c_str(), "foobarfoobar");
    EXPECT_EQ(s.GetHash(), CQMXTHash("foobarfoobar", 1, 12).GetHash());

    s.assign(CQMXTString("ab"));
    EXPECT_EQ(s.GetHash(), 0x70772D38u);
    s = "";
    EXPECT_EQ(s.GetHash(), 0u);
    s.append(nullptr);
    EXPECT_EQ(s.GetHash(), 0u);
}

TEST(StringHash, ComparesByHashWithItsKindAndByCharactersOtherwise)
{
    // "creamwove" and "quists" share the FNV-1 value 0xC3E7B8C8.
    const CQMXTStringHash a("creamwove"), b("quists"), c("creamwovf");
    ASSERT_EQ(a.GetHash(), 0xC3E7B8C8u);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_TRUE(a != c);

    EXPECT_FALSE(a == CQMXTString("quists"));
    EXPECT_TRUE(a != "quists");
    EXPECT_TRUE(a == "creamwove");
    EXPECT_TRUE(b == CQMXTString("quists"));
}
