// Source wrapping: turns files into C++ source that embeds their bytes and registers them with the
// in-memory file system, so an application loads them by name as if they were on disk.
//
// The routines write into a string stream; FileOut writes the stream to the output file. A wrapped
// file becomes an array of 32-bit words ("A32BIT _name_ext[] = {...}"), or with eBintuckText a
// string literal, followed by a static CQMXTMemoryFileSystem object that registers it at start-up.
// A file whose length is not a multiple of four is padded with zero bytes to whole words (an empty
// file gives one zero word, since C++ has no empty arrays); the registered size is the true size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ios>
#include <sstream>
#include <string>

enum EBintuckFlags : unsigned
{
    eBintuckNoRegistration = 1, // plain data with a size variable, no include and no registration
    eBintuckText = 2,           // a string literal instead of the word array
    eBintuckBigEndian = 8       // words assembled big-endian
};

void WriteHeader(std::ostream& out, unsigned flags);
// Everything after the last '/' or backslash.
std::string BaseName(const std::string& path);
// "_" and the file name with every character that is not a letter or digit replaced by '_'.
std::string FileToVarName(const std::string& fileName);
void WriteBinary(std::ostream& out, const uint8_t* data, size_t size, const std::string& fileName,
                 const std::string& varName, unsigned flags);
void WriteString(std::ostream& out, const uint8_t* data, size_t size, const std::string& fileName,
                 const std::string& varName, unsigned flags);
void WriteDataFooter(std::ostream& out, size_t size, const std::string& fileName, const std::string& varName,
                     unsigned flags);
// One wrapped file: start line, data (word array or text), footer and end line.
void WrapData(std::ostream& out, const uint8_t* data, size_t size, const std::string& fileName,
              unsigned flags);
// Writes the stream's text to outputPath (truncating or appending); logs "Could not open output file
// <name>" and returns false when the file can't be written. A failed truncating write removes the file.
bool FileOut(const char* outputPath, const std::ostringstream& text, std::ios_base::openmode openMode);
// Header and every named file wrapped, written to outputPath. An input that can't be read is logged
// as "Could not open <name> for reading\n" and makes the whole call fail without writing.
bool WrapFiles(const char* outputPath, std::ios_base::openmode openMode, unsigned flags, int fileCount,
               const char* const* fileNames);
