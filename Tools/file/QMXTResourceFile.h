// Read access to a whole file, from disk or from the memory file system.
//
// Opening reads (read path + file name) with the class-wide load function; when that yields no
// bytes (missing file, or a file of size 0) the bare file name is looked up in CQMXTMemoryFileSystem,
// so a scene embedded in generated source loads by name exactly like one on disk. The default load
// function reads the whole file into a heap block; the default release frees it. Files above 4 GiB - 1
// are refused (sizes are 32-bit).
#pragma once

#include <cstdint>
#include <string>

class CQMXTResourceFile
{
  public:
    // Load: fills data and size and returns a handle for the release function (null on failure).
    using PFNLoadFile = void* (*)(const char* path, const void** data, uint32_t* size);
    using PFNReleaseFile = void (*)(void* handle);

    static void SetReadPath(const char* path);
    static const char* GetReadPath();
    // Replaces the load and release functions; null for either restores both defaults.
    static void SetLoadReleaseFunctions(PFNLoadFile load, PFNReleaseFile release);

    explicit CQMXTResourceFile(const char* fileName);
    // Wraps a block of memory (not copied, not freed) as an open memory file.
    CQMXTResourceFile(const void* data, uint32_t size);
    virtual ~CQMXTResourceFile();
    CQMXTResourceFile(const CQMXTResourceFile&) = delete;
    CQMXTResourceFile& operator=(const CQMXTResourceFile&) = delete;

    bool IsOpen() const { return m_bOpen; }
    bool IsMemoryFile() const { return m_bMemoryFile; }
    uint32_t Size() const { return m_nSize; }
    const void* DataPtr() const { return m_pData; }
    // Releases a disk file through the release function; memory files are left alone.
    void Close();

  private:
    bool m_bOpen = false;
    bool m_bMemoryFile = false;
    uint32_t m_nSize = 0;
    const void* m_pData = nullptr;
    void* m_pHandle = nullptr;
    PFNReleaseFile m_pfnRelease = nullptr; // the release function in force when the file was loaded
};

// The default pair: the whole file read into memory from malloc, and its release.
void* QMXTResourceFileLoad(const char* path, const void** data, uint32_t* size);
void QMXTResourceFileRelease(void* handle);
