// Materials and texture names of the Assimp scene filler.
#include <assimp/material.h>
#include <assimp/texture.h>

#include <cstring>

#include "AssimpInternal.h"
#include "Log.h"
#include "TextureFiles.h"

namespace
{
// Importer texture kinds for each of the content's ten slots, most fitting first: diffuse, ambient,
// specular colour, specular level, bump, emissive, glossiness, opacity, reflection, refraction.
const std::vector<aiTextureType> kSlotSources[SMaterial::eTextureSlots] = {
    {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR},
    {aiTextureType_AMBIENT, aiTextureType_LIGHTMAP, aiTextureType_AMBIENT_OCCLUSION},
    {aiTextureType_SPECULAR},
    {},
    {aiTextureType_NORMALS, aiTextureType_HEIGHT, aiTextureType_NORMAL_CAMERA, aiTextureType_DISPLACEMENT},
    {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR},
    {aiTextureType_SHININESS},
    {aiTextureType_OPACITY},
    {aiTextureType_REFLECTION},
    {aiTextureType_TRANSMISSION},
};

// The file name without directories; both separators count, as files come from any system.
std::string BareName(const std::string& path)
{
    const size_t cut = path.find_last_of("/\\");
    return cut == std::string::npos ? path : path.substr(cut + 1);
}

void CopyColour(const aiMaterial& m, const char* key, unsigned type, unsigned index, float out[3])
{
    aiColor4D c;
    if (m.Get(key, type, index, c) == AI_SUCCESS)
    {
        out[0] = c.r;
        out[1] = c.g;
        out[2] = c.b;
    }
}

// An image file in memory for a texture the importer decoded to texels: an uncompressed 32-bit
// TGA, rows from the top.
std::vector<uint8_t> TgaFromTexels(const aiTexture& t)
{
    std::vector<uint8_t> out(18, 0);
    out[2] = 2; // uncompressed true colour
    out[12] = static_cast<uint8_t>(t.mWidth & 0xff);
    out[13] = static_cast<uint8_t>(t.mWidth >> 8);
    out[14] = static_cast<uint8_t>(t.mHeight & 0xff);
    out[15] = static_cast<uint8_t>(t.mHeight >> 8);
    out[16] = 32;
    out[17] = 0x28; // 8 alpha bits, top-left origin
    const size_t count = static_cast<size_t>(t.mWidth) * t.mHeight;
    out.reserve(out.size() + count * 4);
    for (size_t i = 0; i < count; ++i)
    {
        const aiTexel& p = t.pcData[i];
        out.insert(out.end(), {p.b, p.g, p.r, p.a});
    }
    return out;
}

// A format hint usable as a file extension: letters and digits only.
std::string Extension(const aiTexture& t)
{
    std::string ext;
    for (size_t i = 0; i < sizeof t.achFormatHint && t.achFormatHint[i]; ++i)
    {
        const char c = t.achFormatHint[i];
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
            ext += c;
    }
    return ext.empty() ? "bin" : ext;
}
} // namespace

CAssimpMaterials::CAssimpMaterials(const aiScene& scene, SContent& content, const std::string& texturePrefix,
                                   const std::string& sceneFolder)
    : m_scene(scene), m_content(content), m_sPrefix(texturePrefix), m_sSceneFolder(sceneFolder), m_contentIndex(scene.mNumMaterials, -1)
{
}

int CAssimpMaterials::Use(unsigned materialIndex)
{
    if (materialIndex >= m_scene.mNumMaterials || !m_scene.mMaterials[materialIndex])
        return -1;
    int& index = m_contentIndex[materialIndex];
    if (index >= 0)
        return index;

    const aiMaterial& m = *m_scene.mMaterials[materialIndex];
    SMaterial mat;
    aiString name;
    if (m.Get(AI_MATKEY_NAME, name) == AI_SUCCESS)
        mat.name = name.C_Str();
    CopyColour(m, AI_MATKEY_COLOR_DIFFUSE, mat.diffuse);
    CopyColour(m, AI_MATKEY_COLOR_AMBIENT, mat.ambient);
    CopyColour(m, AI_MATKEY_COLOR_SPECULAR, mat.specular);
    mat.opacity = 1.0f; // opaque unless the file says otherwise
    m.Get(AI_MATKEY_OPACITY, mat.opacity);
    m.Get(AI_MATKEY_SHININESS, mat.shininess);
    for (int slot = 0; slot < SMaterial::eTextureSlots; ++slot)
    {
        for (aiTextureType type : kSlotSources[slot])
        {
            aiString path;
            if (m.GetTextureCount(type) > 0 && m.GetTexture(type, 0, &path) == AI_SUCCESS && path.length > 0)
            {
                mat.textures[slot] = TextureName(path);
                break;
            }
        }
    }
    m_content.materials.push_back(mat);
    index = static_cast<int>(m_content.materials.size() - 1);
    return index;
}

std::string CAssimpMaterials::TextureName(const aiString& path)
{
    const aiTexture* embedded = m_scene.GetEmbeddedTexture(path.C_Str());
    if (!embedded)
    {
        const std::string file =
            m_sSceneFolder.empty() ? std::string() : ExistingTextureFile(m_sSceneFolder, path.C_Str());
        return BareName(file.empty() ? path.C_Str() : file);
    }
    const auto known = m_embeddedNames.find(embedded);
    if (known != m_embeddedNames.end())
        return known->second;

    const bool tooLargeForTga =
        embedded->mHeight != 0 && (embedded->mWidth > 0xffff || embedded->mHeight > 0xffff);
    if (!embedded->pcData || embedded->mWidth == 0 || tooLargeForTga)
    {
        Log(eLogWarning, "Warning: An embedded texture of unusable size is left out.");
        return std::string();
    }
    unsigned index = 0;
    while (index < m_scene.mNumTextures && m_scene.mTextures[index] != embedded)
        ++index;
    SEmbeddedTexture out;
    out.fileName = EmbeddedName(*embedded, index);
    if (embedded->mHeight == 0) // compressed, mWidth bytes: the file's bytes as they are
        out.data.assign(reinterpret_cast<const uint8_t*>(embedded->pcData),
                        reinterpret_cast<const uint8_t*>(embedded->pcData) + embedded->mWidth);
    else
        out.data = TgaFromTexels(*embedded);
    m_embeddedNames.emplace(embedded, out.fileName);
    Log(eLogDetail, "Embedded texture %u is written as '%s'.", index, out.fileName.c_str());
    m_textures.push_back(std::move(out));
    return m_textures.back().fileName;
}

// prefix + "_" + the texture's own bare name when it has one, else prefix + "_tex" + index; an
// extension from the format hint; made unique among the embedded textures.
std::string CAssimpMaterials::EmbeddedName(const aiTexture& texture, unsigned index)
{
    const std::string ext = texture.mHeight == 0 ? Extension(texture) : "tga";
    std::string own = BareName(texture.mFilename.C_Str());
    if (own.empty() || own[0] == '*')
        own = "tex" + std::to_string(index) + "." + ext;
    else if (texture.mHeight != 0)
        own = own.substr(0, own.rfind('.')) + ".tga";
    std::string name = m_sPrefix.empty() ? own : m_sPrefix + "_" + own;
    const std::string base = name.substr(0, name.rfind('.'));
    const std::string suffix = name.substr(base.size());
    for (int n = 2;; ++n)
    {
        bool taken = false;
        for (const SEmbeddedTexture& t : m_textures)
            taken = taken || t.fileName == name;
        if (!taken)
            return name;
        name = base + "_" + std::to_string(n) + suffix;
    }
}
