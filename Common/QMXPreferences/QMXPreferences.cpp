#include "QMXPreferences.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <tinyxml.h>

#include "QMXPrefDocument.h"
#include "QMXPrefValidate.h"
#include "QMXPrefValueText.h"
#include "QMXPreferencesUnix.h"

const char* const g_pszQMXPrefKeyElement = "key";

namespace
{
const char* const kElementNames[eQMXPrefElementTypeCount] = {"string", "integer", "real", "true",
                                                             "false",  "array",   "dict", "data"};
const size_t kMaxFileSize = 16u << 20;
const int kMaxNesting = 256;

// TinyXML condenses white space by default, which would alter stored strings; switch it off for
// one parse and restore whatever the process had.
class CKeepWhiteSpace
{
  public:
    CKeepWhiteSpace() : m_bWas(TiXmlBase::IsWhiteSpaceCondensed()) { TiXmlBase::SetCondenseWhiteSpace(false); }
    ~CKeepWhiteSpace() { TiXmlBase::SetCondenseWhiteSpace(m_bWas); }

  private:
    bool m_bWas;
};

// Deepest element nesting of an XML text, from a scan of its tags (quoted attribute values,
// comments and CDATA sections skipped). TinyXML parses recursively, so a hostile file must not
// reach it with unbounded depth.
int NestingDepth(const std::string& text)
{
    int depth = 0, deepest = 0;
    size_t i = 0;
    const size_t n = text.size();
    auto skipPast = [&](const char* end) {
        const size_t at = text.find(end, i);
        i = at == std::string::npos ? n : at + std::strlen(end);
    };
    while (i < n)
    {
        if (text[i] != '<')
        {
            ++i;
            continue;
        }
        if (text.compare(i, 4, "<!--") == 0)
            skipPast("-->");
        else if (text.compare(i, 9, "<![CDATA[") == 0)
            skipPast("]]>");
        else if (i + 1 < n && (text[i + 1] == '!' || text[i + 1] == '?'))
            skipPast(">");
        else if (i + 1 < n && text[i + 1] == '/')
        {
            --depth;
            skipPast(">");
        }
        else
        {
            // An opening tag: find its end outside quotes; "/>" closes it at once.
            char quote = 0, previous = 0;
            for (++i; i < n; ++i)
            {
                const char c = text[i];
                if (quote)
                    quote = c == quote ? 0 : quote;
                else if (c == '"' || c == '\'')
                    quote = c;
                else if (c == '>')
                    break;
                previous = c;
            }
            ++i;
            if (previous != '/')
                deepest = std::max(deepest, ++depth);
        }
    }
    return deepest;
}

// Reads at most limit + 1 bytes; false on a read error.
bool ReadAll(FILE* file, std::string& text, size_t limit)
{
    char buffer[65536];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0)
    {
        text.append(buffer, got);
        if (text.size() > limit)
            return true;
    }
    return std::ferror(file) == 0;
}

// Parses text into doc; false (with doc holding TinyXML's error) when it is not a whole document.
bool ParseDocument(TiXmlDocument& doc, std::string text)
{
    CKeepWhiteSpace keep;
    if (text.size() > kMaxFileSize || NestingDepth(text) > kMaxNesting)
    {
        doc.Parse("<", nullptr, TIXML_ENCODING_UTF8); // records a parse error to report
        return false;
    }
    QMXPrefRepairUtf8(text);
    doc.Parse(text.c_str(), nullptr, TIXML_ENCODING_UTF8);
    return !doc.Error();
}

template <typename T> bool ParseText(const char* text, T& out);
template <> bool ParseText(const char* text, int& out)
{
    return QMXPrefParseInt(text, out);
}
template <> bool ParseText(const char* text, double& out)
{
    return QMXPrefParseReal(text, out);
}
template <> bool ParseText(const char* text, CQMXTString& out)
{
    out = text ? text : "";
    return true;
}

// Reads one element of the given type: 0, 1 (no text) or 3.
template <typename T> int ReadElement(const TiXmlElement* element, int type, T& out)
{
    if (std::strcmp(element->Value(), kElementNames[type]) != 0)
        return eQMXPrefIncorrectType;
    const char* text = element->GetText();
    if (!text && type != eQMXPrefString)
        return eQMXPrefNoValue;
    return ParseText(text, out) ? eQMXPrefSuccess : eQMXPrefIncorrectType;
}

// A bool is the element's name.
template <> int ReadElement(const TiXmlElement* element, int, bool& out)
{
    if (std::strcmp(element->Value(), kElementNames[eQMXPrefTrue]) == 0)
        out = true;
    else if (std::strcmp(element->Value(), kElementNames[eQMXPrefFalse]) == 0)
        out = false;
    else
        return eQMXPrefIncorrectType;
    return eQMXPrefSuccess;
}

template <typename T> int WithDefault(int result, T& out, const T& def)
{
    if (result != eQMXPrefSuccess)
        out = def;
    return result;
}
} // namespace

const char* QMXPrefResultName(int result)
{
    switch (result)
    {
    case eQMXPrefSuccess: return "SUCCESS";
    case eQMXPrefNoValue:
    case eQMXPrefEmptyKey: return "NO_VALUE";
    case eQMXPrefIncorrectType: return "INCORRECT_TYPE";
    default: return "CRITICAL_ERROR";
    }
}

const char* QMXPrefElementName(int type)
{
    return (type >= 0 && type < eQMXPrefElementTypeCount) ? kElementNames[type] : "";
}

CQMXPreferences::CQMXPreferences(const char* name, EPreferenceType type) : CQMXPreferences(name, type, nullptr)
{
}

CQMXPreferences::CQMXPreferences(const char* name, EPreferenceType type, std::unique_ptr<CQMXPreferencesImpl> impl)
    : m_pImpl(impl ? std::move(impl) : std::make_unique<CQMXPreferencesUnix>()), m_sName(name), m_eType(type)
{
}

CQMXPreferences::~CQMXPreferences() = default;

CQMXTString CQMXPreferences::GetFilePath() const
{
    return m_pImpl->GetPreferenceFilePath(m_sName.c_str(), m_eType);
}

bool CQMXPreferences::Load(CQMXTString& errors, bool trackChanges)
{
    m_sLastLoadMessages.clear();
    const bool loaded = Reload(m_sLastLoadMessages);
    errors += m_sLastLoadMessages;
    if (loaded)
        m_bTrackChanges = trackChanges;
    return loaded;
}

bool CQMXPreferences::Reload(CQMXTString& errors)
{
    // The stamp is taken before reading: a change that lands meanwhile only causes one more reload.
    m_bHashValid = m_pImpl->LastModificationTimeHash(m_sName.c_str(), m_eType, m_hash);
    std::string text;
    SQMXPrefFile file;
    if (!m_pImpl->OpenPreferenceFile(file, m_sName.c_str(), eQMXPrefRead, m_eType, false))
    {
        errors += "ERROR: Failed to open filed, or write temporary file!";
        m_bHashValid = false; // try again on the next access
        return false;
    }
    const bool read = ReadAll(file.pFile, text, kMaxFileSize);
    m_pImpl->CloseFile(file, false);
    if (!m_bHashValid)
        m_bHashValid = m_pImpl->LastModificationTimeHash(m_sName.c_str(), m_eType, m_hash);

    auto doc = std::make_unique<TiXmlDocument>();
    const bool parsed = read && ParseDocument(*doc, text);
    std::unique_ptr<TiXmlDocument> failed;
    if (!parsed)
    {
        // Whatever TinyXML kept of a broken file is dropped; the skeleton is rebuilt below.
        failed = std::move(doc);
        doc = std::make_unique<TiXmlDocument>();
    }
    const bool valid = QMXPrefValidate(*doc, file.sRealPath.c_str(), errors);
    if (!parsed && !valid)
    {
        errors += QMXTStringFromFormattedStr("[%d:%d]: %s", failed->ErrorRow(), failed->ErrorCol(), failed->ErrorDesc());
        return false;
    }
    m_pDoc = std::move(doc);
    m_sSyncedText.swap(text);
    m_bDirty = false;
    m_touched.clear();
    return true;
}

bool CQMXPreferences::RefreshIfChanged()
{
    if (!m_pDoc)
        return false;
    if (!m_bTrackChanges || m_bDirty)
        return true;
    CQMXTHash hash;
    if (m_bHashValid && m_pImpl->LastModificationTimeHash(m_sName.c_str(), m_eType, hash) && hash == m_hash)
        return true;
    m_sLastLoadMessages.clear();
    return Reload(m_sLastLoadMessages);
}

void CQMXPreferences::MarkTouched(const std::string& normalisedKey)
{
    m_touched.erase(std::remove(m_touched.begin(), m_touched.end(), normalisedKey), m_touched.end());
    m_touched.push_back(normalisedKey);
    m_bDirty = true;
}

void CQMXPreferences::MergeInto(std::unique_ptr<TiXmlDocument>& disk)
{
    TiXmlElement* ours = QMXPrefRootDict(*m_pDoc);
    TiXmlElement* theirs = QMXPrefRootDict(*disk);
    if (!ours || !theirs)
        return;
    for (const std::string& key : m_touched)
        QMXPrefCopyKey(ours, theirs, QMXPrefSplitKey(key.c_str()));
    m_pDoc = std::move(disk);
}

bool CQMXPreferences::WriteDocument()
{
    TiXmlPrinter printer;
    printer.SetIndent("\t");
    m_pDoc->Accept(&printer);
    SQMXPrefFile file;
    if (!m_pImpl->OpenPreferenceFile(file, m_sName.c_str(), eQMXPrefWrite, m_eType, true))
        return false;
    const size_t size = printer.Size();
    const bool written = std::fwrite(printer.CStr(), 1, size, file.pFile) == size;
    const bool committed = m_pImpl->CloseFile(file, written);
    if (written && committed)
        m_sSyncedText.assign(printer.CStr(), size);
    return written && committed;
}

bool CQMXPreferences::ReadFileText(std::string& text)
{
    text.clear();
    SQMXPrefFile file;
    if (!m_pImpl->OpenPreferenceFile(file, m_sName.c_str(), eQMXPrefRead, m_eType, false))
        return false;
    const bool read = ReadAll(file.pFile, text, kMaxFileSize);
    m_pImpl->CloseFile(file, false);
    return read;
}

bool CQMXPreferences::Save(bool force)
{
    if (!m_pDoc || !m_pImpl)
        return false;
    if (!force && !m_bDirty)
        return true;
    const bool locked = m_pImpl->Lock(m_sName.c_str(), m_eType);
    // Under the lock, compare the file with what this object last read or wrote. The bytes are
    // compared, not the time stamp, which can miss a replacement within one clock tick.
    std::string diskText;
    if (ReadFileText(diskText) && diskText != m_sSyncedText)
    {
        // Someone else replaced the file: start from theirs and carry our changes over.
        auto disk = std::make_unique<TiXmlDocument>();
        if (ParseDocument(*disk, diskText) && QMXPrefRootDict(*disk))
            MergeInto(disk);
    }
    const bool ok = WriteDocument();
    if (ok)
    {
        m_bDirty = false;
        m_touched.clear();
        m_bHashValid = m_pImpl->LastModificationTimeHash(m_sName.c_str(), m_eType, m_hash);
    }
    if (locked)
        m_pImpl->Unlock();
    return ok;
}

int CQMXPreferences::FindForRead(const char* key, TiXmlElement** out)
{
    *out = nullptr;
    if (!m_pDoc || !RefreshIfChanged())
        return eQMXPrefCriticalError;
    const std::vector<std::string> path = QMXPrefSplitKey(key);
    if (path.empty())
        return eQMXPrefEmptyKey;
    return QMXPrefFind(QMXPrefRootDict(*m_pDoc), path, out);
}

int CQMXPreferences::FindForWrite(const char* key, const char* typeName, TiXmlElement** out)
{
    *out = nullptr;
    if (!m_pDoc)
        return eQMXPrefCriticalError;
    const std::vector<std::string> path = QMXPrefSplitKey(key);
    if (path.empty())
        return eQMXPrefEmptyKey;
    if (!RefreshIfChanged())
        return eQMXPrefCriticalError;
    const int result = QMXPrefFindOrCreate(QMXPrefRootDict(*m_pDoc), path, typeName, false, out);
    if (result == eQMXPrefSuccess)
        MarkTouched(QMXPrefJoinKey(path));
    return result;
}

template <typename T> int CQMXPreferences::GetScalar(const char* key, T& out, int type)
{
    TiXmlElement* element = nullptr;
    const int result = FindForRead(key, &element);
    if (result != eQMXPrefSuccess)
        return result;
    T value{};
    const int read = ReadElement(element, type, value);
    if (read == eQMXPrefSuccess)
        out = value;
    return read;
}

template <typename T> int CQMXPreferences::GetArray(const char* key, std::vector<T>& out, int type)
{
    out.clear();
    TiXmlElement* element = nullptr;
    int result = FindForRead(key, &element);
    if (result != eQMXPrefSuccess)
        return result;
    if (std::strcmp(element->Value(), kElementNames[eQMXPrefArray]) != 0)
        return eQMXPrefIncorrectType;
    std::vector<T> values;
    for (const TiXmlElement* child = element->FirstChildElement(); child; child = child->NextSiblingElement())
    {
        T value{};
        result = ReadElement(child, type, value);
        if (result != eQMXPrefSuccess)
            return eQMXPrefIncorrectType; // an array that cannot be read whole is not of this type
        values.push_back(value);
    }
    out.swap(values);
    return eQMXPrefSuccess;
}

int CQMXPreferences::GetValue(const char* key, bool& out)
{
    return GetScalar(key, out, eQMXPrefTrue);
}
int CQMXPreferences::GetValue(const char* key, bool& out, bool def)
{
    return WithDefault(GetValue(key, out), out, def);
}
int CQMXPreferences::GetValue(const char* key, int& out)
{
    return GetScalar(key, out, eQMXPrefInteger);
}
int CQMXPreferences::GetValue(const char* key, int& out, int def)
{
    return WithDefault(GetValue(key, out), out, def);
}
int CQMXPreferences::GetValue(const char* key, double& out)
{
    return GetScalar(key, out, eQMXPrefReal);
}
int CQMXPreferences::GetValue(const char* key, double& out, double def)
{
    return WithDefault(GetValue(key, out), out, def);
}
int CQMXPreferences::GetValue(const char* key, CQMXTString& out)
{
    return GetScalar(key, out, eQMXPrefString);
}
int CQMXPreferences::GetValue(const char* key, CQMXTString& out, const CQMXTString& def)
{
    return WithDefault(GetValue(key, out), out, def);
}

int CQMXPreferences::GetValue(const char* key, uint8_t*& out, uint32_t& length)
{
    out = nullptr;
    length = 0;
    TiXmlElement* element = nullptr;
    const int result = FindForRead(key, &element);
    if (result != eQMXPrefSuccess)
        return result;
    if (std::strcmp(element->Value(), kElementNames[eQMXPrefData]) != 0)
        return eQMXPrefIncorrectType;
    const std::vector<uint8_t> plain = QMXPrefBase64Decode(element->GetText());
    if (plain.empty())
        return eQMXPrefNoValue;
    out = static_cast<uint8_t*>(std::malloc(plain.size()));
    if (!out)
        return eQMXPrefCriticalError;
    std::memcpy(out, plain.data(), plain.size());
    length = static_cast<uint32_t>(plain.size());
    return eQMXPrefSuccess;
}

int CQMXPreferences::GetValue(const char* key, std::vector<bool>& out)
{
    return GetArray(key, out, eQMXPrefTrue);
}
int CQMXPreferences::GetValue(const char* key, std::vector<int>& out)
{
    return GetArray(key, out, eQMXPrefInteger);
}
int CQMXPreferences::GetValue(const char* key, std::vector<double>& out)
{
    return GetArray(key, out, eQMXPrefReal);
}
int CQMXPreferences::GetValue(const char* key, std::vector<CQMXTString>& out)
{
    return GetArray(key, out, eQMXPrefString);
}

bool CQMXPreferences::GetBoolValue(const char* key, bool def)
{
    bool value = def;
    GetValue(key, value, def);
    return value;
}

int CQMXPreferences::GetFirstKey(const char* key, CQMXTString& first)
{
    first.clear();
    if (!m_pDoc || !RefreshIfChanged())
        return eQMXPrefCriticalError;
    TiXmlElement* dict = QMXPrefRootDict(*m_pDoc);
    const std::vector<std::string> path = QMXPrefSplitKey(key);
    if (!path.empty())
    {
        const int result = QMXPrefFind(dict, path, &dict);
        if (result != eQMXPrefSuccess)
            return result;
        if (std::strcmp(dict->Value(), kElementNames[eQMXPrefDict]) != 0)
            return eQMXPrefIncorrectType;
    }
    if (!dict)
        return eQMXPrefCriticalError;
    const TiXmlElement* keyElement = dict->FirstChildElement(g_pszQMXPrefKeyElement);
    if (!keyElement)
        return eQMXPrefNoValue;
    first = keyElement->GetText() ? keyElement->GetText() : "";
    return eQMXPrefSuccess;
}

bool CQMXPreferences::KeyExists(const char* key)
{
    TiXmlElement* element = nullptr;
    return FindForRead(key, &element) == eQMXPrefSuccess;
}

int CQMXPreferences::ClearKey(const char* key)
{
    if (!m_pDoc)
        return eQMXPrefCriticalError;
    const std::vector<std::string> path = QMXPrefSplitKey(key);
    if (path.empty())
        return eQMXPrefEmptyKey;
    if (!RefreshIfChanged())
        return eQMXPrefCriticalError;
    const int result = QMXPrefRemove(QMXPrefRootDict(*m_pDoc), path);
    if (result == eQMXPrefSuccess)
        MarkTouched(QMXPrefJoinKey(path));
    return result;
}

int CQMXPreferences::SetScalarText(const char* key, int type, const std::string& text)
{
    TiXmlElement* element = nullptr;
    const int result = FindForWrite(key, kElementNames[type], &element);
    if (result != eQMXPrefSuccess)
        return result;
    if (type != eQMXPrefTrue && type != eQMXPrefFalse)
        QMXPrefSetText(element, text);
    return eQMXPrefSuccess;
}

int CQMXPreferences::SetArrayTexts(const char* key, int type, const std::vector<std::string>& texts)
{
    TiXmlElement* element = nullptr;
    const int result = FindForWrite(key, kElementNames[eQMXPrefArray], &element);
    if (result != eQMXPrefSuccess)
        return result;
    element->Clear();
    for (const std::string& text : texts)
    {
        // For bools the text is the element name.
        const bool isBool = type == eQMXPrefTrue;
        TiXmlElement child(isBool ? text.c_str() : kElementNames[type]);
        if (!isBool)
            QMXPrefSetText(&child, text);
        if (!element->InsertEndChild(child))
            return eQMXPrefCriticalError;
    }
    return eQMXPrefSuccess;
}

int CQMXPreferences::SetValue(const char* key, bool value)
{
    return SetScalarText(key, value ? eQMXPrefTrue : eQMXPrefFalse, std::string());
}
int CQMXPreferences::SetValue(const char* key, int value)
{
    return SetScalarText(key, eQMXPrefInteger, QMXPrefFormatInt(value));
}
int CQMXPreferences::SetValue(const char* key, double value)
{
    return SetScalarText(key, eQMXPrefReal, QMXPrefFormatReal(value));
}
int CQMXPreferences::SetValue(const char* key, const char* value)
{
    return SetScalarText(key, eQMXPrefString, value ? value : "");
}
int CQMXPreferences::SetValue(const char* key, const CQMXTString& value)
{
    return SetScalarText(key, eQMXPrefString, std::string(value.c_str(), value.length()));
}
int CQMXPreferences::SetValue(const char* key, const void* data, uint32_t length)
{
    if (length > (1u << 30) || (length && !data))
        return eQMXPrefCriticalError;
    return SetScalarText(key, eQMXPrefData, QMXPrefBase64Encode(data, length));
}

int CQMXPreferences::SetValue(const char* key, const std::vector<bool>& values)
{
    std::vector<std::string> texts;
    for (bool value : values)
        texts.emplace_back(kElementNames[value ? eQMXPrefTrue : eQMXPrefFalse]);
    return SetArrayTexts(key, eQMXPrefTrue, texts);
}
int CQMXPreferences::SetValue(const char* key, const std::vector<int>& values)
{
    std::vector<std::string> texts;
    for (int value : values)
        texts.push_back(QMXPrefFormatInt(value));
    return SetArrayTexts(key, eQMXPrefInteger, texts);
}
int CQMXPreferences::SetValue(const char* key, const std::vector<double>& values)
{
    std::vector<std::string> texts;
    for (double value : values)
        texts.push_back(QMXPrefFormatReal(value));
    return SetArrayTexts(key, eQMXPrefReal, texts);
}
int CQMXPreferences::SetValue(const char* key, const std::vector<const char*>& values)
{
    std::vector<std::string> texts;
    for (const char* value : values)
        texts.emplace_back(value ? value : "");
    return SetArrayTexts(key, eQMXPrefString, texts);
}
int CQMXPreferences::SetValue(const char* key, const std::vector<CQMXTString>& values)
{
    std::vector<std::string> texts;
    for (const CQMXTString& value : values)
        texts.emplace_back(value.c_str(), value.length());
    return SetArrayTexts(key, eQMXPrefString, texts);
}
