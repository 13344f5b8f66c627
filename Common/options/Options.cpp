#include "Options.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "QMXTModelTVO.h"

namespace
{
const size_t kTextLimit = 10239;       // options text of a scene file or a plain configuration
const size_t kHeaderLine = 10240;      // one line of a generated header
const size_t kHeaderLimit = 1u << 20;  // collected options text of a header

// The extension of the file name in path, lower-cased; empty when the name has none.
std::string FileExtension(const char* path)
{
    const char* name = std::strrchr(path, '/');
    name = name ? name + 1 : path;
    const char* dot = std::strrchr(name, '.');
    if (!dot)
        return std::string();
    std::string extension(dot + 1);
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return extension;
}
} // namespace

COptions::COptions()
{
    COptions::ConfigDefault();
}

COptions::~COptions() = default;

COptions& COptions::operator=(const COptionsData& other)
{
    COptionsData::operator=(other);
    return *this;
}

void COptions::ConfigDefault()
{
    m_sPath.clear();
    m_nDriverValue = 0;
    COptionsData::ConfigDefault();
}

int COptions::WriteConfig(const char* path) const
{
    if (!path || !*path)
        return 0;
    const CQMXTString text = ToString();
    const std::string temp = std::string(path) + ".tmp";
    FILE* file = std::fopen(temp.c_str(), "wb");
    if (!file)
        return 0;
    bool ok = std::fwrite(text.c_str(), 1, text.length(), file) == text.length();
    ok = std::fflush(file) == 0 && ok;
    ok = std::fclose(file) == 0 && ok;
    if (ok)
        ok = std::rename(temp.c_str(), path) == 0;
    if (!ok)
        unlink(temp.c_str());
    return ok ? 1 : 0;
}

int COptions::ReadConfig(const char* path)
{
    if (!path)
        return 0;
    const std::string extension = FileExtension(path);
    if (extension.empty() || extension == "plist")
        return 0;
    if (extension == "h")
        return ReadHeaderConfig(path);
    if (extension == "tvo")
        return ReadSceneConfig(path);
    return ReadTextConfig(path);
}

int COptions::ReadHeaderConfig(const char* path)
{
    FILE* file = std::fopen(path, "rb");
    if (!file)
        return 0;
    std::string line(kHeaderLine, '\0'), collected;
    bool inside = false, closed = false;
    while (!closed && std::fgets(&line[0], static_cast<int>(line.size()), file))
    {
        std::string text(line.c_str());
        if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0)
            text.replace(text.size() - 2, 2, "\n");
        if (!inside)
            inside = text == "\tExpOpt{\n";
        else if (text == "\t}ExpOpt\n")
            closed = true;
        else if (collected.size() + text.size() <= kHeaderLimit)
            collected += text;
    }
    std::fclose(file);
    return closed ? SetFromString(collected.c_str()) : 0;
}

int COptions::ReadTextConfig(const char* path)
{
    FILE* file = std::fopen(path, "rb");
    if (!file)
        return 0;
    std::string text(kTextLimit + 1, '\0');
    const size_t got = std::fread(&text[0], 1, kTextLimit, file);
    std::fclose(file);
    text.resize(got);
    return got ? SetFromString(text.c_str()) : 0;
}

int COptions::ReadSceneConfig(const char* path)
{
    // Only the options text is read; the scene is not loaded. The buffer stays terminated because
    // the reader fills at most kTextLimit bytes of it.
    std::vector<char> text(kTextLimit + 1, '\0');
    CQMXTModelTVO model;
    if (model.ReadFromFile(path, text.data(), static_cast<uint32_t>(kTextLimit)) != 0)
        return 0;
    return SetFromString(text.data());
}
