#include "TVONodeEx.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "Log.h"
#include "QMXTString.h"

void* AllocOrThrow(size_t bytes)
{
    void* p = std::malloc(bytes ? bytes : 1);
    if (!p)
        throw std::bad_alloc();
    return p;
}

char* DuplicateString(const char* s)
{
    char* copy = QMXTStringDuplicate(s);
    if (!copy)
        throw std::bad_alloc();
    return copy;
}

uint8_t* DuplicateBytes(const std::vector<uint8_t>& bytes)
{
    if (bytes.empty())
        return nullptr;
    return static_cast<uint8_t*>(std::memcpy(AllocOrThrow(bytes.size()), bytes.data(), bytes.size()));
}

namespace
{
STVONode EmptyNode()
{
    STVONode n;
    std::memset(&n, 0, sizeof n);
    n.nIdx = -1;
    n.nIdxMaterial = -1;
    n.nIdxParent = -1;
    return n;
}

float* AllocFloats(size_t count)
{
    return static_cast<float*>(AllocOrThrow(count * sizeof(float)));
}

// One key of frameCount keys, taken from the frames (the last one repeated should the list be short).
const SNodeTM& Frame(const CNode& cnode, uint32_t f)
{
    return cnode.frames[f < cnode.frames.size() ? f : cnode.frames.size() - 1];
}
} // namespace

CTVONodeEx::CTVONodeEx() : node(EmptyNode())
{
    std::memset(pfStaticPRS, 0, sizeof pfStaticPRS);
    std::memset(pfStaticMatrix, 0, sizeof pfStaticMatrix);
}

CTVONodeEx::~CTVONodeEx()
{
    Free();
}

CTVONodeEx::CTVONodeEx(CTVONodeEx&& o) noexcept
    : node(o.node), nSourceIndex(o.nSourceIndex), children(std::move(o.children))
{
    std::memcpy(pfStaticPRS, o.pfStaticPRS, sizeof pfStaticPRS);
    std::memcpy(pfStaticMatrix, o.pfStaticMatrix, sizeof pfStaticMatrix);
    o.node = EmptyNode();
}

CTVONodeEx& CTVONodeEx::operator=(CTVONodeEx&& o) noexcept
{
    if (this != &o)
    {
        Free();
        node = o.node;
        nSourceIndex = o.nSourceIndex;
        children = std::move(o.children);
        std::memcpy(pfStaticPRS, o.pfStaticPRS, sizeof pfStaticPRS);
        std::memcpy(pfStaticMatrix, o.pfStaticMatrix, sizeof pfStaticMatrix);
        o.node = EmptyNode();
    }
    return *this;
}

void CTVONodeEx::Free()
{
    QMXTModelTVOFreeNode(node);
    node = EmptyNode();
}

STVONode CTVONodeEx::Release()
{
    const STVONode out = node;
    node = EmptyNode();
    return out;
}

void CTVONodeEx::Gen(const CNode& cnode, uint32_t frameCount, const SBuilderSettings& settings)
{
    Free();
    nSourceIndex = cnode.index;
    node.nIdxParent = cnode.parent;
    node.pszName = DuplicateString(cnode.name.c_str());
    node.nAnimationFlags = 0;
    node.nIdxMaterial = -1;

    const SNodeTM& tm = cnode.tm;
    std::memcpy(pfStaticPRS, tm.pos, 12);
    std::memcpy(pfStaticPRS + 3, tm.rot, 16);
    std::memcpy(pfStaticPRS + 7, tm.scale, 12);
    std::memcpy(pfStaticPRS + 10, tm.stretch, 16);
    std::memcpy(pfStaticMatrix, tm.matrix, 64);

    const bool animated = frameCount > 0 && !cnode.frames.empty();
    if (animated && !settings.bExportMatrices)
    {
        node.pfAnimPosition = AllocFloats(static_cast<size_t>(frameCount) * 3);
        node.pfAnimRotation = AllocFloats(static_cast<size_t>(frameCount) * 4);
        node.pfAnimScale = AllocFloats(static_cast<size_t>(frameCount) * 7);
        for (uint32_t f = 0; f < frameCount; ++f)
        {
            const SNodeTM& key = Frame(cnode, f);
            std::memcpy(node.pfAnimPosition + 3 * static_cast<size_t>(f), key.pos, 12);
            std::memcpy(node.pfAnimRotation + 4 * static_cast<size_t>(f), key.rot, 16);
            float* scale = node.pfAnimScale + 7 * static_cast<size_t>(f);
            std::memcpy(scale, key.scale, 12);
            std::memcpy(scale + 3, key.stretch, 16);
        }
    }
    else if (animated)
    {
        node.pfAnimMatrix = AllocFloats(static_cast<size_t>(frameCount) * 16);
        for (uint32_t f = 0; f < frameCount; ++f)
            std::memcpy(node.pfAnimMatrix + 16 * static_cast<size_t>(f), Frame(cnode, f).matrix, 64);
    }

    node.nUserDataSize = static_cast<uint32_t>(cnode.userData.size());
    node.pUserData = DuplicateBytes(cnode.userData);
}

STVOCamera CTVOCameraEx::Gen(const SCameraData* camera, uint32_t frameCount)
{
    STVOCamera out{};
    out.nIdxTarget = camera->target;
    out.fFOV = camera->fov;
    out.fFar = camera->farPlane;
    out.fNear = camera->nearPlane;
    out.pfAnimFOV = nullptr;
    if (frameCount > 0 && camera->fovFrames.size() >= frameCount)
    {
        out.pfAnimFOV = AllocFloats(frameCount);
        bool allStatic = true;
        for (uint32_t f = 0; f < frameCount; ++f)
        {
            out.pfAnimFOV[f] = camera->fovFrames[f];
            allStatic = allStatic && camera->fovFrames[f] == camera->fov;
        }
        if (allStatic)
        {
            std::free(out.pfAnimFOV);
            out.pfAnimFOV = nullptr;
        }
    }
    return out;
}

STVOLight CTVOLightEx::Gen(const SLightData* light)
{
    STVOLight out{};
    out.nIdxTarget = light->target;
    std::memcpy(out.pfColour, light->colour, sizeof out.pfColour);
    out.eType = static_cast<uint32_t>(light->lightType);
    out.fConstantAttenuation = light->constantAttenuation;
    out.fLinearAttenuation = light->linearAttenuation;
    out.fQuadraticAttenuation = light->quadraticAttenuation;
    out.fFalloffAngle = light->falloffAngle;
    out.fFalloffExponent = light->falloffExponent;
    return out;
}

bool CreateIndexedAnimation(uint32_t** ppIdx, float** ppData, uint32_t frameCount, uint32_t n)
{
    *ppIdx = nullptr;
    const float* data = *ppData;
    std::vector<uint32_t> idx(frameCount);
    std::vector<float> unique;
    const size_t limit = static_cast<size_t>(frameCount) * n;
    for (uint32_t f = 0; f < frameCount; ++f)
    {
        const float* key = data + static_cast<size_t>(f) * n;
        bool found = false;
        for (size_t e = unique.size() / n; e-- > 0 && !found;)
        {
            const float* candidate = unique.data() + e * n;
            bool same = true;
            for (uint32_t k = n; k-- > 0 && same;)
                same = candidate[k] == key[k];
            if (same)
            {
                idx[f] = static_cast<uint32_t>(e * n);
                found = true;
            }
        }
        if (found)
            continue;
        idx[f] = static_cast<uint32_t>(unique.size());
        if (static_cast<size_t>(idx[f]) + frameCount + n >= limit)
            return false;
        unique.insert(unique.end(), key, key + n);
    }
    float* packed = AllocFloats(unique.size());
    uint32_t* offsets = static_cast<uint32_t*>(std::malloc(sizeof(uint32_t) * (frameCount ? frameCount : 1)));
    if (!offsets)
    {
        std::free(packed);
        throw std::bad_alloc();
    }
    std::copy(unique.begin(), unique.end(), packed);
    std::copy(idx.begin(), idx.end(), offsets);
    std::free(*ppData);
    *ppData = packed;
    *ppIdx = offsets;
    return true;
}

namespace
{
// One animation channel of a node: its arrays, key size, static key, flag and message names.
struct SChannel
{
    uint32_t** ppIdx;
    float** ppData;
    uint32_t n;
    const float* pStatic;
    uint32_t flag;
    const char* label;
    bool byBytes; // compare keys byte for byte instead of as floats
};

bool KeyEqualsStatic(const float* key, const SChannel& c)
{
    if (c.byBytes)
        return std::memcmp(key, c.pStatic, c.n * sizeof(float)) == 0;
    for (uint32_t k = 0; k < c.n; ++k)
        if (!(key[k] == c.pStatic[k]))
            return false;
    return true;
}

void CleanChannel(const SChannel& c, STVONode& node, uint32_t frameCount, bool index)
{
    float* data = *c.ppData;
    if (!data)
        return;
    bool constant = true;
    for (uint32_t f = 0; f < frameCount && constant; ++f)
        constant = KeyEqualsStatic(data + static_cast<size_t>(f) * c.n, c);
    const char* name = node.pszName ? node.pszName : "";
    if (constant)
    {
        Log(eLogDetail, "\"%s\": %s anim: removed\n", name, c.label);
        std::free(data);
        *c.ppData = nullptr;
        return;
    }
    Log(eLogDetail, "\"%s\": %s anim: kept\n", name, c.label);
    node.nAnimationFlags |= c.flag;
    if (index)
        CreateIndexedAnimation(c.ppIdx, c.ppData, frameCount, c.n);
}

void FillStatic(float** ppData, const float* pStatic, uint32_t n)
{
    if (*ppData)
        return;
    *ppData = AllocFloats(n);
    if (*ppData)
        std::memcpy(*ppData, pStatic, n * sizeof(float));
}
} // namespace

void GenNodeAnimation(STVONode& node, const CTVONodeEx& statics, uint32_t frameCount,
                      const SBuilderSettings& settings)
{
    const SChannel channels[] = {
        {&node.pnAnimPositionIdx, &node.pfAnimPosition, 3, statics.pfStaticPRS, eTVOHasPositionAnimation,
         "pos", false},
        {&node.pnAnimRotationIdx, &node.pfAnimRotation, 4, statics.pfStaticPRS + 3, eTVOHasRotationAnimation,
         "rot", false},
        {&node.pnAnimScaleIdx, &node.pfAnimScale, 7, statics.pfStaticPRS + 7, eTVOHasScaleAnimation, "scale",
         true},
        {&node.pnAnimMatrixIdx, &node.pfAnimMatrix, 16, statics.pfStaticMatrix, eTVOHasMatrixAnimation,
         "Transformation matrix", true},
    };
    for (const SChannel& c : channels)
        CleanChannel(c, node, frameCount, settings.bIndexAnimations);
    if (!settings.bExportMatrices)
    {
        FillStatic(&node.pfAnimPosition, statics.pfStaticPRS, 3);
        FillStatic(&node.pfAnimRotation, statics.pfStaticPRS + 3, 4);
        FillStatic(&node.pfAnimScale, statics.pfStaticPRS + 7, 7);
    }
    else
        FillStatic(&node.pfAnimMatrix, statics.pfStaticMatrix, 16);
}
