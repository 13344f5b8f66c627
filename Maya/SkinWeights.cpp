#include "SkinWeights.h"

#include <maya/MFnSkinCluster.h>
#include <maya/MItGeometry.h>
#include <maya/MObject.h>

CSkinWeightTable::CSkinWeightTable(const MFnSkinCluster& skin, const MDagPath& path)
{
    MStatus status;
    MItGeometry it(path, &status);
    if (!status)
        return;
    const int count = it.count();
    if (count <= 0)
        return;
    m_known.assign(static_cast<size_t>(count), false);
    MDoubleArray weights;
    for (; !it.isDone(); it.next())
    {
        const int vertex = it.index();
        unsigned int influences = 0;
        if (vertex < 0 || vertex >= count || skin.getWeights(path, it.currentItem(), weights, influences) != MStatus::kSuccess)
            continue;
        if (m_weights.empty())
        {
            m_influences = influences;
            m_weights.assign(static_cast<size_t>(count) * influences, 0.0);
        }
        if (influences != m_influences || weights.length() < influences)
            continue;
        for (unsigned int j = 0; j < influences; ++j)
            m_weights[static_cast<size_t>(vertex) * influences + j] = weights[j];
        m_known[static_cast<size_t>(vertex)] = true;
    }
}

const double* CSkinWeightTable::Weights(int vertexId) const
{
    if (vertexId < 0 || static_cast<size_t>(vertexId) >= m_known.size() || !m_known[static_cast<size_t>(vertexId)])
        return nullptr;
    return m_weights.data() + static_cast<size_t>(vertexId) * m_influences;
}

bool ReadVertexWeightsByStepping(const MFnSkinCluster& skin, const MDagPath& path, int vertexId, MDoubleArray& weights)
{
    MStatus status;
    MItGeometry it(path, &status);
    if (!status || vertexId < 0)
        return false;
    it.reset();
    for (int i = 0; i < vertexId && !it.isDone(); ++i)
        it.next();
    if (it.isDone())
        return false;
    unsigned int influences = 0;
    return skin.getWeights(path, it.currentItem(), weights, influences) == MStatus::kSuccess;
}
