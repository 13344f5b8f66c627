// Bone influences of smooth-skinned meshes, one SBonedVtx per triangle corner in the mesh's
// position order.
#include "Ostrex.h"

#include <maya/MDagPath.h>
#include <maya/MDagPathArray.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnMesh.h>
#include <maya/MFnSkinCluster.h>

#include "BoneWeights.h"
#include "Log.h"
#include "MeshWalk.h"
#include "OptionsRules.h"
#include "SkinWeights.h"

namespace
{
class CSkinCorners : public IMeshCornerVisitor
{
  public:
    CSkinCorners(const CSkinWeightTable& table, const std::vector<int>& influenceNodes, SModifier& skin)
        : m_table(table), m_influenceNodes(influenceNodes), m_skin(skin)
    {
    }
    void BeginSet(const MObject&) override {}
    void Corner(MItMeshPolygon&, const MPoint&, int vertexId, int) override
    {
        SBonedVtx vertex;
        if (const double* weights = m_table.Weights(vertexId))
            m_tooMany = PickBoneWeights(weights, m_table.InfluenceCount(), m_influenceNodes, vertex) || m_tooMany;
        m_skin.vertices.push_back(std::move(vertex));
    }
    void EndTriangle() override {}
    bool TooMany() const { return m_tooMany; }

  private:
    const CSkinWeightTable& m_table;
    const std::vector<int>& m_influenceNodes;
    SModifier& m_skin;
    bool m_tooMany = false;
};
} // namespace

MStatus Ostrex::ConvertSkin(MFnSkinCluster& skin)
{
    if (!ExtractedStreams(m_options).skins)
        return MStatus(MStatus::kSuccess);
    // A missing mesh or joint ends the whole cluster.
    for (unsigned int i = 0; i < skin.numOutputConnections(); ++i)
        if (!ConvertSkinConnection(skin, i))
            return MStatus(MStatus::kFailure);
    return MStatus(MStatus::kSuccess);
}

bool Ostrex::ConvertSkinConnection(MFnSkinCluster& skin, unsigned int connection)
{
    MDagPath path;
    skin.getPathAtIndex(skin.indexForOutputConnection(connection), path);
    MDagPathArray influences;
    const unsigned int influenceCount = skin.influenceObjects(influences);

    const int meshIndex = GetObjectIDByPath(path.fullPathName());
    if (meshIndex < 0)
    {
        if (!m_bExportSelection)
            Log(eLogError, "Error: %s could not be found for skinning.", path.partialPathName().asChar());
        return false;
    }
    std::vector<int> influenceNodes;
    for (unsigned int j = 0; j < influenceCount; ++j)
    {
        const int joint = GetObjectIDByPath(influences[j].fullPathName());
        if (joint < 0)
        {
            if (!m_bExportSelection)
                Log(eLogError, "Error: Joint %s could not be found for skinning.", influences[j].fullPathName().asChar());
            return false;
        }
        influenceNodes.push_back(joint);
    }

    CNode& node = m_pContent->nodes[static_cast<size_t>(meshIndex)];
    SModifier record;
    record.name = "Skin";
    record.kind = eModifierSkin;
    const CSkinWeightTable table(skin, path);
    CSkinCorners corners(table, influenceNodes, record);
    MFnMesh mesh(path);
    if (!WalkMeshCorners(mesh, corners))
    {
        Log(eLogError, "Failed to get connected sets and members for '%s'", node.name.c_str());
        return false;
    }
    if (record.vertices.size() != node.geom.positions.size())
    {
        Log(eLogError, "Error (%s): Discarding skin info due to mismatch in the number of vertices in the skin and the mesh.",
            node.name.c_str());
        return true;
    }
    if (corners.TooMany())
        Log(eLogWarning, "Warning (%s): Ignoring some bone influences. \nThe maximum number of bone influences a vertex may have is %i.",
            node.name.c_str(), kMaxBoneInfluences);
    node.modifiers.push_back(std::move(record));
    return true;
}
