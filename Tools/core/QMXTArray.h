// CQMXTArray<T>: a growable array that owns its elements.
//
// A new array holds room for 16 elements. SetCapacity(n) does nothing when the capacity is already
// at least n; otherwise it allocates max(2 x capacity, n) elements (just n when the doubled size
// would pass the size limit), copies the elements over by assignment and frees the old array, so a
// run of appends costs amortised O(1) each. Append asks for size + 1.
//
// T needs a default constructor and copy assignment. The slots between size and capacity hold
// default-constructed elements; removing an element resets its vacated slot to T().
//
// Nothing throws. Element storage is limited to 2^31 - 1 bytes; a request beyond that, or an
// allocation that fails, returns failure and leaves the array as it was. A copy whose allocation fails
// is empty. Indexing is unchecked: the index must be below GetSize().
#pragma once

#include <cassert>
#include <cstdint>
#include <new>
#include <utility>

template <typename T> class CQMXTArray
{
  public:
    static constexpr unsigned int kInitialCapacity = 16;
    static constexpr uint64_t kMaxBytes = 0x7FFFFFFF;

    CQMXTArray() { SetCapacity(kInitialCapacity); }
    CQMXTArray(const CQMXTArray& a) { CopyFrom(a); }
    CQMXTArray(CQMXTArray&& a) noexcept { Swap(a); }
    virtual ~CQMXTArray() { delete[] m_pArray; }

    CQMXTArray& operator=(const CQMXTArray& a)
    {
        CopyFrom(a);
        return *this;
    }
    CQMXTArray& operator=(CQMXTArray&& a) noexcept
    {
        CQMXTArray tmp(std::move(a));
        Swap(tmp);
        return *this;
    }

    // Makes this a deep copy of a (same size and capacity). Returns 0, or 1 (unchanged) on failure.
    int CopyFrom(const CQMXTArray& a)
    {
        if (&a == this)
            return 0;
        T* p = Allocate(a.m_uiCapacity);
        if (!p && a.m_uiCapacity)
            return 1;
        for (unsigned int i = 0; i < a.m_uiSize; ++i)
            p[i] = a.m_pArray[i];
        delete[] m_pArray;
        m_pArray = p;
        m_uiSize = a.m_uiSize;
        m_uiCapacity = a.m_uiCapacity;
        return 0;
    }

    void Swap(CQMXTArray& a) noexcept
    {
        std::swap(m_pArray, a.m_pArray);
        std::swap(m_uiSize, a.m_uiSize);
        std::swap(m_uiCapacity, a.m_uiCapacity);
    }

    // Returns 0 when there is room for n elements, 1 (unchanged) when that could not be had.
    int SetCapacity(unsigned int n)
    {
        if (m_uiCapacity >= n)
            return 0;
        uint64_t uiNew = 2 * uint64_t(m_uiCapacity) > n ? 2 * uint64_t(m_uiCapacity) : n;
        if (uiNew * sizeof(T) > kMaxBytes)
            uiNew = n;
        T* p = Allocate(uiNew);
        if (!p)
            return 1;
        for (unsigned int i = 0; i < m_uiSize; ++i)
            p[i] = m_pArray[i];
        delete[] m_pArray;
        m_pArray = p;
        m_uiCapacity = static_cast<unsigned int>(uiNew);
        return 0;
    }

    // Append a default element, or a copy of v (which may be an element of this array). Both return
    // the new element's index, or -1 when the array could not grow.
    int Append() { return Append(T()); }
    int Append(const T& v)
    {
        if (m_uiSize == m_uiCapacity)
        {
            // v may live in the array about to be freed: find it again in the new one.
            const uintptr_t uiV = reinterpret_cast<uintptr_t>(&v),
                            uiFirst = reinterpret_cast<uintptr_t>(m_pArray);
            const bool bInside = m_pArray && uiV >= uiFirst && uiV < uiFirst + m_uiSize * sizeof(T);
            const unsigned int uiAt = bInside ? static_cast<unsigned int>((uiV - uiFirst) / sizeof(T)) : 0;
            if (SetCapacity(m_uiSize + 1) != 0) // the byte limit keeps m_uiSize + 1 from wrapping
                return -1;
            m_pArray[m_uiSize] = bInside ? m_pArray[uiAt] : v;
        }
        else
            m_pArray[m_uiSize] = v;
        return static_cast<int>(m_uiSize++);
    }

    // Removes the element at uiIndex, moving the later ones down by one. O(size). Returns 0, or 1
    // when uiIndex is not below GetSize().
    int Remove(unsigned int uiIndex)
    {
        if (uiIndex >= m_uiSize)
            return 1;
        for (unsigned int i = uiIndex + 1; i < m_uiSize; ++i)
            m_pArray[i - 1] = m_pArray[i];
        m_pArray[--m_uiSize] = T();
        return 0;
    }

    // Removes the last element; 1 when the array is empty.
    int RemoveLast() { return m_uiSize ? Remove(m_uiSize - 1) : 1; }

    unsigned int GetSize() const { return m_uiSize; }
    unsigned int GetCapacity() const { return m_uiCapacity; }
    T* GetData() { return m_pArray; }
    const T* GetData() const { return m_pArray; }

    T& operator[](unsigned int i)
    {
        assert(i < m_uiSize);
        return m_pArray[i];
    }
    const T& operator[](unsigned int i) const
    {
        assert(i < m_uiSize);
        return m_pArray[i];
    }

  private:
    static T* Allocate(uint64_t n)
    {
        if (n == 0 || n * sizeof(T) > kMaxBytes)
            return nullptr;
        return new (std::nothrow) T[static_cast<size_t>(n)];
    }

    T* m_pArray = nullptr;
    unsigned int m_uiSize = 0;
    unsigned int m_uiCapacity = 0;
};
