// Writing an output file so that it appears complete or not at all.
//
// The file is first written under its own base name inside a private temporary directory beside
// the target (same file system, so the final rename is atomic), then renamed over the target.
// Until Commit succeeds an existing target stays untouched; an abandoned or failed write leaves
// nothing behind. The base name is kept because writers may embed it (generated source does).
#pragma once

#include <cstddef>
#include <string>

class CSafeOutput
{
  public:
    explicit CSafeOutput(const std::string& target);
    // Removes the temporary file and directory unless committed.
    ~CSafeOutput();
    CSafeOutput(const CSafeOutput&) = delete;
    CSafeOutput& operator=(const CSafeOutput&) = delete;

    // Creates the temporary directory. False with the reason when the target's directory is missing
    // or not writable, or the target is a directory.
    bool Begin(std::string& error);
    // Where the writer is to write: the temporary directory plus the target's base name.
    const std::string& TempPath() const { return m_sTempPath; }
    // Renames the written file over the target. False with the reason (nothing written, rename failed).
    bool Commit(std::string& error);

    const std::string& Target() const { return m_sTarget; }

  private:
    void Discard();

    std::string m_sTarget;
    std::string m_sTempDir;
    std::string m_sTempPath;
    bool m_bCommitted = false;
};

// Writes size bytes to path through CSafeOutput. False with the reason.
bool WriteFileSafely(const std::string& path, const void* data, size_t size, std::string& error);
