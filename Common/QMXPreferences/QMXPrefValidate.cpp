#include "QMXPrefValidate.h"

#include <cctype>
#include <cstring>
#include <new>
#include <string>

#include <tinyxml.h>

#include "QMXPreferences.h"

namespace
{
bool IsNamed(const TiXmlElement* element, const char* name)
{
    return element && std::strcmp(element->Value(), name) == 0;
}

void Warn(CQMXTString& messages, const char* sourceName, const char* text)
{
    messages += sourceName;
    messages += "\n";
    messages += text;
}

void AppendLine(CQMXTString& messages, const char* format, int row)
{
    messages += QMXTStringFromFormattedStr(format, row);
}

bool CheckArray(const TiXmlElement* array, CQMXTString& messages);

bool IsContainer(const TiXmlElement* element)
{
    return IsNamed(element, QMXPrefElementName(eQMXPrefDict)) || IsNamed(element, QMXPrefElementName(eQMXPrefArray));
}

// Brings damaged content into a form that TinyXML writes back exactly as it reads it: a dict or an
// array keeps only elements and comments (stray text and unknown nodes go), any other element only
// its leading text, which is what a lookup reads from it. Well-formed files are left unchanged.
void Normalise(TiXmlElement* element)
{
    if (!IsContainer(element))
    {
        const TiXmlNode* first = element->FirstChild();
        if (!first || (first->ToText() && !first->NextSibling()))
            return;
        const std::string text = first->ToText() ? first->Value() : "";
        element->Clear();
        if (!text.empty())
            element->InsertEndChild(TiXmlText(text.c_str()));
        return;
    }
    TiXmlNode* child = element->FirstChild();
    while (child)
    {
        TiXmlNode* next = child->NextSibling();
        if (TiXmlElement* inner = child->ToElement())
            Normalise(inner);
        else if (!child->ToComment())
            element->RemoveChild(child);
        child = next;
    }
}

bool CheckContainer(const TiXmlElement* value, CQMXTString& messages);

bool CheckDict(const TiXmlElement* dict, CQMXTString& messages)
{
    bool ok = true;
    const TiXmlElement* child = dict->FirstChildElement();
    while (child)
    {
        if (!IsNamed(child, g_pszQMXPrefKeyElement))
        {
            AppendLine(messages, "ERROR: Missing <key> tag on line: %d\n", child->Row());
            ok = false;
            child = child->NextSiblingElement();
            continue;
        }
        const TiXmlElement* value = child->NextSiblingElement();
        if (!value)
        {
            messages += "ERROR: Key missing value!";
            return false;
        }
        if (IsNamed(value, g_pszQMXPrefKeyElement))
        {
            AppendLine(messages, "ERROR: Key missing value on line: %d\n", child->Row());
            ok = false;
            child = value;
            continue;
        }
        ok = CheckContainer(value, messages) && ok;
        child = value->NextSiblingElement();
    }
    return ok;
}

bool CheckArray(const TiXmlElement* array, CQMXTString& messages)
{
    bool ok = true;
    for (const TiXmlElement* child = array->FirstChildElement(); child; child = child->NextSiblingElement())
    {
        if (IsNamed(child, g_pszQMXPrefKeyElement))
        {
            AppendLine(messages, "ERROR: Array elements cannot contain a <key> tag! Line: %d\n", child->Row());
            ok = false;
            continue;
        }
        ok = CheckContainer(child, messages) && ok;
    }
    return ok;
}

bool CheckContainer(const TiXmlElement* value, CQMXTString& messages)
{
    if (IsNamed(value, QMXPrefElementName(eQMXPrefDict)))
        return CheckDict(value, messages);
    if (IsNamed(value, QMXPrefElementName(eQMXPrefArray)))
        return CheckArray(value, messages);
    return true;
}

// TinyXML writes a declaration's values without escaping them, so only plain values may stay.
bool IsPlainValue(const char* value)
{
    for (; *value; ++value)
        if (!std::isalnum(static_cast<unsigned char>(*value)) && !std::strchr("._-", *value))
            return false;
    return true;
}

bool EnsureDeclaration(TiXmlDocument& doc, const char* sourceName, CQMXTString& messages)
{
    for (TiXmlNode* node = doc.FirstChild(); node; node = node->NextSibling())
        if (const TiXmlDeclaration* declaration = node->ToDeclaration())
        {
            if (IsPlainValue(declaration->Version()) && IsPlainValue(declaration->Encoding()) &&
                IsPlainValue(declaration->Standalone()))
                return true;
            // A declaration that would not read back as written is replaced by the standard one.
            return doc.ReplaceChild(node, TiXmlDeclaration("1.0", "utf-8", "")) != nullptr;
        }
    Warn(messages, sourceName, "WARNING: No declaration found at the start. The declaration will be recreated.\n");
    TiXmlDeclaration declaration("1.0", "utf-8", "");
    TiXmlNode* first = doc.FirstChild();
    const bool linked = first ? doc.InsertBeforeChild(first, declaration) != nullptr
                              : doc.InsertEndChild(declaration) != nullptr;
    if (!linked)
        messages += "Error: Failed to recreate the declaration.\n";
    return linked;
}

TiXmlElement* EnsureChild(TiXmlNode& parent, const char* name, const char* sourceName, CQMXTString& messages,
                          const char* warning, const char* memoryError, const char* linkError)
{
    if (TiXmlElement* existing = parent.FirstChildElement(name))
        return existing;
    Warn(messages, sourceName, warning);
    TiXmlElement* element = new (std::nothrow) TiXmlElement(name);
    if (!element)
    {
        messages += memoryError;
        return nullptr;
    }
    if (std::strcmp(name, "plist") == 0)
        element->SetAttribute("version", "1.0");
    if (!parent.LinkEndChild(element))
    {
        messages += linkError;
        return nullptr;
    }
    return element;
}
} // namespace

bool QMXPrefValidate(TiXmlDocument& doc, const char* sourceName, CQMXTString& messages)
{
    if (!sourceName)
        sourceName = "";
    if (!EnsureDeclaration(doc, sourceName, messages))
        return false;
    TiXmlElement* plist =
        EnsureChild(doc, "plist", sourceName, messages, "WARNING: No root <plist> tag found. Tag will be recreated.\n",
                    "ERROR: Failed to recreate <plist> tag. Out of memory!\n", "ERROR: Failed to link <plist> tag!\n");
    if (!plist)
        return false;
    TiXmlElement* dict =
        EnsureChild(*plist, QMXPrefElementName(eQMXPrefDict), sourceName, messages,
                    "WARNING: No <dict> tag found. Tag will be recreated.\n",
                    "ERROR: Failed to recreate <dict> tag. Out of memory!\n", "ERROR: Failed to link <dict> tag!\n");
    if (!dict)
        return false;
    Normalise(dict);
    return CheckDict(dict, messages);
}
