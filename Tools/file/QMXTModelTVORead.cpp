// The .tvo reader: builds the scene model from the tagged block tree, or reads only the options and
// history texts.
//
// Unknown blocks are skipped by their length at every level (end markers of leaves are such blocks),
// so readers load newer files. Every file comes from anywhere: each block's length is checked before
// anything is allocated for it, counts are bounded by the bytes left, and at the end of every record the
// sizes the model relies on (stream arrays, animation keys, strips, bone batches) are checked against
// the counts, so a scene that reads successfully can be queried and written without reading past any
// array. The reader never recurses deeper than scene > mesh > vertex data.
// Cost: one pass over the file; memory is the scene plus a few counters a record.
#include <cstring>
#include <utility>
#include <new>
#include <vector>

#include "QMXTError.h"
#include "QMXTModelTVO.h"
#include "QMXTModelTVOFile.h"
#include "QMXTSource.h"
#include "QMXTTVOBlocks.h"

namespace
{
// The smallest record container: a start and an end marker. Bounds every count by the bytes left.
const uint32_t kMinRecordBytes = 16;
const uint32_t kSwappedVersionTag = 0xE8030000u;

bool HostIsBigEndian()
{
    const uint16_t one = 1;
    uint8_t first;
    std::memcpy(&first, &one, 1);
    return first == 0;
}

// Sizes met while reading a node: floats and index entries of its four channels.
struct SNodeRead
{
    uint32_t pnFloats[4] = {};
    uint32_t pnIndices[4] = {};
};

const uint32_t kKeySize[4] = {3, 4, 7, 16};
const uint32_t kChannelFlag[4] = {eTVOHasPositionAnimation, eTVOHasRotationAnimation, eTVOHasScaleAnimation,
                                  eTVOHasMatrixAnimation};
const char* const kChannelName[4] = {"position", "rotation", "scale", "matrix"};

uint32_t*& ChannelIdx(STVONode& n, int c)
{
    uint32_t** p[4] = {&n.pnAnimPositionIdx, &n.pnAnimRotationIdx, &n.pnAnimScaleIdx, &n.pnAnimMatrixIdx};
    return *p[c];
}

float*& ChannelValues(STVONode& n, int c)
{
    float** p[4] = {&n.pfAnimPosition, &n.pfAnimRotation, &n.pfAnimScale, &n.pfAnimMatrix};
    return *p[c];
}

// Bytes of the data array read for each stream of a mesh (non-interleaved form).
struct SMeshRead
{
    uint32_t nFacesBytes = 0;
    uint32_t pnStreamBytes[7] = {}; // positions, normals, tangents, binormals, colours, bone idx, weights
    std::vector<uint32_t> uvwBytes;
    uint32_t nUVWRead = 0;
    uint32_t nStrips = 0; // entries of the strip-length array
    uint32_t nBatchBones = 0, nBatchBoneCnt = 0, nBatchOffset = 0;
    uint32_t nInterleavedBytes = 0;
    bool bStreamMet = false; // a vertex stream block came before any interleaved block
};

class CTVOReader
{
  public:
    CTVOReader(CSource& source, STVOScene* scene) : m_src(source), m_pScene(scene) {}

    bool ReadScene();
    bool ReadTexts(char* options, uint32_t optionsSize, char* history, uint32_t historySize);

  private:
    template <typename F> bool TopLevel(bool& version, bool& done, F onBlock);
    template <typename F> bool Children(uint32_t tag, F onBlock);

    // Leaves.
    bool U32(uint32_t length, uint32_t& v);
    bool I32(uint32_t length, int32_t& v);
    bool F32(uint32_t length, float& v);
    bool F32s(uint32_t length, float* v, uint32_t count);
    bool String(uint32_t length, char*& s);
    template <typename T> bool Array32(uint32_t length, T*& p, uint32_t& count);
    template <typename T> bool Count(uint32_t length, uint32_t& count, T*& records, bool& seen);
    bool NextRecord(uint32_t count, uint32_t read, const char* what);

    bool Version(uint32_t length, bool& ok);
    bool SceneBlock();
    bool SceneEnd();
    bool Camera(STVOCamera& c, uint32_t& fovCount);
    bool Light(STVOLight& l);
    bool Material(STVOMaterial& m);
    bool Texture(STVOTexture& t);
    bool Node(STVONode& n, SNodeRead& r);
    bool NodeChecks(uint32_t i);
    bool Mesh(STVOMesh& m);
    bool MeshEnd(STVOMesh& m, SMeshRead& r);
    bool Data(uint32_t tag, CTVOData& d, uint32_t& bytes, bool interleaved);
    bool StreamChecks(const STVOMesh& m, const CTVOData& d, uint32_t bytes, const char* what);
    bool FacesChecks(const STVOMesh& m, uint32_t bytes);
    bool InterleavedChecks(const STVOMesh& m, uint32_t bytes);

    CSource& m_src;
    STVOScene* m_pScene;
    bool m_bSeen[6] = {}; // count fields met: cameras, lights, meshes, nodes, textures, materials
    uint32_t m_nCameras = 0, m_nLights = 0, m_nMeshes = 0, m_nNodes = 0, m_nTextures = 0, m_nMaterials = 0;
    std::vector<SNodeRead> m_nodes;
    std::vector<uint32_t> m_fovCounts;
};

// Reads the blocks of a container up to its end marker; onBlock returns 1 when it read the block,
// 0 on failure and -1 for a block it does not know, which is skipped by its length.
template <typename F> bool CTVOReader::Children(uint32_t tag, F onBlock)
{
    m_src.EnterBlock();
    for (;;)
    {
        uint32_t child, length;
        if (!m_src.ReadMarker(child, length))
            return false;
        if (child == (tag | eTVOEndBit))
            break;
        const int r = onBlock(child, length);
        if (r == 0 || (r < 0 && !m_src.Skip(length)))
            return false;
    }
    m_src.LeaveBlock();
    return true;
}

bool CTVOReader::U32(uint32_t length, uint32_t& v)
{
    return length == 4 ? m_src.Read32(v) : m_src.Fail("a 4-byte value in a block of %u bytes", length);
}

bool CTVOReader::I32(uint32_t length, int32_t& v)
{
    return length == 4 ? m_src.Read32(v) : m_src.Fail("a 4-byte value in a block of %u bytes", length);
}

bool CTVOReader::F32(uint32_t length, float& v)
{
    return length == 4 ? m_src.Read32(v) : m_src.Fail("a 4-byte value in a block of %u bytes", length);
}

bool CTVOReader::F32s(uint32_t length, float* v, uint32_t count)
{
    if (length != 4 * count)
        return m_src.Fail("%u floats in a block of %u bytes", count, length);
    return m_src.ReadArray32(v, count);
}

bool CTVOReader::String(uint32_t length, char*& s)
{
    if (length == 0)
        return m_src.Fail("an empty string block");
    if (!m_src.ReadAfterAlloc(s, length))
        return false;
    return s[length - 1] == 0 || m_src.Fail("a string without its zero byte");
}

template <typename T> bool CTVOReader::Array32(uint32_t length, T*& p, uint32_t& count)
{
    count = 0;
    if (!m_src.ReadAfterAlloc32(p, length))
        return false;
    count = length / 4;
    return true;
}

// A record count: allocates its records at once, after checking they can fit in the bytes left.
template <typename T> bool CTVOReader::Count(uint32_t length, uint32_t& count, T*& records, bool& seen)
{
    uint32_t n;
    if (!U32(length, n))
        return false;
    if (seen)
        return m_src.Fail("the count is given twice");
    if (n > m_src.Remaining() / kMinRecordBytes)
        return m_src.Fail("%u records cannot fit in the %u bytes left", n, m_src.Remaining());
    if (!SafeAlloc(records, n))
        return m_src.Fail("out of memory for %u records", n);
    count = n;
    seen = true;
    return true;
}

// Whether one more record container fits its count.
bool CTVOReader::NextRecord(uint32_t count, uint32_t read, const char* what)
{
    return read < count || m_src.Fail("more %s than their count %u", what, count);
}

bool CTVOReader::Version(uint32_t length, bool& ok)
{
    if (length != kTVOVersionSize)
        return m_src.Fail("a version block of %u bytes (expected %u)", length, kTVOVersionSize);
    char text[kTVOVersionSize];
    if (!m_src.Read(text, kTVOVersionSize))
        return false;
    if (std::memcmp(text, kTVOVersion, kTVOVersionSize) != 0)
        return m_src.Fail("an unknown version (expected %s)", kTVOVersion);
    ok = true;
    return true;
}

// Reads the file's top-level blocks in order until onBlock says it is done or the file ends. Version
// blocks are checked here (version turns true once one was read) and a file in the other byte
// order is refused. onBlock returns 1 when it read a block, 2 when it read one and the walk is done,
// 0 on failure and -1 for a block it leaves, which is skipped by its length. done tells whether
// onBlock ended the walk.
template <typename F> bool CTVOReader::TopLevel(bool& version, bool& done, F onBlock)
{
    done = false;
    while (m_src.Remaining())
    {
        uint32_t tag, length;
        if (!m_src.ReadMarker(tag, length))
            return false;
        if (tag == kSwappedVersionTag)
        {
            QMXTErrorOutputDebug("Error: Endianness mismatch between the .tvo file and the platform.\n");
            return m_src.Fail("the file is in the other byte order");
        }
        const int r = tag == eTVOVersion ? (Version(length, version) ? 1 : 0) : onBlock(tag, length);
        if (r == 0 || (r < 0 && !m_src.Skip(length)))
            return false;
        if (r == 2)
        {
            done = true;
            return true;
        }
    }
    return true;
}

bool CTVOReader::ReadScene()
{
    bool version = false, done;
    const bool ok = TopLevel(version, done,
                             [&](uint32_t tag, uint32_t) -> int
                             {
                                 if (tag == (eTVOScene | eTVOEndBit))
                                     return m_src.Fail("the end of a scene that never began");
                                 if (tag != eTVOScene)
                                     return -1;
                                 // The scene's end marker ends the file's contents: nothing after it is read.
                                 if (!SceneBlock())
                                     return 0;
                                 if (m_pScene->nFlags & eTVOSceneFixedPoint)
                                 {
                                     QMXTErrorOutputDebug(
                                         "Error: The TVO file is in fixed point format but the tools haven't been "
                                         "compiled with fixed point enabled.\n");
                                     return m_src.Fail("fixed-point vertex data is not supported");
                                 }
                                 return version ? 2 : m_src.Fail("no version block before the scene");
                             });
    if (!ok || done)
        return ok;
    return m_src.Fail(version ? "no scene block" : "no version block and no scene block");
}

bool CTVOReader::ReadTexts(char* options, uint32_t optionsSize, char* history, uint32_t historySize)
{
    bool optionsRead = options == nullptr, historyRead = history == nullptr;
    bool version = false, done;
    return TopLevel(version, done,
                    [&](uint32_t tag, uint32_t length) -> int
                    {
                        if (tag == eTVOOptions && !optionsRead)
                        {
                            const uint32_t n = length < optionsSize ? length : optionsSize;
                            if (!m_src.Read(options, n) || !m_src.Skip(length - n))
                                return 0;
                            optionsRead = true;
                        }
                        else if (tag == eTVOHistory && !historyRead)
                        {
                            const uint32_t n = length < historySize ? length : historySize;
                            if (!m_src.Read(history, n))
                                return 0;
                            // The bytes left to skip depend on the options size, not the history size;
                            // this long-standing asymmetry is kept so files and callers see the
                            // behaviour they always saw.
                            const int64_t skip =
                                optionsSize < length ? static_cast<int64_t>(length) - historySize : 0;
                            if (skip > 0 && !m_src.Skip(static_cast<uint32_t>(skip)))
                                return 0;
                            historyRead = true;
                        }
                        else if (tag == (eTVOScene | eTVOEndBit))
                        {
                            // Both texts come before the scene: past its end they are not in the file.
                            return m_src.Fail("the requested text is not in the file");
                        }
                        else
                        {
                            return -1;
                        }
                        return optionsRead && historyRead ? 2 : 1;
                    });
}

bool CTVOReader::SceneBlock()
{
    STVOScene& s = *m_pScene;
    const bool ok = Children(eTVOScene,
                             [&](uint32_t tag, uint32_t length) -> int
                             {
                                 switch (tag)
                                 {
                                 case eTVOSceneClearColour:
                                     return F32s(length, s.pfColourBackground, 3);
                                 case eTVOSceneAmbientColour:
                                     return F32s(length, s.pfColourAmbient, 3);
                                 case eTVOSceneNumCamera:
                                     if (!Count(length, s.nNumCamera, s.pCamera, m_bSeen[0]))
                                         return 0;
                                     m_fovCounts.assign(s.nNumCamera, 0);
                                     return 1;
                                 case eTVOSceneNumLight:
                                     return Count(length, s.nNumLight, s.pLight, m_bSeen[1]);
                                 case eTVOSceneNumMesh:
                                     return Count(length, s.nNumMesh, s.pMesh, m_bSeen[2]);
                                 case eTVOSceneNumNode:
                                     if (!Count(length, s.nNumNode, s.pNode, m_bSeen[3]))
                                         return 0;
                                     m_nodes.assign(s.nNumNode, SNodeRead());
                                     return 1;
                                 case eTVOSceneNumTexture:
                                     return Count(length, s.nNumTexture, s.pTexture, m_bSeen[4]);
                                 case eTVOSceneNumMaterial:
                                     return Count(length, s.nNumMaterial, s.pMaterial, m_bSeen[5]);
                                 case eTVOSceneNumMeshNode:
                                     return U32(length, s.nNumMeshNode);
                                 case eTVOSceneNumFrame:
                                     return U32(length, s.nNumFrame);
                                 case eTVOSceneFPS:
                                     return U32(length, s.nFPS);
                                 case eTVOSceneFlags:
                                     return U32(length, s.nFlags);
                                 case eTVOSceneUserData:
                                     s.nUserDataSize = 0;
                                     if (!m_src.ReadAfterAlloc(s.pUserData, length))
                                         return 0;
                                     s.nUserDataSize = length;
                                     return 1;
                                 case eTVOSceneCamera:
                                     if (!NextRecord(s.nNumCamera, m_nCameras, "cameras"))
                                         return 0;
                                     ++m_nCameras;
                                     return Camera(s.pCamera[m_nCameras - 1], m_fovCounts[m_nCameras - 1]);
                                 case eTVOSceneLight:
                                     if (!NextRecord(s.nNumLight, m_nLights, "lights"))
                                         return 0;
                                     return Light(s.pLight[m_nLights++]);
                                 case eTVOSceneMaterial:
                                     if (!NextRecord(s.nNumMaterial, m_nMaterials, "materials"))
                                         return 0;
                                     return Material(s.pMaterial[m_nMaterials++]);
                                 case eTVOSceneMesh:
                                     if (!NextRecord(s.nNumMesh, m_nMeshes, "meshes"))
                                         return 0;
                                     return Mesh(s.pMesh[m_nMeshes++]);
                                 case eTVOSceneNode:
                                     if (!NextRecord(s.nNumNode, m_nNodes, "nodes"))
                                         return 0;
                                     ++m_nNodes;
                                     return Node(s.pNode[m_nNodes - 1], m_nodes[m_nNodes - 1]);
                                 case eTVOSceneTexture:
                                     if (!NextRecord(s.nNumTexture, m_nTextures, "textures"))
                                         return 0;
                                     return Texture(s.pTexture[m_nTextures++]);
                                 default:
                                     return -1;
                                 }
                             });
    return ok && SceneEnd();
}

// At the scene's end marker: the records met must match their counts, and every node channel and
// camera animation must hold the keys the frame count asks for.
bool CTVOReader::SceneEnd()
{
    const STVOScene& s = *m_pScene;
    const struct
    {
        uint32_t met, count;
        const char* what;
    } counts[] = {{m_nCameras, s.nNumCamera, "cameras"},       {m_nLights, s.nNumLight, "lights"},
                  {m_nMaterials, s.nNumMaterial, "materials"}, {m_nMeshes, s.nNumMesh, "meshes"},
                  {m_nTextures, s.nNumTexture, "textures"},    {m_nNodes, s.nNumNode, "nodes"}};
    for (const auto& c : counts)
        if (c.met != c.count)
            return m_src.Fail("%u %s for a count of %u", c.met, c.what, c.count);
    if (static_cast<uint64_t>(s.nNumMeshNode) + s.nNumLight + s.nNumCamera > s.nNumNode)
        return m_src.Fail("%u mesh nodes, %u lights and %u cameras need more than the %u nodes",
                          s.nNumMeshNode, s.nNumLight, s.nNumCamera, s.nNumNode);
    for (uint32_t i = 0; i < s.nNumCamera; ++i)
        if (s.pCamera[i].pfAnimFOV && m_fovCounts[i] != s.nNumFrame)
            return m_src.Fail("camera %u: %u field-of-view keys for %u frames", i, m_fovCounts[i],
                              s.nNumFrame);
    for (uint32_t i = 0; i < s.nNumNode; ++i)
        if (!NodeChecks(i))
            return false;
    return true;
}

bool CTVOReader::NodeChecks(uint32_t i)
{
    STVONode& n = m_pScene->pNode[i];
    const SNodeRead& r = m_nodes[i];
    const uint32_t frames = m_pScene->nNumFrame;
    for (int c = 0; c < 4; ++c)
    {
        const uint32_t* idx = ChannelIdx(n, c);
        if (idx && r.pnIndices[c] != frames)
            return m_src.Fail("node %u: %u %s indices for %u frames", i, r.pnIndices[c], kChannelName[c],
                              frames);
        const uint64_t need =
            QMXTTVOChannelFloats(idx, (n.nAnimationFlags & kChannelFlag[c]) != 0, frames, kKeySize[c]);
        if (ChannelValues(n, c) && r.pnFloats[c] < need)
            return m_src.Fail("node %u: %u %s floats where the animation needs %llu", i, r.pnFloats[c],
                              kChannelName[c], static_cast<unsigned long long>(need));
    }
    return true;
}

bool CTVOReader::Camera(STVOCamera& c, uint32_t& fovCount)
{
    c.nIdxTarget = -1;
    return Children(eTVOSceneCamera,
                    [&](uint32_t tag, uint32_t length) -> int
                    {
                        switch (tag)
                        {
                        case eTVOCameraIdxTarget:
                            return I32(length, c.nIdxTarget);
                        case eTVOCameraFOV:
                            return F32(length, c.fFOV);
                        case eTVOCameraFar:
                            return F32(length, c.fFar);
                        case eTVOCameraNear:
                            return F32(length, c.fNear);
                        case eTVOCameraAnimFOV:
                            return Array32(length, c.pfAnimFOV, fovCount);
                        default:
                            return -1;
                        }
                    });
}

bool CTVOReader::Light(STVOLight& l)
{
    l.nIdxTarget = -1;
    return Children(eTVOSceneLight,
                    [&](uint32_t tag, uint32_t length) -> int
                    {
                        switch (tag)
                        {
                        case eTVOLightIdxTarget:
                            return I32(length, l.nIdxTarget);
                        case eTVOLightColour:
                            return F32s(length, l.pfColour, 3);
                        case eTVOLightType:
                            return U32(length, l.eType);
                        case eTVOLightConstantAttenuation:
                            return F32(length, l.fConstantAttenuation);
                        case eTVOLightLinearAttenuation:
                            return F32(length, l.fLinearAttenuation);
                        case eTVOLightQuadraticAttenuation:
                            return F32(length, l.fQuadraticAttenuation);
                        case eTVOLightFalloffAngle:
                            return F32(length, l.fFalloffAngle);
                        case eTVOLightFalloffExponent:
                            return F32(length, l.fFalloffExponent);
                        default:
                            return -1;
                        }
                    });
}

bool CTVOReader::Material(STVOMaterial& m)
{
    for (int32_t& t : m.nIdxTexture)
        t = -1;
    return Children(eTVOSceneMaterial,
                    [&](uint32_t tag, uint32_t length) -> int
                    {
                        if (tag == eTVOMatTexDiffuse)
                            return I32(length, m.nIdxTexture[0]);
                        if (tag >= eTVOMatTexAmbient && tag <= eTVOMatTexRefraction)
                            return I32(length, m.nIdxTexture[tag - eTVOMatTexAmbient + 1]);
                        switch (tag)
                        {
                        case eTVOMatFlags:
                            return U32(length, m.nFlags);
                        case eTVOMatName:
                            return String(length, m.pszName);
                        case eTVOMatOpacity:
                            return F32(length, m.fMatOpacity);
                        case eTVOMatAmbient:
                            return F32s(length, m.pfMatAmbient, 3);
                        case eTVOMatDiffuse:
                            return F32s(length, m.pfMatDiffuse, 3);
                        case eTVOMatSpecular:
                            return F32s(length, m.pfMatSpecular, 3);
                        case eTVOMatShininess:
                            return F32(length, m.fMatShininess);
                        case eTVOMatEffectFile:
                            return String(length, m.pszEffectFile);
                        case eTVOMatEffectName:
                            return String(length, m.pszEffectName);
                        case eTVOMatBlendSrcRGB:
                            return U32(length, m.eBlendSrcRGB);
                        case eTVOMatBlendSrcA:
                            return U32(length, m.eBlendSrcA);
                        case eTVOMatBlendDstRGB:
                            return U32(length, m.eBlendDstRGB);
                        case eTVOMatBlendDstA:
                            return U32(length, m.eBlendDstA);
                        case eTVOMatBlendOpRGB:
                            return U32(length, m.eBlendOpRGB);
                        case eTVOMatBlendOpA:
                            return U32(length, m.eBlendOpA);
                        case eTVOMatBlendColour:
                            return F32s(length, m.pfBlendColour, 4);
                        case eTVOMatBlendFactor:
                            return F32s(length, m.pfBlendFactor, 4);
                        case eTVOMatUserData:
                            m.nUserDataSize = 0;
                            if (!m_src.ReadAfterAlloc(m.pUserData, length))
                                return 0;
                            m.nUserDataSize = length;
                            return 1;
                        default:
                            return -1;
                        }
                    });
}

bool CTVOReader::Texture(STVOTexture& t)
{
    return Children(eTVOSceneTexture,
                    [&](uint32_t tag, uint32_t length) -> int
                    { return tag == eTVOTexName ? String(length, t.pszName) : -1; });
}

bool CTVOReader::Node(STVONode& n, SNodeRead& r)
{
    n.nIdx = n.nIdxMaterial = n.nIdxParent = -1;
    // Static values of the older layout; a node that has any of them gets every missing channel filled.
    float position[3] = {0, 0, 0}, rotation[4] = {0, 0, 0, 1}, scale[7] = {1, 1, 1, 0, 0, 0, 0};
    bool legacy = false;
    const bool ok = Children(eTVOSceneNode,
                             [&](uint32_t tag, uint32_t length) -> int
                             {
                                 switch (tag)
                                 {
                                 case eTVONodeIdx:
                                     return I32(length, n.nIdx);
                                 case eTVONodeName:
                                     return String(length, n.pszName);
                                 case eTVONodeIdxMaterial:
                                     return I32(length, n.nIdxMaterial);
                                 case eTVONodeIdxParent:
                                     return I32(length, n.nIdxParent);
                                 case eTVONodeAnimFlags:
                                     return U32(length, n.nAnimationFlags);
                                 case eTVONodeStaticPosition:
                                     legacy = true;
                                     return F32s(length, position, 3);
                                 case eTVONodeStaticRotation:
                                     legacy = true;
                                     return F32s(length, rotation, 4);
                                 case eTVONodeStaticScale:
                                     legacy = true;
                                     return F32s(length, scale, 3);
                                 case eTVONodeAnimPositionIdx:
                                     return Array32(length, n.pnAnimPositionIdx, r.pnIndices[0]);
                                 case eTVONodeAnimRotationIdx:
                                     return Array32(length, n.pnAnimRotationIdx, r.pnIndices[1]);
                                 case eTVONodeAnimScaleIdx:
                                     return Array32(length, n.pnAnimScaleIdx, r.pnIndices[2]);
                                 case eTVONodeAnimMatrixIdx:
                                     return Array32(length, n.pnAnimMatrixIdx, r.pnIndices[3]);
                                 case eTVONodeAnimPosition:
                                     return Array32(length, n.pfAnimPosition, r.pnFloats[0]);
                                 case eTVONodeAnimRotation:
                                     return Array32(length, n.pfAnimRotation, r.pnFloats[1]);
                                 case eTVONodeAnimScale:
                                     return Array32(length, n.pfAnimScale, r.pnFloats[2]);
                                 case eTVONodeAnimMatrix:
                                     return Array32(length, n.pfAnimMatrix, r.pnFloats[3]);
                                 case eTVONodeUserData:
                                     n.nUserDataSize = 0;
                                     if (!m_src.ReadAfterAlloc(n.pUserData, length))
                                         return 0;
                                     n.nUserDataSize = length;
                                     return 1;
                                 default:
                                     return -1;
                                 }
                             });
    if (!ok || !legacy)
        return ok;
    const float* statics[3] = {position, rotation, scale};
    for (int c = 0; c < 3; ++c)
    {
        float*& values = ChannelValues(n, c);
        if (values)
        {
            n.nAnimationFlags |= kChannelFlag[c];
            continue;
        }
        if (!SafeAlloc(values, kKeySize[c]))
            return m_src.Fail("out of memory");
        std::memcpy(values, statics[c], kKeySize[c] * sizeof(float));
        r.pnFloats[c] = kKeySize[c];
    }
    return true;
}

bool CTVOReader::Mesh(STVOMesh& m)
{
    QMXTMATRIXf identity;
    QMXTMatrixIdentityF(identity);
    std::memcpy(m.mUnpackMatrix, identity.f, sizeof m.mUnpackMatrix);
    SMeshRead r;
    const std::array<CTVOData*, 7> streams = QMXTModelTVOFixedStreams(m);
    const bool ok = Children(
        eTVOSceneMesh,
        [&](uint32_t tag, uint32_t length) -> int
        {
            CQMXTBoneBatches& b = m.sBoneBatch;
            switch (tag)
            {
            case eTVOMeshNumVertex:
                return U32(length, m.nNumVertex);
            case eTVOMeshNumFaces:
                return U32(length, m.nNumFaces);
            case eTVOMeshNumUVW:
            {
                uint32_t n;
                if (!U32(length, n))
                    return 0;
                if (m.psUVW || r.nUVWRead)
                    return m_src.Fail("the UVW count is given twice or after UVW blocks");
                if (n > m_src.Remaining() / kMinRecordBytes)
                    return m_src.Fail("%u UVW streams cannot fit in the %u bytes left", n, m_src.Remaining());
                if (!SafeAlloc(m.psUVW, n))
                    return m_src.Fail("out of memory for %u UVW streams", n);
                m.nNumUVW = n;
                r.uvwBytes.assign(n, 0);
                return 1;
            }
            case eTVOMeshStripLength:
                return Array32(length, m.pnStripLength, r.nStrips);
            case eTVOMeshNumStrips:
                return U32(length, m.nNumStrips);
            case eTVOMeshInterleaved:
                if (r.bStreamMet)
                    return m_src.Fail("the interleaved block comes after vertex streams");
                if (!m_src.ReadAfterAlloc(m.pInterleaved, length))
                    return 0;
                if (!m.pInterleaved && !SafeAlloc(m.pInterleaved, 1)) // an empty block still marks the mesh
                    return m_src.Fail("out of memory");
                r.nInterleavedBytes = length;
                return 1;
            case eTVOMeshBoneBatchBoneMax:
                return U32(length, b.nBatchBoneMax);
            case eTVOMeshBoneBatchCnt:
                return U32(length, b.nBatchCnt);
            case eTVOMeshBoneBatches:
                return Array32(length, b.pnBatches, r.nBatchBones);
            case eTVOMeshBoneBatchBoneCnt:
                return Array32(length, b.pnBatchBoneCnt, r.nBatchBoneCnt);
            case eTVOMeshBoneBatchOffset:
                return Array32(length, b.pnBatchOffset, r.nBatchOffset);
            case eTVOMeshUnpackMatrix:
                return F32s(length, m.mUnpackMatrix, 16);
            case eTVOMeshFaces:
                return Data(tag, m.sFaces, r.nFacesBytes, false);
            case eTVOMeshUVW:
                if (r.nUVWRead >= m.nNumUVW)
                    return m_src.Fail("more UVW blocks than the UVW count %u", m.nNumUVW);
                r.bStreamMet = true;
                ++r.nUVWRead;
                return Data(tag, m.psUVW[r.nUVWRead - 1], r.uvwBytes[r.nUVWRead - 1],
                            m.pInterleaved != nullptr);
            default:
                if (tag >= eTVOMeshVertex && tag <= eTVOMeshBoneWeight)
                {
                    const int i = tag < eTVOMeshUVW ? static_cast<int>(tag - eTVOMeshVertex)
                                                    : static_cast<int>(tag - eTVOMeshVtxColours) + 4;
                    r.bStreamMet = true;
                    return Data(tag, *streams[i], r.pnStreamBytes[i], m.pInterleaved != nullptr);
                }
                return -1;
            }
        });
    return ok && MeshEnd(m, r);
}

bool CTVOReader::Data(uint32_t tag, CTVOData& d, uint32_t& bytes, bool interleaved)
{
    return Children(tag,
                    [&](uint32_t child, uint32_t length) -> int
                    {
                        switch (child)
                        {
                        case eTVODataType:
                        {
                            uint32_t type;
                            if (!U32(length, type))
                                return 0;
                            d.eType = static_cast<EQMXTDataType>(type);
                            return 1;
                        }
                        case eTVODataComponents:
                            return U32(length, d.n);
                        case eTVODataStride:
                            return U32(length, d.nStride);
                        case eTVODataData:
                        {
                            if (interleaved)
                            {
                                uint32_t offset;
                                if (!U32(length, offset))
                                    return 0;
                                QMXTModelTVODataSetOffset(d, offset);
                                return 1;
                            }
                            const uint32_t size = QMXTModelTVODataTypeSize(d.eType);
                            if (size == 0)
                                return m_src.Fail("data of unknown type %u", static_cast<uint32_t>(d.eType));
                            bytes = 0;
                            const bool read = size == 1   ? m_src.ReadAfterAlloc(d.pData, length)
                                              : size == 2 ? m_src.ReadAfterAlloc16(d.pData, length)
                                                          : m_src.ReadAfterAlloc32(d.pData, length);
                            if (read)
                                bytes = length;
                            return read;
                        }
                        default:
                            return -1;
                        }
                    });
}

// At the mesh's end marker: UVW blocks, strips, bone batches and every stream must agree with the
// counts, so that later passes can walk the arrays by them.
bool CTVOReader::MeshEnd(STVOMesh& m, SMeshRead& r)
{
    if (r.nUVWRead != m.nNumUVW)
        return m_src.Fail("%u UVW blocks for a UVW count of %u", r.nUVWRead, m.nNumUVW);
    if (r.nStrips != m.nNumStrips)
        return m_src.Fail("%u strip lengths for a strip count of %u", r.nStrips, m.nNumStrips);
    uint64_t stripTriangles = 0;
    for (uint32_t i = 0; i < r.nStrips; ++i)
        stripTriangles += m.pnStripLength[i];
    if (m.nNumStrips && stripTriangles != m.nNumFaces)
        return m_src.Fail("strips of %llu triangles for a face count of %u",
                          static_cast<unsigned long long>(stripTriangles), m.nNumFaces);
    const CQMXTBoneBatches& b = m.sBoneBatch;
    if (r.nBatchBones != static_cast<uint64_t>(b.nBatchBoneMax) * b.nBatchCnt ||
        r.nBatchBoneCnt != b.nBatchCnt || r.nBatchOffset != b.nBatchCnt)
        return m_src.Fail("bone batch arrays that do not match %u batches of up to %u bones", b.nBatchCnt,
                          b.nBatchBoneMax);
    m.ePrimitiveType = m.nNumStrips ? eTVOIndexedTriangleStrip : eTVOIndexedTriangleList;
    if (!FacesChecks(m, r.nFacesBytes))
        return false;
    if (m.pInterleaved)
    {
        // A stream without components has no place in the vertex: forget any offset it was given.
        for (CTVOData* d : QMXTModelTVOFixedStreams(m))
            if (!d->n)
                QMXTModelTVODataSetOffset(*d, 0);
        for (uint32_t i = 0; i < m.nNumUVW; ++i)
            if (!m.psUVW[i].n)
                QMXTModelTVODataSetOffset(m.psUVW[i], 0);
        if (!InterleavedChecks(m, r.nInterleavedBytes))
            return false;
        if (HostIsBigEndian())
            QMXTTVOSwapInterleaved(m);
        return true;
    }
    const std::array<const CTVOData*, 7> streams = QMXTModelTVOFixedStreams(std::as_const(m));
    for (int i = 0; i < 7; ++i)
        if (!StreamChecks(m, *streams[i], r.pnStreamBytes[i],
                          QMXTTVOBlockName(i < 4 ? eTVOMeshVertex + i : eTVOMeshVtxColours + i - 4)))
            return false;
    for (uint32_t i = 0; i < m.nNumUVW; ++i)
        if (!StreamChecks(m, m.psUVW[i], r.uvwBytes[i], "UVW"))
            return false;
    return true;
}

bool CTVOReader::StreamChecks(const STVOMesh& m, const CTVOData& d, uint32_t bytes, const char* what)
{
    if (!d.pData)
    {
        if (d.n && m.nNumVertex)
            return m_src.Fail("%s: %u components a vertex but no data", what, d.n);
        return true;
    }
    const uint32_t size = QMXTModelTVODataTypeSize(d.eType);
    if (size == 0 || d.nStride % size != 0 || d.nStride < QMXTModelTVODataElementBytes(d.eType, d.n))
        return m_src.Fail("%s: stride %u does not fit type %u with %u components", what, d.nStride,
                          static_cast<uint32_t>(d.eType), d.n);
    if (bytes != static_cast<uint64_t>(d.nStride) * m.nNumVertex)
        return m_src.Fail("%s: %u bytes of data for %u vertices of %u bytes", what, bytes, m.nNumVertex,
                          d.nStride);
    return true;
}

bool CTVOReader::FacesChecks(const STVOMesh& m, uint32_t bytes)
{
    const CTVOData& f = m.sFaces;
    const uint64_t indices =
        m.nNumStrips ? static_cast<uint64_t>(m.nNumFaces) + 2ull * m.nNumStrips : 3ull * m.nNumFaces;
    // A de-indexed mesh has no face data: one vertex a corner, in order.
    if (!f.pData)
        return indices == 0 || indices == m.nNumVertex ||
               m_src.Fail("%llu indices but no face data", static_cast<unsigned long long>(indices));
    if (f.eType != EQMXTDataUnsignedShort && f.eType != EQMXTDataUnsignedInt)
        return m_src.Fail("faces of type %u (expected unsigned short or unsigned int)",
                          static_cast<uint32_t>(f.eType));
    const uint32_t size = QMXTModelTVODataTypeSize(f.eType);
    if (bytes != indices * size)
        return m_src.Fail("%u bytes of faces for %llu indices", bytes,
                          static_cast<unsigned long long>(indices));
    for (uint64_t i = 0; i < indices; ++i)
    {
        uint32_t index;
        QMXTVertexRead(index, f.pData + i * size, f.eType);
        if (index >= m.nNumVertex)
            return m_src.Fail("index %u at position %llu is not below the vertex count %u", index,
                              static_cast<unsigned long long>(i), m.nNumVertex);
    }
    return true;
}

bool CTVOReader::InterleavedChecks(const STVOMesh& m, uint32_t bytes)
{
    if (bytes != static_cast<uint64_t>(m.sVertex.nStride) * m.nNumVertex)
        return m_src.Fail("an interleaved block of %u bytes for %u vertices of %u bytes", bytes, m.nNumVertex,
                          m.sVertex.nStride);
    if (!QMXTTVOInterleavedLayoutValid(m))
        return m_src.Fail("interleaved streams that overlap or pass the vertex stride %u", m.sVertex.nStride);
    for (const CTVOData* s : QMXTTVOInterleavedStreams(m))
        if (s->nStride != m.sVertex.nStride)
            return m_src.Fail("an interleaved stream of stride %u in vertices of %u bytes", s->nStride,
                              m.sVertex.nStride);
    return true;
}
} // namespace

int CQMXTModelTVO::ReadFromSource(CSource& source, char* optionsBuffer, uint32_t optionsSize,
                                  char* historyBuffer, uint32_t historySize)
{
    if (optionsBuffer || historyBuffer)
    {
        try
        {
            CTVOReader reader(source, nullptr);
            return reader.ReadTexts(optionsBuffer, optionsSize, historyBuffer, historySize) ? 0 : 1;
        }
        catch (const std::bad_alloc&)
        {
            source.Fail("out of memory");
            return 1;
        }
    }
    Destroy();
    std::memset(static_cast<STVOScene*>(this), 0, sizeof(STVOScene));
    bool ok;
    try
    {
        CTVOReader reader(source, this);
        ok = reader.ReadScene();
    }
    catch (const std::bad_alloc&)
    {
        ok = source.Fail("out of memory");
    }
    if (ok && InitImpl() == 0)
        return 0;
    QMXTModelTVOFreeArrays(*this);
    return 1;
}

int CQMXTModelTVO::ReadFromFile(const char* path, char* optionsBuffer, uint32_t optionsSize,
                                char* historyBuffer, uint32_t historySize)
{
    CSourceStream source;
    if (!path || !source.Init(path))
        return 1;
    return ReadFromSource(source, optionsBuffer, optionsSize, historyBuffer, historySize);
}

int CQMXTModelTVO::ReadFromMemory(const void* data, uint32_t size, char* optionsBuffer, uint32_t optionsSize,
                                  char* historyBuffer, uint32_t historySize)
{
    CSourceStream source;
    if (!source.Init(data, size))
        return 1;
    return ReadFromSource(source, optionsBuffer, optionsSize, historyBuffer, historySize);
}

int CQMXTModelTVO::ReadFromMemory(const STVOScene& scene)
{
    if (&scene == static_cast<const STVOScene*>(this))
        return IsLoaded() ? 0 : 1;
    const STVOScene copy = scene;
    Destroy();
    std::memcpy(static_cast<STVOScene*>(this), &copy, sizeof(STVOScene));
    if (InitImpl() != 0)
    {
        std::memset(static_cast<STVOScene*>(this), 0, sizeof(STVOScene));
        return 1;
    }
    SetCallerOwned(true);
    return 0;
}
