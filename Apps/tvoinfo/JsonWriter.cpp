#include "JsonWriter.h"

#include <cmath>
#include <cstdio>

void CJsonWriter::Key(const char* key)
{
    if (!m_first.empty())
    {
        if (!m_first.back())
            m_text += ',';
        m_first.back() = false;
        m_text += '\n';
        m_text.append(2 * m_first.size(), ' ');
    }
    if (key)
    {
        Quoted(key);
        m_text += ": ";
    }
}

void CJsonWriter::BeginObject(const char* key)
{
    Key(key);
    m_text += '{';
    m_first.push_back(true);
}

void CJsonWriter::BeginArray(const char* key)
{
    Key(key);
    m_text += '[';
    m_first.push_back(true);
}

void CJsonWriter::EndObject()
{
    const bool empty = m_first.back();
    m_first.pop_back();
    if (!empty)
    {
        m_text += '\n';
        m_text.append(2 * m_first.size(), ' ');
    }
    m_text += '}';
    if (m_first.empty())
        m_text += '\n';
}

void CJsonWriter::EndArray()
{
    const bool empty = m_first.back();
    m_first.pop_back();
    if (!empty)
    {
        m_text += '\n';
        m_text.append(2 * m_first.size(), ' ');
    }
    m_text += ']';
}

void CJsonWriter::String(const char* key, const char* value)
{
    Key(key);
    if (value)
        Quoted(value);
    else
        m_text += "null";
}

void CJsonWriter::Int(const char* key, int64_t value)
{
    Key(key);
    m_text += std::to_string(value);
}

void CJsonWriter::Float(const char* key, float value)
{
    Key(key);
    if (!std::isfinite(value))
    {
        m_text += "null";
        return;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    m_text += text;
}

void CJsonWriter::Bool(const char* key, bool value)
{
    Key(key);
    m_text += value ? "true" : "false";
}

void CJsonWriter::Null(const char* key)
{
    Key(key);
    m_text += "null";
}

namespace
{
// Length of the valid UTF-8 sequence starting at s, or 0 when it is not one.
size_t Utf8Length(const unsigned char* s)
{
    const unsigned char c = s[0];
    size_t n;
    uint32_t min;
    if (c >= 0xC2 && c <= 0xDF)
        n = 2, min = 0x80;
    else if (c >= 0xE0 && c <= 0xEF)
        n = 3, min = 0x800;
    else if (c >= 0xF0 && c <= 0xF4)
        n = 4, min = 0x10000;
    else
        return 0;
    uint32_t code = c & (0x3F >> (n - 1));
    for (size_t i = 1; i < n; ++i)
    {
        if ((s[i] & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (s[i] & 0x3F);
    }
    if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return 0;
    return n;
}
} // namespace

void CJsonWriter::Quoted(const char* s)
{
    m_text += '"';
    const unsigned char* p = reinterpret_cast<const unsigned char*>(s);
    while (*p)
    {
        const unsigned char c = *p;
        char escaped[8];
        if (c == '"' || c == '\\')
        {
            m_text += '\\';
            m_text += static_cast<char>(c);
        }
        else if (c == '\n')
            m_text += "\\n";
        else if (c == '\t')
            m_text += "\\t";
        else if (c == '\r')
            m_text += "\\r";
        else if (c < 0x20 || c == 0x7F)
        {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            m_text += escaped;
        }
        else if (c >= 0x80)
        {
            const size_t n = Utf8Length(p);
            if (n)
            {
                m_text.append(reinterpret_cast<const char*>(p), n);
                p += n;
                continue;
            }
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            m_text += escaped;
        }
        else
            m_text += static_cast<char>(c);
        ++p;
    }
    m_text += '"';
}
