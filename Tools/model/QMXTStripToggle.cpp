// Conversion between indexed triangle strips and an indexed triangle list.
#include <cstdlib>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"
#include "QMXTLargeArray.h"

namespace
{
class CIndexWriter
{
  public:
    CIndexWriter(uint8_t* data, uint32_t type) : m_pData(data), m_eType(type), m_nSize(QMXTModelTVODataTypeSize(type))
    {
    }
    void Put(uint32_t index)
    {
        QMXTVertexWrite(m_pData + static_cast<size_t>(m_nWritten++) * m_nSize, m_eType, index);
    }
    uint32_t Written() const { return m_nWritten; }

  private:
    uint8_t* m_pData;
    uint32_t m_eType;
    uint32_t m_nSize;
    uint32_t m_nWritten = 0;
};

bool StripLengthsValid(const STVOMesh& mesh)
{
    if (!mesh.pnStripLength)
        return false;
    uint64_t sum = 0;
    for (uint32_t s = 0; s < mesh.nNumStrips; ++s)
    {
        if (mesh.pnStripLength[s] == 0)
            return false;
        sum += mesh.pnStripLength[s];
    }
    return sum == mesh.nNumFaces;
}

int StripsToList(STVOMesh& mesh)
{
    if (!StripLengthsValid(mesh))
    {
        QMXTErrorOutputDebug("ToggleStrips: the strip lengths do not add up to %u triangles.\n", mesh.nNumFaces);
        return 1;
    }
    const uint32_t type = mesh.sFaces.eType;
    uint8_t* list = static_cast<uint8_t*>(
        QMXTMallocArray(static_cast<size_t>(mesh.nNumFaces) * 3, QMXTModelTVODataTypeSize(type)));
    if (!list)
        return 1;
    CIndexWriter out(list, type);
    uint32_t start = 0; // position of the strip's first index
    for (uint32_t s = 0; s < mesh.nNumStrips; ++s)
    {
        const uint32_t length = mesh.pnStripLength[s];
        for (uint32_t k = 0; k < 3; ++k)
            out.Put(QMXTMeshIndex(mesh, start + k));
        // Every further index adds (k - 1, k - 2, k), the same corner order for every triangle.
        for (uint32_t k = 3; k < length + 2; ++k)
        {
            out.Put(QMXTMeshIndex(mesh, start + k - 1));
            out.Put(QMXTMeshIndex(mesh, start + k - 2));
            out.Put(QMXTMeshIndex(mesh, start + k));
        }
        start += length + 2;
    }
    std::free(mesh.sFaces.pData);
    mesh.sFaces.pData = list;
    std::free(mesh.pnStripLength);
    mesh.pnStripLength = nullptr;
    mesh.nNumStrips = 0;
    mesh.ePrimitiveType = eTVOIndexedTriangleList;
    return 0;
}

// Tells, for triangles met in increasing order, whether a triangle is the first of a bone batch
// other than the first batch.
class CBatchStarts
{
  public:
    explicit CBatchStarts(const CQMXTBoneBatches& b) : m_rBatches(b) {}
    bool IsStart(uint32_t triangle)
    {
        while (m_nNext < m_rBatches.nBatchCnt && m_rBatches.pnBatchOffset &&
               m_rBatches.pnBatchOffset[m_nNext] < triangle)
            ++m_nNext;
        return m_nNext < m_rBatches.nBatchCnt && m_rBatches.pnBatchOffset &&
               m_rBatches.pnBatchOffset[m_nNext] == triangle;
    }

  private:
    const CQMXTBoneBatches& m_rBatches;
    uint32_t m_nNext = 1;
};

int ListToStrips(STVOMesh& mesh)
{
    if (mesh.nNumFaces == 0)
        return 0;
    uint32_t* lengths = static_cast<uint32_t*>(QMXTMallocArray(mesh.nNumFaces, sizeof(uint32_t)));
    if (!lengths)
        return 1;
    // Rewritten in place: after t triangles at most 3t indices have been written, so the writer
    // never overtakes the triangle being read.
    CIndexWriter out(mesh.sFaces.pData, mesh.sFaces.eType);
    CBatchStarts batchStarts(mesh.sBoneBatch);
    uint32_t strips = 0, length = 0;
    uint32_t beforeLast = 0, last = 0; // the strip's last two indices
    for (uint32_t t = 0; t < mesh.nNumFaces; ++t)
    {
        const uint32_t a = QMXTMeshIndex(mesh, 3 * t), b = QMXTMeshIndex(mesh, 3 * t + 1),
                       c = QMXTMeshIndex(mesh, 3 * t + 2);
        // The strip draws its odd triangles as (last, before last, new), its even ones as
        // (before last, last, new).
        const bool odd = length % 2 == 1;
        const bool extends = length > 0 && !batchStarts.IsStart(t) &&
                             (odd ? (a == last && b == beforeLast) : (a == beforeLast && b == last));
        if (extends)
        {
            out.Put(c);
            ++length;
        }
        else
        {
            if (length > 0)
                lengths[strips++] = length;
            out.Put(a);
            out.Put(b);
            out.Put(c);
            length = 1;
            last = b;
        }
        beforeLast = last;
        last = c;
    }
    lengths[strips++] = length;

    const size_t bytes = static_cast<size_t>(out.Written()) * QMXTModelTVODataTypeSize(mesh.sFaces.eType);
    if (void* shrunk = QMXTLargeRealloc(mesh.sFaces.pData, bytes))
        mesh.sFaces.pData = static_cast<uint8_t*>(shrunk);
    if (void* shrunk = QMXTLargeRealloc(lengths, static_cast<size_t>(strips) * sizeof(uint32_t)))
        lengths = static_cast<uint32_t*>(shrunk);
    std::free(mesh.pnStripLength);
    mesh.pnStripLength = lengths;
    mesh.nNumStrips = strips;
    mesh.ePrimitiveType = eTVOIndexedTriangleStrip;
    return 0;
}
} // namespace

int QMXTModelTVOToggleStrips(STVOMesh& mesh)
{
    if (!QMXTMeshIndexed(mesh))
    {
        QMXTErrorOutputDebug("ToggleStrips: the mesh has no index array.\n");
        return 1;
    }
    return mesh.nNumStrips ? StripsToList(mesh) : ListToStrips(mesh);
}
