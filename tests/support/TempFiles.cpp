#include "TempFiles.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

CTempDir::CTempDir()
{
    char pattern[] = "/tmp/ostrex-test-XXXXXX";
    if (!mkdtemp(pattern))
    {
        std::perror("mkdtemp");
        std::abort();
    }
    m_path = pattern;
}

CTempDir::~CTempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::vector<std::string> CTempDir::Entries() const
{
    return SortedEntries(m_path);
}

CTempHome::CTempHome()
{
    if (const char* old = std::getenv("HOME"))
        m_oldHome = old, m_hadHome = true;
    setenv("HOME", Path().c_str(), 1);
}

CTempHome::~CTempHome()
{
    if (m_hadHome)
        setenv("HOME", m_oldHome.c_str(), 1);
    else
        unsetenv("HOME");
}

std::string CTempHome::PrefsFile(const std::string& name) const
{
    return Path() + "/.qmxconfig/Corvell/com.veldra." + name + ".plist";
}

std::vector<std::string> SortedEntries(const std::string& dir)
{
    std::vector<std::string> names;
    std::error_code failed;
    for (const auto& e : std::filesystem::directory_iterator(dir, failed))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadAll(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void WriteAll(const std::string& path, const std::string& text)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size())))
    {
        std::perror(path.c_str());
        std::abort();
    }
}
