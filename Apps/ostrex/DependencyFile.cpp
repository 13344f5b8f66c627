#include "DependencyFile.h"

#include <assimp/material.h>
#include <assimp/scene.h>

#include <filesystem>
#include <system_error>

#include "TextureFiles.h"

namespace fs = std::filesystem;

Assimp::IOStream* CRecordingIOSystem::Open(const char* file, const char* mode)
{
    Assimp::IOStream* stream = Assimp::DefaultIOSystem::Open(file, mode);
    if (stream && file && mode && mode[0] == 'r')
        m_opened.insert(AbsolutePath(file));
    return stream;
}

std::string AbsolutePath(const std::string& path)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(fs::path(path), error);
    return (error ? fs::path(path) : absolute).lexically_normal().string();
}

std::vector<std::string> ExistingTextureFiles(const aiScene& scene, const std::string& scenePath)
{
    const fs::path folder = fs::path(AbsolutePath(scenePath)).parent_path();
    std::set<std::string> found;
    for (unsigned m = 0; m < scene.mNumMaterials; ++m)
    {
        const aiMaterial* material = scene.mMaterials[m];
        for (int type = aiTextureType_NONE; type <= AI_TEXTURE_TYPE_MAX; ++type)
            for (unsigned i = 0; i < material->GetTextureCount(static_cast<aiTextureType>(type)); ++i)
            {
                aiString name;
                if (material->GetTexture(static_cast<aiTextureType>(type), i, &name) != AI_SUCCESS ||
                    name.length == 0 || name.C_Str()[0] == '*' || scene.GetEmbeddedTexture(name.C_Str()))
                    continue;
                const std::string file = ExistingTextureFile(folder.string(), name.C_Str());
                if (!file.empty())
                    found.insert(file);
            }
    }
    return {found.begin(), found.end()};
}

bool EscapeDependencyPath(const std::string& path, std::string& escaped)
{
    escaped.clear();
    for (size_t i = 0; i < path.size(); ++i)
    {
        const char c = path[i];
        if (c == '\n' || c == '\r')
            return false;
        if (c == '$')
            escaped += '$';
        else if (c == ' ' || c == '#')
        {
            // Backslashes right before a space or '#' are doubled so they stay backslashes.
            for (size_t k = i; k > 0 && path[k - 1] == '\\'; --k)
                escaped += '\\';
            escaped += '\\';
        }
        escaped += c;
    }
    return true;
}

bool DependencyFileText(const std::string& target, const std::vector<std::string>& dependencies,
                        std::string& text, std::string& error)
{
    std::string escaped;
    if (!EscapeDependencyPath(target, escaped))
    {
        error = "the output path holds a line break, which a dependency file cannot name";
        return false;
    }
    text = escaped + ":";
    const std::set<std::string> sorted(dependencies.begin(), dependencies.end());
    for (const std::string& dependency : sorted)
    {
        if (!EscapeDependencyPath(dependency, escaped))
        {
            error = "'" + dependency + "' holds a line break, which a dependency file cannot name";
            return false;
        }
        text += " \\\n  " + escaped;
    }
    text += "\n";
    return true;
}
