// The translator's face to Maya: file kinds, the export sequence and writing the result.
#include "Ostrex.h"

#include <maya/MStringArray.h>

#include <cstdio>
#include <exception>
#include <new>

#include "ExportSettings.h"
#include "HostLog.h"
#include "HostWindows.h"
#include "Log.h"
#include "OptionsRules.h"
#include "TVO.h"

namespace
{
const char* const kLaunchedFromMel = "LaunchedFromMELCommand";

// The file name of a path, without its folders: a dot in a folder name is no extension.
std::string NameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

// The output kind an extension asks for; false when the file name has no extension at all.
bool FormatForPath(const char* path, EExportFormat& format)
{
    const std::string extension = LowerCaseExtension(NameOf(path).c_str());
    if (extension.empty())
        return false;
    format = extension == ".cpp" ? eExportFormatSource : extension == ".h" ? eExportFormatHeader : eExportFormatBinary;
    return true;
}

// The output log window around an export started from Maya's File menu (not from a script).
class CExportLogScope
{
  public:
    explicit CExportLogScope(bool open) : m_bOpen(open)
    {
        if (m_bOpen)
            OpenExportLog();
    }
    ~CExportLogScope()
    {
        if (m_bOpen)
            CloseExportLog();
    }
    CExportLogScope(const CExportLogScope&) = delete;
    CExportLogScope& operator=(const CExportLogScope&) = delete;

  private:
    bool m_bOpen;
};
} // namespace

std::string LowerCaseExtension(const char* name)
{
    std::string lower(name ? name : "");
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    for (size_t i = lower.size(); i > 1; --i)
        if (lower[i - 1] == '.')
            return lower.substr(i - 1);
    return std::string();
}

Ostrex::Ostrex() = default;

Ostrex::~Ostrex()
{
    delete m_pTVO;
    delete m_pContent;
}

void* Ostrex::creator()
{
    return new Ostrex;
}

bool Ostrex::haveWriteMethod() const
{
    return true;
}

MString Ostrex::filter() const
{
    return MString("*.tvo;*.h;*.cpp");
}

// No default: the extension the user types chooses the output kind.
MString Ostrex::defaultExtension() const
{
    return MString("");
}

MPxFileTranslator::MFileKind Ostrex::identifyFile(const MFileObject& file, const char*, short) const
{
    const std::string extension = LowerCaseExtension(NameOf(file.expandedFullName().asChar()).c_str());
    if (extension == ".cpp" || extension == ".h" || extension == ".tvo")
        return MPxFileTranslator::kCouldBeMyFileType;
    return MPxFileTranslator::kNotMyFileType;
}

MStatus Ostrex::writer(const MFileObject& file, const MString& optionsString, FileAccessMode mode)
{
    CHostLogScope hostLog;
    const MString fullPath = file.expandedFullName();
    m_bExportSelection = mode == MPxFileTranslator::kExportActiveAccessMode;

    MStringArray parts;
    optionsString.split(';', parts);
    bool launchedFromMel = false;
    MString configPath;
    if (parts.length() > 0 && parts[0] == kLaunchedFromMel)
    {
        launchedFromMel = true;
        if (parts.length() > 1)
            configPath = parts[1];
    }

    bool ok = false;
    try // nothing may escape into Maya
    {
        if (configPath.length() > 0)
            ReadExportConfig(m_options, configPath.asChar()); // a missing file keeps the options as they are
        else if (!ShowExportOptions(m_options, launchedFromMel))
            return MStatus(MStatus::kFailure);
        CExportLogScope exportLog(configPath.length() == 0 && !launchedFromMel);
        // The extension the user typed wins over the format that options carry from an earlier export.
        EExportFormat format;
        if (FormatForPath(fullPath.asChar(), format))
            m_options.SetOption(COptionsData::eExpFormat, format);
        m_options.m_sPath = fullPath.asChar();
        std::string error;
        if (!CheckExportOptions(m_options, error))
        {
            Log(eLogError, "Error: %s", error.c_str());
            return MStatus(MStatus::kFailure);
        }
        ok = Init() && DoConversion() && m_pTVO->Process(*m_pContent, m_options) && SaveFile(fullPath.asChar());
    }
    catch (const std::exception& e)
    {
        Log(eLogError, "Error: the export stopped: %s", e.what());
    }
    return MStatus(ok ? MStatus::kSuccess : MStatus::kFailure);
}

bool Ostrex::Init()
{
    delete m_pTVO;
    m_pTVO = new (std::nothrow) CTVO;
    delete m_pContent;
    m_pContent = new (std::nothrow) SContent;
    if (!m_pTVO || !m_pContent)
    {
        delete m_pTVO;
        m_pTVO = nullptr;
        Log(eLogError, "Failed to initialise.\n");
        return false;
    }
    m_pContent->info.ambient[0] = m_pContent->info.ambient[1] = m_pContent->info.ambient[2] = 1.0f;
    m_bSingularMatrixWarned = false;
    return true;
}

bool Ostrex::SaveFile(const char* path)
{
    StoreLastExportOptions(m_options);
    char history[512];
    std::snprintf(history, sizeof history, "Ostrex 2.12 | Maya API v%i | 3.0@2149614", MAYA_API_VERSION);
    if (!m_pTVO->Write(path, m_options, history, true))
    {
        Log(eLogError, "Failed to write to %s.\n", path);
        return false;
    }
    SaveToRegistry(path);
    return true;
}
