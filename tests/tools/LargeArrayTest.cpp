// Large working arrays: the advised blocks behave as C heap blocks (contents kept when they grow,
// zeroed when asked, released with free) and impossible sizes are refused.
#include "QMXTLargeArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace
{
constexpr size_t kMiB = size_t(1) << 20;

void FillPattern(uint8_t* p, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        p[i] = uint8_t(i * 7 + 3);
}

bool HasPattern(const uint8_t* p, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        if (p[i] != uint8_t(i * 7 + 3))
            return false;
    return true;
}
} // namespace

TEST(LargeArray, BlocksKeepContentsAcrossTheHugePageSizeAndRefuseOverflow)
{
    // Small to large (moved into an advised block), large to larger, and shrinking back.
    uint8_t* p = static_cast<uint8_t*>(QMXTLargeRealloc(nullptr, 1000));
    ASSERT_NE(p, nullptr);
    FillPattern(p, 1000);
    p = static_cast<uint8_t*>(QMXTLargeRealloc(p, 3 * kMiB));
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(HasPattern(p, 1000));
    FillPattern(p, 3 * kMiB);
    p = static_cast<uint8_t*>(QMXTLargeRealloc(p, 9 * kMiB + 5));
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(HasPattern(p, 3 * kMiB));
    p = static_cast<uint8_t*>(QMXTLargeRealloc(p, 100));
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(HasPattern(p, 100));
    std::free(p); // blocks are plain C heap blocks

    const size_t count = 5 * kMiB / 4;
    uint32_t* z = static_cast<uint32_t*>(QMXTLargeCalloc(count, sizeof(uint32_t)));
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(std::count(z, z + count, 0u), static_cast<std::ptrdiff_t>(count));
    QMXTLargeFree(z);
    EXPECT_EQ(QMXTLargeCalloc(size_t(-1) / 2, 4), nullptr);
}

TEST(LargeArray, GrowableArrayKeepsItsElementsAndChecksEverySize)
{
    QMXTLargeVector<uint64_t> v;
    for (uint64_t i = 0; i < 600000; ++i) // grows through the 2 MB size
        v.push_back(i * i);
    v.push_back(v[7]); // an element of the array itself, while it grows
    v.resize(v.size() + 2);
    uint64_t wrong = 0;
    for (uint64_t i = 0; i < 600000; ++i)
        wrong += v[i] != i * i;
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(v[600000], 49u);
    EXPECT_EQ(v[600001] + v[600002], 0u); // new elements are value-initialised
    EXPECT_THROW(v.reserve(size_t(-1) / 4), std::bad_alloc);
    EXPECT_THROW(v.grow(size_t(-1) / 8), std::bad_alloc);
    EXPECT_EQ(v.size(), 600003u);
}
