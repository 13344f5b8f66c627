// Growth, removal and copying of the growable array.
#include <gtest/gtest.h>

#include "QMXTArray.h"
#include "QMXTString.h"

TEST(Array, GrowsByDoublingFromSixteen)
{
    CQMXTArray<int> a;
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetCapacity(), 16u);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(a.Append(i * 10), i);
    EXPECT_EQ(a.GetCapacity(), 16u);
    EXPECT_EQ(a.Append(), 16);
    EXPECT_EQ(a.GetCapacity(), 32u);
    EXPECT_EQ(a.GetSize(), 17u);
    EXPECT_EQ(a[15], 150);
    EXPECT_EQ(a[16], 0);

    EXPECT_EQ(a.SetCapacity(20), 0); // already enough
    EXPECT_EQ(a.GetCapacity(), 32u);
    EXPECT_EQ(a.SetCapacity(33), 0); // doubling wins
    EXPECT_EQ(a.GetCapacity(), 64u);
    EXPECT_EQ(a.SetCapacity(200), 0); // the request wins
    EXPECT_EQ(a.GetCapacity(), 200u);
    EXPECT_EQ(a[15], 150);
}

TEST(Array, RefusesStorageBeyondTheLimitAndStaysIntact)
{
    CQMXTArray<double> a;
    a.Append(1.5);
    EXPECT_EQ(a.SetCapacity(0x10000000), 1); // 2^31 bytes
    EXPECT_EQ(a.GetCapacity(), 16u);
    EXPECT_EQ(a.GetSize(), 1u);
    EXPECT_EQ(a[0], 1.5);
    EXPECT_EQ(a.SetCapacity(0xFFFFFFFF), 1);
    EXPECT_EQ(a.Append(2.5), 1);
}

TEST(Array, RemoveKeepsOrderAndRejectsBadIndices)
{
    CQMXTArray<CQMXTString> a;
    for (const char* s : {"a", "b", "c", "d"})
        a.Append(CQMXTString(s));
    EXPECT_EQ(a.Remove(1), 0);
    ASSERT_EQ(a.GetSize(), 3u);
    EXPECT_STREQ(a[0].c_str(), "a");
    EXPECT_STREQ(a[1].c_str(), "c");
    EXPECT_STREQ(a[2].c_str(), "d");
    EXPECT_TRUE(a.GetData()[3].empty()); // the vacated slot lets go of its text
    EXPECT_EQ(a.Remove(3), 1);
    EXPECT_EQ(a.RemoveLast(), 0);
    EXPECT_EQ(a.RemoveLast(), 0);
    EXPECT_EQ(a.RemoveLast(), 0);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.RemoveLast(), 1);
    EXPECT_EQ(a.Remove(0), 1);
}

TEST(Array, AppendingOwnElementSurvivesGrowth)
{
    CQMXTArray<CQMXTString> a;
    for (int i = 0; i < 16; ++i)
        a.Append(QMXTStringFromFormattedStr("element %d", i));
    EXPECT_EQ(a.Append(a[3]), 16); // a[3] lives in the array being replaced
    EXPECT_STREQ(a[16].c_str(), "element 3");
}

TEST(Array, CopiesAreDeep)
{
    CQMXTArray<CQMXTString> a;
    a.Append(CQMXTString("one"));
    a.Append(CQMXTString("two"));
    CQMXTArray<CQMXTString> b(a);
    b[0] = "changed";
    b.Append(CQMXTString("three"));
    EXPECT_STREQ(a[0].c_str(), "one");
    EXPECT_EQ(a.GetSize(), 2u);

    a = b;
    const CQMXTArray<CQMXTString>& self = a;
    a = self;
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_STREQ(a[0].c_str(), "changed");
    b[2] = "x";
    EXPECT_STREQ(a[2].c_str(), "three");

    CQMXTArray<CQMXTString> c(std::move(a));
    EXPECT_EQ(c.GetSize(), 3u);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.Append(CQMXTString("again")), 0); // a moved-from array is still usable
    EXPECT_STREQ(a[0].c_str(), "again");
}
