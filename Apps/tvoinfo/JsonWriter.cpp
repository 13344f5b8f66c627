#include "JsonWriter.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "QMXTString.h"

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


void CJsonWriter::Quoted(const char* s)
{
    m_text += '"';
    const unsigned char* p = reinterpret_cast<const unsigned char*>(s);
    const unsigned char* end = p + std::strlen(s);
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
            const size_t n = QMXTStringUtf8Length(p, end);
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
