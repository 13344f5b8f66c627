// Byte sources for the .tvo reader, with little-endian assembly and a record of where reading failed.
//
// CSource reads and skips bytes (virtual Read and Skip); on top of them it assembles 16- and 32-bit
// values byte by byte from little-endian order, whatever the host, and allocates arrays for a block
// only after checking that the block's bytes are really there, so a short file never causes a large
// allocation. CSourceStream is a CSource over a whole file (CQMXTResourceFile) or a memory block.
//
// Error context: the reader tells the source which containers it is inside (EnterBlock/LeaveBlock);
// ReadMarker remembers the block being read. The first failure (a read past the end, or a check the
// reader makes with Fail) records the byte offset, that block, the enclosing containers and a reason,
// and DescribeError() turns it into one line.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include "QMXTLargeArray.h"

class CQMXTResourceFile;

// Allocates count zeroed elements into p (null for count 0, which succeeds). Returns false when the
// allocation fails.
template <typename T> bool SafeAlloc(T*& p, size_t count)
{
    p = nullptr;
    if (count == 0)
        return true;
    p = static_cast<T*>(QMXTLargeCalloc(count, sizeof(T)));
    return p != nullptr;
}

struct SQMXTReadError
{
    static constexpr uint32_t eMaxDepth = 8;
    bool bSet = false;
    uint32_t nOffset = 0;            // byte offset where reading failed
    uint32_t nTag = 0;               // the block being read there (0 at the top level, between blocks)
    uint32_t pnPath[eMaxDepth] = {}; // the containers around it, outermost first
    uint32_t nDepth = 0;
    char szReason[160] = {};
};

class CSource
{
  public:
    virtual ~CSource() = default;

    // Copies size bytes into buffer; fails without moving when fewer remain.
    virtual bool Read(void* buffer, uint32_t size) = 0;
    // Moves past size bytes; fails without moving when fewer remain.
    virtual bool Skip(uint32_t size) = 0;
    virtual uint32_t Position() const = 0;
    virtual uint32_t Remaining() const = 0;

    // A block marker: tag and length. Remembers the block for the error context.
    bool ReadMarker(uint32_t& tag, uint32_t& length);
    bool Read16(uint16_t& v);
    bool Read32(uint32_t& v);
    bool Read32(int32_t& v);
    bool Read32(float& v);
    bool ReadArray16(uint16_t* p, uint32_t count);
    bool ReadArray32(uint32_t* p, uint32_t count);
    bool ReadArray32(int32_t* p, uint32_t count);
    bool ReadArray32(float* p, uint32_t count);

    // Frees p, then allocates length / element size elements with SafeAlloc and fills them from the
    // source (16- and 32-bit elements assembled from little-endian). Fails, allocating nothing, when
    // length is not a whole number of elements or more than the bytes that remain.
    template <typename T> bool ReadAfterAlloc(T*& p, uint32_t length) { return AllocRead(p, length, 1); }
    template <typename T> bool ReadAfterAlloc16(T*& p, uint32_t length) { return AllocRead(p, length, 2); }
    template <typename T> bool ReadAfterAlloc32(T*& p, uint32_t length) { return AllocRead(p, length, 4); }

    // Error context.
    void EnterBlock(); // the block of the last marker becomes the innermost container
    void LeaveBlock();
    // Records the first failure at the start of the current block; always returns false.
    bool Fail(const char* format, ...) __attribute__((format(printf, 2, 3)));
    const SQMXTReadError& GetError() const { return m_error; }
    bool Failed() const { return m_error.bSet; }
    // One line: "byte 1234, block 6006 (positions) in 2012 (mesh) in 1001 (scene): reason".
    std::string DescribeError() const;

  protected:
    // Records a read of size bytes past the end at the current position; always returns false.
    bool FailTruncated(uint32_t size);

  private:
    template <typename T> bool AllocRead(T*& p, uint32_t length, uint32_t elementSize)
    {
        void* q = p;
        const bool ok = AllocReadElements(q, length, elementSize, sizeof(T));
        p = static_cast<T*>(q);
        return ok;
    }
    bool AllocReadElements(void*& p, uint32_t length, uint32_t elementSize, uint32_t typeSize);
    bool ReadElements(void* p, uint32_t count, uint32_t elementSize);
    void Record(uint32_t offset, const char* reason);

    uint32_t m_nTag = 0;       // block of the last marker; 0 between blocks
    uint32_t m_nTagOffset = 0; // where its marker starts
    uint32_t m_pnStack[SQMXTReadError::eMaxDepth] = {};
    uint32_t m_nDepth = 0; // may exceed eMaxDepth; only the outer entries are kept
    SQMXTReadError m_error;
};

class CSourceStream : public CSource
{
  public:
    CSourceStream();
    ~CSourceStream() override;

    // Opens a file through CQMXTResourceFile (disk, else the memory file system); false if not open.
    bool Init(const char* path);
    // Reads from a memory block that must outlive the stream; false when data is null.
    bool Init(const void* data, uint32_t size);

    bool Read(void* buffer, uint32_t size) override;
    bool Skip(uint32_t size) override;
    uint32_t Position() const override { return m_nPos; }
    uint32_t Remaining() const override { return m_nSize - m_nPos; }

  private:
    std::unique_ptr<CQMXTResourceFile> m_pFile;
    const uint8_t* m_pData = nullptr;
    uint32_t m_nSize = 0;
    uint32_t m_nPos = 0;
};
