// Key paths and the dict tree of a property-list document: splitting a path, finding, creating and
// removing the value element of a key, and copying one key's value between documents.
// Internal to the preferences store.
#pragma once

#include <string>
#include <vector>

class TiXmlDocument;
class TiXmlElement;

// Removes one leading and one trailing "/", splits at every "/" and drops empty components.
std::vector<std::string> QMXPrefSplitKey(const char* key);
// The components joined by "/": the one spelling of a key path.
std::string QMXPrefJoinKey(const std::vector<std::string>& components);

// The top-level <dict> of <plist>, or null.
TiXmlElement* QMXPrefRootDict(TiXmlDocument& doc);

// The value element at the path: 0 with *value set; 1 when a key or its value is missing; 3 when
// the path runs through a value that is not a dict. Optionally the <key> element and its dict.
int QMXPrefFind(TiXmlElement* rootDict, const std::vector<std::string>& path, TiXmlElement** value,
                TiXmlElement** keyElement = nullptr, TiXmlElement** parentDict = nullptr);

// The value element at the path, creating the missing <key>/<dict> pairs (appended at the end of
// each dict) and a final empty element of typeName. An existing value of another element name is
// turned into an empty typeName element. When replaceNonDicts is set, an intermediate value that is
// not a dict is replaced by an empty dict; otherwise that gives 3. 4 when an element cannot be made.
int QMXPrefFindOrCreate(TiXmlElement* rootDict, const std::vector<std::string>& path, const char* typeName,
                        bool replaceNonDicts, TiXmlElement** value);

// Removes the key and its value: 0, or the lookup's code.
int QMXPrefRemove(TiXmlElement* rootDict, const std::vector<std::string>& path);

// Makes the value at path in target a copy of the one in source, or removes it from target when
// source has none. Used to carry local changes over into a freshly read document.
void QMXPrefCopyKey(TiXmlElement* sourceRoot, TiXmlElement* targetRoot, const std::vector<std::string>& path);

// Replaces the children of element by a single text node (none for empty text).
void QMXPrefSetText(TiXmlElement* element, const std::string& text);
