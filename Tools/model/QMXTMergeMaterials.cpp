// Merging of material settings from one scene into the same-named materials of another.
#include <cstdlib>
#include <cstring>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"
#include "QMXTString.h"

namespace
{
std::string_view ViewOf(const char* s)
{
    return s ? std::string_view(s) : std::string_view();
}

// Two different names, both with an extension, that agree on everything before it.
bool SameBaseOtherExtension(std::string_view a, std::string_view b)
{
    const size_t dotA = a.rfind('.'), dotB = b.rfind('.');
    return a != b && dotA != std::string_view::npos && dotA == dotB && a.substr(0, dotA) == b.substr(0, dotB);
}

// Replaces an owned string; false (and the old string kept) when the copy fails.
bool Replace(char*& field, const char* value)
{
    char* copy = QMXTStringDuplicate(value);
    if (!copy)
        return false;
    std::free(field);
    field = copy;
    return true;
}

bool AppendTexture(STVOScene& scene, const char* name)
{
    char* copy = QMXTStringDuplicate(name);
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
    if (SameBaseOtherExtension(ViewOf(dstName), srcName))
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
    // Unmatched destination materials of each name as a list in material order: the head is the
    // first unmatched one, and matching it moves the head along.
    const uint32_t none = UINT32_MAX;
    std::unordered_map<std::string_view, uint32_t> head;
    std::vector<uint32_t> next(dst.nNumMaterial);
    for (uint32_t i = dst.nNumMaterial; i-- > 0;)
    {
        const auto [it, added] = head.try_emplace(ViewOf(dst.pMaterial[i].pszName), i);
        next[i] = added ? none : it->second;
        it->second = i;
    }
    for (uint32_t i = 0; i < src.nNumMaterial; ++i)
    {
        auto found = head.find(ViewOf(src.pMaterial[i].pszName));
        if (found == head.end() || found->second == none)
            continue;
        const uint32_t d = found->second;
        found->second = next[d];
        if (!MergeMaterial(src, src.pMaterial[i], dst, dst.pMaterial[d]))
        {
            QMXTErrorOutputDebug("MergeMaterials: out of memory merging material '%s'.\n",
                                 std::string(ViewOf(src.pMaterial[i].pszName)).c_str());
            return 1;
        }
    }
    return 0;
}
