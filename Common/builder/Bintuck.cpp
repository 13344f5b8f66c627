#include "Bintuck.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <vector>

#include "Log.h"

void WriteHeader(std::ostream& out, unsigned flags)
{
    out << "// This file was created by Bintuck 1.1\n";
    out << "// " << ((flags & eBintuckBigEndian) ? "Big endian mode" : "Little endian mode") << "\n";
    out << "// DO NOT EDIT\n\n";
    if (!(flags & eBintuckNoRegistration))
        out << "#include \"../QMXTMemoryFileSystem.h\"\n\n";
    out << "// using 32 bit to guarantee alignment.\n"
        << "#ifndef A32BIT\n"
        << " #define A32BIT static const unsigned int\n"
        << "#endif\n\n";
}

std::string BaseName(const std::string& path)
{
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string FileToVarName(const std::string& fileName)
{
    std::string name = "_";
    for (unsigned char c : fileName)
        name += std::isalnum(c) ? static_cast<char>(c) : '_';
    return name;
}

namespace
{
// Word i of the data, zero-padded past the end, assembled in the chosen byte order.
uint32_t Word(const uint8_t* data, size_t size, size_t i, bool bigEndian)
{
    uint8_t b[4];
    for (size_t k = 0; k < 4; ++k)
    {
        const size_t at = i * 4 + k;
        b[k] = at < size ? data[at] : 0;
    }
    if (bigEndian)
        return (uint32_t(b[0]) << 24) | (uint32_t(b[1]) << 16) | (uint32_t(b[2]) << 8) | b[3];
    return b[0] | (uint32_t(b[1]) << 8) | (uint32_t(b[2]) << 16) | (uint32_t(b[3]) << 24);
}

// "0x" and the value in lower-case hexadecimal without leading zeros, then ",".
void AppendHexWord(std::string& text, uint32_t value)
{
    static const char digits[] = "0123456789abcdef";
    char buffer[12];
    int n = 0;
    do
    {
        buffer[n++] = digits[value & 0xF];
        value >>= 4;
    } while (value);
    text += "0x";
    while (n)
        text += buffer[--n];
    text += ',';
}

// The escape a byte needs inside a string literal (newlines aside), or null.
const char* Escape(uint8_t c)
{
    switch (c)
    {
    case '\\':
        return "\\\\";
    case '\a':
        return "\\a";
    case '\t':
        return "\\t";
    case '\r':
        return "\\r";
    case '\f':
        return "\\f";
    case '\v':
        return "\\v";
    case '"':
        return "\\\"";
    default:
        return nullptr;
    }
}

bool IsHexDigit(uint8_t c)
{
    return std::isxdigit(c) != 0;
}
} // namespace

void WriteBinary(std::ostream& out, const uint8_t* data, size_t size, const std::string& /*fileName*/,
                 const std::string& varName, unsigned flags)
{
    const size_t words = size ? (size + 3) / 4 : 1;
    const bool bigEndian = (flags & eBintuckBigEndian) != 0;
    std::string text = "A32BIT " + varName + "[] = {";
    text.reserve(text.size() + words * 12 + words / 64 + 8);
    for (size_t i = 0; i < words; ++i)
    {
        if (i % 64 == 0)
            text += '\n';
        AppendHexWord(text, Word(data, size, i, bigEndian));
    }
    text += "\n};\n\n";
    out << text;
}

void WriteString(std::ostream& out, const uint8_t* data, size_t size, const std::string& /*fileName*/,
                 const std::string& varName, unsigned /*flags*/)
{
    out << "static const char " << varName << "[] = ";
    if (size == 0)
    {
        out << "\"\";\n\n";
        return;
    }
    bool open = false;
    char hex[8];
    for (size_t i = 0; i < size; ++i)
    {
        if (!open)
        {
            out << "\n\t\"";
            open = true;
        }
        const uint8_t c = data[i];
        if (const char* escape = Escape(c))
            out << escape;
        else if (c == '\n')
        {
            out << "\\n\"";
            open = false;
        }
        else if (c >= 0x20 && c < 0x7f)
            out << static_cast<char>(c);
        else
        {
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            out << hex;
            // A hex escape swallows every following hex digit: split the literal there.
            if (i + 1 < size && IsHexDigit(data[i + 1]))
                out << "\"\"";
        }
    }
    if (open)
        out << "\"";
    out << ";\n\n";
}

void WriteDataFooter(std::ostream& out, size_t size, const std::string& fileName, const std::string& varName,
                     unsigned flags)
{
    if (flags & eBintuckNoRegistration)
    {
        out << "static int " << varName << "_size = " << size << ";\n\n";
        return;
    }
    out << "// Register " << fileName << " in memory file system at application startup time\n"
        << "static CQMXTMemoryFileSystem RegisterFile" << varName << "(\"" << fileName << "\", " << varName
        << ", " << size << ");\n\n";
}

void WrapData(std::ostream& out, const uint8_t* data, size_t size, const std::string& fileName,
              unsigned flags)
{
    const std::string varName = FileToVarName(fileName);
    out << "// ******** Start: " << fileName << " ********\n\n";
    out << "// File data\n";
    if (flags & eBintuckText)
        WriteString(out, data, size, fileName, varName, flags);
    else
        WriteBinary(out, data, size, fileName, varName, flags);
    WriteDataFooter(out, size, fileName, varName, flags);
    out << "// ******** End: " << fileName << " ********\n\n";
}

bool FileOut(const char* outputPath, const std::ostringstream& text, std::ios_base::openmode openMode)
{
    // A stream that could not grow while the text was built only sets its badbit: such a text is
    // incomplete and never written. The copy is made before the file is opened, so running out of
    // memory here leaves no file either.
    if (!text)
        return false;
    const std::string name = outputPath ? outputPath : "";
    const std::string s = text.str();
    std::ofstream file;
    bool written = false;
    try
    {
        if (outputPath)
            file.open(outputPath, std::ios_base::out | std::ios_base::binary | openMode);
        if (!file.is_open())
        {
            Log(eLogError, "Could not open output file %s", name.c_str());
            return false;
        }
        file.write(s.data(), static_cast<std::streamsize>(s.size()));
        file.close();
        written = !file.fail();
    }
    catch (const std::bad_alloc&)
    {
        // The stream allocates its buffer after creating the file: treated as a failed write.
    }
    if (!written)
    {
        Log(eLogError, "Could not open output file %s", name.c_str());
        if (!(openMode & std::ios_base::app))
            std::remove(outputPath);
        return false;
    }
    return true;
}

bool WrapFiles(const char* outputPath, std::ios_base::openmode openMode, unsigned flags, int fileCount,
               const char* const* fileNames)
{
    std::ostringstream text;
    WriteHeader(text, flags);
    for (int i = 0; i < fileCount; ++i)
    {
        const char* path = fileNames ? fileNames[i] : nullptr;
        std::ifstream in;
        if (path)
            in.open(path, std::ios_base::in | std::ios_base::binary);
        if (!in.is_open())
        {
            Log(eLogError, "Could not open %s for reading\n", path ? path : "");
            return false;
        }
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in),
                                         std::istreambuf_iterator<char>()};
        if (in.bad())
        {
            Log(eLogError, "Could not open %s for reading\n", path);
            return false;
        }
        WrapData(text, bytes.data(), bytes.size(), BaseName(path), flags);
    }
    return FileOut(outputPath, text, openMode);
}
