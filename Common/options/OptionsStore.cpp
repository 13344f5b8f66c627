// The options in the preferences store: every option under prefix + its path.
#include "OptionsData.h"
#include "QMXPreferences.h"

namespace
{
std::string KeyOf(const char* prefix, const char* path, const char* leaf = "")
{
    return std::string(prefix ? prefix : "") + path + leaf;
}

// Collects the store's results: the load fails only when the store itself could not be read.
struct SResults
{
    bool bFailed = false;
    void Note(int result)
    {
        if (result == eQMXPrefCriticalError)
            bFailed = true;
    }
};
} // namespace

bool COptionsData::Save(CQMXPreferences& prefs, const char* prefix) const
{
    bool ok = true;
    auto set = [&](const std::string& key, auto value) { ok = prefs.SetValue(key.c_str(), value) == eQMXPrefSuccess && ok; };
    for (int i = 0; i < eNumBools; ++i)
        set(KeyOf(prefix, Names(static_cast<EBools>(i)).pszPath), m_bBools[i]);
    set(KeyOf(prefix, Names(eTangentSpaceVtxSplit).pszPath), static_cast<double>(m_fFloats[eTangentSpaceVtxSplit]));
    set(KeyOf(prefix, Names(eExpFormat).pszPath), static_cast<int>(m_eExportFormat));
    set(KeyOf(prefix, Names(eCS).pszPath), static_cast<int>(m_eCoordSystem));
    set(KeyOf(prefix, Names(eTriSort).pszPath), static_cast<int>(m_eTriSort));
    set(KeyOf(prefix, Names(ePrimType).pszPath), static_cast<int>(m_ePrimType));
    for (int i = 0; i < eNumStrings; ++i)
        set(KeyOf(prefix, Names(static_cast<EStrings>(i)).pszPath), m_sStrings[i]);
    // Unsigned values are stored as the int of the same bits and read back the same way.
    for (int i = 0; i < eNumInts; ++i)
        set(KeyOf(prefix, Names(static_cast<EInts>(i)).pszPath), static_cast<int>(m_uiInts[i]));
    for (int i = 0; i < eNumVectorFormats; ++i)
    {
        const char* path = Names(static_cast<EVectorFormats>(i)).pszPath;
        const CVectorOpt& vector = m_vectorOpts[i];
        set(KeyOf(prefix, path, "/Export"), vector.GetOption(CVectorOpt::eExport));
        set(KeyOf(prefix, path, "/DataType"), static_cast<int>(vector.GetOption(CVectorOpt::eDataType)));
        set(KeyOf(prefix, path, "/Enable"), static_cast<int>(vector.GetOption(CVectorOpt::eEnable)));
    }
    return ok;
}

bool COptionsData::Load(CQMXPreferences& prefs, const char* prefix)
{
    SResults results;
    // Each read passes the current value as the default, so an absent value keeps it.
    auto getInt = [&](const std::string& key, uint32_t current) {
        int value = static_cast<int>(current);
        results.Note(prefs.GetValue(key.c_str(), value, static_cast<int>(current)));
        return static_cast<uint32_t>(value);
    };
    for (int i = 0; i < eNumBools; ++i)
        results.Note(prefs.GetValue(KeyOf(prefix, Names(static_cast<EBools>(i)).pszPath).c_str(), m_bBools[i], m_bBools[i]));

    double split = m_fFloats[eTangentSpaceVtxSplit];
    results.Note(prefs.GetValue(KeyOf(prefix, Names(eTangentSpaceVtxSplit).pszPath).c_str(), split, split));
    m_fFloats[eTangentSpaceVtxSplit] = static_cast<float>(split);

    m_eExportFormat = static_cast<EExportFormat>(getInt(KeyOf(prefix, Names(eExpFormat).pszPath), m_eExportFormat));
    m_eCoordSystem = static_cast<ECoordSystem>(getInt(KeyOf(prefix, Names(eCS).pszPath), m_eCoordSystem));
    m_eTriSort = static_cast<ETriSortMethod>(getInt(KeyOf(prefix, Names(eTriSort).pszPath), m_eTriSort));
    m_ePrimType = static_cast<EPrimType>(getInt(KeyOf(prefix, Names(ePrimType).pszPath), m_ePrimType));
    for (int i = 0; i < eNumStrings; ++i)
    {
        CQMXTString current = m_sStrings[i];
        results.Note(prefs.GetValue(KeyOf(prefix, Names(static_cast<EStrings>(i)).pszPath).c_str(), m_sStrings[i], current));
    }
    for (int i = 0; i < eNumInts; ++i)
        m_uiInts[i] = getInt(KeyOf(prefix, Names(static_cast<EInts>(i)).pszPath), m_uiInts[i]);

    for (int i = 0; i < eNumVectorFormats; ++i)
    {
        const char* path = Names(static_cast<EVectorFormats>(i)).pszPath;
        CVectorOpt& vector = m_vectorOpts[i];
        bool enabled = vector.GetOption(CVectorOpt::eExport);
        results.Note(prefs.GetValue(KeyOf(prefix, path, "/Export").c_str(), enabled, enabled));
        vector.SetOption(CVectorOpt::eExport, enabled);
        const uint32_t type = getInt(KeyOf(prefix, path, "/DataType"), vector.GetOption(CVectorOpt::eDataType));
        if (IsVertexDataType(type))
            vector.SetOption(CVectorOpt::eDataType, static_cast<EQMXTDataType>(type));
        vector.SetOption(CVectorOpt::eEnable, getInt(KeyOf(prefix, path, "/Enable"), vector.GetOption(CVectorOpt::eEnable)));
    }
    EnforceAllowedAxes();
    return !results.bFailed;
}
