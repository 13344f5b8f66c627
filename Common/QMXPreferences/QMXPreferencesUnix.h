// CQMXPreferencesUnix: the POSIX platform part of the preferences store.
//
// File: base + "/.qmxconfig/Corvell/com.veldra." + name + ".plist", base being $HOME for a user set
// and "/etc" for a system one; directories are created with mode 0775.
// Writes go to a unique temporary file (real path + ".tmp" and a random suffix) in the same
// directory, which is flushed with fsync and renamed over the real file. rename replaces the file
// in one step, so the real file is never removed first and a reader always finds a whole file.
// A missing file is created from the template the same way, and only if no other process created
// it meanwhile. The change hash is CQMXTHash (FNV-1) over the file's inode, size and modification
// time (seconds and nanoseconds). The save lock is flock on the preferences directory.
#pragma once

#include "QMXPreferencesImpl.h"

class CQMXPreferencesUnix : public CQMXPreferencesImpl
{
  public:
    // syncToDisk: flush every committed file to the disk (fsync) before it replaces the old one, so
    // a power loss leaves either file whole. Without it the replacement is still atomic for other
    // processes; tools that save many times in a row may turn it off.
    explicit CQMXPreferencesUnix(bool syncToDisk = true) : m_bSyncToDisk(syncToDisk) {}
    ~CQMXPreferencesUnix() override;

    CQMXTString GetPreferenceFilePath(const char* name, EPreferenceType type) override;
    bool OpenPreferenceFile(SQMXPrefFile& file, const char* name, EQMXPrefFileMode mode,
                            EPreferenceType type, bool useTemporary) override;
    bool CloseFile(SQMXPrefFile& file, bool commit) override;
    bool LastModificationTimeHash(const char* name, EPreferenceType type, CQMXTHash& hash) override;
    bool Lock(const char* name, EPreferenceType type) override;
    void Unlock() override;
    CQMXTString GetHomeDirectory() override;

  protected:
    // Base directory of a set: $HOME or "/etc"; empty when HOME is not set.
    CQMXTString GetBaseDirectory(EPreferenceType type);
    // Creates base/.qmxconfig and base/.qmxconfig/Corvell; false if either is missing afterwards.
    bool CreateDirectories(EPreferenceType type);
    // Writes the template to the real path unless a file is already there.
    bool CreateFromTemplate(const CQMXTString& path);

  private:
    bool m_bSyncToDisk;
    int m_iLockFd = -1;
};
