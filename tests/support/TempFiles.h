// Test support shared by the test binaries: a temporary directory or HOME, whole-file helpers.
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

// A temporary directory that is HOME while the object lives (tests never touch the real one).
class CTempHome : public CTempDir
{
  public:
    CTempHome();
    ~CTempHome();
    // Where the preferences store keeps the set called name.
    std::string PrefsFile(const std::string& name) const;

  private:
    std::string m_oldHome;
    bool m_hadHome = false;
};

// The bytes of a file; empty when it cannot be read.
std::string ReadAll(const std::string& path);
// Replaces the file with text; aborts the test program when it cannot.
void WriteAll(const std::string& path, const std::string& text);
// Names of the entries of a directory, sorted; empty when it cannot be read.
std::vector<std::string> SortedEntries(const std::string& dir);
