// One mesh of the scene model in GPU buffers, drawn as stored: types the GLES 2 vertex attribute
// formats take (float, byte, short and their unsigned and normalised forms, UBYTE4) are uploaded
// byte for byte, interleaved or not; the rest (int, unsigned int, fixed 16.16, DEC3N) are converted
// to floats on load. Packed colours (RGBA, ARGB, D3DCOLOR) are four normalised unsigned bytes to a
// GLES 2 GPU, which cannot swizzle at fetch: they are read in the file's byte order (the builder's
// ARGB colours hold red, green, blue, alpha in that order), whatever the type's packing says. Indices are
// uploaded as 16-bit values when every vertex fits, else as 32-bit ones (which need OES_element_index_uint).
#pragma once

#include <GLES2/gl2.h>

#include <string>
#include <vector>

#include "TVOMeshLayout.h"
#include "TVOShaders.h"

struct SGpuAttribute
{
    bool bPresent = false;
    GLuint nBuffer = 0;
    GLint nSize = 0;
    GLenum eType = GL_FLOAT;
    GLboolean bNormalised = GL_FALSE;
    GLsizei nStride = 0;
    size_t nOffset = 0;
};

class CTVOGpuMesh
{
  public:
    CTVOGpuMesh() = default;
    CTVOGpuMesh(const CTVOGpuMesh&) = delete;
    CTVOGpuMesh& operator=(const CTVOGpuMesh&) = delete;
    ~CTVOGpuMesh(); // the buffers must be released with Release while the context is current

    // Uploads the mesh (a current context needed). Returns false with a message on failure.
    bool Upload(const STVOMesh& mesh, bool uint32Indices, std::string& error);
    // Binds the attributes; absent ones get constant values (normal +z, uv 0, colour white).
    void Bind() const;
    // Issues the draw call of one range (triangles, or its edges as lines when wireframe).
    void DrawRange(const SDrawRange& range, bool wireframe) const;
    void Release();

    const std::vector<SDrawRange>& Ranges() const { return m_ranges; }
    bool Skinned() const { return m_bSkinned; }
    bool HasNormals() const { return m_attributes[eAttribNormal].bPresent; }
    uint32_t BonesPerVertex() const { return m_nBonesPerVertex; }

  private:
    void UploadStream(const STVOMesh& mesh, const CTVOData& data, GLuint interleavedBuffer,
                      SGpuAttribute& out);
    GLuint NewBuffer(GLenum target, const void* data, size_t bytes);
    void UploadEdges(const STVOMesh& mesh);

    std::vector<GLuint> m_buffers;
    SGpuAttribute m_attributes[eAttribCount];
    std::vector<SDrawRange> m_ranges;
    GLuint m_nIndexBuffer = 0;
    GLenum m_eIndexType = GL_UNSIGNED_SHORT;
    uint32_t m_nIndexSize = 2;
    GLuint m_nEdgeBuffer = 0;
    uint32_t m_nEdgeSize = 2;
    std::vector<uint32_t> m_edgeStart; // first edge index of each range
    bool m_bSkinned = false;
    uint32_t m_nBonesPerVertex = 0;
};
