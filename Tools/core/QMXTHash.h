// CQMXTHash: a 32-bit FNV-1 hash value. CQMXTStringHash: a string that carries its hash, so that
// names can be compared by one integer comparison.
//
// FNV-1 over bytes: start at 0x811C9DC5; for each byte, multiply by 16777619 modulo 2^32, then XOR
// the byte. Zero bytes hash to 0 rather than to the start value, so an empty string hashes to 0.
// Multi-byte values hash in their in-memory byte order. Cost: O(bytes).
#pragma once

#include <cstddef>
#include <cstdint>

#include "QMXTString.h"

class CQMXTHash
{
  public:
    CQMXTHash() = default;
    CQMXTHash(const void* pData, size_t uiElementSize, size_t uiCount)
    {
        MakeHash(pData, uiElementSize, uiCount);
    }

    // Hashes uiElementSize * uiCount bytes at pData (which may be null when that is 0), keeps the
    // value and returns it.
    uint32_t MakeHash(const void* pData, size_t uiElementSize, size_t uiCount);
    // Continues an FNV-1 hash value over more bytes: the hash of A followed by B is
    // Continue(hash of A, B) whenever A is not empty.
    static uint32_t Continue(uint32_t uiHash, const void* pData, size_t uiBytes);

    uint32_t GetHash() const { return m_uiHash; }
    void SetHash(uint32_t uiHash) { m_uiHash = uiHash; }

    bool operator==(const CQMXTHash& h) const { return m_uiHash == h.m_uiHash; }
    bool operator!=(const CQMXTHash& h) const { return m_uiHash != h.m_uiHash; }
    bool operator<(const CQMXTHash& h) const { return m_uiHash < h.m_uiHash; }

  private:
    uint32_t m_uiHash = 0;
};

// A string and the hash of its characters (without the terminator). The string is read-only from
// outside; every assign and append updates the hash (appending costs only the appended bytes).
// Modifiers return 0, or 1 when out of memory, in which case string and hash are unchanged.
// Two hashed strings compare by hash alone (distinct strings with equal hashes compare equal); a
// hashed string and a plain string or character array compare by characters.
class CQMXTStringHash
{
  public:
    CQMXTStringHash() = default;
    CQMXTStringHash(const char* psz) { assign(psz); }
    CQMXTStringHash(const CQMXTString& s) { assign(s); }

    int assign(const char* psz);
    int assign(const CQMXTString& s);
    int append(const char* psz);
    int append(const CQMXTString& s);
    CQMXTStringHash& operator=(const char* psz);
    CQMXTStringHash& operator=(const CQMXTString& s);
    CQMXTStringHash& operator+=(const char* psz);
    CQMXTStringHash& operator+=(const CQMXTString& s);

    const CQMXTString& GetString() const { return m_sString; }
    const char* c_str() const { return m_sString.c_str(); }
    size_t length() const { return m_sString.length(); }
    uint32_t GetHash() const { return m_Hash.GetHash(); }

    bool operator==(const CQMXTStringHash& s) const { return m_Hash == s.m_Hash; }
    bool operator!=(const CQMXTStringHash& s) const { return m_Hash != s.m_Hash; }
    bool operator==(const CQMXTString& s) const { return m_sString == s; }
    bool operator!=(const CQMXTString& s) const { return m_sString != s; }
    bool operator==(const char* psz) const { return m_sString == psz; }
    bool operator!=(const char* psz) const { return m_sString != psz; }

  private:
    int Assign(const char* p, size_t n);
    int Append(const char* p, size_t n);

    CQMXTString m_sString;
    CQMXTHash m_Hash;
};
