#include "QMXPreferencesUnix.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

const char* const g_pszQMXPrefTemplate =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n"
    "<dict/>\n"
    "</plist>\n";

namespace
{
const char* const kConfigDir = "/.qmxconfig";
const char* const kVendorDir = "/.qmxconfig/Corvell";

bool MakeDirectory(const CQMXTString& path)
{
    if (mkdir(path.c_str(), 0775) == 0 || errno == EEXIST)
    {
        struct stat st;
        return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    }
    return false;
}

// Creates a unique file next to realPath; returns its descriptor (or -1) and its path.
int CreateTemporary(const CQMXTString& realPath, CQMXTString& tempPath)
{
    CQMXTString pattern = realPath + ".tmp.XXXXXX";
    std::string buffer(pattern.c_str(), pattern.length());
    const int fd = mkstemp(&buffer[0]);
    if (fd < 0)
        return -1;
    // Keep the permissions of the file being replaced; a new one gets rw-r--r--.
    struct stat st;
    const mode_t mode = stat(realPath.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0644;
    (void)fchmod(fd, mode);
    tempPath = buffer.c_str();
    return fd;
}

bool WriteAll(int fd, const char* data, size_t size)
{
    while (size > 0)
    {
        const ssize_t written = write(fd, data, size);
        if (written < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}
} // namespace

CQMXPreferencesUnix::~CQMXPreferencesUnix()
{
    Unlock();
}

CQMXTString CQMXPreferencesUnix::GetHomeDirectory()
{
    const char* home = std::getenv("HOME");
    return CQMXTString(home ? home : "");
}

CQMXTString CQMXPreferencesUnix::GetBaseDirectory(EPreferenceType type)
{
    return type == ePreferenceSystem ? CQMXTString("/etc") : GetHomeDirectory();
}

CQMXTString CQMXPreferencesUnix::GetPreferenceFilePath(const char* name, EPreferenceType type)
{
    const CQMXTString base = GetBaseDirectory(type);
    // A name must stay a file name inside the vendor directory.
    if (base.empty() || !name || !*name || std::strchr(name, '/'))
        return CQMXTString();
    return base + kVendorDir + "/com.veldra." + name + ".plist";
}

bool CQMXPreferencesUnix::CreateDirectories(EPreferenceType type)
{
    const CQMXTString base = GetBaseDirectory(type);
    if (base.empty())
        return false;
    return MakeDirectory(base + kConfigDir) && MakeDirectory(base + kVendorDir);
}

bool CQMXPreferencesUnix::CreateFromTemplate(const CQMXTString& path)
{
    CQMXTString tempPath;
    const int fd = CreateTemporary(path, tempPath);
    if (fd < 0)
        return false;
    const bool written = WriteAll(fd, g_pszQMXPrefTemplate, std::strlen(g_pszQMXPrefTemplate)) && fsync(fd) == 0;
    const bool closed = close(fd) == 0;
    bool ok = false;
    if (written && closed)
    {
        // link never replaces: if another process created the file meanwhile, its file stays.
        if (link(tempPath.c_str(), path.c_str()) == 0 || errno == EEXIST)
            ok = true;
        else if (access(path.c_str(), F_OK) != 0) // file systems without hard links
            ok = rename(tempPath.c_str(), path.c_str()) == 0;
        else
            ok = true;
    }
    unlink(tempPath.c_str());
    return ok;
}

bool CQMXPreferencesUnix::OpenPreferenceFile(SQMXPrefFile& file, const char* name, EQMXPrefFileMode mode,
                                             EPreferenceType type, bool useTemporary)
{
    file = SQMXPrefFile();
    const CQMXTString path = GetPreferenceFilePath(name, type);
    if (path.empty())
        return false;
    file.sRealPath = path;

    if (mode == eQMXPrefRead)
    {
        file.pFile = std::fopen(path.c_str(), "rb");
        if (!file.pFile && errno == ENOENT && CreateDirectories(type) && CreateFromTemplate(path))
            file.pFile = std::fopen(path.c_str(), "rb");
        return file.pFile != nullptr;
    }

    if (!CreateDirectories(type))
        return false;
    if (!useTemporary)
    {
        file.pFile = std::fopen(path.c_str(), "wb");
        return file.pFile != nullptr;
    }
    const int fd = CreateTemporary(path, file.sTempPath);
    if (fd < 0)
        return false;
    file.pFile = fdopen(fd, "wb");
    if (!file.pFile)
    {
        close(fd);
        unlink(file.sTempPath.c_str());
        file.sTempPath.clear();
        return false;
    }
    return true;
}

bool CQMXPreferencesUnix::CloseFile(SQMXPrefFile& file, bool commit)
{
    if (!file.pFile)
        return false;
    bool ok = true;
    if (commit)
        ok = std::fflush(file.pFile) == 0 && (!m_bSyncToDisk || fsync(fileno(file.pFile)) == 0);
    ok = (std::fclose(file.pFile) == 0) && ok;
    file.pFile = nullptr;

    if (!file.sTempPath.empty())
    {
        if (commit && ok)
            ok = std::rename(file.sTempPath.c_str(), file.sRealPath.c_str()) == 0;
        if (!commit || !ok)
            unlink(file.sTempPath.c_str());
        file.sTempPath.clear();
    }
    return ok;
}

bool CQMXPreferencesUnix::LastModificationTimeHash(const char* name, EPreferenceType type, CQMXTHash& hash)
{
    const CQMXTString path = GetPreferenceFilePath(name, type);
    struct stat st;
    if (path.empty() || stat(path.c_str(), &st) != 0)
        return false;
    const uint64_t fields[] = {static_cast<uint64_t>(st.st_ino), static_cast<uint64_t>(st.st_size),
                               static_cast<uint64_t>(st.st_mtim.tv_sec), static_cast<uint64_t>(st.st_mtim.tv_nsec)};
    hash.MakeHash(fields, sizeof fields[0], sizeof fields / sizeof fields[0]);
    return true;
}

bool CQMXPreferencesUnix::Lock(const char* name, EPreferenceType type)
{
    Unlock();
    if (!CreateDirectories(type) || GetPreferenceFilePath(name, type).empty())
        return false;
    const CQMXTString dir = GetBaseDirectory(type) + kVendorDir;
    const int fd = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    int rc;
    do
        rc = flock(fd, LOCK_EX);
    while (rc != 0 && errno == EINTR);
    if (rc != 0)
    {
        close(fd);
        return false;
    }
    m_iLockFd = fd;
    return true;
}

void CQMXPreferencesUnix::Unlock()
{
    if (m_iLockFd >= 0)
    {
        flock(m_iLockFd, LOCK_UN);
        close(m_iLockFd);
        m_iLockFd = -1;
    }
}
