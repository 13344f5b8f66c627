// A growable array of trivially copyable elements on the C heap. Growth goes through realloc, which
// for large blocks moves pages instead of copying them, so building a store of hundreds of
// megabytes neither copies it nor touches its memory twice. Throws std::bad_alloc when memory runs
// out, like the standard containers.
#pragma once

#include <cstdlib>
#include <new>
#include <type_traits>
#include "QMXTLargeArray.h"

template <typename T> class CPodBuffer
{
    static_assert(std::is_trivially_copyable<T>::value, "plain elements only");

  public:
    CPodBuffer() = default;
    ~CPodBuffer() { std::free(m_p); }
    CPodBuffer(const CPodBuffer&) = delete;
    CPodBuffer& operator=(const CPodBuffer&) = delete;

    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T* data() { return m_p; }
    const T* data() const { return m_p; }
    T& operator[](size_t i) { return m_p[i]; }
    const T& operator[](size_t i) const { return m_p[i]; }

    // Makes room for at least n elements in all.
    void reserve(size_t n)
    {
        if (n <= m_capacity)
            return;
        T* p = static_cast<T*>(QMXTLargeRealloc(m_p, n * sizeof(T)));
        if (!p)
            throw std::bad_alloc();
        m_p = p;
        m_capacity = n;
    }
    // Appends n uninitialised elements and returns the first of them.
    T* grow(size_t n)
    {
        if (m_size + n > m_capacity)
        {
            const size_t doubled = m_capacity * 2;
            reserve(m_size + n > doubled ? m_size + n : (doubled < 64 ? 64 : doubled));
        }
        T* at = m_p + m_size;
        m_size += n;
        return at;
    }
    void push_back(const T& v) { *grow(1) = v; }
    // Frees the memory.
    void clear()
    {
        std::free(m_p);
        m_p = nullptr;
        m_size = m_capacity = 0;
    }

  private:
    T* m_p = nullptr;
    size_t m_size = 0;
    size_t m_capacity = 0;
};
