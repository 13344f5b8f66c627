// Byte sinks and the little-endian writer that every file the library writes goes through.
//
// CLEWriter turns host values into little-endian bytes one byte at a time, whatever the host's own
// order, and hands them to a CSink in large chunks. The first failed write of the sink sticks: every
// later call is ignored and Ok() stays false, so a caller checks once at the end.
// Cost: one pass over the bytes written, plus one sink call per 64 KiB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

// Destination of bytes. Write returns false when the bytes could not all be stored.
class CSink
{
  public:
    virtual ~CSink() = default;
    virtual bool Write(const void* data, size_t size) = 0;
};

// Collects the bytes in memory.
class CSinkMemory : public CSink
{
  public:
    bool Write(const void* data, size_t size) override;
    const std::vector<uint8_t>& Data() const { return m_data; }
    std::vector<uint8_t>& Data() { return m_data; }

  private:
    std::vector<uint8_t> m_data;
};

// Appends to an open C file; the caller keeps ownership of the file.
class CSinkFile : public CSink
{
  public:
    explicit CSinkFile(FILE* file) : m_pFile(file) {}
    bool Write(const void* data, size_t size) override;

  private:
    FILE* m_pFile;
};

class CLEWriter
{
  public:
    explicit CLEWriter(CSink& sink) : m_sink(sink) {}
    ~CLEWriter() { Flush(); }
    CLEWriter(const CLEWriter&) = delete;
    CLEWriter& operator=(const CLEWriter&) = delete;

    void U8(uint8_t v);
    void U16(uint16_t v);
    void U32(uint32_t v);
    void I32(int32_t v) { U32(static_cast<uint32_t>(v)); }
    void F32(float v);
    // Raw bytes, written as they stand.
    void Bytes(const void* data, size_t size);
    // Zero bytes.
    void Zeros(size_t size);
    // count elements of elementSize bytes (1, 2 or 4) read from host memory (any alignment), each
    // written in little-endian order.
    void Elements(const void* data, size_t count, uint32_t elementSize);

    // Hands the buffered bytes to the sink; returns Ok().
    bool Flush();
    bool Ok() const { return !m_bFailed; }
    // Bytes accepted so far (buffered or written).
    uint64_t Written() const { return m_nWritten; }

  private:
    uint8_t* Reserve(size_t size);

    CSink& m_sink;
    bool m_bFailed = false;
    size_t m_nUsed = 0;
    uint64_t m_nWritten = 0;
    uint8_t m_buffer[1 << 16];
};
