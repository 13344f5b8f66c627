#include "QMXTSource.h"

#include <cstdarg>
#include <cstdio>
#include <cstdint>
#include <cstring>

#include "QMXTResourceFile.h"
#include "QMXTTVOBlocks.h"

namespace
{
uint16_t Assemble16(const uint8_t* b)
{
    return static_cast<uint16_t>(b[0] | (b[1] << 8));
}

uint32_t Assemble32(const uint8_t* b)
{
    return static_cast<uint32_t>(b[0]) | (static_cast<uint32_t>(b[1]) << 8) |
           (static_cast<uint32_t>(b[2]) << 16) | (static_cast<uint32_t>(b[3]) << 24);
}
} // namespace

bool CSource::ReadMarker(uint32_t& tag, uint32_t& length)
{
    m_nTag = 0;
    const uint32_t at = Position();
    uint8_t b[8];
    if (!Read(b, sizeof b))
        return false;
    tag = Assemble32(b);
    length = Assemble32(b + 4);
    m_nTag = tag;
    m_nTagOffset = at;
    return true;
}

bool CSource::Read16(uint16_t& v)
{
    uint8_t b[2];
    if (!Read(b, 2))
        return false;
    v = Assemble16(b);
    return true;
}

bool CSource::Read32(uint32_t& v)
{
    uint8_t b[4];
    if (!Read(b, 4))
        return false;
    v = Assemble32(b);
    return true;
}

bool CSource::Read32(int32_t& v)
{
    uint32_t u;
    if (!Read32(u))
        return false;
    v = static_cast<int32_t>(u);
    return true;
}

bool CSource::Read32(float& v)
{
    uint32_t u;
    if (!Read32(u))
        return false;
    std::memcpy(&v, &u, sizeof v);
    return true;
}

// Reads count elements as raw bytes straight into p, then assembles each in place.
bool CSource::ReadElements(void* p, uint32_t count, uint32_t elementSize)
{
    uint8_t* b = static_cast<uint8_t*>(p);
    if (!Read(b, count * elementSize))
        return false;
    if (elementSize == 2)
    {
        for (uint32_t i = 0; i < count; ++i, b += 2)
        {
            const uint16_t v = Assemble16(b);
            std::memcpy(b, &v, 2);
        }
    }
    else if (elementSize == 4)
    {
        for (uint32_t i = 0; i < count; ++i, b += 4)
        {
            const uint32_t v = Assemble32(b);
            std::memcpy(b, &v, 4);
        }
    }
    return true;
}

bool CSource::ReadArray16(uint16_t* p, uint32_t count)
{
    if (count > Remaining() / 2)
        return FailTruncated(count > UINT32_MAX / 2 ? UINT32_MAX : count * 2);
    return ReadElements(p, count, 2);
}

bool CSource::ReadArray32(uint32_t* p, uint32_t count)
{
    if (count > Remaining() / 4)
        return FailTruncated(count > UINT32_MAX / 4 ? UINT32_MAX : count * 4);
    return ReadElements(p, count, 4);
}

bool CSource::ReadArray32(int32_t* p, uint32_t count)
{
    return ReadArray32(reinterpret_cast<uint32_t*>(p), count);
}

bool CSource::ReadArray32(float* p, uint32_t count)
{
    if (count > Remaining() / 4)
        return FailTruncated(count > UINT32_MAX / 4 ? UINT32_MAX : count * 4);
    return ReadElements(p, count, 4);
}

bool CSource::AllocReadElements(void*& p, uint32_t length, uint32_t elementSize, uint32_t typeSize)
{
    std::free(p);
    p = nullptr;
    if (length % elementSize != 0)
        return Fail("length %u is not a whole number of %u-byte elements", length, elementSize);
    if (length > Remaining())
        return FailTruncated(length);
    // Room for whole elements of the destination type, in case it is wider than the file's elements.
    const size_t count = (length + typeSize - 1) / typeSize;
    uint8_t* q = nullptr;
    if (!SafeAlloc(q, count * typeSize))
        return Fail("out of memory for %u bytes", length);
    p = q;
    return length == 0 || ReadElements(q, length / elementSize, elementSize);
}

void CSource::EnterBlock()
{
    if (m_nDepth < SQMXTReadError::eMaxDepth)
        m_pnStack[m_nDepth] = m_nTag;
    ++m_nDepth;
    m_nTag = 0;
}

void CSource::LeaveBlock()
{
    if (m_nDepth)
        --m_nDepth;
}

void CSource::Record(uint32_t offset, const char* reason)
{
    if (m_error.bSet)
        return;
    m_error.bSet = true;
    m_error.nOffset = offset;
    m_error.nTag = m_nTag;
    m_error.nDepth = m_nDepth < SQMXTReadError::eMaxDepth ? m_nDepth : SQMXTReadError::eMaxDepth;
    std::memcpy(m_error.pnPath, m_pnStack, sizeof m_error.pnPath);
    std::snprintf(m_error.szReason, sizeof m_error.szReason, "%s", reason);
}

bool CSource::Fail(const char* format, ...)
{
    char reason[sizeof m_error.szReason];
    va_list args;
    va_start(args, format);
    std::vsnprintf(reason, sizeof reason, format, args);
    va_end(args);
    Record(m_nTag ? m_nTagOffset : Position(), reason);
    return false;
}

bool CSource::FailTruncated(uint32_t size)
{
    char reason[sizeof m_error.szReason];
    std::snprintf(reason, sizeof reason, "unexpected end of data (%u bytes needed, %u left)", size,
                  Remaining());
    Record(Position(), reason);
    return false;
}

std::string CSource::DescribeError() const
{
    if (!m_error.bSet)
        return std::string();
    char part[96];
    std::snprintf(part, sizeof part, "byte %u", m_error.nOffset);
    std::string text = part;
    auto block = [&part](uint32_t tag)
    {
        const uint32_t id = tag & ~static_cast<uint32_t>(eTVOEndBit);
        std::snprintf(part, sizeof part, "%s %u (%s)", (tag & eTVOEndBit) ? "end of block" : "block", id,
                      QMXTTVOBlockName(id));
        return std::string(part);
    };
    const char* joiner = ", ";
    if (m_error.nTag)
    {
        text += joiner + block(m_error.nTag);
        joiner = " in ";
    }
    for (uint32_t i = m_error.nDepth; i-- > 0;)
    {
        const uint32_t id = m_error.pnPath[i];
        std::snprintf(part, sizeof part, "%u (%s)", id, QMXTTVOBlockName(id));
        text += joiner;
        text += (joiner[0] == ',') ? std::string("block ") + part : std::string(part);
        joiner = " in ";
    }
    if (!m_error.nTag && m_error.nDepth == 0)
        text += ", top level";
    return text + ": " + m_error.szReason;
}

CSourceStream::CSourceStream() = default;
CSourceStream::~CSourceStream() = default;

bool CSourceStream::Init(const char* path)
{
    m_pFile.reset(new CQMXTResourceFile(path));
    m_pData = nullptr;
    m_nSize = m_nPos = 0;
    if (!m_pFile->IsOpen())
        return false;
    m_pData = static_cast<const uint8_t*>(m_pFile->DataPtr());
    m_nSize = m_pFile->Size();
    return true;
}

bool CSourceStream::Init(const void* data, uint32_t size)
{
    m_pFile.reset();
    m_pData = static_cast<const uint8_t*>(data);
    m_nSize = data ? size : 0;
    m_nPos = 0;
    return data != nullptr;
}

bool CSourceStream::Read(void* buffer, uint32_t size)
{
    if (size > m_nSize - m_nPos)
        return FailTruncated(size);
    if (size)
        std::memcpy(buffer, m_pData + m_nPos, size);
    m_nPos += size;
    return true;
}

bool CSourceStream::Skip(uint32_t size)
{
    if (size > m_nSize - m_nPos)
        return FailTruncated(size);
    m_nPos += size;
    return true;
}
