#include "QMXTSink.h"

#include <cstring>

bool CSinkMemory::Write(const void* data, size_t size)
{
    const uint8_t* p = static_cast<const uint8_t*>(data);
    m_data.insert(m_data.end(), p, p + size);
    return true;
}

bool CSinkFile::Write(const void* data, size_t size)
{
    return m_pFile && std::fwrite(data, 1, size, m_pFile) == size;
}

bool CLEWriter::Flush()
{
    if (!m_bFailed && m_nUsed && !m_sink.Write(m_buffer, m_nUsed))
        m_bFailed = true;
    m_nUsed = 0;
    return !m_bFailed;
}

// Room for size bytes (at most the buffer size) at the end of the buffer, or null after a failure.
uint8_t* CLEWriter::Reserve(size_t size)
{
    if (m_bFailed)
        return nullptr;
    if (m_nUsed + size > sizeof m_buffer && !Flush())
        return nullptr;
    uint8_t* p = m_buffer + m_nUsed;
    m_nUsed += size;
    m_nWritten += size;
    return p;
}

void CLEWriter::U8(uint8_t v)
{
    if (uint8_t* p = Reserve(1))
        p[0] = v;
}

void CLEWriter::U16(uint16_t v)
{
    if (uint8_t* p = Reserve(2))
    {
        p[0] = static_cast<uint8_t>(v);
        p[1] = static_cast<uint8_t>(v >> 8);
    }
}

void CLEWriter::U32(uint32_t v)
{
    if (uint8_t* p = Reserve(4))
    {
        p[0] = static_cast<uint8_t>(v);
        p[1] = static_cast<uint8_t>(v >> 8);
        p[2] = static_cast<uint8_t>(v >> 16);
        p[3] = static_cast<uint8_t>(v >> 24);
    }
}

void CLEWriter::F32(float v)
{
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    U32(bits);
}

void CLEWriter::Bytes(const void* data, size_t size)
{
    const uint8_t* in = static_cast<const uint8_t*>(data);
    while (size && !m_bFailed)
    {
        const size_t chunk = size < sizeof m_buffer ? size : sizeof m_buffer;
        if (uint8_t* p = Reserve(chunk))
            std::memcpy(p, in, chunk);
        in += chunk;
        size -= chunk;
    }
}

void CLEWriter::Zeros(size_t size)
{
    while (size && !m_bFailed)
    {
        const size_t chunk = size < sizeof m_buffer ? size : sizeof m_buffer;
        if (uint8_t* p = Reserve(chunk))
            std::memset(p, 0, chunk);
        size -= chunk;
    }
}

void CLEWriter::Elements(const void* data, size_t count, uint32_t elementSize)
{
    const uint8_t* in = static_cast<const uint8_t*>(data);
    if (elementSize == 1)
    {
        Bytes(in, count);
        return;
    }
    if (elementSize != 2 && elementSize != 4)
    {
        m_bFailed = true;
        return;
    }
    // Whole elements a chunk, so an element never straddles two sink calls' worth of buffer.
    const size_t perChunk = sizeof m_buffer / elementSize;
    while (count && !m_bFailed)
    {
        const size_t n = count < perChunk ? count : perChunk;
        uint8_t* p = Reserve(n * elementSize);
        if (!p)
            return;
        if (elementSize == 2)
        {
            for (size_t i = 0; i < n; ++i, p += 2, in += 2)
            {
                uint16_t v;
                std::memcpy(&v, in, 2);
                p[0] = static_cast<uint8_t>(v);
                p[1] = static_cast<uint8_t>(v >> 8);
            }
        }
        else
        {
            for (size_t i = 0; i < n; ++i, p += 4, in += 4)
            {
                uint32_t v;
                std::memcpy(&v, in, 4);
                p[0] = static_cast<uint8_t>(v);
                p[1] = static_cast<uint8_t>(v >> 8);
                p[2] = static_cast<uint8_t>(v >> 16);
                p[3] = static_cast<uint8_t>(v >> 24);
            }
        }
        count -= n;
    }
}
