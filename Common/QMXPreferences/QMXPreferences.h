// CQMXPreferences: typed values under slash-separated key paths, kept in one XML property-list file
// per application ("com.veldra.<name>.plist" under $HOME/.qmxconfig/Corvell/, or /etc for a system
// set). Values are string, integer, real, bool (the empty element <true/> or <false/>), arrays of
// these, and binary data in Base64.
//
// Key paths: one leading and one trailing "/" are ignored and empty components are dropped, so
// "/A//B/" and "A/B" name the same value. Every component but the last names a nested <dict>.
//
// Results (EQMXPrefResult): 0 success, 1 no value (absent, or an empty element), 2 empty key,
// 3 incorrect type (another element type, text that does not parse, or a path that runs through a
// value that is not a <dict>), 4 critical error (nothing loaded, a changed file that could not be
// reloaded, an element that could not be created). Getters never fail hard: on any code but 0 the
// forms with a default store the default in the output.
//
// Choices made here where the file format leaves room:
//  - An empty <string/> is the empty string (code 0), so a stored "" reads back as it was written;
//    every other empty element gives code 1.
//  - Numbers must parse completely ("12abc" is code 3) and are read and written independently of
//    the C locale; reals are written in the shortest form that reads back to the same double.
//  - White space inside values is kept as written (TinyXML's condensing is switched off while this
//    class parses).
//  - A Set on a value of another type replaces it with the new type rather than leaving a value that
//    can no longer be read back as what was set.
//  - Saving merges: under a short advisory lock on the directory, the file is read again; if its
//    bytes differ from what this object last read or wrote, another process replaced it, and only
//    the keys this object set or cleared since then are carried over into that newer content before
//    the write. Processes that write different keys therefore never lose each other's values.
//  - The change check of tracking covers the file's identity (inode), size and modification time to
//    the nanosecond, so several saves within one second are still seen.
//  - Files larger than 16 MiB are not read; they are treated like an unparsable file.
//  - The file is read as UTF-8; a byte that is not part of a well-formed sequence is taken as a
//    Latin-1 character (so a string stored with such bytes reads back re-encoded as UTF-8).
//
// Not thread-safe: one object belongs to one thread. Several objects and processes may share a file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "QMXPreferencesImpl.h"
#include "QMXTString.h"

class TiXmlDocument;
class TiXmlElement;

enum EQMXPrefResult : int
{
    eQMXPrefSuccess = 0,
    eQMXPrefNoValue = 1,
    eQMXPrefEmptyKey = 2,
    eQMXPrefIncorrectType = 3,
    eQMXPrefCriticalError = 4
};

// Printable name of a result code: "SUCCESS", "NO_VALUE", "INCORRECT_TYPE" or "CRITICAL_ERROR".
// An empty key (2) prints as "NO_VALUE", since no value can be addressed; unknown codes as
// "CRITICAL_ERROR".
const char* QMXPrefResultName(int result);

// Element types in the order of the type table; the index is the type number the setters use.
enum EQMXPrefElementType : int
{
    eQMXPrefString = 0,
    eQMXPrefInteger,
    eQMXPrefReal,
    eQMXPrefTrue,
    eQMXPrefFalse,
    eQMXPrefArray,
    eQMXPrefDict,
    eQMXPrefData,
    eQMXPrefElementTypeCount
};
// "string", "integer", "real", "true", "false", "array", "dict", "data"; "key" for the key element.
const char* QMXPrefElementName(int type);
extern const char* const g_pszQMXPrefKeyElement;

class CQMXPreferences
{
  public:
    // Nothing is read until Load. The second form takes a platform part (tests use it to fail
    // writes); a null part means the default one of this platform.
    CQMXPreferences(const char* name, EPreferenceType type = ePreferenceUser);
    CQMXPreferences(const char* name, EPreferenceType type, std::unique_ptr<CQMXPreferencesImpl> impl);
    ~CQMXPreferences();
    CQMXPreferences(const CQMXPreferences&) = delete;
    CQMXPreferences& operator=(const CQMXPreferences&) = delete;

    // Opens (creating it from the template when missing), parses and validates the file. Warnings
    // and errors are appended to errors. A file that does not parse is replaced in memory by the
    // recreated skeleton (its values are lost) and the load still succeeds. False when the file
    // cannot be opened or created.
    bool Load(CQMXTString& errors, bool trackChanges = true);
    // Writes the document when it is dirty or force is set; true without writing otherwise. The file
    // is replaced through a temporary file, so on any failure the old file stays as it was.
    bool Save(bool force = false);

    bool IsLoaded() const { return m_pDoc != nullptr; }
    bool IsDirty() const { return m_bDirty; }
    CQMXTString GetFilePath() const;
    // Messages of the last load, including the reloads that change tracking does on its own.
    const CQMXTString& GetLastLoadMessages() const { return m_sLastLoadMessages; }

    // Scalars. The forms with a default store it in out on any result but 0.
    int GetValue(const char* key, bool& out);
    int GetValue(const char* key, bool& out, bool def);
    int GetValue(const char* key, int& out);
    int GetValue(const char* key, int& out, int def);
    int GetValue(const char* key, double& out);
    int GetValue(const char* key, double& out, double def);
    int GetValue(const char* key, CQMXTString& out);
    int GetValue(const char* key, CQMXTString& out, const CQMXTString& def);
    // Binary data: out receives a malloc'd buffer (free it with free) and length its size; on any
    // result but 0 out is null and length 0.
    int GetValue(const char* key, uint8_t*& out, uint32_t& length);
    // Arrays: on any result but 0 out is left empty.
    int GetValue(const char* key, std::vector<bool>& out);
    int GetValue(const char* key, std::vector<int>& out);
    int GetValue(const char* key, std::vector<double>& out);
    int GetValue(const char* key, std::vector<CQMXTString>& out);
    bool GetBoolValue(const char* key, bool def = false);

    // The first key inside the dict at key (the top-level dict for "" or "/"): 0, or 1 when the dict
    // has no key or the path does not exist, 3 when the path names a value that is not a dict.
    int GetFirstKey(const char* key, CQMXTString& first);
    bool KeyExists(const char* key);
    // Removes the key and its value (a whole subtree for a dict): 0, 1 when absent, 2 empty key.
    int ClearKey(const char* key);

    int SetValue(const char* key, bool value);
    int SetValue(const char* key, int value);
    int SetValue(const char* key, double value);
    int SetValue(const char* key, const char* value);
    int SetValue(const char* key, const CQMXTString& value);
    int SetValue(const char* key, const void* data, uint32_t length);
    int SetValue(const char* key, const std::vector<bool>& values);
    int SetValue(const char* key, const std::vector<int>& values);
    int SetValue(const char* key, const std::vector<double>& values);
    int SetValue(const char* key, const std::vector<const char*>& values);
    int SetValue(const char* key, const std::vector<CQMXTString>& values);

  private:
    // The value element at key, after the change check; code 0 with *out set, or the error code.
    int FindForRead(const char* key, TiXmlElement** out);
    // The value element at key, created (with the chain of dicts) when missing; its element name is
    // set to typeName (children cleared) when it differs. Marks the key touched.
    int FindForWrite(const char* key, const char* typeName, TiXmlElement** out);
    int SetScalarText(const char* key, int type, const std::string& text);
    int SetArrayTexts(const char* key, int type, const std::vector<std::string>& texts);
    template <typename T> int GetScalar(const char* key, T& out, int type);
    template <typename T> int GetArray(const char* key, std::vector<T>& out, int type);
    // Reloads when tracking is on, nothing is pending and the file changed; false if that fails.
    bool RefreshIfChanged();
    bool Reload(CQMXTString& errors);
    // Carries the touched keys of the current document over into disk, which becomes current.
    void MergeInto(std::unique_ptr<TiXmlDocument>& disk);
    bool WriteDocument();
    // The whole file as it is on disk now; false when it cannot be opened or read.
    bool ReadFileText(std::string& text);
    void MarkTouched(const std::string& normalisedKey);

    std::unique_ptr<TiXmlDocument> m_pDoc;
    std::unique_ptr<CQMXPreferencesImpl> m_pImpl;
    CQMXTString m_sName;
    EPreferenceType m_eType;
    CQMXTHash m_hash;           // change stamp of the file when last read or written
    bool m_bHashValid = false;
    bool m_bTrackChanges = false;
    bool m_bDirty = false;
    std::vector<std::string> m_touched; // normalised keys set or cleared since the last read/write
    std::string m_sSyncedText;          // the file's bytes when this object last read or wrote it
    CQMXTString m_sLastLoadMessages;
};
