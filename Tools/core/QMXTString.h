// CQMXTString: an owned, zero-terminated character buffer with a length and a capacity, with the
// operations of a standard string plus a few text helpers used by the exporter, and free helpers for
// file paths, white space and printf-style formatting.
//
// Memory: the buffer comes from the C allocator and grows by doubling, so appending is amortised
// O(1). Nothing throws. Every operation that may allocate either returns a result code (0 success,
// 1 failure) and leaves the string unchanged on failure, or (the operators and the functions that
// return a new string) yields an empty or unchanged string. Lengths above max_size() are refused
// rather than attempted. c_str() is never null, even for an empty string whose buffer is not yet
// allocated. Any const char* argument may be null, which reads as "".
//
// Positions never crash:
//  - A position past the end is clamped to length(): substr, left, right and erase then act on
//    nothing, insert appends, and a count that runs past the end stops at the end.
//  - Forward searches (find, find_first_of, ...) starting past the end find nothing (npos); backward
//    searches (rfind, find_last_of, ...) treat any start at or past the end, npos included, as "from
//    the last character". An empty pattern is found at the start position when that is <= length().
//  - operator[] past the end reads '\0'; a write through the non-const form past the end goes to a
//    scratch character outside the string and is lost.
//
// Characters are bytes, and may include '\0' when given with an explicit count; toLower/toUpper and
// white space follow the C locale (ASCII).
//
// Cost: searches are O(length x pattern length), set searches O(length x set size); substituting
// every occurrence is one pass; the path and white-space helpers are O(length).
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>

class CQMXTString
{
  public:
    static constexpr size_t npos = static_cast<size_t>(-1);
    // Longest string this class will hold (2^31 - 2 characters).
    static constexpr size_t max_size() { return 0x7FFFFFFE; }

    CQMXTString() = default;
    CQMXTString(const char* psz) { assign(psz); }
    CQMXTString(const char* p, size_t n) { assign(p, n); }
    CQMXTString(size_t n, char c) { assign(n, c); }
    CQMXTString(const CQMXTString& s) { assign(s); }
    CQMXTString(CQMXTString&& s) noexcept;
    ~CQMXTString();

    CQMXTString& operator=(const CQMXTString& s);
    CQMXTString& operator=(CQMXTString&& s) noexcept;
    CQMXTString& operator=(const char* psz);
    CQMXTString& operator=(char c);

    // Size and storage.
    size_t length() const { return m_uiLength; }
    size_t size() const { return m_uiLength; }
    size_t capacity() const { return m_uiCapacity; }
    bool empty() const { return m_uiLength == 0; }
    const char* c_str() const { return m_pszBuffer ? m_pszBuffer : ""; }
    const char* data() const { return c_str(); }
    int reserve(size_t n);
    // Shortens, or lengthens with copies of c.
    int resize(size_t n, char c = '\0');
    void clear();
    void swap(CQMXTString& s) noexcept;

    char operator[](size_t i) const { return i < m_uiLength ? m_pszBuffer[i] : '\0'; }
    char& operator[](size_t i);

    // Replacing and growing. All return 0 on success, 1 when the memory could not be had.
    int assign(const CQMXTString& s) { return Splice(0, npos, s.c_str(), s.m_uiLength, 0); }
    int assign(const char* psz) { return Splice(0, npos, Safe(psz), Len(psz), 0); }
    int assign(const char* p, size_t n) { return Splice(0, npos, Safe(p), p ? n : 0, 0); }
    int assign(size_t n, char c) { return Splice(0, npos, nullptr, n, c); }
    int append(const CQMXTString& s) { return Splice(npos, 0, s.c_str(), s.m_uiLength, 0); }
    int append(const char* psz) { return Splice(npos, 0, Safe(psz), Len(psz), 0); }
    int append(const char* p, size_t n) { return Splice(npos, 0, Safe(p), p ? n : 0, 0); }
    int append(size_t n, char c) { return Splice(npos, 0, nullptr, n, c); }
    int push_back(char c) { return append(1, c); }
    int insert(size_t pos, const CQMXTString& s) { return Splice(pos, 0, s.c_str(), s.m_uiLength, 0); }
    int insert(size_t pos, const char* psz) { return Splice(pos, 0, Safe(psz), Len(psz), 0); }
    int insert(size_t pos, size_t n, char c) { return Splice(pos, 0, nullptr, n, c); }
    // Replaces the n characters at pos (clamped) with psz.
    int replace(size_t pos, size_t n, const char* psz) { return Splice(pos, n, Safe(psz), Len(psz), 0); }
    // Removes n characters from pos (clamped).
    CQMXTString& erase(size_t pos = 0, size_t n = npos);
    // Replaces the contents with printf-style formatted text of any length.
    int format(const char* pszFormat, ...) __attribute__((format(printf, 2, 3)));
    int vformat(const char* pszFormat, va_list args);

    // Comparison: negative, zero or positive as memcmp over the characters, a prefix sorting first.
    int compare(const CQMXTString& s) const;
    int compare(const char* psz) const;

    // Searches return a position or npos.
    size_t find(const CQMXTString& s, size_t pos = 0) const { return FindIn(s.c_str(), s.m_uiLength, pos); }
    size_t find(const char* psz, size_t pos = 0) const { return FindIn(Safe(psz), Len(psz), pos); }
    size_t find(char c, size_t pos = 0) const { return FindIn(&c, 1, pos); }
    size_t rfind(const CQMXTString& s, size_t pos = npos) const
    {
        return RFindIn(s.c_str(), s.m_uiLength, pos);
    }
    size_t rfind(const char* psz, size_t pos = npos) const { return RFindIn(Safe(psz), Len(psz), pos); }
    size_t rfind(char c, size_t pos = npos) const { return RFindIn(&c, 1, pos); }
    size_t find_first_of(const char* pszSet, size_t pos = 0) const;
    size_t find_first_not_of(const char* pszSet, size_t pos = 0) const;
    size_t find_last_of(const char* pszSet, size_t pos = npos) const;
    size_t find_last_not_of(const char* pszSet, size_t pos = npos) const;

    // Copies of parts: n characters from pos, the first n, the last n (all clamped).
    CQMXTString substr(size_t pos = 0, size_t n = npos) const;
    CQMXTString left(size_t n) const { return substr(0, n); }
    CQMXTString right(size_t n) const { return substr(n < m_uiLength ? m_uiLength - n : 0); }

    // In-place ASCII case conversion.
    CQMXTString& toLower();
    CQMXTString& toUpper();
    // Replaces the first (or, with bAll, every) occurrence of cFrom by cTo. Never allocates.
    CQMXTString& substitute(char cFrom, char cTo, bool bAll = false);
    // Replaces the first (or, with bAll, every) occurrence of pszFrom by pszTo, scanning left to right
    // over the original text: occurrences do not overlap and inserted text is not searched again.
    // An empty pszFrom changes nothing. Returns 0, or 1 (string unchanged) when out of memory.
    int substitute(const char* pszFrom, const char* pszTo, bool bAll = false);

    // Counts occurrences of c, or non-overlapping occurrences of a non-empty pattern, from pos on.
    size_t find_number_of(char c, size_t pos = 0) const;
    size_t find_number_of(const char* psz, size_t pos = 0) const;
    // The first occurrence starting strictly after pos; pos = npos searches from the start, so
    // p = find_next_occurance_of(x, npos) followed by p = find_next_occurance_of(x, p) walks them all.
    size_t find_next_occurance_of(char c, size_t pos) const { return find(c, pos + 1); }
    size_t find_next_occurance_of(const char* psz, size_t pos) const { return find(psz, pos + 1); }
    // The last occurrence starting strictly before pos; pos >= length() (npos too) searches the whole
    // string, and pos = 0 finds nothing.
    size_t find_previous_occurance_of(char c, size_t pos) const { return pos ? rfind(c, pos - 1) : npos; }
    size_t find_previous_occurance_of(const char* psz, size_t pos) const
    {
        return pos ? rfind(psz, pos - 1) : npos;
    }
    // Position of the n-th character (n counts from 1) at or after pos that belongs to pszSet;
    // find_first_ofn(set, 1, pos) equals find_first_of(set, pos). npos when there are fewer than n,
    // or n is 0.
    size_t find_first_ofn(const char* pszSet, size_t n, size_t pos = 0) const;

    CQMXTString& operator+=(const CQMXTString& s);
    CQMXTString& operator+=(const char* psz);
    CQMXTString& operator+=(char c);

  private:
    static const char* Safe(const char* psz) { return psz ? psz : ""; }
    static size_t Len(const char* psz) { return psz ? std::strlen(psz) : 0; }
    // Replaces [pos, pos + nErase) by n characters from p (which may point into this string), or by
    // n copies of cFill when p is null.
    int Splice(size_t pos, size_t nErase, const char* p, size_t n, char cFill);
    size_t FindIn(const char* p, size_t n, size_t pos) const;
    size_t RFindIn(const char* p, size_t n, size_t pos) const;

    char* m_pszBuffer = nullptr; // m_uiCapacity + 1 bytes, or null while nothing was stored
    size_t m_uiLength = 0;
    size_t m_uiCapacity = 0; // characters, not counting the terminator
};

CQMXTString operator+(const CQMXTString& a, const CQMXTString& b);
CQMXTString operator+(const CQMXTString& a, const char* b);
CQMXTString operator+(const char* a, const CQMXTString& b);
CQMXTString operator+(const CQMXTString& a, char b);

inline bool operator==(const CQMXTString& a, const CQMXTString& b)
{
    return a.compare(b) == 0;
}
inline bool operator!=(const CQMXTString& a, const CQMXTString& b)
{
    return a.compare(b) != 0;
}
inline bool operator<(const CQMXTString& a, const CQMXTString& b)
{
    return a.compare(b) < 0;
}
inline bool operator>(const CQMXTString& a, const CQMXTString& b)
{
    return a.compare(b) > 0;
}
inline bool operator<=(const CQMXTString& a, const CQMXTString& b)
{
    return a.compare(b) <= 0;
}
inline bool operator>=(const CQMXTString& a, const CQMXTString& b)
{
    return a.compare(b) >= 0;
}
inline bool operator==(const CQMXTString& a, const char* b)
{
    return a.compare(b) == 0;
}
inline bool operator!=(const CQMXTString& a, const char* b)
{
    return a.compare(b) != 0;
}
inline bool operator<(const CQMXTString& a, const char* b)
{
    return a.compare(b) < 0;
}
inline bool operator==(const char* a, const CQMXTString& b)
{
    return b.compare(a) == 0;
}
inline bool operator!=(const char* a, const CQMXTString& b)
{
    return b.compare(a) != 0;
}

// Paths: both '/' and '\\' separate directories (scenes made on Windows name textures with '\\').
// For every path, GetContainingDirectoryPath(p) + GetFileName(p) == p.
// The part after the last separator; empty when the path ends in a separator.
CQMXTString QMXTStringGetFileName(const CQMXTString& sPath);
// The extension of the file name, without its dot: the text after the last '.' of the file name,
// unless that dot is the name's first character (".profile" has none). Dots in directories never
// count. Empty when there is none.
CQMXTString QMXTStringGetFileExtension(const CQMXTString& sPath);
// Everything up to and including the last separator; empty for a bare file name.
CQMXTString QMXTStringGetContainingDirectoryPath(const CQMXTString& sPath);

// Remove leading or trailing white space (space, \t, \n, \v, \f, \r) in place; return the string.
CQMXTString& QMXTStringStripWhiteSpaceFromStartOf(CQMXTString& s);
CQMXTString& QMXTStringStripWhiteSpaceFromEndOf(CQMXTString& s);

// Offsets of the first count texts of a block of consecutive zero-terminated texts (a string table
// stored as one block, ending in a zero); texts missing at the end of the block get the offset of
// its last zero, an empty text.
void QMXTStringBlockOffsets(const char* block, size_t size, uint32_t* offsets, size_t count);

// Length of the well-formed UTF-8 sequence at p (1 for ASCII; end bounds it, p < end), or 0 for a
// byte that starts none (overlong forms, surrogates and code points past U+10FFFF are ill-formed).
size_t QMXTStringUtf8Length(const unsigned char* p, const unsigned char* end);

// A copy of a C string on the C heap (released with free), as the scene model's names are; a null
// string copies as "". Null when memory runs out.
char* QMXTStringDuplicate(const char* s);

// printf-style formatting into a new string of any length; empty on a format or memory failure.
CQMXTString QMXTStringFromFormattedStr(const char* pszFormat, ...) __attribute__((format(printf, 1, 2)));
