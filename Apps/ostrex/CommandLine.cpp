#include "CommandLine.h"

#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace
{
const int kMaxFps = 1000;

enum EOptionId
{
    eOptConfig,
    eOptSet,
    eOptProfile,
    eOptSelect,
    eOptFps,
    eOptAnimation,
    eOptQuiet,
    eOptVerbose,
    eOptHelp,
    eOptListOptions,
    eOptAllowPostExport,
    eOptView,
    eOptDepfile,
    eOptReportJson,
    eOptStrict,
    eOptOutDir,
    eOptJobs,
    eOptFormat,
    eOptThreads
};

struct SOptionDef
{
    const char* name;
    const char* shortName; // or nullptr
    EOptionId id;
    bool takesValue;
};

const SOptionDef kOptions[] = {
    {"--config", nullptr, eOptConfig, true},   {"--set", nullptr, eOptSet, true},
    {"--profile", nullptr, eOptProfile, true}, {"--select", nullptr, eOptSelect, true},
    {"--fps", nullptr, eOptFps, true},         {"--animation", nullptr, eOptAnimation, true},
    {"--quiet", "-q", eOptQuiet, false},       {"--verbose", "-v", eOptVerbose, false},
    {"--help", "-h", eOptHelp, false},         {"--list-options", nullptr, eOptListOptions, false},
    {"--allow-post-export", nullptr, eOptAllowPostExport, false},
    {"--view", nullptr, eOptView, false},
    {"--depfile", nullptr, eOptDepfile, true},   {"--report-json", nullptr, eOptReportJson, true},
    {"--strict", nullptr, eOptStrict, false},    {"--out-dir", nullptr, eOptOutDir, true},
    {"--jobs", "-j", eOptJobs, true},            {"--format", nullptr, eOptFormat, true},
    {"--threads", nullptr, eOptThreads, true},
};
const int kMaxJobs = 256;
const int kMaxThreads = 256;

const SOptionDef* FindOption(const std::string& name)
{
    for (const SOptionDef& def : kOptions)
        if (name == def.name || (def.shortName && name == def.shortName))
            return &def;
    return nullptr;
}

// A whole number from 1 to limit, digits only.
bool ParseCount(const std::string& text, int limit, int& count)
{
    if (text.empty() || text.size() > 4)
        return false;
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    const int value = std::atoi(text.c_str());
    if (value < 1 || value > limit)
        return false;
    count = value;
    return true;
}

// A frame rate: a whole number from 1 to kMaxFps.
bool ParseFps(const std::string& text, int& fps)
{
    return ParseCount(text, kMaxFps, fps);
}

// Options given once at most, each a string field.
bool SetOnce(std::string& field, const std::string& value, const char* name, std::string& error)
{
    if (!field.empty())
    {
        error = std::string(name) + " given more than once";
        return false;
    }
    field = value;
    return true;
}

SCommandLine UsageError(const std::string& reason)
{
    SCommandLine result;
    result.action = eCommandUsageError;
    result.error = reason;
    return result;
}

// Applies one option with its value (empty for flags). Returns false with result.error set.
bool ApplyOption(SCommandLine& result, const SOptionDef& def, const std::string& value, bool& quiet,
                 bool& verbose, bool& help, bool& listOptions)
{
    switch (def.id)
    {
    case eOptConfig:
        if (!result.configFile.empty())
        {
            result.error = "--config given more than once";
            return false;
        }
        result.configFile = value;
        return true;
    case eOptSet:
    {
        std::string key, setting;
        if (!SplitSetting(value, key, setting))
        {
            result.error = "--set needs KEY=VALUE with a non-empty key, not '" + value + "'";
            return false;
        }
        result.settings.push_back(value);
        return true;
    }
    case eOptProfile:
        if (!result.profile.empty())
        {
            result.error = "--profile given more than once";
            return false;
        }
        result.profile = value;
        return true;
    case eOptSelect:
        result.selection.push_back(value);
        return true;
    case eOptFps:
        if (!ParseFps(value, result.fps))
        {
            result.error =
                "--fps needs a whole number from 1 to " + std::to_string(kMaxFps) + ", not '" + value + "'";
            return false;
        }
        return true;
    case eOptAnimation:
        if (!result.animation.empty())
        {
            result.error = "--animation given more than once";
            return false;
        }
        result.animation = value;
        return true;
    case eOptQuiet:
        quiet = true;
        return true;
    case eOptVerbose:
        verbose = true;
        return true;
    case eOptHelp:
        help = true;
        return true;
    case eOptListOptions:
        listOptions = true;
        return true;
    case eOptAllowPostExport:
        result.allowPostExport = true;
        return true;
    case eOptView:
        result.view = true;
        return true;
    case eOptDepfile:
        return SetOnce(result.depfile, value, def.name, result.error);
    case eOptReportJson:
        return SetOnce(result.reportJson, value, def.name, result.error);
    case eOptStrict:
        result.strict = true;
        return true;
    case eOptOutDir:
        return SetOnce(result.outDir, value, def.name, result.error);
    case eOptJobs:
        if (!ParseCount(value, kMaxJobs, result.jobs))
        {
            result.error = "-j needs a whole number from 1 to " + std::to_string(kMaxJobs) + ", not '" + value + "'";
            return false;
        }
        return true;
    case eOptThreads:
        if (!ParseCount(value, kMaxThreads, result.threads))
        {
            result.error =
                "--threads needs a whole number from 1 to " + std::to_string(kMaxThreads) + ", not '" + value + "'";
            return false;
        }
        return true;
    case eOptFormat:
        if (value != "tvo" && value != "h" && value != "cpp")
        {
            result.error = "--format needs tvo, h or cpp, not '" + value + "'";
            return false;
        }
        return SetOnce(result.format, value, def.name, result.error);
    }
    return true;
}
} // namespace

bool SplitSetting(const std::string& setting, std::string& key, std::string& value)
{
    const size_t eq = setting.find('=');
    if (eq == std::string::npos || eq == 0)
        return false;
    key = setting.substr(0, eq);
    value = setting.substr(eq + 1);
    return true;
}

SCommandLine ParseCommandLine(int argc, const char* const* argv)
{
    SCommandLine result;
    std::vector<std::string> positional;
    bool quiet = false, verbose = false, help = false, listOptions = false, optionsEnded = false;

    for (int i = 1; i < argc; ++i)
    {
        const std::string arg = argv[i] ? argv[i] : "";
        if (optionsEnded || arg.empty() || arg[0] != '-' || arg == "-")
        {
            positional.push_back(arg);
            continue;
        }
        if (arg == "--")
        {
            optionsEnded = true;
            continue;
        }
        const size_t eq = arg.compare(0, 2, "--") == 0 ? arg.find('=') : std::string::npos;
        const std::string name = eq == std::string::npos ? arg : arg.substr(0, eq);
        const SOptionDef* def = FindOption(name);
        if (!def)
            return UsageError("unknown option '" + name + "'");
        std::string value;
        if (def->takesValue)
        {
            if (eq != std::string::npos)
                value = arg.substr(eq + 1);
            else if (i + 1 < argc && argv[i + 1])
                value = argv[++i];
            else
                return UsageError(std::string(def->name) + " needs a value");
            if (value.empty())
                return UsageError(std::string(def->name) + " needs a non-empty value");
        }
        else if (eq != std::string::npos)
        {
            return UsageError(std::string(def->name) + " takes no value");
        }
        if (!ApplyOption(result, *def, value, quiet, verbose, help, listOptions))
            return UsageError(result.error);
    }

    if (help)
    {
        SCommandLine helpResult;
        helpResult.action = eCommandHelp;
        return helpResult;
    }
    if (quiet && verbose)
        return UsageError("--quiet and --verbose exclude each other");
    result.verbosity = quiet ? eVerbosityQuiet : (verbose ? eVerbosityVerbose : eVerbosityNormal);

    const bool batchOnly = result.jobs || !result.format.empty();
    if (listOptions)
    {
        if (!positional.empty())
            return UsageError("--list-options takes no INPUT or OUTPUT");
        if (!result.selection.empty() || result.fps || !result.animation.empty() || result.view ||
            !result.depfile.empty() || !result.reportJson.empty() || result.strict || !result.outDir.empty() ||
            batchOnly)
            return UsageError("--list-options only combines with --config, --set and --profile");
        result.action = eCommandListOptions;
        return result;
    }
    if (!result.outDir.empty())
    {
        if (positional.empty())
            return UsageError("--out-dir needs at least one SCENE");
        if (!result.depfile.empty() || !result.reportJson.empty() || result.view)
            return UsageError("--depfile, --report-json and --view name one export; they do not combine with --out-dir");
        for (const std::string& input : positional)
            if (input.empty())
                return UsageError("SCENE must not be empty");
        result.inputs = positional;
        result.action = eCommandBatch;
        return result;
    }
    if (batchOnly)
        return UsageError("-j and --format only apply with --out-dir");
    if (positional.size() < 2)
        return UsageError(positional.empty() ? "missing INPUT and OUTPUT" : "missing OUTPUT");
    if (positional.size() > 2)
        return UsageError("unexpected argument '" + positional[2] + "'");
    if (positional[0].empty() || positional[1].empty())
        return UsageError("INPUT and OUTPUT must not be empty");
    result.input = positional[0];
    result.output = positional[1];
    result.action = eCommandExport;
    return result;
}

int OutputFormatForPath(const std::string& path)
{
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot == 0)
        return -1;
    std::string ext = path.substr(dot);
    for (char& c : ext)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (ext == ".cpp")
        return 2;
    if (ext == ".h")
        return 1;
    return 0;
}

std::string CommandLineHint()
{
    return "Try 'ostrex --help' for more information.";
}

std::string CommandLineHelp()
{
    return "Usage: ostrex INPUT OUTPUT [options]\n"
           "       ostrex --out-dir DIR [-j N] [--format tvo|h|cpp] [options] SCENE...\n"
           "       ostrex --list-options [--config FILE] [--set KEY=VALUE]... [--profile NAME]\n"
           "       ostrex --help\n"
           "\n"
           "Exports a scene that the Assimp library reads (glTF, FBX, Collada, OBJ, 3DS and many more)\n"
           "as a Veldra scene file. The extension of OUTPUT chooses the output kind: \".cpp\" writes C++\n"
           "source and \".h\" a header that embed the scene, anything else the binary scene file\n"
           "(\".tvo\"). The output is written to a temporary file beside OUTPUT and renamed when complete,\n"
           "so a failed export leaves an existing OUTPUT untouched. Textures embedded in the input are\n"
           "written next to OUTPUT and referenced by their new names. The same input and options always\n"
           "give the same bytes: the history stored in the file names the input by its file name and\n"
           "carries a date only when SOURCE_DATE_EPOCH is set.\n"
           "\n"
           "Export options (applied in this order):\n"
           "  --profile NAME        start from the saved profile NAME of the preferences file\n"
           "  --config FILE         read options from FILE: an options text (KEY=VALUE lines), a\n"
           "                        previous .tvo export or a generated .h header\n"
           "  --set KEY=VALUE       set one option; may be repeated, applied last, in order\n"
           "                        (example: --set bExportAnimations=1)\n"
           "  --list-options        print every option key with its current value and caption\n"
           "  --allow-post-export   run the post-export command and viewer launch that options read\n"
           "                        from --config FILE carry; without it a file never starts a\n"
           "                        program (--set and profiles are yours and always count)\n"
           "\n"
           "Options that cannot produce a file are refused before any work, naming the option:\n"
           "  positions switched off (sVcOptPos.bExport=0) while bExportGeometry=1; an exported\n"
           "  vertex format whose nEnable selects no component (bits 0-3); eExpFormat, cS, eTriSort or\n"
           "  ePrimType outside their values; with bAlignData=1 and bInterleaved=1, a uiPadDataTo that\n"
           "  is not a power of two from 1 to 256; with bTangentSpace=1, a uiTSUseUVW above 7.\n"
           "\n"
           "Scene:\n"
           "  --select NODE         export only the node named NODE with its descendants; its\n"
           "                        ancestors are kept as plain transforms; may be repeated\n"
           "  --animation NAME|INDEX  the animation to sample (by name, else by index from 0);\n"
           "                        default: the first animation of the file\n"
           "  --fps N               sample the animation at N frames per second (1 to 1000);\n"
           "                        default: the animation's own rate when it has one, else 30\n"
           "  --view                open the written .tvo in tvoview when the export is done\n"
           "  --threads N           optimise up to N meshes at a time (default: one a core; with\n"
           "                        --out-dir and -j above 1, one); the output is the same for any N\n"
           "\n"
           "The scene as it stands at the first frame of the animation is the rest pose: skinned\n"
           "meshes are written deformed at that frame. Every frame of the animation's range is\n"
           "sampled (positions interpolated linearly, rotations spherically).\n"
           "\n"
           "Pipelines (see docs/pipelines.md):\n"
           "  --depfile FILE        after the export, write a Make-format dependency file listing\n"
           "                        everything it read (scene, buffers, textures, options files)\n"
           "  --report-json FILE    write the export's summary as JSON to FILE (\"-\": standard\n"
           "                        output), also when the export fails\n"
           "  --strict              any warning fails the export, and nothing is written\n"
           "  --out-dir DIR         export every SCENE to DIR/<name>.tvo, each in a process of its\n"
           "                        own: one failing scene does not stop the others\n"
           "  -j, --jobs N          with --out-dir, export N scenes at a time (default: one a core)\n"
           "  --format tvo|h|cpp    with --out-dir, the kind of output (default: tvo)\n"
           "\n"
           "Messages:\n"
           "  -q, --quiet           show errors only\n"
           "  -v, --verbose         show every stage, mesh and detail\n"
           "  -h, --help            show this text\n"
           "By default an export shows a progress bar on a terminal, warnings, errors and one summary\n"
           "line: the output, its size, and its counts of nodes, meshes, triangles, vertices,\n"
           "materials and frames.\n"
           "Messages are coloured by level (success green, warning yellow, error bold red) and a\n"
           "progress bar is shown when the output goes to a terminal; plain lines otherwise.\n"
           "\n"
           "Exit status: 0 on success, 1 when the export (or, with --out-dir, any scene) fails, 2 for\n"
           "usage errors.\n";
}
