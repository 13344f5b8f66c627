// Merging of material settings from one scene into the same-named materials of another.
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <unordered_map>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"

namespace
{
std::string NameOf(const char* s)
{
    return s ? s : "";
}

char* CopyOf(const char* s)
{
    const size_t bytes = std::strlen(s) + 1;
    char* copy = static_cast<char*>(std::malloc(bytes));
    if (copy)
        std::memcpy(copy, s, bytes);
    return copy;
}

// Two different names, both with an extension, that agree on everything before it.
bool SameBaseOtherExtension(const std::string& a, const std::string& b)
{
    const size_t dotA = a.rfind('.'), dotB = b.rfind('.');
    return a != b && dotA != std::string::npos && dotB != std::string::npos && dotA == dotB &&
           a.compare(0, dotA, b, 0, dotB) == 0;
}

// Replaces an owned string; false (and the old string kept) when the copy fails.
bool Replace(char*& field, const char* value)
{
    char* copy = CopyOf(value);
    if (!copy)
        return false;
    std::free(field);
    field = copy;
    return true;
}

bool AppendTexture(STVOScene& scene, const char* name)
{
    char* copy = CopyOf(name);
    void* grown = copy ? std::realloc(scene.pTexture, (static_cast<size_t>(scene.nNumTexture) + 1) * sizeof(STVOTexture))
                       : nullptr;
    if (!grown)
    {
        std::free(copy);
        return false;
    }
    scene.pTexture = static_cast<STVOTexture*>(grown);
    scene.pTexture[scene.nNumTexture++].pszName = copy;
    return true;
}

bool MergeTextureSlot(const STVOScene& src, int32_t srcIdx, STVOScene& dst, int32_t& dstIdx)
{
    if (srcIdx < 0 || static_cast<uint32_t>(srcIdx) >= src.nNumTexture)
        return true;
    const char* srcName = src.pTexture[srcIdx].pszName ? src.pTexture[srcIdx].pszName : "";
    if (dstIdx < 0 || static_cast<uint32_t>(dstIdx) >= dst.nNumTexture)
    {
        if (!AppendTexture(dst, srcName))
            return false;
        dstIdx = static_cast<int32_t>(dst.nNumTexture - 1);
        return true;
    }
    char*& dstName = dst.pTexture[dstIdx].pszName;
    if (SameBaseOtherExtension(NameOf(dstName), srcName))
        return Replace(dstName, srcName);
    return true; // equal names, or another texture: the destination keeps its own
}

bool MergeMaterial(const STVOScene& src, const STVOMaterial& s, STVOScene& dst, STVOMaterial& d)
{
    for (uint32_t slot = 0; slot < eTVOTexSlotCount; ++slot)
        if (!MergeTextureSlot(src, s.nIdxTexture[slot], dst, d.nIdxTexture[slot]))
            return false;
    d.eBlendSrcRGB = s.eBlendSrcRGB;
    d.eBlendSrcA = s.eBlendSrcA;
    d.eBlendDstRGB = s.eBlendDstRGB;
    d.eBlendDstA = s.eBlendDstA;
    d.eBlendOpRGB = s.eBlendOpRGB;
    d.eBlendOpA = s.eBlendOpA;
    std::memcpy(d.pfBlendColour, s.pfBlendColour, sizeof d.pfBlendColour);
    std::memcpy(d.pfBlendFactor, s.pfBlendFactor, sizeof d.pfBlendFactor);
    d.nFlags = s.nFlags;
    if (s.pszEffectFile && *s.pszEffectFile && !Replace(d.pszEffectFile, s.pszEffectFile))
        return false;
    if (s.pszEffectName && *s.pszEffectName && !Replace(d.pszEffectName, s.pszEffectName))
        return false;
    return true;
}
} // namespace

int QMXTModelTVOMergeMaterials(const STVOScene& src, STVOScene& dst)
{
    if (src.nNumMaterial == 0 || dst.nNumMaterial == 0 || !src.pMaterial || !dst.pMaterial)
        return 0;
    // Destination materials by name, in order; a match takes the first and removes it.
    std::unordered_map<std::string, std::deque<uint32_t>> unmatched;
    for (uint32_t i = 0; i < dst.nNumMaterial; ++i)
        unmatched[NameOf(dst.pMaterial[i].pszName)].push_back(i);
    for (uint32_t i = 0; i < src.nNumMaterial; ++i)
    {
        auto found = unmatched.find(NameOf(src.pMaterial[i].pszName));
        if (found == unmatched.end() || found->second.empty())
            continue;
        const uint32_t d = found->second.front();
        found->second.pop_front();
        if (!MergeMaterial(src, src.pMaterial[i], dst, dst.pMaterial[d]))
        {
            QMXTErrorOutputDebug("MergeMaterials: out of memory merging material '%s'.\n",
                                 NameOf(src.pMaterial[i].pszName).c_str());
            return 1;
        }
    }
    return 0;
}
