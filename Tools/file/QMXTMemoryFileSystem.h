// A process-wide table of files held in memory, looked up by name.
//
// Generated source registers the scene file it embeds with a static instance:
//     static CQMXTMemoryFileSystem RegisterFile_scene_tvo("scene.tvo", _scene_tvo, 1234);
// and CQMXTResourceFile finds it by that name when no disk file of the name exists. Registration
// happens during static initialisation, so the table is plain zero-initialised data that needs no
// constructor of its own. Files registered with copy = true are copied (name and data) and owned by
// the table; at process exit CAtExit frees those copies and the table. Not thread-safe: registration
// and lookup are meant for start-up and the main thread.
#pragma once

#include <cstdint>

class CQMXTMemoryFileSystem
{
  public:
    // Registers a file (see RegisterMemoryFile).
    CQMXTMemoryFileSystem(const char* fileName, const void* data, uint32_t size, bool copy = false);

    // Adds a file to the table. Without copy the name and data must outlive every lookup (static data);
    // with copy they are duplicated. The table grows by ten records when full. Returns false when the
    // name is null or memory runs out.
    static bool RegisterMemoryFile(const char* fileName, const void* data, uint32_t size, bool copy = false);
    // Finds the first file registered under exactly this name (case-sensitive); fills data and size
    // when they are given. Returns whether it was found. Cost: linear in the number of files.
    static bool GetFile(const char* fileName, const void** data = nullptr, uint32_t* size = nullptr);
    // Enumeration in registration order; GetFilename gives null for an index past the end.
    static uint32_t GetNumFiles();
    static const char* GetFilename(uint32_t index);

    // Frees the copies the table owns and the table itself, leaving it empty. One static instance
    // does this at process exit.
    class CAtExit
    {
      public:
        ~CAtExit();
    };
};
