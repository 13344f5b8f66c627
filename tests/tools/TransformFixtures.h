// Helpers of the transformation tests: meshes built from plain values on the C heap, and readers
// that look at a mesh's bytes independently of the code under test.
#pragma once

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "QMXTModelTVO.h"
#include "QMXTVertexData.h"

using Vec4 = std::array<float, 4>;
using Tri = std::array<uint32_t, 3>;

template <typename T> T* HeapCopy(const std::vector<T>& v)
{
    T* p = static_cast<T*>(std::malloc(v.size() * sizeof(T) + 1));
    if (!v.empty())
        std::memcpy(p, v.data(), v.size() * sizeof(T));
    return p;
}

inline char* HeapString(const char* s)
{
    return HeapCopy(std::vector<char>(s, s + std::strlen(s) + 1));
}

// A stream of values.size() vertices, n components of type each.
inline CTVOData MakeStream(uint32_t type, uint32_t n, const std::vector<Vec4>& values)
{
    CTVOData d;
    d.eType = static_cast<EQMXTDataType>(type);
    d.n = n;
    d.nStride = QMXTModelTVODataTypeSize(type) * n;
    d.pData = static_cast<uint8_t*>(std::calloc(values.size() + 1, d.nStride));
    const uint32_t components = n * QMXTModelTVODataTypeComponentCount(type); // packed: all of them
    for (size_t v = 0; v < values.size(); ++v)
        QMXTVertexWrite(d.pData + v * d.nStride, type, components, values[v].data());
    return d;
}

inline CTVOData MakeIndices(uint32_t type, const std::vector<uint32_t>& indices)
{
    CTVOData d;
    d.eType = static_cast<EQMXTDataType>(type);
    d.n = 1;
    d.nStride = QMXTModelTVODataTypeSize(type);
    d.pData = static_cast<uint8_t*>(std::calloc(indices.size() + 1, d.nStride));
    for (size_t k = 0; k < indices.size(); ++k)
        QMXTVertexWrite(d.pData + k * d.nStride, type, indices[k]);
    return d;
}

// Vertex v of a stream, whether the mesh is interleaved (pData an offset) or not.
inline Vec4 ReadVertex(const STVOMesh& mesh, const CTVOData& s, uint32_t v)
{
    const uint8_t* base = mesh.pInterleaved ? mesh.pInterleaved + reinterpret_cast<uintptr_t>(s.pData) : s.pData;
    Vec4 out;
    QMXTVertexRead(out.data(), base + static_cast<size_t>(v) * s.nStride, s.eType, s.n);
    return out;
}

inline std::vector<uint32_t> ReadIndices(const STVOMesh& mesh)
{
    std::vector<uint32_t> out(QMXTModelTVOCountIndices(mesh));
    for (size_t k = 0; k < out.size(); ++k)
        QMXTVertexRead(out[k], mesh.sFaces.pData + k * QMXTModelTVODataTypeSize(mesh.sFaces.eType), mesh.sFaces.eType);
    return out;
}

inline std::vector<Tri> ListTriangles(const std::vector<uint32_t>& idx)
{
    std::vector<Tri> t;
    for (size_t k = 0; k + 2 < idx.size(); k += 3)
        t.push_back({idx[k], idx[k + 1], idx[k + 2]});
    return t;
}

// Triangles of strips as the hardware draws them (odd triangles swap their first two corners).
inline std::vector<Tri> HardwareStripTriangles(const std::vector<uint32_t>& idx, const std::vector<uint32_t>& lengths)
{
    std::vector<Tri> t;
    size_t start = 0;
    for (uint32_t len : lengths)
    {
        for (uint32_t k = 0; k < len; ++k)
        {
            const uint32_t a = idx[start + k], b = idx[start + k + 1], c = idx[start + k + 2];
            t.push_back(k % 2 ? Tri{b, a, c} : Tri{a, b, c});
        }
        start += len + 2;
    }
    return t;
}

// A scene that owns one or more meshes and frees them, whether or not it was ever loaded.
struct SMeshHolder
{
    CQMXTModelTVO scene;
    explicit SMeshHolder(uint32_t meshes = 1)
    {
        scene.nNumMesh = meshes;
        scene.pMesh = static_cast<STVOMesh*>(std::calloc(meshes, sizeof(STVOMesh)));
    }
    ~SMeshHolder()
    {
        if (scene.InitImpl() == 0)
            scene.Destroy();
    }
    STVOMesh& mesh(uint32_t i = 0) { return scene.pMesh[i]; }
};
