#include "QMXTHash.h"

#include <cstring>

namespace
{
const uint32_t kFnvStart = 0x811C9DC5u;
const uint32_t kFnvPrime = 16777619u;
} // namespace

uint32_t CQMXTHash::Continue(uint32_t uiHash, const void* pData, size_t uiBytes)
{
    const unsigned char* p = static_cast<const unsigned char*>(pData);
    for (size_t i = 0; i < uiBytes; ++i)
        uiHash = (uiHash * kFnvPrime) ^ p[i];
    return uiHash;
}

uint32_t CQMXTHash::MakeHash(const void* pData, size_t uiElementSize, size_t uiCount)
{
    const size_t uiBytes = uiElementSize * uiCount;
    m_uiHash = (uiBytes && pData) ? Continue(kFnvStart, pData, uiBytes) : 0;
    return m_uiHash;
}

int CQMXTStringHash::Assign(const char* p, size_t n)
{
    if (m_sString.assign(p, n) != 0)
        return 1;
    m_Hash.MakeHash(m_sString.c_str(), 1, m_sString.length());
    return 0;
}

// The hash continues from where it stood over the appended characters only.
int CQMXTStringHash::Append(const char* p, size_t n)
{
    const bool bWasEmpty = m_sString.empty();
    if (m_sString.append(p, n) != 0)
        return 1;
    const char* pszAdded = m_sString.c_str() + m_sString.length() - n;
    if (bWasEmpty)
        m_Hash.MakeHash(pszAdded, 1, n);
    else
        m_Hash.SetHash(CQMXTHash::Continue(m_Hash.GetHash(), pszAdded, n));
    return 0;
}

int CQMXTStringHash::assign(const char* psz)
{
    return Assign(psz, psz ? std::strlen(psz) : 0);
}
int CQMXTStringHash::assign(const CQMXTString& s)
{
    return Assign(s.c_str(), s.length());
}
int CQMXTStringHash::append(const char* psz)
{
    return Append(psz, psz ? std::strlen(psz) : 0);
}
int CQMXTStringHash::append(const CQMXTString& s)
{
    return Append(s.c_str(), s.length());
}

CQMXTStringHash& CQMXTStringHash::operator=(const char* psz)
{
    assign(psz);
    return *this;
}

CQMXTStringHash& CQMXTStringHash::operator=(const CQMXTString& s)
{
    assign(s);
    return *this;
}

CQMXTStringHash& CQMXTStringHash::operator+=(const char* psz)
{
    append(psz);
    return *this;
}

CQMXTStringHash& CQMXTStringHash::operator+=(const CQMXTString& s)
{
    append(s);
    return *this;
}
