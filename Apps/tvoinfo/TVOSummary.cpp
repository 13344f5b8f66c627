#include "TVOSummary.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <vector>

#include "JsonWriter.h"
#include "QMXTTVOBlocks.h"

namespace
{
const char* const kSlotNames[eTVOTexSlotCount] = {
    "diffuse",  "ambient",    "specular colour", "specular level", "bump",
    "emissive", "glossiness", "opacity",         "reflection",     "refraction"};
const char* const kAnimNames[4] = {"position", "rotation", "scale", "matrix"};

struct SStream
{
    std::string name;
    const CTVOData* data;
};

// The streams of a mesh that are there (components or data), faces first.
std::vector<SStream> Streams(const STVOMesh& m)
{
    std::vector<SStream> all = {{"faces", &m.sFaces},
                                {"positions", &m.sVertex},
                                {"normals", &m.sNormals},
                                {"tangents", &m.sTangents},
                                {"binormals", &m.sBinormals}};
    for (uint32_t i = 0; m.psUVW && i < m.nNumUVW; ++i)
        all.push_back({"UVW " + std::to_string(i), &m.psUVW[i]});
    all.push_back({"vertex colours", &m.sVtxColours});
    all.push_back({"bone indices", &m.sBoneIdx});
    all.push_back({"bone weights", &m.sBoneWeight});
    std::vector<SStream> present;
    for (const SStream& s : all)
    {
        const bool isOffset = m.pInterleaved && s.data != &m.sFaces; // pData holds an offset, not data
        if (s.data->n || (!isOffset && s.data->pData))
            present.push_back(s);
    }
    return present;
}

const char* LightType(uint32_t type)
{
    return type == eTVOLightPoint         ? "point"
           : type == eTVOLightDirectional ? "directional"
           : type == eTVOLightSpot        ? "spot"
                                          : "unknown";
}

const char* TextureName(const STVOScene& s, int32_t idx)
{
    return idx >= 0 && static_cast<uint32_t>(idx) < s.nNumTexture && s.pTexture[idx].pszName
               ? s.pTexture[idx].pszName
               : nullptr;
}

// Text from a file (names, history) can hold any byte. Control bytes other than tab are shown as
// escapes, so a file cannot move the cursor, recolour the terminal or split a summary line.
void AppendShown(std::string& out, const char* text, size_t size)
{
    for (size_t i = 0; i < size; ++i)
    {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '\n')
            out += "\\n";
        else if ((c < 0x20 && c != '\t') || c == 0x7f)
        {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", c);
            out += escape;
        }
        else
            out += static_cast<char>(c);
    }
}

class CText
{
  public:
    void Line(const char* format, ...) __attribute__((format(printf, 2, 3)))
    {
        char line[1024];
        va_list args;
        va_start(args, format);
        const int length = std::vsnprintf(line, sizeof line, format, args);
        va_end(args);
        AppendShown(m_text, line, length < 0 ? 0 : std::min(static_cast<size_t>(length), sizeof line - 1));
        m_text += '\n';
    }
    // A text block, each of its lines indented.
    void Block(const std::string& text)
    {
        size_t start = 0;
        while (start < text.size())
        {
            size_t end = text.find('\n', start);
            if (end == std::string::npos)
                end = text.size();
            m_text += "  ";
            AppendShown(m_text, text.data() + start, end - start);
            m_text += '\n';
            start = end + 1;
        }
    }
    std::string m_text;
};

std::string AnimationText(uint32_t flags)
{
    std::string text;
    for (int c = 0; c < 4; ++c)
        if (flags & (1u << c))
            text += std::string(text.empty() ? "" : " ") + kAnimNames[c];
    return text.empty() ? "static" : text;
}

void NodesText(CText& t, const CQMXTModelTVO& s)
{
    t.Line("nodes:");
    for (uint32_t i = 0; i < s.nNumNode; ++i)
    {
        const STVONode& n = s.pNode[i];
        t.Line("  [%u] \"%s\" %s %d, parent %d, material %d, animation %s%s", i, n.pszName ? n.pszName : "",
               TVONodeKind(s, i), n.nIdx, n.nIdxParent, n.nIdxMaterial,
               AnimationText(n.nAnimationFlags).c_str(),
               n.nUserDataSize ? (", user data " + std::to_string(n.nUserDataSize) + " bytes").c_str() : "");
    }
}

void MeshesText(CText& t, const CQMXTModelTVO& s)
{
    t.Line("meshes:");
    for (uint32_t i = 0; i < s.nNumMesh; ++i)
    {
        const STVOMesh& m = s.pMesh[i];
        std::string layout =
            m.pInterleaved ? "interleaved, stride " + std::to_string(m.sVertex.nStride) : "separate streams";
        t.Line("  [%u] %u vertices, %u faces, %s, %u strips, %u bone batches (up to %u bones), %u UVW, %s", i,
               m.nNumVertex, m.nNumFaces, m.nNumStrips ? "triangle strips" : "triangle list", m.nNumStrips,
               m.sBoneBatch.nBatchCnt, m.sBoneBatch.nBatchBoneMax, m.nNumUVW, layout.c_str());
        for (const SStream& st : Streams(m))
        {
            const CTVOData& d = *st.data;
            const bool offset = m.pInterleaved && st.data != &m.sFaces;
            t.Line("      %s: %s x%u, stride %u%s", st.name.c_str(), QMXTModelTVODataTypeName(d.eType), d.n,
                   d.nStride,
                   offset ? (", offset " + std::to_string(QMXTModelTVODataOffset(d))).c_str() : "");
        }
    }
}

void MaterialsText(CText& t, const CQMXTModelTVO& s)
{
    t.Line("materials:");
    for (uint32_t i = 0; i < s.nNumMaterial; ++i)
    {
        const STVOMaterial& m = s.pMaterial[i];
        std::string textures;
        for (uint32_t slot = 0; slot < eTVOTexSlotCount; ++slot)
        {
            if (m.nIdxTexture[slot] < 0)
                continue;
            const char* name = TextureName(s, m.nIdxTexture[slot]);
            textures += std::string(textures.empty() ? "" : ", ") + kSlotNames[slot] + " " +
                        (name ? "\"" + std::string(name) + "\""
                              : "#" + std::to_string(m.nIdxTexture[slot]) + " (missing)");
        }
        t.Line("  [%u] \"%s\" opacity %g, textures: %s%s%s", i, m.pszName ? m.pszName : "",
               static_cast<double>(m.fMatOpacity), textures.empty() ? "none" : textures.c_str(),
               m.pszEffectFile ? (", effect " + std::string(m.pszEffectFile)).c_str() : "",
               m.pszEffectName ? (" " + std::string(m.pszEffectName)).c_str() : "");
    }
    t.Line("textures:");
    for (uint32_t i = 0; i < s.nNumTexture; ++i)
        t.Line("  [%u] \"%s\"", i, s.pTexture[i].pszName ? s.pTexture[i].pszName : "");
}

void LightsCamerasText(CText& t, const CQMXTModelTVO& s)
{
    t.Line("lights:");
    for (uint32_t i = 0; i < s.nNumLight; ++i)
    {
        const STVOLight& l = s.pLight[i];
        char extra[160] = "";
        if (l.eType == eTVOLightPoint || l.eType == eTVOLightSpot)
            std::snprintf(
                extra, sizeof extra, ", attenuation %g %g %g", static_cast<double>(l.fConstantAttenuation),
                static_cast<double>(l.fLinearAttenuation), static_cast<double>(l.fQuadraticAttenuation));
        char spot[96] = "";
        if (l.eType == eTVOLightSpot)
            std::snprintf(spot, sizeof spot, ", falloff %g exponent %g", static_cast<double>(l.fFalloffAngle),
                          static_cast<double>(l.fFalloffExponent));
        t.Line("  [%u] %s, colour %g %g %g, target %d%s%s", i, LightType(l.eType),
               static_cast<double>(l.pfColour[0]), static_cast<double>(l.pfColour[1]),
               static_cast<double>(l.pfColour[2]), l.nIdxTarget, extra, spot);
    }
    t.Line("cameras:");
    for (uint32_t i = 0; i < s.nNumCamera; ++i)
    {
        const STVOCamera& c = s.pCamera[i];
        t.Line("  [%u] field of view %g%s, near %g, far %g, target %d", i, static_cast<double>(c.fFOV),
               c.pfAnimFOV ? " (animated)" : "", static_cast<double>(c.fNear), static_cast<double>(c.fFar),
               c.nIdxTarget);
    }
}
} // namespace

namespace
{
bool ReadText(const void* data, uint32_t size, bool history, std::string& text)
{
    std::vector<char> buffer(static_cast<size_t>(size) + 1, 0);
    CQMXTModelTVO reader;
    const int result = history ? reader.ReadFromMemory(data, size, nullptr, 0, buffer.data(), size)
                               : reader.ReadFromMemory(data, size, buffer.data(), size);
    if (result != 0)
        return false;
    text.assign(buffer.data());
    return true;
}
} // namespace

void TVOReadFileTexts(const void* data, uint32_t size, STVOFileFacts& facts)
{
    facts.bHasOptions = ReadText(data, size, false, facts.sOptions);
    facts.bHasHistory = ReadText(data, size, true, facts.sHistory);
}

const char* TVONodeKind(const STVOScene& s, uint32_t i)
{
    const uint64_t lights = static_cast<uint64_t>(s.nNumMeshNode) + s.nNumLight;
    if (i < s.nNumMeshNode)
        return "mesh";
    if (i < lights)
        return "light";
    if (i < lights + s.nNumCamera)
        return "camera";
    return "other";
}

std::string TVOSummaryText(const CQMXTModelTVO& s, const STVOFileFacts& f)
{
    CText t;
    t.Line("file: %s, %u bytes, version %s", f.sPath.c_str(), f.nSize, kTVOVersion);
    t.Line("scene: %u nodes (%u mesh nodes), %u meshes, %u materials, %u textures, %u lights, %u cameras",
           s.nNumNode, s.nNumMeshNode, s.nNumMesh, s.nNumMaterial, s.nNumTexture, s.nNumLight, s.nNumCamera);
    if (s.nNumFrame)
        t.Line("frames: %u at %u fps", s.nNumFrame, s.nFPS);
    else
        t.Line("frames: 0 (static)");
    t.Line("flags: 0x%x, user data %u bytes", s.nFlags, s.nUserDataSize);
    NodesText(t, s);
    MeshesText(t, s);
    MaterialsText(t, s);
    LightsCamerasText(t, s);
    // The options text runs to some 80 lines: counted here, printed by --options.
    if (f.bHasOptions)
        t.Line("options: %u lines (tvoinfo --options %s prints them)",
               static_cast<unsigned>(std::count(f.sOptions.begin(), f.sOptions.end(), '\n')),
               f.sPath.c_str());
    else
        t.Line("options: none");
    t.Line("history:%s", f.bHasHistory ? "" : " none");
    t.Block(f.sHistory);
    return t.m_text;
}

namespace
{
void Floats(CJsonWriter& j, const char* key, const float* v, int n)
{
    j.BeginArray(key);
    for (int i = 0; i < n; ++i)
        j.Float(nullptr, v[i]);
    j.EndArray();
}

void NodesJson(CJsonWriter& j, const CQMXTModelTVO& s)
{
    j.BeginArray("nodes");
    for (uint32_t i = 0; i < s.nNumNode; ++i)
    {
        const STVONode& n = s.pNode[i];
        j.BeginObject();
        j.String("name", n.pszName);
        j.String("kind", TVONodeKind(s, i));
        j.Int("index", n.nIdx);
        j.Int("parent", n.nIdxParent);
        j.Int("material", n.nIdxMaterial);
        j.BeginArray("animation");
        for (int c = 0; c < 4; ++c)
            if (n.nAnimationFlags & (1u << c))
                j.String(nullptr, kAnimNames[c]);
        j.EndArray();
        j.Int("userDataSize", n.nUserDataSize);
        j.EndObject();
    }
    j.EndArray();
}

void MeshesJson(CJsonWriter& j, const CQMXTModelTVO& s)
{
    j.BeginArray("meshes");
    for (uint32_t i = 0; i < s.nNumMesh; ++i)
    {
        const STVOMesh& m = s.pMesh[i];
        j.BeginObject();
        j.Int("vertices", m.nNumVertex);
        j.Int("faces", m.nNumFaces);
        j.String("primitive", m.nNumStrips ? "strips" : "list");
        j.Int("strips", m.nNumStrips);
        j.Int("boneBatches", m.sBoneBatch.nBatchCnt);
        j.Int("batchBoneMax", m.sBoneBatch.nBatchBoneMax);
        j.Int("uvw", m.nNumUVW);
        j.Bool("interleaved", m.pInterleaved != nullptr);
        j.BeginArray("streams");
        for (const SStream& st : Streams(m))
        {
            const CTVOData& d = *st.data;
            j.BeginObject();
            j.String("name", st.name.c_str());
            j.String("type", QMXTModelTVODataTypeName(d.eType));
            j.Int("typeId", d.eType);
            j.Int("components", d.n);
            j.Int("stride", d.nStride);
            if (m.pInterleaved && st.data != &m.sFaces)
                j.Int("offset", QMXTModelTVODataOffset(d));
            else
                j.Null("offset");
            j.EndObject();
        }
        j.EndArray();
        j.EndObject();
    }
    j.EndArray();
}

void MaterialsJson(CJsonWriter& j, const CQMXTModelTVO& s)
{
    j.BeginArray("materials");
    for (uint32_t i = 0; i < s.nNumMaterial; ++i)
    {
        const STVOMaterial& m = s.pMaterial[i];
        j.BeginObject();
        j.String("name", m.pszName);
        j.Float("opacity", m.fMatOpacity);
        j.BeginObject("textures");
        for (uint32_t slot = 0; slot < eTVOTexSlotCount; ++slot)
            if (m.nIdxTexture[slot] >= 0)
                j.String(kSlotNames[slot], TextureName(s, m.nIdxTexture[slot]));
        j.EndObject();
        j.String("effectFile", m.pszEffectFile);
        j.String("effectName", m.pszEffectName);
        j.Int("flags", m.nFlags);
        j.Int("userDataSize", m.nUserDataSize);
        j.EndObject();
    }
    j.EndArray();
    j.BeginArray("textures");
    for (uint32_t i = 0; i < s.nNumTexture; ++i)
        j.String(nullptr, s.pTexture[i].pszName);
    j.EndArray();
}

void LightsCamerasJson(CJsonWriter& j, const CQMXTModelTVO& s)
{
    j.BeginArray("lights");
    for (uint32_t i = 0; i < s.nNumLight; ++i)
    {
        const STVOLight& l = s.pLight[i];
        j.BeginObject();
        j.String("type", LightType(l.eType));
        Floats(j, "colour", l.pfColour, 3);
        j.Int("target", l.nIdxTarget);
        const float attenuation[3] = {l.fConstantAttenuation, l.fLinearAttenuation, l.fQuadraticAttenuation};
        Floats(j, "attenuation", attenuation, 3);
        j.Float("falloffAngle", l.fFalloffAngle);
        j.Float("falloffExponent", l.fFalloffExponent);
        j.EndObject();
    }
    j.EndArray();
    j.BeginArray("cameras");
    for (uint32_t i = 0; i < s.nNumCamera; ++i)
    {
        const STVOCamera& c = s.pCamera[i];
        j.BeginObject();
        j.Float("fov", c.fFOV);
        j.Bool("fovAnimated", c.pfAnimFOV != nullptr);
        j.Float("near", c.fNear);
        j.Float("far", c.fFar);
        j.Int("target", c.nIdxTarget);
        j.EndObject();
    }
    j.EndArray();
}
} // namespace

std::string TVOSummaryJson(const CQMXTModelTVO& s, const STVOFileFacts& f)
{
    CJsonWriter j;
    j.BeginObject();
    j.String("file", f.sPath.c_str());
    j.Int("size", f.nSize);
    j.String("version", kTVOVersion);
    j.BeginObject("scene");
    j.Int("nodes", s.nNumNode);
    j.Int("meshNodes", s.nNumMeshNode);
    j.Int("meshes", s.nNumMesh);
    j.Int("materials", s.nNumMaterial);
    j.Int("textures", s.nNumTexture);
    j.Int("lights", s.nNumLight);
    j.Int("cameras", s.nNumCamera);
    j.Int("frames", s.nNumFrame);
    j.Int("fps", s.nFPS);
    j.Int("flags", s.nFlags);
    j.Int("userDataSize", s.nUserDataSize);
    Floats(j, "clearColour", s.pfColourBackground, 3);
    Floats(j, "ambientColour", s.pfColourAmbient, 3);
    j.EndObject();
    NodesJson(j, s);
    MeshesJson(j, s);
    MaterialsJson(j, s);
    LightsCamerasJson(j, s);
    if (f.bHasOptions)
        j.String("options", f.sOptions.c_str());
    else
        j.Null("options");
    if (f.bHasHistory)
        j.String("history", f.sHistory.c_str());
    else
        j.Null("history");
    j.EndObject();
    return j.Text();
}
