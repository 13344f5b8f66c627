// The strip builder's random order (whose draws the strip golden digests check): the same order as
// the C library's qsort under the wrapped-difference comparison, which is not a consistent order.
#include "QMXTLibcOrder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

namespace
{
int WrappedDifference(const void* x, const void* y)
{
    const auto* a = static_cast<const SQMXTOrderKey*>(x);
    const auto* b = static_cast<const SQMXTOrderKey*>(y);
    return static_cast<int32_t>(a->nKey - b->nKey);
}

// The keys' positions in the order the C library's qsort, or QMXTLibcQsortOrder when ours is set,
// leaves them.
std::vector<uint32_t> Order(std::vector<SQMXTOrderKey> keys, bool ours)
{
    std::vector<SQMXTOrderKey> scratch(keys.size());
    if (ours)
        QMXTLibcQsortOrder(keys.data(), keys.size(), scratch.data());
    else if (!keys.empty())
        std::qsort(keys.data(), keys.size(), sizeof(SQMXTOrderKey), WrappedDifference);
    std::vector<uint32_t> out;
    for (const SQMXTOrderKey& k : keys)
        out.push_back(k.nIndex);
    return out;
}
} // namespace

TEST(LibcOrder, OrdersAsQsortDoesUnderTheWrappedDifference)
{
    // Random keys span the whole circle, so the comparison has cycles; odd sizes and repeated keys
    // exercise the split and tie rules at every level.
    std::mt19937 rng(5);
    std::vector<size_t> sizes(71);
    std::iota(sizes.begin(), sizes.end(), 0);
    sizes.insert(sizes.end(), {127, 128, 129, 1000, 4099, 65537, 300001});
    for (size_t n : sizes)
        for (bool fewValues : {false, true})
        {
            std::vector<SQMXTOrderKey> keys(n);
            for (size_t i = 0; i < n; ++i)
            {
                const uint32_t r = static_cast<uint32_t>(rng());
                keys[i] = {fewValues ? r % 7 * 0x30000000u : r, static_cast<uint32_t>(i)};
            }
            ASSERT_EQ(Order(keys, true), Order(keys, false)) << n << " keys, few values " << fewValues;
        }
}
