// FNV-1 hash values against published and hand-computed vectors, and the hashed string.
#include <gtest/gtest.h>

#include "QMXTHash.h"

TEST(Hash, MatchesFnv1VectorsAndNoBytesHashToZero)
{
    CQMXTHash h;
    const unsigned char a = 0x61;
    // 0x811C9DC5 x 16777619 mod 2^32 = 0x050C5D1F; XOR 0x61 gives 0x050C5D7E.
    EXPECT_EQ(h.MakeHash(&a, 1, 1), 0x050C5D7Eu);
    EXPECT_EQ(CQMXTHash("foobar", 1, 6).GetHash(), 0x31F0B262u);
    // Element size and count only give the byte count.
    EXPECT_EQ(CQMXTHash("ab", 2, 1).GetHash(), 0x70772D38u);
    EXPECT_EQ(CQMXTHash("ab", 1, 2).GetHash(), 0x70772D38u);
    EXPECT_EQ(CQMXTHash::Continue(CQMXTHash("foo", 1, 3).GetHash(), "bar", 3), 0x31F0B262u);
    EXPECT_EQ(h.MakeHash("abc", 1, 0), 0u);
    EXPECT_EQ(h.MakeHash(nullptr, 4, 3), 0u);
}

// A hashed string stays current through edits and compares by hash with its own kind only.
TEST(StringHash, KeepsItsHashAndComparesByItWithItsKind)
{
    CQMXTStringHash s("foo");
    s += CQMXTString("bar");
    EXPECT_EQ(s.GetHash(), 0x31F0B262u);
    // "creamwove" and "quists" share the FNV-1 value 0xC3E7B8C8.
    const CQMXTStringHash a("creamwove"), b("quists");
    ASSERT_EQ(a.GetHash(), 0xC3E7B8C8u);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a == CQMXTString("quists"));
    EXPECT_TRUE(a == "creamwove");
}
