#include "TVOGpuMesh.h"

#include <algorithm>
#include <cstring>

namespace
{
// GLES 2 attribute format of a stored type: false for types converted on load.
bool NativeFormat(uint32_t type, GLenum& glType, GLboolean& normalised)
{
    normalised = GL_FALSE;
    switch (type)
    {
    case EQMXTDataFloat:
        glType = GL_FLOAT;
        return true;
    case EQMXTDataUnsignedShort:
        glType = GL_UNSIGNED_SHORT;
        return true;
    case EQMXTDataUBYTE4:
    case EQMXTDataUnsignedByte:
        glType = GL_UNSIGNED_BYTE;
        return true;
    case EQMXTDataRGBA:
    case EQMXTDataARGB:
    case EQMXTDataD3DCOLOR:
        glType = GL_UNSIGNED_BYTE;
        break; // the four bytes in file order
    case EQMXTDataShort:
        glType = GL_SHORT;
        return true;
    case EQMXTDataByte:
        glType = GL_BYTE;
        return true;
    case EQMXTDataShortNorm:
        glType = GL_SHORT;
        break;
    case EQMXTDataByteNorm:
        glType = GL_BYTE;
        break;
    case EQMXTDataUnsignedByteNorm:
        glType = GL_UNSIGNED_BYTE;
        break;
    case EQMXTDataUnsignedShortNorm:
        glType = GL_UNSIGNED_SHORT;
        break;
    default:
        return false;
    }
    normalised = GL_TRUE;
    return true;
}
} // namespace

CTVOGpuMesh::~CTVOGpuMesh() = default;

GLuint CTVOGpuMesh::NewBuffer(GLenum target, const void* data, size_t bytes)
{
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(target, buffer);
    glBufferData(target, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
    m_buffers.push_back(buffer);
    return buffer;
}

void CTVOGpuMesh::UploadStream(const STVOMesh& m, const CTVOData& d, GLuint interleavedBuffer,
                               SGpuAttribute& out)
{
    if (!TVOStreamPresent(m, d) || m.nNumVertex == 0)
        return;
    out.bPresent = true;
    if (NativeFormat(d.eType, out.eType, out.bNormalised))
    {
        out.nSize = static_cast<GLint>(QMXTModelTVODataTypeComponentCount(d.eType) == 4 ? 4 : d.n);
        out.nStride = static_cast<GLsizei>(d.nStride);
        if (m.pInterleaved)
        {
            out.nBuffer = interleavedBuffer;
            out.nOffset = QMXTModelTVODataOffset(d);
        }
        else
            out.nBuffer = NewBuffer(GL_ARRAY_BUFFER, d.pData, static_cast<size_t>(d.nStride) * m.nNumVertex);
        return;
    }
    std::vector<float> floats(static_cast<size_t>(m.nNumVertex) * 4);
    for (uint32_t v = 0; v < m.nNumVertex; ++v)
        QMXTVertexRead(&floats[4 * static_cast<size_t>(v)], TVOStreamElement(m, d, v), d.eType, d.n);
    out.eType = GL_FLOAT;
    out.nSize = 4;
    out.nStride = 16;
    out.nBuffer = NewBuffer(GL_ARRAY_BUFFER, floats.data(), floats.size() * sizeof(float));
}

bool CTVOGpuMesh::Upload(const STVOMesh& m, bool uint32Indices, std::string& error)
{
    m_ranges = TVODrawRanges(m);
    const GLuint interleaved = m.pInterleaved && m.nNumVertex
                                   ? NewBuffer(GL_ARRAY_BUFFER, m.pInterleaved,
                                               static_cast<size_t>(m.sVertex.nStride) * m.nNumVertex)
                                   : 0;
    UploadStream(m, m.sVertex, interleaved, m_attributes[eAttribPosition]);
    UploadStream(m, m.sNormals, interleaved, m_attributes[eAttribNormal]);
    if (m.nNumUVW && m.psUVW)
        UploadStream(m, m.psUVW[0], interleaved, m_attributes[eAttribUV]);
    UploadStream(m, m.sVtxColours, interleaved, m_attributes[eAttribColour]);
    m_bSkinned = TVOStreamPresent(m, m.sBoneIdx) && TVOStreamPresent(m, m.sBoneWeight);
    if (m_bSkinned)
    {
        UploadStream(m, m.sBoneIdx, interleaved, m_attributes[eAttribBoneIndex]);
        UploadStream(m, m.sBoneWeight, interleaved, m_attributes[eAttribBoneWeight]);
        const uint32_t n = std::min(m.sBoneIdx.n, m.sBoneWeight.n);
        const bool packed = QMXTModelTVODataTypeComponentCount(m.sBoneIdx.eType) > 1;
        m_nBonesPerVertex = packed ? eQMXTMaxBonesPerVertex : std::min<uint32_t>(n, eQMXTMaxBonesPerVertex);
    }
    if (TVOMeshIndexed(m))
    {
        const uint32_t count = QMXTModelTVOCountIndices(m);
        const bool wide = m.nNumVertex > eTVOMaxShortIndexedVertices;
        if (wide && !uint32Indices)
        {
            error = "a mesh of " + std::to_string(m.nNumVertex) +
                    " vertices needs 32-bit indices, which this OpenGL ES does not offer";
            return false;
        }
        std::vector<uint8_t> bytes(static_cast<size_t>(count) * (wide ? 4 : 2));
        for (uint32_t k = 0; k < count; ++k)
        {
            const uint32_t v = TVOMeshVertexAt(m, k);
            if (wide)
                std::memcpy(&bytes[4 * static_cast<size_t>(k)], &v, 4);
            else
            {
                const uint16_t s = static_cast<uint16_t>(v);
                std::memcpy(&bytes[2 * static_cast<size_t>(k)], &s, 2);
            }
        }
        m_eIndexType = wide ? GL_UNSIGNED_INT : GL_UNSIGNED_SHORT;
        m_nIndexSize = wide ? 4 : 2;
        m_nIndexBuffer = NewBuffer(GL_ELEMENT_ARRAY_BUFFER, bytes.data(), bytes.size());
    }
    else if (m.nNumVertex > eTVOMaxShortIndexedVertices && !uint32Indices)
    {
        error = "a mesh of " + std::to_string(m.nNumVertex) + " vertices is too big for the wireframe";
        return false;
    }
    UploadEdges(m);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    return true;
}

// Edges of every triangle as the GPU assembles them (strips: triangle k is corners k, k+1, k+2),
// as a line index list in the index type of the mesh.
void CTVOGpuMesh::UploadEdges(const STVOMesh& m)
{
    const bool wide = m.nNumVertex > eTVOMaxShortIndexedVertices;
    std::vector<uint32_t> edges;
    for (const SDrawRange& r : m_ranges)
    {
        m_edgeStart.push_back(static_cast<uint32_t>(edges.size()));
        const uint32_t triangles = r.bStrip ? r.nCount - 2 : r.nCount / 3;
        for (uint32_t t = 0; t < triangles; ++t)
        {
            const uint32_t base = r.nFirst + (r.bStrip ? t : 3 * t);
            const uint32_t c[3] = {TVOMeshVertexAt(m, base), TVOMeshVertexAt(m, base + 1),
                                   TVOMeshVertexAt(m, base + 2)};
            edges.insert(edges.end(), {c[0], c[1], c[1], c[2], c[2], c[0]});
        }
    }
    m_edgeStart.push_back(static_cast<uint32_t>(edges.size()));
    if (edges.empty())
        return;
    m_nEdgeSize = wide ? 4 : 2;
    if (wide)
    {
        m_nEdgeBuffer = NewBuffer(GL_ELEMENT_ARRAY_BUFFER, edges.data(), edges.size() * 4);
        return;
    }
    std::vector<uint16_t> narrow(edges.begin(), edges.end());
    m_nEdgeBuffer = NewBuffer(GL_ELEMENT_ARRAY_BUFFER, narrow.data(), narrow.size() * 2);
}

void CTVOGpuMesh::Bind() const
{
    static const float kDefaults[eAttribCount][4] = {{0, 0, 0, 1}, {0, 0, 1, 0}, {0, 0, 0, 1},
                                                     {1, 1, 1, 1}, {0, 0, 0, 0}, {0, 0, 0, 0}};
    for (GLuint a = 0; a < eAttribCount; ++a)
    {
        const SGpuAttribute& at = m_attributes[a];
        if (!at.bPresent)
        {
            glDisableVertexAttribArray(a);
            glVertexAttrib4fv(a, kDefaults[a]);
            continue;
        }
        glBindBuffer(GL_ARRAY_BUFFER, at.nBuffer);
        glEnableVertexAttribArray(a);
        glVertexAttribPointer(a, at.nSize, at.eType, at.bNormalised, at.nStride,
                              reinterpret_cast<const void*>(at.nOffset));
    }
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void CTVOGpuMesh::DrawRange(const SDrawRange& r, bool wireframe) const
{
    if (wireframe)
    {
        size_t i = 0;
        while (i < m_ranges.size() && (m_ranges[i].nFirst != r.nFirst || m_ranges[i].nCount != r.nCount))
            ++i;
        if (i == m_ranges.size() || !m_nEdgeBuffer)
            return;
        const GLenum type = m_nEdgeSize == 4 ? GL_UNSIGNED_INT : GL_UNSIGNED_SHORT;
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_nEdgeBuffer);
        glDrawElements(GL_LINES, static_cast<GLsizei>(m_edgeStart[i + 1] - m_edgeStart[i]), type,
                       reinterpret_cast<const void*>(static_cast<size_t>(m_edgeStart[i]) * m_nEdgeSize));
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        return;
    }
    const GLenum mode = r.bStrip ? GL_TRIANGLE_STRIP : GL_TRIANGLES;
    if (!m_nIndexBuffer)
    {
        glDrawArrays(mode, static_cast<GLint>(r.nFirst), static_cast<GLsizei>(r.nCount));
        return;
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_nIndexBuffer);
    glDrawElements(mode, static_cast<GLsizei>(r.nCount), m_eIndexType,
                   reinterpret_cast<const void*>(static_cast<size_t>(r.nFirst) * m_nIndexSize));
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

void CTVOGpuMesh::Release()
{
    if (!m_buffers.empty())
        glDeleteBuffers(static_cast<GLsizei>(m_buffers.size()), m_buffers.data());
    m_buffers.clear();
    m_nIndexBuffer = m_nEdgeBuffer = 0;
}
