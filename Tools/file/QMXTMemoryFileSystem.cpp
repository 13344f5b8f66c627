#include "QMXTMemoryFileSystem.h"

#include <cstdlib>
#include <cstring>

namespace
{
struct SMemoryFile
{
    const char* pszName;
    const void* pData;
    uint32_t nSize;
    bool bOwned; // name and data are copies the table frees
};

// Zero-initialised before any dynamic initialisation, so registering from other translation units'
// static constructors is safe whatever their order.
SMemoryFile* g_pFiles = nullptr;
uint32_t g_nNumFiles = 0;
uint32_t g_nCapacity = 0;

const uint32_t kGrowth = 10;

CQMXTMemoryFileSystem::CAtExit g_atExit;
} // namespace

CQMXTMemoryFileSystem::CQMXTMemoryFileSystem(const char* fileName, const void* data, uint32_t size, bool copy)
{
    RegisterMemoryFile(fileName, data, size, copy);
}

bool CQMXTMemoryFileSystem::RegisterMemoryFile(const char* fileName, const void* data, uint32_t size,
                                               bool copy)
{
    if (!fileName || (!data && size))
        return false;
    if (g_nNumFiles == g_nCapacity)
    {
        SMemoryFile* grown = static_cast<SMemoryFile*>(
            std::malloc((static_cast<size_t>(g_nCapacity) + kGrowth) * sizeof(SMemoryFile)));
        if (!grown)
            return false;
        if (g_nNumFiles)
            std::memcpy(grown, g_pFiles, g_nNumFiles * sizeof(SMemoryFile));
        std::free(g_pFiles);
        g_pFiles = grown;
        g_nCapacity += kGrowth;
    }
    SMemoryFile record = {fileName, data, size, copy};
    if (copy)
    {
        const size_t nameSize = std::strlen(fileName) + 1;
        char* name = static_cast<char*>(std::malloc(nameSize));
        void* bytes = std::malloc(size ? size : 1);
        if (!name || !bytes)
        {
            std::free(name);
            std::free(bytes);
            return false;
        }
        std::memcpy(name, fileName, nameSize);
        if (size)
            std::memcpy(bytes, data, size);
        record.pszName = name;
        record.pData = bytes;
    }
    g_pFiles[g_nNumFiles++] = record;
    return true;
}

bool CQMXTMemoryFileSystem::GetFile(const char* fileName, const void** data, uint32_t* size)
{
    if (!fileName)
        return false;
    for (uint32_t i = 0; i < g_nNumFiles; ++i)
    {
        if (std::strcmp(g_pFiles[i].pszName, fileName) == 0)
        {
            if (data)
                *data = g_pFiles[i].pData;
            if (size)
                *size = g_pFiles[i].nSize;
            return true;
        }
    }
    return false;
}

uint32_t CQMXTMemoryFileSystem::GetNumFiles()
{
    return g_nNumFiles;
}

const char* CQMXTMemoryFileSystem::GetFilename(uint32_t index)
{
    return index < g_nNumFiles ? g_pFiles[index].pszName : nullptr;
}

CQMXTMemoryFileSystem::CAtExit::~CAtExit()
{
    for (uint32_t i = 0; i < g_nNumFiles; ++i)
    {
        if (g_pFiles[i].bOwned)
        {
            std::free(const_cast<char*>(g_pFiles[i].pszName));
            std::free(const_cast<void*>(g_pFiles[i].pData));
        }
    }
    std::free(g_pFiles);
    g_pFiles = nullptr;
    g_nNumFiles = 0;
    g_nCapacity = 0;
}
