// The skin weights of every vertex of one skinned mesh, in Maya's influence order.
//
// CSkinWeightTable reads them in one forward pass of the geometry iterator (one getWeights per
// vertex), so a mesh costs time linear in its vertices; the skin pass then looks corners up by
// vertex id. ReadVertexWeightsByStepping is the plain way (reset the iterator and step to the
// vertex) kept as the reference the table must equal: it costs time linear in the vertex id per call.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MDoubleArray.h>

#include <vector>

class MFnSkinCluster;

class CSkinWeightTable
{
  public:
    CSkinWeightTable(const MFnSkinCluster& skin, const MDagPath& path);
    // The weights of a vertex (InfluenceCount values), or null for an unknown vertex id.
    const double* Weights(int vertexId) const;
    unsigned int InfluenceCount() const { return m_influences; }

  private:
    std::vector<double> m_weights;
    std::vector<bool> m_known;
    unsigned int m_influences = 0;
};

bool ReadVertexWeightsByStepping(const MFnSkinCluster& skin, const MDagPath& path, int vertexId, MDoubleArray& weights);
