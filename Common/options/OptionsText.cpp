// The text form of the options: ToString and SetFromString.
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "OptionsData.h"

namespace
{
void AppendLine(std::string& out, const char* key, const char* value)
{
    out += key;
    out += '=';
    out += value;
    out += '\n';
}

void AppendInt(std::string& out, const char* key, long long value)
{
    AppendLine(out, key, std::to_string(value).c_str());
}

// A string value on one line: CR and LF become spaces.
std::string OneLine(const CQMXTString& text)
{
    std::string line(text.c_str(), text.length());
    for (char& c : line)
        if (c == '\n' || c == '\r')
            c = ' ';
    return line;
}

// atof without the locale: leading white space, then the longest decimal number; 0 when none.
float OptionsAtof(const char* text, bool& finite)
{
    while (*text == ' ' || *text == '\t' || *text == '\v' || *text == '\f')
        ++text;
    if (*text == '+')
        ++text;
    double value = 0.0;
    std::from_chars(text, text + std::strlen(text), value);
    const float result = static_cast<float>(value);
    finite = std::isfinite(result);
    return result;
}

bool Matches(const SOptionNames& names, const std::string& key)
{
    return key == names.pszKey || (names.pszAlias && key == names.pszAlias);
}

bool AtoiBool(const char* value)
{
    return OptionsAtoi(value) != 0;
}

uint32_t AtoiUnsigned(const char* value)
{
    return OptionsAtou(value);
}
} // namespace

CQMXTString COptionsData::ToString() const
{
    std::string out;
    out.reserve(2048);
    for (int i = 0; i < eNumBools; ++i)
        AppendInt(out, Names(static_cast<EBools>(i)).pszKey, m_bBools[i] ? 1 : 0);

    char number[64];
    const auto written = std::to_chars(number, number + sizeof number - 1, m_fFloats[eTangentSpaceVtxSplit],
                                       std::chars_format::fixed, 2);
    *written.ptr = '\0';
    AppendLine(out, Names(eTangentSpaceVtxSplit).pszKey, number);

    AppendInt(out, Names(eExpFormat).pszKey, m_eExportFormat);
    AppendInt(out, Names(eCS).pszKey, m_eCoordSystem);
    AppendInt(out, Names(eTriSort).pszKey, m_eTriSort);
    AppendInt(out, Names(ePrimType).pszKey, m_ePrimType);
    for (int i = 0; i < eNumStrings; ++i)
        AppendLine(out, Names(static_cast<EStrings>(i)).pszKey, OneLine(m_sStrings[i]).c_str());
    for (int i = 0; i < eNumInts; ++i)
        AppendInt(out, Names(static_cast<EInts>(i)).pszKey, m_uiInts[i]);
    for (int i = 0; i < eNumVectorFormats; ++i)
    {
        const std::string key = Names(static_cast<EVectorFormats>(i)).pszKey;
        const CVectorOpt& vector = m_vectorOpts[i];
        AppendInt(out, (key + ".bExport").c_str(), vector.GetOption(CVectorOpt::eExport) ? 1 : 0);
        AppendInt(out, (key + ".eType").c_str(), vector.GetOption(CVectorOpt::eDataType));
        AppendInt(out, (key + ".nEnable").c_str(), vector.GetOption(CVectorOpt::eEnable));
    }
    CQMXTString text(out.c_str(), out.size());
    if (text.length() != out.size())
        throw std::bad_alloc(); // a CQMXTString that could not allocate stays short
    return text;
}

int COptionsData::SetFromString(const char* text)
{
    if (!text)
        return 0;
    int count = 0;
    bool customSet = false;
    const char* p = text;
    while (*p)
    {
        while (*p == '\n')
            ++p;
        if (!*p)
            break;
        const char* end = std::strchr(p, '\n');
        if (!end)
            end = p + std::strlen(p);
        std::string line(p, end);
        p = end;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0 || equals + 1 == line.size())
            continue;
        const std::string key = line.substr(0, equals);
        const char* value = line.c_str() + equals + 1;
        if (SetOneFromString(key, value, customSet))
            ++count;
    }

    EnforceAllowedAxes();
    if (!customSet)
    {
        if (m_bBools[eSortVertices] != m_bBools[eIndexed] || m_eTriSort != AutomaticTriSort(m_ePrimType))
            m_bBools[eUseCustomOptSettings] = true;
    }
    else
        HandleOptimisations();
    return count;
}

bool COptionsData::SetOneFromString(const std::string& key, const char* value, bool& customSet)
{
    for (int i = 0; i < eNumBools; ++i)
        if (Matches(Names(static_cast<EBools>(i)), key))
        {
            m_bBools[i] = AtoiBool(value);
            customSet = customSet || i == eUseCustomOptSettings;
            return true;
        }
    if (Matches(Names(eTangentSpaceVtxSplit), key))
    {
        bool finite = false;
        const float parsed = OptionsAtof(value, finite);
        if (finite)
            m_fFloats[eTangentSpaceVtxSplit] = parsed;
        return finite;
    }
    // The enumerations keep whatever number the text gives; the builder rejects what it cannot use.
    if (Matches(Names(eExpFormat), key))
    {
        m_eExportFormat = static_cast<EExportFormat>(AtoiUnsigned(value));
        return true;
    }
    if (Matches(Names(eCS), key))
    {
        m_eCoordSystem = static_cast<ECoordSystem>(AtoiUnsigned(value));
        return true;
    }
    if (Matches(Names(eTriSort), key))
    {
        m_eTriSort = static_cast<ETriSortMethod>(AtoiUnsigned(value));
        return true;
    }
    if (Matches(Names(ePrimType), key))
    {
        m_ePrimType = static_cast<EPrimType>(AtoiUnsigned(value));
        return true;
    }
    for (int i = 0; i < eNumStrings; ++i)
        if (Matches(Names(static_cast<EStrings>(i)), key))
        {
            m_sStrings[i] = value;
            return true;
        }
    for (int i = 0; i < eNumInts; ++i)
        if (Matches(Names(static_cast<EInts>(i)), key))
        {
            m_uiInts[i] = AtoiUnsigned(value);
            return true;
        }

    const size_t dot = key.find('.');
    if (dot != std::string::npos)
    {
        const std::string vectorKey = key.substr(0, dot);
        for (int i = 0; i < eNumVectorFormats; ++i)
            if (vectorKey == Names(static_cast<EVectorFormats>(i)).pszKey)
                return m_vectorOpts[i].SetFromString(key.c_str() + dot + 1, value);
        return false;
    }
    // Keys of older versions.
    if (key == "exportNormals" || key == "exportVertexColor")
    {
        m_vectorOpts[key == "exportNormals" ? eVcOptNor : eVcOptCol].SetOption(CVectorOpt::eExport, AtoiBool(value));
        return true;
    }
    return false;
}
