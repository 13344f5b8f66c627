// The pseudo-random order of the strip builder's improvement passes, reproduced without the C
// library: its rand() sequence after srand(seed), and the order its qsort gives keys compared by
// their wrapped 32-bit difference. That comparison is not a consistent order (a < b < c < a happens),
// so only the C library's own algorithm - a top-down merge sort, left half n / 2, ties to the left -
// gives its result; QMXTLibcQsortOrder runs exactly that. Neither touches the caller's rand() state.
#pragma once

#include <cstddef>
#include <cstdint>

// The additive feedback generator behind the C library's rand(): 31 words of state, taps 3 and 31,
// seeded by the 16807 multiplier and warmed up by 310 draws. Next() gives what rand() would.
class CQMXTLibcRandom
{
  public:
    explicit CQMXTLibcRandom(uint32_t seed);
    uint32_t Next()
    {
        m_nState[m_nFront] += m_nState[m_nRear];
        const uint32_t result = m_nState[m_nFront] >> 1;
        m_nFront = m_nFront + 1 == kDegree ? 0 : m_nFront + 1;
        m_nRear = m_nRear + 1 == kDegree ? 0 : m_nRear + 1;
        return result;
    }

  private:
    static constexpr int kDegree = 31;
    uint32_t m_nState[kDegree];
    int m_nFront = 3;
    int m_nRear = 0;
};

// A key and what it orders.
struct SQMXTOrderKey
{
    uint32_t nKey;
    uint32_t nIndex;
};
static_assert(sizeof(SQMXTOrderKey) == 8, "keys move as 64-bit words");

// Puts keys[0..n) in the order qsort gives them with the comparison (int32_t)(a.nKey - b.nKey).
// scratch needs room for n keys. Cost: O(n log n), no allocation.
void QMXTLibcQsortOrder(SQMXTOrderKey* keys, size_t n, SQMXTOrderKey* scratch);
