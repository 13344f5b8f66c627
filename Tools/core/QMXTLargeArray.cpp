#include "QMXTLargeArray.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif
#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace
{
constexpr size_t kHugePage = size_t(2) << 20;

// Advises the whole 2 MB pages inside a block; pages already touched stay as they are.
void AdviseHugePages(void* p, size_t nBytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (!p || nBytes < kHugePage)
        return;
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(p) + kHugePage - 1) & ~uintptr_t(kHugePage - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(p) + nBytes) & ~uintptr_t(kHugePage - 1);
    if (end > begin)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
    (void)p;
    (void)nBytes;
#endif
}
} // namespace

void* QMXTLargeAlloc(size_t nBytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (nBytes >= kHugePage && nBytes <= size_t(-1) - kHugePage)
    {
        const size_t rounded = (nBytes + kHugePage - 1) & ~(kHugePage - 1);
        void* p = std::aligned_alloc(kHugePage, rounded);
        AdviseHugePages(p, rounded); // advice only: a refusal leaves ordinary pages
        return p;
    }
#endif
    return std::malloc(nBytes ? nBytes : 1);
}

void* QMXTLargeCalloc(size_t nCount, size_t nSize)
{
    if (nSize != 0 && nCount > size_t(-1) / nSize)
        return nullptr;
    const size_t bytes = nCount * nSize;
    if (bytes < kHugePage)
        return std::calloc(nCount, nSize);
    void* p = QMXTLargeAlloc(bytes);
    if (p)
        std::memset(p, 0, bytes);
    return p;
}

void* QMXTLargeRealloc(void* p, size_t nBytes)
{
    if (!p)
        return QMXTLargeAlloc(nBytes);
#if defined(__GLIBC__)
    // The C library would copy a growing block into pages it touches before any advice could be
    // given (and serves blocks below its mapping threshold from the heap); a large block is moved
    // into an advised one instead. Growth by doubling keeps the copies within twice the final size.
    const size_t old = malloc_usable_size(p);
    if (nBytes >= kHugePage && nBytes > old)
    {
        void* q = QMXTLargeAlloc(nBytes);
        if (!q)
            return nullptr;
        std::memcpy(q, p, old);
        std::free(p);
        return q;
    }
#endif
    return std::realloc(p, nBytes ? nBytes : 1);
}

void QMXTLargeFree(void* p)
{
    std::free(p);
}
