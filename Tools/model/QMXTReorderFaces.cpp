// Permutation of the corners of every triangle of an indexed triangle list.
#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"

int QMXTModelTVOReorderFaces(STVOMesh& mesh, uint32_t i0, uint32_t i1, uint32_t i2)
{
    const uint32_t order[3] = {i0, i1, i2};
    if (i0 > 2 || i1 > 2 || i2 > 2 || i0 == i1 || i1 == i2 || i0 == i2)
    {
        QMXTErrorOutputDebug("ReorderFaces: (%u, %u, %u) is not an order of the corners 0, 1, 2.\n", i0, i1, i2);
        return 1;
    }
    if (!QMXTMeshIndexed(mesh) || mesh.nNumStrips != 0)
    {
        QMXTErrorOutputDebug("ReorderFaces: the mesh is not an indexed triangle list.\n");
        return 1;
    }
    const uint32_t size = QMXTModelTVODataTypeSize(mesh.sFaces.eType);
    for (uint32_t t = 0; t < mesh.nNumFaces; ++t)
    {
        const uint32_t old[3] = {QMXTMeshIndex(mesh, 3 * t), QMXTMeshIndex(mesh, 3 * t + 1),
                                 QMXTMeshIndex(mesh, 3 * t + 2)};
        for (uint32_t c = 0; c < 3; ++c)
            QMXTVertexWrite(mesh.sFaces.pData + (static_cast<size_t>(3) * t + c) * size, mesh.sFaces.eType,
                            old[order[c]]);
    }
    return 0;
}
