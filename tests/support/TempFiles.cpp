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
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(m_path))
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
