#include "SafeOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{
std::string DirectoryOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string BaseNameOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}
} // namespace

CSafeOutput::CSafeOutput(const std::string& target) : m_sTarget(target) {}

CSafeOutput::~CSafeOutput()
{
    if (!m_bCommitted)
        Discard();
}

bool CSafeOutput::Begin(std::string& error)
{
    const std::string base = BaseNameOf(m_sTarget);
    if (base.empty() || base == "." || base == "..")
    {
        error = "'" + m_sTarget + "' does not name a file";
        return false;
    }
    struct stat st;
    if (stat(m_sTarget.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
    {
        error = "'" + m_sTarget + "' is a directory";
        return false;
    }
    std::string pattern = DirectoryOf(m_sTarget) + "/.ostrex-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (!mkdtemp(buffer.data()))
    {
        error = "cannot write in '" + DirectoryOf(m_sTarget) + "': " + std::strerror(errno);
        return false;
    }
    m_sTempDir = buffer.data();
    m_sTempPath = m_sTempDir + "/" + base;
    return true;
}

bool CSafeOutput::Commit(std::string& error)
{
    if (m_sTempPath.empty())
    {
        error = "nothing was written";
        return false;
    }
    struct stat st;
    if (stat(m_sTempPath.c_str(), &st) != 0)
    {
        error = "nothing was written to '" + m_sTarget + "'";
        return false;
    }
    if (std::rename(m_sTempPath.c_str(), m_sTarget.c_str()) != 0)
    {
        error = "cannot replace '" + m_sTarget + "': " + std::strerror(errno);
        return false;
    }
    rmdir(m_sTempDir.c_str());
    m_bCommitted = true;
    return true;
}

void CSafeOutput::Discard()
{
    if (m_sTempDir.empty())
        return;
    unlink(m_sTempPath.c_str());
    rmdir(m_sTempDir.c_str());
}

bool WriteFileSafely(const std::string& path, const void* data, size_t size, std::string& error)
{
    CSafeOutput output(path);
    if (!output.Begin(error))
        return false;
    std::FILE* file = std::fopen(output.TempPath().c_str(), "wb");
    if (!file)
    {
        error = "cannot create '" + path + "': " + std::strerror(errno);
        return false;
    }
    const bool written = size == 0 || std::fwrite(data, 1, size, file) == size;
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed)
    {
        error = "cannot write '" + path + "': " + std::strerror(errno);
        return false;
    }
    return output.Commit(error);
}
