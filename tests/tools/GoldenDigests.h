// Digests of production output compared with a golden file in tests/data/: each line "key digest"
// (64-bit FNV-1a over the bytes added for that key, in hex), '#' lines saying how the file was made.
// With OSTREX_WRITE_GOLDEN=1 the test rewrites the file: only after a deliberate change of output.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CGoldenDigests
{
  public:
    CGoldenDigests(std::string fileName, std::string header);
    void Add(const void* data, size_t bytes);
    template <typename T> void Add(const std::vector<T>& v) { Add(v.data(), v.size() * sizeof(T)); }
    void AddValue(uint64_t v) { Add(&v, sizeof v); }
    // Closes the digest of everything added since the last line under key.
    void EndLine(const std::string& key);
    // Compares every line with the golden file (or writes it).
    void Check() const;

  private:
    std::string m_fileName, m_header;
    uint64_t m_nHash;
    std::vector<std::string> m_lines;
};
