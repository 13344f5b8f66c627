#include "QMXTLibcOrder.h"

#include <cstring>

CQMXTLibcRandom::CQMXTLibcRandom(uint32_t seed)
{
    int32_t word = static_cast<int32_t>(seed == 0 ? 1 : seed);
    m_nState[0] = static_cast<uint32_t>(word);
    for (int i = 1; i < kDegree; ++i)
    {
        const int32_t hi = word / 127773, lo = word % 127773;
        word = 16807 * lo - 2836 * hi;
        if (word < 0)
            word += 2147483647;
        m_nState[i] = static_cast<uint32_t>(word);
    }
    for (int i = 0; i < 10 * kDegree; ++i)
        Next();
}

namespace
{
int CompareKeys(const SQMXTOrderKey& a, const SQMXTOrderKey& b)
{
    return static_cast<int32_t>(a.nKey - b.nKey);
}

// One merge of the sorted runs [b1, e1) and [b2, e2) into out: the left element goes first unless
// the comparison says it is greater. The pick is branch-free (the keys are random, so a branch
// would mispredict half the time).
struct SMerge
{
    const SQMXTOrderKey* b1;
    const SQMXTOrderKey* e1;
    const SQMXTOrderKey* b2;
    const SQMXTOrderKey* e2;
    SQMXTOrderKey* out;

    SMerge(const SQMXTOrderKey* a, size_t n1, size_t n, SQMXTOrderKey* to) : b1(a), e1(a + n1), b2(a + n1), e2(a + n), out(to) {}

    bool Active() const { return b1 != e1 && b2 != e2; }
    void Step()
    {
        uint64_t x, y;
        std::memcpy(&x, b1, sizeof x);
        std::memcpy(&y, b2, sizeof y);
        const size_t left = CompareKeys(*b1, *b2) <= 0;
        const uint64_t mask = uint64_t(0) - uint64_t(left); // all ones when the left one goes
        const uint64_t pick = (x & mask) | (y & ~mask);
        std::memcpy(out++, &pick, sizeof pick);
        b1 += left;
        b2 += 1 - left;
    }
    void Finish()
    {
        while (Active())
            Step();
        std::memcpy(out, b1, size_t(e1 - b1) * sizeof(SQMXTOrderKey));
        out += e1 - b1;
        std::memcpy(out, b2, size_t(e2 - b2) * sizeof(SQMXTOrderKey));
    }
};

void MergeRuns(const SQMXTOrderKey* a, size_t n1, size_t n, SQMXTOrderKey* out)
{
    SMerge(a, n1, n, out).Finish();
}

// Two independent merges stepped together: each step of one merge waits on its own loads and
// compare, so interleaving two keeps the processor busy while each waits.
void MergeRunsTwo(SMerge m1, SMerge m2)
{
    while (m1.Active() && m2.Active())
    {
        m1.Step();
        m2.Step();
    }
    m1.Finish();
    m2.Finish();
}

void MergeSortInto(SQMXTOrderKey* a, SQMXTOrderKey* other, size_t n, bool toOther);

// Sorts two neighbouring ranges each exactly as MergeSortInto does, running their merges level by
// level side by side.
void MergeSortPairInto(SQMXTOrderKey* a, SQMXTOrderKey* other, size_t n1, size_t n2, bool toOther)
{
    if (n1 < 2 || n2 < 2)
    {
        MergeSortInto(a, other, n1, toOther);
        MergeSortInto(a + n1, other + n1, n2, toOther);
        return;
    }
    const size_t h1 = n1 / 2, h2 = n2 / 2;
    MergeSortPairInto(a, other, h1, n1 - h1, !toOther);
    MergeSortPairInto(a + n1, other + n1, h2, n2 - h2, !toOther);
    SQMXTOrderKey* from = toOther ? a : other;
    SQMXTOrderKey* to = toOther ? other : a;
    MergeRunsTwo(SMerge(from, h1, n1, to), SMerge(from + n1, h2, n2, to + n1));
}

// Merge sort with the split and tie rule of the C library's qsort (left half n / 2, ties to the
// left), so an inconsistent comparison (the wrapped difference) orders exactly as qsort does. The
// result lands in other when toOther is set, else in a; the two buffers swap roles level by level
// instead of copying every merge back.
void MergeSortInto(SQMXTOrderKey* a, SQMXTOrderKey* other, size_t n, bool toOther)
{
    if (n == 1)
    {
        if (toOther)
            other[0] = a[0];
        return;
    }
    if (n == 0)
        return;
    const size_t n1 = n / 2;
    MergeSortPairInto(a, other, n1, n - n1, !toOther);
    if (toOther)
        MergeRuns(a, n1, n, other);
    else
        MergeRuns(other, n1, n, a);
}

} // namespace

void QMXTLibcQsortOrder(SQMXTOrderKey* keys, size_t n, SQMXTOrderKey* scratch)
{
    if (n > 1)
        MergeSortInto(keys, scratch, n, false);
}
