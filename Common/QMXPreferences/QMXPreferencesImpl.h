// The platform part of the preferences store: where the file lives, how it is opened, replaced and
// watched for changes. CQMXPreferences owns one; CQMXPreferencesUnix is the POSIX form.
#pragma once

#include <cstdint>
#include <cstdio>

#include "QMXTHash.h"
#include "QMXTString.h"

enum EPreferenceType : int
{
    ePreferenceUser = 0,  // under $HOME
    ePreferenceSystem = 1 // under /etc
};

enum EQMXPrefFileMode : int
{
    eQMXPrefRead = 0,
    eQMXPrefWrite = 1
};

// An open preferences file. For writing through a temporary file, sTempPath is where the bytes go
// and sRealPath the file that the commit replaces.
struct SQMXPrefFile
{
    FILE* pFile = nullptr;
    CQMXTString sRealPath;
    CQMXTString sTempPath;
};

class CQMXPreferencesImpl
{
  public:
    virtual ~CQMXPreferencesImpl() = default;

    // Full path of the set's file; empty when the base directory is unknown (no HOME).
    virtual CQMXTString GetPreferenceFilePath(const char* name, EPreferenceType type) = 0;
    // Reading: creates the directories and the file from the template when it does not exist, then
    // opens it. Writing: opens a new temporary file beside the real one (useTemporary) or the real
    // file itself. False (and a closed record) on failure.
    virtual bool OpenPreferenceFile(SQMXPrefFile& file, const char* name, EQMXPrefFileMode mode,
                                    EPreferenceType type, bool useTemporary) = 0;
    // Closes the file. With commit, a temporary file is flushed to disk and renamed over the real
    // file; without, it is removed. False when any step fails; a failed commit leaves the real file
    // unchanged and no temporary file behind.
    virtual bool CloseFile(SQMXPrefFile& file, bool commit) = 0;
    // A hash that changes whenever the file is replaced or modified; false if it does not exist.
    virtual bool LastModificationTimeHash(const char* name, EPreferenceType type, CQMXTHash& hash) = 0;
    // Serialises the read-merge-write of a save between processes. Lock returns false when no lock
    // could be had; the save then goes on without one.
    virtual bool Lock(const char* name, EPreferenceType type) = 0;
    virtual void Unlock() = 0;
    virtual CQMXTString GetHomeDirectory() = 0;
};

// The text of a new preferences file: declaration, property-list document type, empty dict.
extern const char* const g_pszQMXPrefTemplate;
