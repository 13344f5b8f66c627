// Refuses single allocations larger than half the machine's memory with std::bad_alloc.
//
// Some importers trust counts read from the file: a header claiming a billion vertices makes them
// ask for tens of gigabytes and zero them, which takes minutes and swaps the machine to a halt
// before the file is found to be broken. Replacing the global allocation functions lets such a
// request fail at once; the importer catches the exception and reports the file as unreadable.
// Everything else is C heap blocks released with free (sanitizers still watch those); blocks of
// 2 MB and more are advised for huge pages, which spares the faults of filling the importer's and
// the scene content's large arrays 4 KB at a time.
#include <cstdlib>
#include <new>
#include <unistd.h>

#include "QMXTLargeArray.h"

namespace
{
std::size_t Limit()
{
    static const std::size_t limit = []
    {
        const long pages = sysconf(_SC_PHYS_PAGES);
        const long pageSize = sysconf(_SC_PAGESIZE);
        if (pages <= 0 || pageSize <= 0)
            return static_cast<std::size_t>(4) << 30;
        return static_cast<std::size_t>(pages) / 2 * static_cast<std::size_t>(pageSize);
    }();
    return limit;
}

void* Allocate(std::size_t size) noexcept
{
    if (size > Limit())
        return nullptr;
    return QMXTLargeAlloc(size);
}
} // namespace

void* operator new(std::size_t size)
{
    if (void* p = Allocate(size))
        return p;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    if (void* p = Allocate(size))
        return p;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}

void operator delete(void* p) noexcept
{
    std::free(p);
}

void operator delete[](void* p) noexcept
{
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}

void operator delete[](void* p, std::size_t) noexcept
{
    std::free(p);
}

void operator delete(void* p, const std::nothrow_t&) noexcept
{
    std::free(p);
}

void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    std::free(p);
}
