#include "QMXTString.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace
{
bool InSet(const char* pszSet, char c)
{
    return c != '\0' && std::strchr(pszSet, c) != nullptr;
}

const char* const kWhiteSpace = " \t\n\v\f\r";
const char* const kSeparators = "/\\";
} // namespace

CQMXTString::CQMXTString(CQMXTString&& s) noexcept
{
    swap(s);
}

CQMXTString::~CQMXTString()
{
    std::free(m_pszBuffer);
}

CQMXTString& CQMXTString::operator=(const CQMXTString& s)
{
    assign(s);
    return *this;
}

CQMXTString& CQMXTString::operator=(CQMXTString&& s) noexcept
{
    if (this != &s)
    {
        clear();
        swap(s);
    }
    return *this;
}

CQMXTString& CQMXTString::operator=(const char* psz)
{
    assign(psz);
    return *this;
}

CQMXTString& CQMXTString::operator=(char c)
{
    assign(1, c);
    return *this;
}

int CQMXTString::reserve(size_t n)
{
    if (n <= m_uiCapacity && (m_pszBuffer || n == 0))
        return 0;
    if (n > max_size())
        return 1;
    // Doubling keeps a run of appends linear; 15 avoids a string of tiny reallocations.
    const size_t uiNew = std::max({n, std::min(2 * m_uiCapacity, max_size()), size_t(15)});
    char* p = static_cast<char*>(std::realloc(m_pszBuffer, uiNew + 1));
    if (!p)
        return 1;
    if (!m_pszBuffer)
        p[0] = '\0';
    m_pszBuffer = p;
    m_uiCapacity = uiNew;
    return 0;
}

int CQMXTString::resize(size_t n, char c)
{
    if (n <= m_uiLength)
    {
        erase(n);
        return 0;
    }
    return append(n - m_uiLength, c);
}

void CQMXTString::clear()
{
    m_uiLength = 0;
    if (m_pszBuffer)
        m_pszBuffer[0] = '\0';
}

void CQMXTString::swap(CQMXTString& s) noexcept
{
    std::swap(m_pszBuffer, s.m_pszBuffer);
    std::swap(m_uiLength, s.m_uiLength);
    std::swap(m_uiCapacity, s.m_uiCapacity);
}

char& CQMXTString::operator[](size_t i)
{
    if (i < m_uiLength)
        return m_pszBuffer[i];
    static thread_local char s_cScratch;
    s_cScratch = '\0';
    return s_cScratch;
}

// The one routine that changes the characters: everything that assigns, appends, inserts, replaces or
// erases comes here.
int CQMXTString::Splice(size_t pos, size_t nErase, const char* p, size_t n, char cFill)
{
    pos = std::min(pos, m_uiLength);
    nErase = std::min(nErase, m_uiLength - pos);
    const size_t uiKept = m_uiLength - nErase;
    if (n > max_size() - uiKept)
        return 1;
    if (n == 0 && nErase == 0)
        return 0;

    // Text taken from this very buffer would move or be freed under our feet: copy it aside first.
    char* pszCopy = nullptr;
    const uintptr_t uiAt = reinterpret_cast<uintptr_t>(p),
                    uiBuffer = reinterpret_cast<uintptr_t>(m_pszBuffer);
    if (p && n && m_pszBuffer && uiAt >= uiBuffer && uiAt <= uiBuffer + m_uiCapacity)
    {
        pszCopy = static_cast<char*>(std::malloc(n));
        if (!pszCopy)
            return 1;
        std::memcpy(pszCopy, p, n);
        p = pszCopy;
    }
    if (reserve(uiKept + n) != 0)
    {
        std::free(pszCopy);
        return 1;
    }
    std::memmove(m_pszBuffer + pos + n, m_pszBuffer + pos + nErase, m_uiLength - pos - nErase);
    if (p)
        std::memcpy(m_pszBuffer + pos, p, n);
    else
        std::memset(m_pszBuffer + pos, cFill, n);
    m_uiLength = uiKept + n;
    m_pszBuffer[m_uiLength] = '\0';
    std::free(pszCopy);
    return 0;
}

CQMXTString& CQMXTString::erase(size_t pos, size_t n)
{
    Splice(pos, n, "", 0, 0); // shrinking never allocates
    return *this;
}

int CQMXTString::format(const char* pszFormat, ...)
{
    va_list args;
    va_start(args, pszFormat);
    const int iResult = vformat(pszFormat, args);
    va_end(args);
    return iResult;
}

int CQMXTString::vformat(const char* pszFormat, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    const int iNeeded = std::vsnprintf(nullptr, 0, Safe(pszFormat), copy);
    va_end(copy);
    if (iNeeded < 0 || static_cast<size_t>(iNeeded) > max_size())
        return 1;
    // Format into a fresh buffer: an argument may be this string's own text.
    const size_t uiLength = static_cast<size_t>(iNeeded);
    char* p = static_cast<char*>(std::malloc(uiLength + 1));
    if (!p)
        return 1;
    std::vsnprintf(p, uiLength + 1, Safe(pszFormat), args);
    std::free(m_pszBuffer);
    m_pszBuffer = p;
    m_uiLength = m_uiCapacity = uiLength;
    return 0;
}

int CQMXTString::compare(const CQMXTString& s) const
{
    const int i = std::memcmp(c_str(), s.c_str(), std::min(m_uiLength, s.m_uiLength));
    if (i != 0)
        return i;
    return m_uiLength < s.m_uiLength ? -1 : (m_uiLength > s.m_uiLength ? 1 : 0);
}

int CQMXTString::compare(const char* psz) const
{
    psz = Safe(psz);
    const size_t n = std::strlen(psz);
    const int i = std::memcmp(c_str(), psz, std::min(m_uiLength, n));
    if (i != 0)
        return i;
    return m_uiLength < n ? -1 : (m_uiLength > n ? 1 : 0);
}

size_t CQMXTString::FindIn(const char* p, size_t n, size_t pos) const
{
    if (pos > m_uiLength || n > m_uiLength - pos)
        return npos;
    for (size_t i = pos; i + n <= m_uiLength; ++i)
        if (std::memcmp(c_str() + i, p, n) == 0)
            return i;
    return npos;
}

size_t CQMXTString::RFindIn(const char* p, size_t n, size_t pos) const
{
    if (n > m_uiLength)
        return npos;
    for (size_t i = std::min(pos, m_uiLength - n);; --i)
    {
        if (std::memcmp(c_str() + i, p, n) == 0)
            return i;
        if (i == 0)
            return npos;
    }
}

size_t CQMXTString::find_first_of(const char* pszSet, size_t pos) const
{
    for (size_t i = pos; i < m_uiLength; ++i)
        if (InSet(Safe(pszSet), m_pszBuffer[i]))
            return i;
    return npos;
}

size_t CQMXTString::find_first_not_of(const char* pszSet, size_t pos) const
{
    for (size_t i = pos; i < m_uiLength; ++i)
        if (!InSet(Safe(pszSet), m_pszBuffer[i]))
            return i;
    return npos;
}

size_t CQMXTString::find_last_of(const char* pszSet, size_t pos) const
{
    if (m_uiLength == 0)
        return npos;
    for (size_t i = std::min(pos, m_uiLength - 1);; --i)
    {
        if (InSet(Safe(pszSet), m_pszBuffer[i]))
            return i;
        if (i == 0)
            return npos;
    }
}

size_t CQMXTString::find_last_not_of(const char* pszSet, size_t pos) const
{
    if (m_uiLength == 0)
        return npos;
    for (size_t i = std::min(pos, m_uiLength - 1);; --i)
    {
        if (!InSet(Safe(pszSet), m_pszBuffer[i]))
            return i;
        if (i == 0)
            return npos;
    }
}

CQMXTString CQMXTString::substr(size_t pos, size_t n) const
{
    pos = std::min(pos, m_uiLength);
    return CQMXTString(c_str() + pos, std::min(n, m_uiLength - pos));
}

CQMXTString& CQMXTString::toLower()
{
    for (size_t i = 0; i < m_uiLength; ++i)
        if (m_pszBuffer[i] >= 'A' && m_pszBuffer[i] <= 'Z')
            m_pszBuffer[i] = static_cast<char>(m_pszBuffer[i] - 'A' + 'a');
    return *this;
}

CQMXTString& CQMXTString::toUpper()
{
    for (size_t i = 0; i < m_uiLength; ++i)
        if (m_pszBuffer[i] >= 'a' && m_pszBuffer[i] <= 'z')
            m_pszBuffer[i] = static_cast<char>(m_pszBuffer[i] - 'a' + 'A');
    return *this;
}

CQMXTString& CQMXTString::substitute(char cFrom, char cTo, bool bAll)
{
    for (size_t i = 0; i < m_uiLength; ++i)
    {
        if (m_pszBuffer[i] != cFrom)
            continue;
        m_pszBuffer[i] = cTo;
        if (!bAll)
            break;
    }
    return *this;
}

int CQMXTString::substitute(const char* pszFrom, const char* pszTo, bool bAll)
{
    const size_t nFrom = std::strlen(Safe(pszFrom));
    size_t pos = nFrom ? find(pszFrom) : npos;
    if (pos == npos)
        return 0;
    if (!bAll)
        return replace(pos, nFrom, pszTo);
    // One pass into a new string: repeated splicing would be quadratic on long texts.
    CQMXTString sOut;
    size_t uiDone = 0;
    for (; pos != npos; pos = find(pszFrom, uiDone))
    {
        if (sOut.append(c_str() + uiDone, pos - uiDone) != 0 || sOut.append(pszTo) != 0)
            return 1;
        uiDone = pos + nFrom;
    }
    if (sOut.append(c_str() + uiDone, m_uiLength - uiDone) != 0)
        return 1;
    swap(sOut);
    return 0;
}

size_t CQMXTString::find_number_of(char c, size_t pos) const
{
    size_t uiCount = 0;
    for (size_t i = pos; i < m_uiLength; ++i)
        uiCount += m_pszBuffer[i] == c;
    return uiCount;
}

size_t CQMXTString::find_number_of(const char* psz, size_t pos) const
{
    const size_t n = std::strlen(Safe(psz));
    size_t uiCount = 0;
    for (size_t p = n ? find(psz, pos) : npos; p != npos; p = find(psz, p + n))
        ++uiCount;
    return uiCount;
}

size_t CQMXTString::find_first_ofn(const char* pszSet, size_t n, size_t pos) const
{
    if (n == 0)
        return npos;
    size_t p = find_first_of(pszSet, pos);
    while (--n > 0 && p != npos)
        p = find_first_of(pszSet, p + 1);
    return p;
}

CQMXTString& CQMXTString::operator+=(const CQMXTString& s)
{
    append(s);
    return *this;
}

CQMXTString& CQMXTString::operator+=(const char* psz)
{
    append(psz);
    return *this;
}

CQMXTString& CQMXTString::operator+=(char c)
{
    append(1, c);
    return *this;
}

namespace
{
size_t SafeLength(const char* psz)
{
    return psz ? std::strlen(psz) : 0;
}

// a followed by b, or an empty string when the memory could not be had.
CQMXTString Join(const char* a, size_t na, const char* b, size_t nb)
{
    CQMXTString s;
    if (s.reserve(na + nb) == 0)
    {
        s.append(a, na);
        s.append(b, nb);
    }
    return s;
}
} // namespace

CQMXTString operator+(const CQMXTString& a, const CQMXTString& b)
{
    return Join(a.c_str(), a.length(), b.c_str(), b.length());
}
CQMXTString operator+(const CQMXTString& a, const char* b)
{
    return Join(a.c_str(), a.length(), b, SafeLength(b));
}
CQMXTString operator+(const char* a, const CQMXTString& b)
{
    return Join(a, SafeLength(a), b.c_str(), b.length());
}
CQMXTString operator+(const CQMXTString& a, char b)
{
    return Join(a.c_str(), a.length(), &b, 1);
}

CQMXTString QMXTStringGetFileName(const CQMXTString& sPath)
{
    const size_t p = sPath.find_last_of(kSeparators);
    return p == CQMXTString::npos ? sPath : sPath.substr(p + 1);
}

CQMXTString QMXTStringGetFileExtension(const CQMXTString& sPath)
{
    const CQMXTString sName = QMXTStringGetFileName(sPath);
    const size_t p = sName.rfind('.');
    return p == CQMXTString::npos || p == 0 ? CQMXTString() : sName.substr(p + 1);
}

CQMXTString QMXTStringGetContainingDirectoryPath(const CQMXTString& sPath)
{
    const size_t p = sPath.find_last_of(kSeparators);
    return p == CQMXTString::npos ? CQMXTString() : sPath.left(p + 1);
}

CQMXTString& QMXTStringStripWhiteSpaceFromStartOf(CQMXTString& s)
{
    return s.erase(0, s.find_first_not_of(kWhiteSpace));
}

CQMXTString& QMXTStringStripWhiteSpaceFromEndOf(CQMXTString& s)
{
    const size_t p = s.find_last_not_of(kWhiteSpace);
    return s.erase(p == CQMXTString::npos ? 0 : p + 1);
}

CQMXTString QMXTStringFromFormattedStr(const char* pszFormat, ...)
{
    CQMXTString s;
    va_list args;
    va_start(args, pszFormat);
    s.vformat(pszFormat, args);
    va_end(args);
    return s;
}

char* QMXTStringDuplicate(const char* s)
{
    if (!s)
        s = "";
    const size_t bytes = std::strlen(s) + 1;
    char* copy = static_cast<char*>(std::malloc(bytes));
    if (copy)
        std::memcpy(copy, s, bytes);
    return copy;
}

void QMXTStringBlockOffsets(const char* block, size_t size, uint32_t* offsets, size_t count)
{
    if (size == 0)
        return;
    size_t offset = 0;
    for (size_t i = 0; i < count; ++i)
    {
        offsets[i] = static_cast<uint32_t>(offset < size ? offset : size - 1);
        while (offset < size && block[offset] != '\0')
            ++offset;
        ++offset;
    }
}

size_t QMXTStringUtf8Length(const unsigned char* p, const unsigned char* end)
{
    const unsigned char c = p[0];
    if (c < 0x80)
        return 1;
    size_t length;
    unsigned char low = 0x80, high = 0xBF; // allowed range of the second byte
    if (c >= 0xC2 && c <= 0xDF)
        length = 2;
    else if (c >= 0xE0 && c <= 0xEF)
    {
        length = 3;
        low = c == 0xE0 ? 0xA0 : 0x80; // no overlong forms
        high = c == 0xED ? 0x9F : 0xBF; // no surrogates
    }
    else if (c >= 0xF0 && c <= 0xF4)
    {
        length = 4;
        low = c == 0xF0 ? 0x90 : 0x80;
        high = c == 0xF4 ? 0x8F : 0xBF;
    }
    else
        return 0;
    if (static_cast<size_t>(end - p) < length || p[1] < low || p[1] > high)
        return 0;
    for (size_t i = 2; i < length; ++i)
        if (p[i] < 0x80 || p[i] > 0xBF)
            return 0;
    return length;
}
