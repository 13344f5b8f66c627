// COptions: the export options plus reading and writing whole configuration files, and two fields
// of the export driver (a path and an integer) that ConfigDefault resets.
//
// ReadConfig chooses by the extension of the file name (case ignored):
//  - "h": a generated header; the lines between "\tExpOpt{\n" and "\t}ExpOpt\n" are parsed, and
//    only when the end marker is there (CR LF line ends are read as LF; at most 1 MiB is collected).
//  - "tvo": the options text stored in a scene file (up to 10239 bytes).
//  - "plist": never read as a configuration; 0.
//  - anything else: the first 10239 bytes of the file as text.
// The result is the number of options set (SetFromString's count); 0 when nothing was read. A path
// whose file name has no extension gives 0 (a dot in a directory name does not count).
//
// WriteConfig writes ToString() to the file and returns 1, or 0 when the path is null or the file
// cannot be written whole; it writes through a temporary file beside the target and renames it, so
// a failed write leaves any old file as it was.
#pragma once

#include <cstdint>

#include "OptionsData.h"

class COptions : public COptionsData
{
  public:
    COptions();
    COptions(const COptions& other) = default;
    COptions& operator=(const COptions& other) = default;
    COptions& operator=(const COptionsData& other);
    ~COptions() override;

    void ConfigDefault() override;

    int WriteConfig(const char* path) const;
    int ReadConfig(const char* path);

    // Used by the export driver; only reset here.
    CQMXTString m_sPath;
    int32_t m_nDriverValue = 0;

  private:
    int ReadHeaderConfig(const char* path);
    int ReadSceneConfig(const char* path);
    int ReadTextConfig(const char* path);
};
