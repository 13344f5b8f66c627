// Diffuse textures of a scene, loaded relative to the scene file through Qt's image readers (PNG,
// JPEG; TGA and others with Qt's image format plugins) and uploaded as GLES 2 textures: sizes
// rounded down to powers of two (as small GPUs need for repeat and mipmaps), rows in OpenGL order
// (v = 0 is the image's bottom row). A texture that cannot be read is replaced by a magenta checker
// and reported once.
#pragma once

#include <GLES2/gl2.h>

#include <map>
#include <string>
#include <vector>

#include "QMXTModelTVO.h"

class CTVOTextures
{
  public:
    // baseDir: folder of the scene file, for relative texture names.
    void Init(const STVOScene& scene, const std::string& baseDir)
    {
        m_pScene = &scene;
        m_sBaseDir = baseDir;
    }
    // The GL texture of texture index idx (loaded on first use), or 0 for an index out of range.
    // Warnings about missing files are appended to warnings.
    GLuint Get(int32_t idx, std::vector<std::string>& warnings);
    void Release();

  private:
    GLuint Checker();

    const STVOScene* m_pScene = nullptr;
    std::string m_sBaseDir;
    std::map<int32_t, GLuint> m_loaded;
    GLuint m_nChecker = 0;
};
