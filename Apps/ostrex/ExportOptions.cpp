#include "ExportOptions.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>

#include "Log.h"
#include "OptionsProfiles.h"
#include "OptionsRules.h"
#include "QMXPreferences.h"

const char* const kOstrexPreferencesName = "Ostrex";
const char* const kOstrexProfilesPrefix = "Profiles";

namespace
{
SOptionsOutcome Failed(EExitCode code, const std::string& subject, const std::string& error)
{
    SOptionsOutcome outcome;
    outcome.ok = false;
    outcome.exitCode = code;
    outcome.subject = subject;
    outcome.error = error;
    return outcome;
}

SOptionsOutcome ApplyProfile(const std::string& name, COptions& options)
{
    CQMXPreferences prefs(kOstrexPreferencesName);
    CQMXTString messages;
    if (!prefs.Load(messages, false))
        return Failed(eExitFailure, prefs.GetFilePath().c_str(), "cannot read the preferences file");
    COptionsProfiles profiles;
    profiles.Load(prefs, kOstrexProfilesPrefix);
    const COptionsProfiles::SProfile* profile = profiles.Find(name.c_str());
    if (!profile)
    {
        std::string known;
        for (const COptionsProfiles::SProfile& p : profiles.m_profiles)
            known += std::string(known.empty() ? "" : ", ") + "'" + p.sCaption.c_str() + "'";
        return Failed(eExitUsage, "",
                      "no profile named '" + name + "' (" +
                          (known.empty() ? std::string("there are no profiles") : "profiles: " + known) +
                          ")");
    }
    options = profile->options;
    return SOptionsOutcome();
}

// The file's options are data: unless the user allows it, the programs it would start after the
// export are dropped, with one warning.
SOptionsOutcome ApplyConfig(const std::string& path, bool allowLaunches, COptions& options)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return Failed(eExitFailure, path, std::string("cannot open: ") + std::strerror(errno));
    std::fclose(file);
    const COptions before = options;
    if (options.ReadConfig(path.c_str()) == 0)
        return Failed(eExitFailure, path, "holds no export options");
    if (!allowLaunches && KeepProgramLaunchesOf(before, options))
        Log(eLogWarning,
            "Warning: '%s' carries a post-export command or viewer launch, which was not run; "
            "pass --allow-post-export to run it.",
            path.c_str());
    return SOptionsOutcome();
}

// Each --set must set an option on its own; then all of them are applied as one text, so the
// options' inference of custom optimisation settings sees them together.
SOptionsOutcome ApplySettings(const std::vector<std::string>& settings, COptions& options)
{
    std::string text;
    for (const std::string& setting : settings)
    {
        COptions probe = options;
        if (probe.SetFromString(setting.c_str()) == 0)
        {
            const std::string key = setting.substr(0, setting.find('='));
            return Failed(eExitUsage, "",
                          "--set " + setting + " sets nothing (no option '" + key +
                              "', or a value it refuses)");
        }
        text += setting + "\n";
    }
    if (!text.empty())
        options.SetFromString(text.c_str());
    return SOptionsOutcome();
}

// Captions of the options, as the options window shows them where it has one.
const std::map<std::string, std::string>& Captions()
{
    static const std::map<std::string, std::string> captions = {
        {"bFlipTextureV", "Flip V co-ordinate"},
        {"bIndexed", "Indexed triangles"},
        {"bInterleaved", "Interleave vertex data"},
        {"bSortVertices", "Sort vertices"},
        {"bTangentSpace", "Generate tangent-space"},
        {"bExportAnimations", "Export animations"},
        {"bIndexAnimations", "Index animation data"},
        {"bExportGeometry", "Export Geometry"},
        {"bExportMatrices", "Export transformations as matrices"},
        {"bExportMappingChannels", "Export mapping channels"},
        {"bExportMaterials", "Export materials"},
        {"bExportSkin", "Export skinning data"},
        {"bInvertTransparency", "Invert transparency"},
        {"bExportModelSpace", "Model space (off: world space)"},
        {"bMerge", "Merge .XEF/.QMX"},
        {"bUseCustomOptSettings", "Use custom optimisation settings"},
        {"bExportUserData", "Export user data"},
        {"bUnpackMatrix", "Add position unpack matrix"},
        {"bExportBoneGeometry", "Export bone geometry"},
        {"bAlignData", "Align vertex data"},
        {"bDisplayInDravik", "Open in QMXDravik"},
        {"bUsePostExportCL", "Post-export command-line"},
        {"fTangentSpaceVtxSplit", "Vertex-splitting"},
        {"eExpFormat", "Output kind: 0 binary, 1 header, 2 source (OUTPUT's extension chooses)"},
        {"cS", "Co-ordinate system: 1 DirectX, 2 OpenGL"},
        {"eTriSort", "Sorting method: 0 none, 1 QMXTGeometrySort, 2 D3DX, 3 QMXTTriStrip"},
        {"ePrimType", "Primitive Type: 0 triangle list, 1 triangle strips"},
        {"sClPostTarget", "Command"},
        {"sClPostArgs", "Command arguments"},
        {"sClPostCWD", "Working directory"},
        {"sPathToDravik", "QMXDravik path"},
        {"sMergeSrc", "Source .tvo file"},
        {"sScriptFile", "Mel file"},
        {"uiStaticFrame", "Static frame"},
        {"uiBoneLimit", "Matrix palette size"},
        {"uiPadDataTo", "Pad vertex data to (bytes)"},
        {"uiTSUseUVW", "Mapping channel for tangent space"},
        {"sVcOptPos", "Position"},
        {"sVcOptNor", "Normal"},
        {"sVcOptTan", "Tangent"},
        {"sVcOptBin", "Binormal"},
        {"sVcOptCol", "Colour"},
        {"sVcOptBoneInd", "Bone indices"},
        {"sVcOptBoneWt", "Bone weights"},
        {"bExport", "export"},
        {"eType", "data type"},
        {"nEnable", "component mask"},
    };
    return captions;
}

std::string CaptionOf(const std::string& key)
{
    const auto& captions = Captions();
    const size_t dot = key.find('.');
    if (dot == std::string::npos)
    {
        const auto it = captions.find(key);
        return it == captions.end() ? std::string() : it->second;
    }
    const std::string format = key.substr(0, dot), sub = key.substr(dot + 1);
    std::string name;
    if (format.rfind("psVcOptUVW[", 0) == 0 && format.size() > 12)
        name = "UVW " + format.substr(11, format.size() - 12);
    else if (captions.count(format))
        name = captions.at(format);
    const auto it = captions.find(sub);
    return name + (it == captions.end() ? std::string() : ": " + it->second);
}
} // namespace

SOptionsOutcome PrepareExportOptions(const SCommandLine& cl, COptions& options)
{
    options.ConfigDefault();
    SOptionsOutcome outcome;
    if (!cl.profile.empty() && !(outcome = ApplyProfile(cl.profile, options)).ok)
        return outcome;
    if (!cl.configFile.empty() && !(outcome = ApplyConfig(cl.configFile, cl.allowPostExport, options)).ok)
        return outcome;
    if (!(outcome = ApplySettings(cl.settings, options)).ok)
        return outcome;
    const int format = OutputFormatForPath(cl.output);
    if (format >= 0)
        options.SetOption(COptionsData::eExpFormat, static_cast<EExportFormat>(format));
    options.m_sPath = cl.output.c_str();
    return outcome;
}

std::string ListExportOptions(const COptions& options)
{
    const std::string text = options.ToString().c_str();
    std::string out;
    for (size_t begin = 0; begin < text.size();)
    {
        size_t end = text.find('\n', begin);
        if (end == std::string::npos)
            end = text.size();
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        if (line.empty())
            continue;
        const std::string caption = CaptionOf(line.substr(0, line.find('=')));
        out += line;
        if (!caption.empty())
            out += std::string(line.size() < 36 ? 36 - line.size() : 1, ' ') + caption;
        out += "\n";
    }
    return out;
}
