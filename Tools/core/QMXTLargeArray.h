// Storage for large working arrays (vertex stores, per-triangle records, index lists) that asks the
// system to back them with huge pages where it can.
//
// Why: the geometry passes fill arrays of tens of megabytes exactly once. With 4 KB pages every first
// touch of a page is a fault; on virtual machines a fault costs microseconds, which came to a fifth of
// a 2M-triangle vertex-cache sort and a third of a whole export. Blocks of 2 MB and more are aligned
// to 2 MB and advised for transparent huge pages (Linux); elsewhere, or below that size, this is plain
// malloc. Memory is neither cleared nor touched here.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

// The C heap functions with that advice: blocks come back from free() like any other (the scene
// model's arrays are released with free), and QMXTLargeFree is free.
void* QMXTLargeAlloc(size_t nBytes);
void* QMXTLargeCalloc(size_t nCount, size_t nSize); // zeroed; null also when the product overflows
void* QMXTLargeRealloc(void* p, size_t nBytes);
void QMXTLargeFree(void* p);

// A standard allocator over QMXTLargeAlloc; throws std::bad_alloc on failure.
template <class T>
struct CQMXTLargeAllocator
{
    using value_type = T;

    CQMXTLargeAllocator() = default;
    template <class U>
    CQMXTLargeAllocator(const CQMXTLargeAllocator<U>&) noexcept
    {
    }

    T* allocate(size_t n)
    {
        if (n > size_t(-1) / sizeof(T))
            throw std::bad_alloc();
        void* p = QMXTLargeAlloc(n * sizeof(T));
        if (!p)
            throw std::bad_alloc();
        return static_cast<T*>(p);
    }
    void deallocate(T* p, size_t) noexcept { QMXTLargeFree(p); }

    template <class U>
    bool operator==(const CQMXTLargeAllocator<U>&) const noexcept
    {
        return true;
    }
    template <class U>
    bool operator!=(const CQMXTLargeAllocator<U>&) const noexcept
    {
        return false;
    }
};

template <class T>
using QMXTLargeVector = std::vector<T, CQMXTLargeAllocator<T>>;
