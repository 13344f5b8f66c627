#include "OptionsVectorOpt.h"

#include <cctype>
#include <climits>
#include <cstring>

namespace
{
bool EqualIgnoringCase(const char* a, const char* b)
{
    for (; *a && *b; ++a, ++b)
        if (std::tolower(static_cast<unsigned char>(*a)) != std::tolower(static_cast<unsigned char>(*b)))
            return false;
    return *a == *b;
}

bool HasDigit(const char* text)
{
    while (*text == ' ' || *text == '\t')
        ++text;
    if (*text == '+' || *text == '-')
        ++text;
    return *text >= '0' && *text <= '9';
}
} // namespace

namespace
{
// Leading white space, a sign and decimal digits, clamped to [low, high].
long long ParseClamped(const char* text, long long low, long long high)
{
    if (!text)
        return 0;
    while (std::isspace(static_cast<unsigned char>(*text)))
        ++text;
    bool negative = false;
    if (*text == '+' || *text == '-')
        negative = *text++ == '-';
    long long value = 0;
    for (; *text >= '0' && *text <= '9'; ++text)
        if (value <= high - low) // stop growing once out of range either way
            value = value * 10 + (*text - '0');
    if (negative)
        value = -value;
    return value < low ? low : (value > high ? high : value);
}
} // namespace

int OptionsAtoi(const char* text)
{
    return static_cast<int>(ParseClamped(text, INT_MIN, INT_MAX));
}

uint32_t OptionsAtou(const char* text)
{
    return static_cast<uint32_t>(ParseClamped(text, INT_MIN, UINT32_MAX));
}

bool IsVertexDataType(uint32_t type)
{
    return type > EQMXTDataNone && type < EQMXTDataTypeCount;
}

EQMXTDataType VertexDataTypeFromName(const char* name)
{
    for (uint32_t type = EQMXTDataNone + 1; type < EQMXTDataTypeCount; ++type)
        if (EqualIgnoringCase(name, QMXTModelTVODataTypeName(type)))
            return static_cast<EQMXTDataType>(type);
    return EQMXTDataNone;
}

bool CVectorOpt::SetFromString(const char* subKey, const char* value)
{
    if (!subKey || !value)
        return false;
    if (std::strcmp(subKey, "bExport") == 0)
    {
        m_bExport = OptionsAtoi(value) != 0;
        return true;
    }
    if (std::strcmp(subKey, "eType") == 0)
    {
        const uint32_t type = HasDigit(value) ? static_cast<uint32_t>(OptionsAtoi(value)) : VertexDataTypeFromName(value);
        if (!IsVertexDataType(type))
            return false;
        m_eType = static_cast<EQMXTDataType>(type);
        return true;
    }
    if (std::strcmp(subKey, "nEnable") == 0)
    {
        m_nEnable = OptionsAtou(value);
        return true;
    }
    return false;
}
