// The design's growable array: its growth rule, limits, removal and deep copies.
#include <gtest/gtest.h>

#include "QMXTArray.h"
#include "QMXTString.h"

TEST(Array, GrowsByTheRuleAndRefusesWhatItCannotHold)
{
    CQMXTArray<int> a;
    EXPECT_EQ(a.GetCapacity(), 16u);
    for (int i = 0; i < 17; ++i)
        EXPECT_EQ(a.Append(i * 10), i);
    EXPECT_EQ(a.GetCapacity(), 32u); // doubled at the seventeenth
    EXPECT_EQ(a.SetCapacity(20), 0);
    EXPECT_EQ(a.GetCapacity(), 32u); // already enough
    EXPECT_EQ(a.SetCapacity(200), 0);
    EXPECT_EQ(a.GetCapacity(), 200u); // the request beats doubling
    EXPECT_EQ(a[15], 150);
    EXPECT_EQ(a.SetCapacity(0xFFFFFFFF), 1);
    EXPECT_EQ(a.GetCapacity(), 200u);
}

TEST(Array, RemovalKeepsOrderAndCopiesAreDeep)
{
    CQMXTArray<CQMXTString> a;
    for (int i = 0; i < 16; ++i)
        a.Append(QMXTStringFromFormattedStr("e%d", i));
    EXPECT_EQ(a.Append(a[3]), 16); // a[3] lives in the storage that growth replaces
    EXPECT_STREQ(a[16].c_str(), "e3");
    EXPECT_EQ(a.Remove(1), 0);
    EXPECT_STREQ(a[1].c_str(), "e2");
    EXPECT_EQ(a.Remove(16), 1);
    CQMXTArray<CQMXTString> b(a);
    b[0] = "changed";
    EXPECT_STREQ(a[0].c_str(), "e0");
    while (a.GetSize())
        EXPECT_EQ(a.RemoveLast(), 0);
    EXPECT_EQ(a.RemoveLast(), 1);
    EXPECT_EQ(b.GetSize(), 16u);
}
