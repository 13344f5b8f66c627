#include "PrefsTestSupport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <ftw.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
int RemoveEntry(const char* path, const struct stat*, int, struct FTW*)
{
    return std::remove(path);
}
} // namespace

CTempHome::CTempHome()
{
    char pattern[] = "/tmp/qmxprefs-test.XXXXXX";
    if (!mkdtemp(pattern))
        throw std::runtime_error("mkdtemp failed");
    m_sPath = pattern;
    const char* old = std::getenv("HOME");
    m_bHadHome = old != nullptr;
    if (old)
        m_sOldHome = old;
    setenv("HOME", m_sPath.c_str(), 1);
}

CTempHome::~CTempHome()
{
    if (m_bHadHome)
        setenv("HOME", m_sOldHome.c_str(), 1);
    else
        unsetenv("HOME");
    nftw(m_sPath.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
}

std::string CTempHome::PrefsFile(const std::string& name) const
{
    return m_sPath + "/.qmxconfig/Corvell/com.veldra." + name + ".plist";
}

std::string ReadWholeFile(const std::string& path)
{
    std::string text;
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return text;
    char buffer[4096];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, got);
    std::fclose(file);
    return text;
}

void WriteWholeFile(const std::string& path, const std::string& text)
{
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        throw std::runtime_error("cannot write " + path);
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
}

bool FileExists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

std::vector<std::string> ListDirectory(const std::string& path)
{
    std::vector<std::string> names;
    DIR* dir = opendir(path.c_str());
    if (!dir)
        return names;
    while (const dirent* entry = readdir(dir))
    {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}
