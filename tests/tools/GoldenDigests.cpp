#include "GoldenDigests.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace
{
constexpr uint64_t kOffsetBasis = 14695981039346656037ull;
}

CGoldenDigests::CGoldenDigests(std::string fileName, std::string header)
    : m_fileName(std::string(OSTREX_TEST_DATA_DIR "/") + fileName), m_header(std::move(header)), m_nHash(kOffsetBasis)
{
}

void CGoldenDigests::Add(const void* data, size_t bytes)
{
    const uint8_t* p = static_cast<const uint8_t*>(data);
    for (size_t i = 0; i < bytes; ++i)
        m_nHash = (m_nHash ^ p[i]) * 1099511628211ull;
}

void CGoldenDigests::EndLine(const std::string& key)
{
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(m_nHash));
    m_lines.push_back(key + " " + hex);
    m_nHash = kOffsetBasis;
}

void CGoldenDigests::Check() const
{
    if (std::getenv("OSTREX_WRITE_GOLDEN"))
    {
        std::ofstream out(m_fileName);
        out << m_header;
        for (const std::string& line : m_lines)
            out << line << '\n';
        ASSERT_TRUE(out.good()) << m_fileName;
        return;
    }
    std::ifstream in(m_fileName);
    ASSERT_TRUE(in.good()) << "no golden file " << m_fileName;
    std::vector<std::string> golden;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#')
            golden.push_back(line);
    ASSERT_EQ(golden.size(), m_lines.size()) << m_fileName;
    for (size_t i = 0; i < golden.size(); ++i)
        EXPECT_EQ(m_lines[i], golden[i]) << m_fileName;
}
