// Draws a scene model with the OpenGL ES 2 API as a small GPU would: meshes as stored (see
// CTVOGpuMesh), the unpack matrix in the vertex shader, matrix-palette skinning one bone batch at a
// time with the palette size of the file, the file's lights (directional, point, spot; a head light
// when there are none) lit per pixel, and the materials' colours and diffuse textures.
//
// The renderer does not care who made the context: the window's QOpenGLWidget and the headless
// EGL pbuffer both make theirs current and call Init, Draw and Release. It draws into whatever
// framebuffer is bound.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QMXTModelTVO.h"
#include "TVOGpuMesh.h"
#include "TVOTextures.h"
#include "TVOViewCamera.h"

struct SViewToggles
{
    bool bWireframe = false;
    bool bNormals = false;
    bool bBatchColours = false;
    bool bBounds = false;
};

class CTVORenderer
{
  public:
    ~CTVORenderer();

    // Compiles the programs and uploads every mesh; the scene must outlive the renderer and have
    // passed TVOCheckSceneForDrawing. baseDir is the folder of the file, for textures. Returns false
    // with a message when the context cannot take the scene.
    bool Init(CQMXTModelTVO& scene, const std::string& baseDir, std::string& error);
    // Draws the scene at its current frame into a viewport of width x height pixels.
    void Draw(const SCameraView& view, int width, int height, const SViewToggles& toggles);
    // Frees the GL objects; the context must be current.
    void Release();
    // Warnings met so far (missing textures, palettes too big, lights left out), each said once.
    std::vector<std::string> TakeWarnings();

  private:
    struct SLights;
    void SetLights(const SCameraView& view);
    void SetMaterial(int32_t materialIdx);
    void DrawMeshNode(uint32_t nodeIdx, const SViewToggles& toggles);
    // Fills the palette with the bone matrices of one batch of a mesh drawn at node.
    void LoadBatchBones(const STVONode& node, const STVOMesh& mesh, uint32_t batch);
    void DrawLines(const SCameraView& view, const SViewToggles& toggles);

    CQMXTModelTVO* m_pScene = nullptr;
    std::vector<std::unique_ptr<CTVOGpuMesh>> m_meshes;
    CTVOTextures m_textures;
    GLuint m_nProgram = 0, m_nLineProgram = 0;
    int m_nPaletteSize = 1; // bone matrices the program holds
    std::vector<std::string> m_warnings;
    std::vector<std::string> m_said;
};
