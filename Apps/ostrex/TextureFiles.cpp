#include "TextureFiles.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool IsFile(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}
} // namespace

std::string PercentDecoded(const std::string& name)
{
    std::string decoded;
    for (size_t i = 0; i < name.size(); ++i)
    {
        const int high = name[i] == '%' && i + 2 < name.size() ? HexDigit(name[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(name[i + 2]) : -1;
        if (low < 0)
        {
            decoded += name[i];
            continue;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

std::string ExistingTextureFile(const std::string& folder, const std::string& name)
{
    for (const std::string& reading : {name, PercentDecoded(name)})
    {
        const fs::path texture(reading);
        const fs::path path = texture.is_absolute() || folder.empty() ? texture : fs::path(folder) / texture;
        if (!reading.empty() && IsFile(path))
            return path.lexically_normal().string();
    }
    return "";
}
