#include "QMXPrefDocument.h"

#include <cstring>

#include <tinyxml.h>

#include "QMXPreferences.h"

namespace
{
bool IsNamed(const TiXmlElement* element, const char* name)
{
    return element && std::strcmp(element->Value(), name) == 0;
}

bool IsKeyElement(const TiXmlElement* element)
{
    return IsNamed(element, g_pszQMXPrefKeyElement);
}

// The <key> element of dict whose text is component, or null.
TiXmlElement* FindKey(TiXmlElement* dict, const std::string& component)
{
    for (TiXmlElement* child = dict->FirstChildElement(); child; child = child->NextSiblingElement())
    {
        if (!IsKeyElement(child))
            continue;
        const char* text = child->GetText();
        if (component == (text ? text : ""))
            return child;
    }
    return nullptr;
}

// The value element that follows a key element, or null when the key has none.
TiXmlElement* ValueOf(TiXmlElement* keyElement)
{
    TiXmlElement* value = keyElement->NextSiblingElement();
    return (value && !IsKeyElement(value)) ? value : nullptr;
}

// Appends <key>component</key> and an empty typeName element to dict; returns the new value element.
TiXmlElement* AppendPair(TiXmlElement* dict, const std::string& component, const char* typeName)
{
    TiXmlElement key(g_pszQMXPrefKeyElement);
    QMXPrefSetText(&key, component);
    if (!dict->InsertEndChild(key))
        return nullptr;
    TiXmlNode* value = dict->InsertEndChild(TiXmlElement(typeName));
    return value ? value->ToElement() : nullptr;
}

// Turns value into an empty element named typeName unless it already has that name.
void Retype(TiXmlElement* value, const char* typeName)
{
    if (IsNamed(value, typeName))
        return;
    value->Clear();
    value->SetValue(typeName);
}
} // namespace

std::vector<std::string> QMXPrefSplitKey(const char* key)
{
    std::string text = key ? key : "";
    if (!text.empty() && text.front() == '/')
        text.erase(0, 1);
    if (!text.empty() && text.back() == '/')
        text.pop_back();
    std::vector<std::string> components;
    size_t start = 0;
    while (start <= text.size())
    {
        size_t end = text.find('/', start);
        if (end == std::string::npos)
            end = text.size();
        if (end > start)
            components.emplace_back(text, start, end - start);
        start = end + 1;
    }
    return components;
}

std::string QMXPrefJoinKey(const std::vector<std::string>& components)
{
    std::string joined;
    for (const std::string& component : components)
    {
        if (!joined.empty())
            joined += '/';
        joined += component;
    }
    return joined;
}

TiXmlElement* QMXPrefRootDict(TiXmlDocument& doc)
{
    TiXmlElement* plist = doc.FirstChildElement("plist");
    return plist ? plist->FirstChildElement(QMXPrefElementName(eQMXPrefDict)) : nullptr;
}

int QMXPrefFind(TiXmlElement* rootDict, const std::vector<std::string>& path, TiXmlElement** value,
                TiXmlElement** keyElement, TiXmlElement** parentDict)
{
    *value = nullptr;
    if (!rootDict)
        return eQMXPrefCriticalError;
    if (path.empty())
        return eQMXPrefEmptyKey;
    TiXmlElement* dict = rootDict;
    for (size_t i = 0; i < path.size(); ++i)
    {
        TiXmlElement* key = FindKey(dict, path[i]);
        TiXmlElement* found = key ? ValueOf(key) : nullptr;
        if (!found)
            return eQMXPrefNoValue;
        if (i + 1 == path.size())
        {
            *value = found;
            if (keyElement)
                *keyElement = key;
            if (parentDict)
                *parentDict = dict;
            return eQMXPrefSuccess;
        }
        if (!IsNamed(found, QMXPrefElementName(eQMXPrefDict)))
            return eQMXPrefIncorrectType;
        dict = found;
    }
    return eQMXPrefNoValue;
}

int QMXPrefFindOrCreate(TiXmlElement* rootDict, const std::vector<std::string>& path, const char* typeName,
                        bool replaceNonDicts, TiXmlElement** value)
{
    *value = nullptr;
    if (!rootDict)
        return eQMXPrefCriticalError;
    if (path.empty())
        return eQMXPrefEmptyKey;
    const char* dictName = QMXPrefElementName(eQMXPrefDict);
    TiXmlElement* dict = rootDict;
    for (size_t i = 0; i < path.size(); ++i)
    {
        const bool last = i + 1 == path.size();
        const char* wanted = last ? typeName : dictName;
        TiXmlElement* key = FindKey(dict, path[i]);
        TiXmlElement* found = key ? ValueOf(key) : nullptr;
        if (key && !found)
        {
            // A key without a value (a damaged file): give it one in place.
            TiXmlNode* inserted = dict->InsertAfterChild(key, TiXmlElement(wanted));
            found = inserted ? inserted->ToElement() : nullptr;
            if (!found)
                return eQMXPrefCriticalError;
        }
        else if (!key)
        {
            found = AppendPair(dict, path[i], wanted);
            if (!found)
                return eQMXPrefCriticalError;
        }
        if (last)
        {
            Retype(found, typeName);
            *value = found;
            return eQMXPrefSuccess;
        }
        if (!IsNamed(found, dictName))
        {
            if (!replaceNonDicts)
                return eQMXPrefIncorrectType;
            Retype(found, dictName);
        }
        dict = found;
    }
    return eQMXPrefCriticalError;
}

int QMXPrefRemove(TiXmlElement* rootDict, const std::vector<std::string>& path)
{
    TiXmlElement *value = nullptr, *key = nullptr, *dict = nullptr;
    const int result = QMXPrefFind(rootDict, path, &value, &key, &dict);
    if (result != eQMXPrefSuccess)
        return result;
    dict->RemoveChild(value);
    dict->RemoveChild(key);
    return eQMXPrefSuccess;
}

void QMXPrefCopyKey(TiXmlElement* sourceRoot, TiXmlElement* targetRoot, const std::vector<std::string>& path)
{
    TiXmlElement* source = nullptr;
    if (QMXPrefFind(sourceRoot, path, &source) != eQMXPrefSuccess)
    {
        QMXPrefRemove(targetRoot, path);
        return;
    }
    TiXmlElement* target = nullptr;
    if (QMXPrefFindOrCreate(targetRoot, path, source->Value(), true, &target) != eQMXPrefSuccess)
        return;
    TiXmlNode* parent = target->Parent();
    if (parent)
        parent->ReplaceChild(target, *source);
}

void QMXPrefSetText(TiXmlElement* element, const std::string& text)
{
    element->Clear();
    if (!text.empty())
        element->InsertEndChild(TiXmlText(text.c_str()));
}
