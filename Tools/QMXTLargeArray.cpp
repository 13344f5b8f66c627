#include "QMXTLargeArray.h"

#include <cstdlib>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace
{
constexpr size_t kHugePage = size_t(2) << 20;
}

void* QMXTLargeAlloc(size_t nBytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (nBytes >= kHugePage && nBytes <= size_t(-1) - kHugePage)
    {
        const size_t rounded = (nBytes + kHugePage - 1) & ~(kHugePage - 1);
        void* p = std::aligned_alloc(kHugePage, rounded);
        if (p)
            madvise(p, rounded, MADV_HUGEPAGE); // advice only: a refusal leaves ordinary pages
        return p;
    }
#endif
    return std::malloc(nBytes ? nBytes : 1);
}

void QMXTLargeFree(void* p)
{
    std::free(p);
}
