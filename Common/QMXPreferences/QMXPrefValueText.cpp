#include "QMXPrefValueText.h"

#include <charconv>
#include <cstring>

extern "C" {
#include <b64/cdecode.h>
#include <b64/cencode.h>
}

#include "QMXTString.h"

namespace
{
bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// The text without surrounding white space, as [first, last).
void Trim(const char* text, const char*& first, const char*& last)
{
    first = text;
    last = text + std::strlen(text);
    while (first < last && IsSpace(*first))
        ++first;
    while (last > first && IsSpace(last[-1]))
        --last;
}

template <typename T> bool ParseWhole(const char* text, T& value)
{
    if (!text)
        return false;
    const char *first, *last;
    Trim(text, first, last);
    if (first < last && *first == '+') // from_chars takes no plus sign
        ++first;
    if (first == last)
        return false;
    T parsed{};
    const auto result = std::from_chars(first, last, parsed);
    if (result.ec != std::errc() || result.ptr != last)
        return false;
    value = parsed;
    return true;
}
} // namespace

std::string QMXPrefFormatInt(int value)
{
    char buffer[16];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

std::string QMXPrefFormatReal(double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

bool QMXPrefParseInt(const char* text, int& value)
{
    return ParseWhole(text, value);
}

bool QMXPrefParseReal(const char* text, double& value)
{
    return ParseWhole(text, value);
}

std::string QMXPrefBase64Encode(const void* data, uint32_t length)
{
    if (!data || length == 0)
        return std::string();
    // libb64 may break lines every 72 characters; room for that and the closing block.
    std::string code(static_cast<size_t>(length) * 2 + 8, '\0');
    base64_encodestate state;
    base64_init_encodestate(&state);
    int size = base64_encode_block(static_cast<const char*>(data), static_cast<int>(length), &code[0], &state);
    size += base64_encode_blockend(&code[size], &state);
    code.resize(static_cast<size_t>(size));
    std::string oneLine;
    oneLine.reserve(code.size());
    for (char c : code)
        if (c != '\n' && c != '\r')
            oneLine += c;
    return oneLine;
}

std::vector<uint8_t> QMXPrefBase64Decode(const char* text)
{
    if (!text)
        return {};
    const size_t length = std::strlen(text);
    std::vector<uint8_t> plain(length / 4 * 3 + 3);
    base64_decodestate state;
    base64_init_decodestate(&state);
    const int size = base64_decode_block(text, static_cast<int>(length), reinterpret_cast<char*>(plain.data()), &state);
    plain.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return plain;
}


void QMXPrefRepairUtf8(std::string& text)
{
    const auto* begin = reinterpret_cast<const unsigned char*>(text.data());
    const auto* end = begin + text.size();
    const auto* p = begin;
    size_t length = 0;
    while (p < end && (length = QMXTStringUtf8Length(p, end)) != 0)
        p += length;
    if (p == end)
        return; // already valid: the common case costs one scan
    std::string repaired(text, 0, static_cast<size_t>(p - begin));
    while (p < end)
    {
        length = QMXTStringUtf8Length(p, end);
        if (length)
        {
            repaired.append(reinterpret_cast<const char*>(p), length);
            p += length;
            continue;
        }
        repaired += static_cast<char>(0xC0 | (*p >> 6));
        repaired += static_cast<char>(0x80 | (*p & 0x3F));
        ++p;
    }
    text.swap(repaired);
}
