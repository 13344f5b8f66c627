// Test support: a temporary HOME (tests never touch the real one) and whole-file helpers.
#pragma once

#include <string>
#include <vector>

// Creates a fresh directory, points HOME at it, and on destruction restores HOME and removes the
// directory with everything in it.
class CTempHome
{
  public:
    CTempHome();
    ~CTempHome();
    CTempHome(const CTempHome&) = delete;
    CTempHome& operator=(const CTempHome&) = delete;

    const std::string& Path() const { return m_sPath; }
    // Where the store keeps the set called name.
    std::string PrefsFile(const std::string& name) const;

  private:
    std::string m_sPath;
    std::string m_sOldHome;
    bool m_bHadHome = false;
};

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& text);
bool FileExists(const std::string& path);
// Names of the entries of a directory, sorted ("." and ".." left out).
std::vector<std::string> ListDirectory(const std::string& path);
