#include "QMXTResourceFile.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

#include "QMXTMemoryFileSystem.h"

namespace
{
std::string& ReadPath()
{
    static std::string path;
    return path;
}

CQMXTResourceFile::PFNLoadFile g_pfnLoad = QMXTResourceFileLoad;
CQMXTResourceFile::PFNReleaseFile g_pfnRelease = QMXTResourceFileRelease;
} // namespace

void* QMXTResourceFileLoad(const char* path, const void** data, uint32_t* size)
{
    *data = nullptr;
    *size = 0;
    FILE* file = std::fopen(path, "rb");
    if (!file)
        return nullptr;
    void* buffer = nullptr;
    long length = -1;
    if (std::fseek(file, 0, SEEK_END) == 0)
        length = std::ftell(file);
    if (length > 0 && static_cast<unsigned long>(length) <= std::numeric_limits<uint32_t>::max() &&
        std::fseek(file, 0, SEEK_SET) == 0)
    {
        buffer = std::malloc(static_cast<size_t>(length));
        if (buffer && std::fread(buffer, 1, static_cast<size_t>(length), file) != static_cast<size_t>(length))
        {
            std::free(buffer);
            buffer = nullptr;
        }
    }
    std::fclose(file);
    if (buffer)
    {
        *data = buffer;
        *size = static_cast<uint32_t>(length);
    }
    return buffer;
}

void QMXTResourceFileRelease(void* handle)
{
    std::free(handle);
}

void CQMXTResourceFile::SetReadPath(const char* path)
{
    ReadPath() = path ? path : "";
}

const char* CQMXTResourceFile::GetReadPath()
{
    return ReadPath().c_str();
}

void CQMXTResourceFile::SetLoadReleaseFunctions(PFNLoadFile load, PFNReleaseFile release)
{
    if (load && release)
    {
        g_pfnLoad = load;
        g_pfnRelease = release;
    }
    else
    {
        g_pfnLoad = QMXTResourceFileLoad;
        g_pfnRelease = QMXTResourceFileRelease;
    }
}

CQMXTResourceFile::CQMXTResourceFile(const char* fileName)
{
    if (!fileName)
        return;
    const std::string path = ReadPath() + fileName;
    const void* data = nullptr;
    uint32_t size = 0;
    m_pHandle = g_pfnLoad(path.c_str(), &data, &size);
    m_pfnRelease = g_pfnRelease;
    if (data && size)
    {
        m_pData = data;
        m_nSize = size;
        m_bOpen = true;
        return;
    }
    Close(); // a handle for an empty file still goes back
    if (CQMXTMemoryFileSystem::GetFile(fileName, &data, &size))
    {
        m_pData = data;
        m_nSize = size;
        m_bOpen = true;
        m_bMemoryFile = true;
    }
}

CQMXTResourceFile::CQMXTResourceFile(const void* data, uint32_t size)
    : m_bOpen(data != nullptr), m_bMemoryFile(true), m_nSize(data ? size : 0), m_pData(data)
{
}

CQMXTResourceFile::~CQMXTResourceFile()
{
    Close();
}

void CQMXTResourceFile::Close()
{
    if (!m_bMemoryFile && m_pHandle && m_pfnRelease)
        m_pfnRelease(m_pHandle);
    m_pHandle = nullptr;
    m_bOpen = false;
    m_bMemoryFile = false;
    m_nSize = 0;
    m_pData = nullptr;
}
