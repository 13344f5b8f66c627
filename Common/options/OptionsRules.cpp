#include "OptionsRules.h"

#include <cstdio>

namespace
{
using O = COptionsData;

bool Exported(const COptionsData& options, O::EVectorFormats format)
{
    return options.GetOption(format, CVectorOpt::eExport);
}

std::string Key(O::EVectorFormats format, const char* subKey)
{
    return std::string(O::Names(format).pszKey) + "." + subKey;
}

bool Refuse(std::string& error, const std::string& why)
{
    error = why;
    return false;
}

bool IsPowerOfTwo(uint32_t n)
{
    return n != 0 && (n & (n - 1)) == 0;
}

bool CheckVertexFormats(const COptionsData& options, std::string& error)
{
    if (!options.GetOption(O::eExportGeometry))
        return true;
    if (!Exported(options, O::eVcOptPos))
        return Refuse(error, Key(O::eVcOptPos, "bExport") +
                                 "=0: meshes cannot be written without positions; switch positions on, "
                                 "or set bExportGeometry=0 to export no meshes");
    for (int i = 0; i < O::eNumVectorFormats; ++i)
    {
        const auto format = static_cast<O::EVectorFormats>(i);
        const uint32_t mask = options.GetOption(format, CVectorOpt::eEnable);
        if (Exported(options, format) && (mask & CVectorOpt::eMaskComponents) == 0)
            return Refuse(error, Key(format, "nEnable") + "=" + std::to_string(mask) +
                                     " selects no component (bits 0-3 select x, y, z, w); select some, "
                                     "or set " + Key(format, "bExport") + "=0");
    }
    return true;
}

bool CheckChoices(const COptionsData& options, std::string& error)
{
    struct SChoice
    {
        const char* key;
        uint32_t value, last;
        const char* meaning;
    };
    const SChoice choices[] = {
        {O::Names(O::eExpFormat).pszKey, options.GetOption(O::eExpFormat), 2, "0 binary, 1 header, 2 source"},
        {O::Names(O::eCS).pszKey, options.GetOption(O::eCS), 2, "0 as in the scene, 1 DirectX, 2 OpenGL"},
        {O::Names(O::eTriSort).pszKey, options.GetOption(O::eTriSort), 3,
         "0 none, 1 QMXTGeometrySort, 2 D3DX, 3 QMXTTriStrip"},
        {O::Names(O::ePrimType).pszKey, options.GetOption(O::ePrimType), 1, "0 triangle list, 1 triangle strips"},
    };
    for (const SChoice& c : choices)
        if (c.value > c.last)
            return Refuse(error, std::string(c.key) + "=" + std::to_string(c.value) + " is no choice (" +
                                     c.meaning + ")");
    return true;
}

bool CheckLayout(const COptionsData& options, std::string& error)
{
    const uint32_t pad = options.GetOption(O::ePadDataTo);
    if (options.GetOption(O::eAlignData) && options.GetOption(O::eInterleaved) && (!IsPowerOfTwo(pad) || pad > kMaxPadDataTo))
        return Refuse(error, "uiPadDataTo=" + std::to_string(pad) + " is no alignment (a power of two from 1 to " +
                                 std::to_string(kMaxPadDataTo) + "); or set bAlignData=0");
    const uint32_t channel = options.GetOption(O::eTSUseUVW);
    if (options.GetOption(O::eTangentSpace) && channel >= O::eNumUVWFormats)
        return Refuse(error, "uiTSUseUVW=" + std::to_string(channel) + " names no mapping channel (0 to " +
                                 std::to_string(O::eNumUVWFormats - 1) + ") for the tangent space");
    return true;
}
} // namespace

SExtractedStreams ExtractedStreams(const COptionsData& options)
{
    SExtractedStreams s;
    s.mappingChannels = options.GetOption(O::eExportMappingChannels);
    s.normals = Exported(options, O::eVcOptNor);
    s.colours = Exported(options, O::eVcOptCol);
    s.materials = options.GetOption(O::eExportMaterials);
    s.skins = options.GetOption(O::eExportSkin);
    return s;
}

bool CheckExportOptions(const COptionsData& options, std::string& error)
{
    return CheckVertexFormats(options, error) && CheckChoices(options, error) && CheckLayout(options, error);
}

bool KeepProgramLaunchesOf(const COptionsData& before, COptionsData& options)
{
    const bool launches = !options.GetOption(O::eClPostTarget).empty() || options.GetOption(O::eDisplayInDravik);
    bool changed = false;
    for (O::EStrings key : {O::eClPostTarget, O::eClPostArgs, O::eClPostCWD, O::ePathToDravik})
        if (options.GetOption(key) != before.GetOption(key))
        {
            options.SetOption(key, before.GetOption(key));
            changed = true;
        }
    for (O::EBools key : {O::eUsePostExportCL, O::eDisplayInDravik})
        if (options.GetOption(key) != before.GetOption(key))
        {
            options.SetOption(key, before.GetOption(key));
            changed = true;
        }
    return changed && launches;
}
