#include "FailingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

extern "C" void* __real_malloc(size_t);
extern "C" void* __real_calloc(size_t, size_t);
extern "C" void* __real_realloc(void*, size_t);
extern "C" void* __real_aligned_alloc(size_t, size_t);

namespace
{
std::atomic<bool> g_armed{false};
std::atomic<long> g_seen{0};
std::atomic<long> g_failAt{0};

bool FailThisOne()
{
    return g_armed && ++g_seen == g_failAt;
}

// Every operator new ends here; the real allocator keeps the sanitizers' bookkeeping.
void* Allocate(size_t n, size_t alignment)
{
    if (FailThisOne())
        return nullptr;
    if (alignment <= alignof(std::max_align_t))
        return __real_malloc(n ? n : 1);
    return __real_aligned_alloc(alignment, (n + alignment - 1) / alignment * alignment);
}

void* AllocateOrThrow(size_t n, size_t alignment)
{
    void* p = Allocate(n, alignment);
    if (!p)
        throw std::bad_alloc();
    return p;
}
} // namespace

void ArmAllocationFailure(long failAt)
{
    g_seen = 0;
    g_failAt = failAt;
    g_armed = true;
}

long DisarmAllocationFailure()
{
    g_armed = false;
    return g_seen;
}

extern "C" void* __wrap_malloc(size_t n)
{
    return FailThisOne() ? nullptr : __real_malloc(n);
}
extern "C" void* __wrap_calloc(size_t count, size_t size)
{
    return FailThisOne() ? nullptr : __real_calloc(count, size);
}
extern "C" void* __wrap_realloc(void* p, size_t n)
{
    return FailThisOne() ? nullptr : __real_realloc(p, n);
}
extern "C" void* __wrap_aligned_alloc(size_t alignment, size_t n)
{
    return FailThisOne() ? nullptr : __real_aligned_alloc(alignment, n);
}

void* operator new(size_t n) { return AllocateOrThrow(n, 0); }
void* operator new[](size_t n) { return AllocateOrThrow(n, 0); }
void* operator new(size_t n, std::align_val_t a) { return AllocateOrThrow(n, static_cast<size_t>(a)); }
void* operator new[](size_t n, std::align_val_t a) { return AllocateOrThrow(n, static_cast<size_t>(a)); }
void* operator new(size_t n, const std::nothrow_t&) noexcept { return Allocate(n, 0); }
void* operator new[](size_t n, const std::nothrow_t&) noexcept { return Allocate(n, 0); }
void* operator new(size_t n, std::align_val_t a, const std::nothrow_t&) noexcept
{
    return Allocate(n, static_cast<size_t>(a));
}
void* operator new[](size_t n, std::align_val_t a, const std::nothrow_t&) noexcept
{
    return Allocate(n, static_cast<size_t>(a));
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
