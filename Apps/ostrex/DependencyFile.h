// What an export read, for build systems: the files the importer opened, the textures the scene's
// materials name that exist on disk, and the files the options came from; written as a Make-format
// dependency file ("OUTPUT: DEP DEP ...") that Make and Ninja read to re-export exactly when one of
// them changed.
#pragma once

#include <assimp/DefaultIOSystem.h>

#include <set>
#include <string>
#include <vector>

struct aiScene;

// The importer's file access, recording the path of every file it opened successfully. Give it
// to Assimp::Importer::SetIOHandler (which takes ownership); the set outlives the importer.
class CRecordingIOSystem : public Assimp::DefaultIOSystem
{
  public:
    explicit CRecordingIOSystem(std::set<std::string>& opened) : m_opened(opened) {}
    Assimp::IOStream* Open(const char* file, const char* mode) override;

  private:
    std::set<std::string>& m_opened;
};

// The texture files the scene's materials name (embedded ones excluded) that exist, resolved
// against the scene file's folder when relative (see ExistingTextureFile).
std::vector<std::string> ExistingTextureFiles(const aiScene& scene, const std::string& scenePath);

// The path made absolute against the working folder and lexically normal (no "." or ".." parts),
// so the same file is named once; symbolic links are not resolved.
std::string AbsolutePath(const std::string& path);

// One path escaped for a Make-format dependency file: spaces, '#' and backslashes before them
// with a backslash, '$' doubled. Newlines cannot be written and give false.
bool EscapeDependencyPath(const std::string& path, std::string& escaped);

// "TARGET: DEP \\\n DEP\n" for the target and its dependencies (sorted, one a line). False with
// the reason when a path holds a newline.
bool DependencyFileText(const std::string& target, const std::vector<std::string>& dependencies,
                        std::string& text, std::string& error);
