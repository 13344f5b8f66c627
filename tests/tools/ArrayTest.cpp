// Growth, limits, removal and copying of the growable array.
#include <gtest/gtest.h>

#include "QMXTArray.h"
#include "QMXTString.h"

TEST(Array, GrowsByDoublingAndRefusesStorageBeyondTheLimit)
{
    CQMXTArray<double> a;
    EXPECT_EQ(a.GetCapacity(), 16u);
    for (int i = 0; i < 17; ++i)
        EXPECT_EQ(a.Append(i * 10.0), i);
    EXPECT_EQ(a.GetCapacity(), 32u);
    EXPECT_EQ(a.SetCapacity(33), 0); // doubling wins
    EXPECT_EQ(a.GetCapacity(), 64u);
    EXPECT_EQ(a.SetCapacity(200), 0); // the request wins
    EXPECT_EQ(a.GetCapacity(), 200u);
    EXPECT_EQ(a.SetCapacity(0x10000000), 1); // 2^31 bytes
    EXPECT_EQ(a.SetCapacity(0xFFFFFFFF), 1);
    EXPECT_EQ(a.GetCapacity(), 200u);
    EXPECT_EQ(a.GetSize(), 17u);
    EXPECT_EQ(a[16], 160.0);
}

TEST(Array, RemovesInOrderAndCopiesDeeply)
{
    CQMXTArray<CQMXTString> a;
    for (int i = 0; i < 16; ++i)
        a.Append(QMXTStringFromFormattedStr("element %d", i));
    EXPECT_EQ(a.Append(a[3]), 16); // a[3] lives in the array being replaced
    EXPECT_STREQ(a[16].c_str(), "element 3");
    EXPECT_EQ(a.Remove(1), 0);
    EXPECT_STREQ(a[1].c_str(), "element 2");
    EXPECT_TRUE(a.GetData()[16].empty()); // the vacated slot lets go of its text
    EXPECT_EQ(a.Remove(16), 1);

    CQMXTArray<CQMXTString> b(a);
    b[0] = "changed";
    EXPECT_STREQ(a[0].c_str(), "element 0");
    a = b;
    const CQMXTArray<CQMXTString>& self = a;
    a = self;
    b[0] = "again";
    EXPECT_STREQ(a[0].c_str(), "changed");
    CQMXTArray<CQMXTString> c(std::move(a));
    EXPECT_EQ(c.GetSize(), 16u);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.RemoveLast(), 1);
    EXPECT_EQ(a.Append(CQMXTString("again")), 0); // a moved-from array is still usable
}
