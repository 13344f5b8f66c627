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
#include <cstring>
#include <initializer_list>
#include <new>
#include <type_traits>
#include <utility>

// The C heap functions with that advice: blocks come back from free() like any other (the scene
// model's arrays are released with free), and QMXTLargeFree is free.
void* QMXTLargeAlloc(size_t nBytes);
void* QMXTLargeCalloc(size_t nCount, size_t nSize); // zeroed; null also when the product overflows
void* QMXTLargeRealloc(void* p, size_t nBytes);
void QMXTLargeFree(void* p);

// The one growable array for large stores of plain (trivially copyable) elements: vertex stores,
// per-triangle records, index lists. It grows through QMXTLargeRealloc by doubling (so the copies a
// growth makes stay within twice the final size), and blocks of 2 MB and more get the huge-page
// advice. Every size computation is checked: a size that cannot be represented, like a
// failed allocation, throws std::bad_alloc, as the standard containers do. The interface is the
// part of std::vector's the exporter uses, with append for insertion at the end, and grow(n),
// which appends n uninitialised elements.
template <class T>
class QMXTLargeVector
{
    static_assert(std::is_trivially_copyable<T>::value, "plain elements only");

  public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    // The constructors that allocate delegate to the default one, so that the destructor frees what
    // they got when a later allocation throws.
    QMXTLargeVector() = default;
    explicit QMXTLargeVector(size_t n) : QMXTLargeVector() { resize(n); }
    QMXTLargeVector(size_t n, const T& value) : QMXTLargeVector() { assign(n, value); }
    template <class It, typename = std::enable_if_t<!std::is_integral<It>::value>>
    QMXTLargeVector(It first, It last) : QMXTLargeVector()
    {
        append(first, last);
    }
    QMXTLargeVector(const QMXTLargeVector& o) : QMXTLargeVector() { CopyFrom(o); }
    QMXTLargeVector(QMXTLargeVector&& o) noexcept { swap(o); }
    QMXTLargeVector& operator=(const QMXTLargeVector& o)
    {
        if (this != &o)
        {
            m_size = 0;
            CopyFrom(o);
        }
        return *this;
    }
    QMXTLargeVector& operator=(QMXTLargeVector&& o) noexcept
    {
        QMXTLargeVector(std::move(o)).swap(*this);
        return *this;
    }
    ~QMXTLargeVector() { QMXTLargeFree(m_p); }

    size_t size() const { return m_size; }
    size_t capacity() const { return m_capacity; }
    bool empty() const { return m_size == 0; }
    T* data() { return m_p; }
    const T* data() const { return m_p; }
    T& operator[](size_t i) { return m_p[i]; }
    const T& operator[](size_t i) const { return m_p[i]; }
    T* begin() { return m_p; }
    T* end() { return m_p + m_size; }
    const T* begin() const { return m_p; }
    const T* end() const { return m_p + m_size; }
    T& back() { return m_p[m_size - 1]; }
    const T& back() const { return m_p[m_size - 1]; }

    // Makes room for at least n elements in all.
    void reserve(size_t n)
    {
        if (n <= m_capacity)
            return;
        if (n > size_t(-1) / sizeof(T))
            throw std::bad_alloc();
        T* p = static_cast<T*>(QMXTLargeRealloc(m_p, n * sizeof(T)));
        if (!p)
            throw std::bad_alloc();
        m_p = p;
        m_capacity = n;
    }
    // Appends n uninitialised elements and returns the first of them.
    T* grow(size_t n)
    {
        if (n > size_t(-1) / sizeof(T) - m_size)
            throw std::bad_alloc();
        if (m_size + n > m_capacity)
        {
            const size_t doubled = m_capacity > size_t(-1) / sizeof(T) / 2 ? m_size + n : m_capacity * 2;
            reserve(m_size + n > doubled ? m_size + n : (doubled < 64 ? 64 : doubled));
        }
        T* at = m_p + m_size;
        m_size += n;
        return at;
    }
    void push_back(const T& value)
    {
        const T copy = value; // value may live in this array
        *grow(1) = copy;
    }
    void pop_back() { --m_size; }
    // Appends copies of [first, last), a range outside this array.
    template <class It>
    void append(It first, It last)
    {
        for (; first != last; ++first)
            push_back(*first);
    }
    void append(std::initializer_list<T> values) { append(values.begin(), values.end()); }
    // Removes [first, last) and moves the tail down.
    void erase(T* first, T* last)
    {
        std::memmove(first, last, static_cast<size_t>(end() - last) * sizeof(T));
        m_size -= static_cast<size_t>(last - first);
    }
    // Gives back the memory beyond the elements.
    void shrink_to_fit()
    {
        if (m_size == m_capacity)
            return;
        if (m_size == 0)
        {
            QMXTLargeVector().swap(*this);
            return;
        }
        if (T* p = static_cast<T*>(QMXTLargeRealloc(m_p, m_size * sizeof(T))))
        {
            m_p = p;
            m_capacity = m_size;
        }
    }
    // New elements are value-initialised (or copies of value), as std::vector makes them.
    void resize(size_t n) { Resize(n, nullptr); }
    void resize(size_t n, const T& value) { Resize(n, &value); }
    void assign(size_t n, const T& value)
    {
        const T copy = value;
        m_size = 0;
        Resize(n, &copy);
    }
    // Empties the array and keeps its memory; swap with an empty one to free it.
    void clear() { m_size = 0; }
    void swap(QMXTLargeVector& o) noexcept
    {
        std::swap(m_p, o.m_p);
        std::swap(m_size, o.m_size);
        std::swap(m_capacity, o.m_capacity);
    }

  private:
    void Resize(size_t n, const T* value)
    {
        if (n > m_size)
        {
            const size_t old = m_size;
            T* p = grow(n - old);
            for (size_t i = 0; i < n - old; ++i)
                value ? new (p + i) T(*value) : new (p + i) T();
        }
        m_size = n;
    }
    void CopyFrom(const QMXTLargeVector& o)
    {
        if (o.m_size)
            std::memcpy(grow(o.m_size), o.m_p, o.m_size * sizeof(T));
    }

    T* m_p = nullptr;
    size_t m_size = 0;
    size_t m_capacity = 0;
};
