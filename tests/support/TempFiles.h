// Test support shared by the test binaries: a temporary directory and a whole-file reader.
#pragma once

#include <string>
#include <vector>

// A fresh directory under /tmp, removed with its contents when the object goes; aborts the test
// program when none can be made.
class CTempDir
{
  public:
    CTempDir();
    ~CTempDir();
    CTempDir(const CTempDir&) = delete;
    CTempDir& operator=(const CTempDir&) = delete;
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    // Names of the entries, sorted.
    std::vector<std::string> Entries() const;

  private:
    std::string m_path;
};

// The bytes of a file; empty when it cannot be read.
std::string ReadAll(const std::string& path);
