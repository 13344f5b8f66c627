// Skins: the influence rule, the linear-time weight table against the plain iterator walk, and a
// skinned cylinder in the written file.
#include <maya/MDagPath.h>
#include <maya/MFnSkinCluster.h>

#include <cmath>

#include "BoneWeights.h"
#include "MayaTestSupport.h"
#include "SkinWeights.h"

using standin::Scene;

namespace
{
struct SRig
{
    int mesh, skin;
    std::vector<int> joints;
};

// A cylinder of 4 rings of 8 points (y = 0 to 3) on a chain of joints j0..j(n-1); ring 0 follows
// j0, ring 3 follows j2, the rings between are shared half and half. Vertex 0 also carries the
// six weights of the influence rule when there are six joints.
SRig AddSkinnedCylinder(int jointCount)
{
    SRig rig;
    int parent = 0;
    for (int j = 0; j < jointCount; ++j)
    {
        parent = Scene().Add(MFn::kJoint, "j" + std::to_string(j), parent);
        Scene().nodes[parent].translate = {0, j == 0 ? 0.0 : 1.5, 0};
        rig.joints.push_back(parent);
    }
    const int group = AddShadingGroup(MFn::kLambert, "skinLambert");
    const int transform = AddTransform("cyl");
    rig.mesh = Scene().Add(MFn::kMesh, "cylShape", transform);
    standin::SMesh& mesh = Scene().nodes[rig.mesh].mesh;
    std::vector<std::vector<double>> weights;
    for (int ring = 0; ring < 4; ++ring)
        for (int i = 0; i < 8; ++i)
        {
            mesh.points.push_back({std::cos(i * 0.785398), double(ring), std::sin(i * 0.785398)});
            mesh.normals.push_back({std::cos(i * 0.785398), 0.0, std::sin(i * 0.785398)});
            std::vector<double> w(jointCount, 0.0);
            w[std::min(ring, 2)] += ring == 1 || ring == 2 ? 0.5 : 1.0;
            if (ring == 1 || ring == 2)
                w[ring - 1] += 0.5;
            weights.push_back(w);
        }
    for (int ring = 0; ring < 3; ++ring)
        for (int i = 0; i < 8; ++i)
            mesh.faces.push_back({ring * 8 + i, ring * 8 + (i + 1) % 8, (ring + 1) * 8 + (i + 1) % 8, (ring + 1) * 8 + i});
    mesh.groups = {{group, {}}};
    if (jointCount == 6)
        weights[0] = {0.1, 0.3, 0.05, 0.2, 0.25, 0.1};
    rig.skin = Scene().Add(MFn::kSkinClusterFilter, "skinCluster1", -1);
    Scene().nodes[rig.skin].outputs = {rig.mesh};
    Scene().nodes[rig.skin].influences = rig.joints;
    Scene().nodes[rig.skin].weights[rig.mesh] = weights;
    return rig;
}
} // namespace

TEST(MayaBoneWeightsTest, KeepsTheFourLargestAndRenormalises)
{
    const std::vector<int> map = {10, 11, 12, 13, 14, 15};
    SBonedVtx v;
    const double six[] = {0.1, 0.3, 0.05, 0.2, 0.25, 0.1};
    EXPECT_TRUE(PickBoneWeights(six, 6, map, v));
    ASSERT_EQ(v.weights.size(), 4u);
    const int bones[] = {10, 11, 14, 13}; // 0.25 took the place of 0.05; the second 0.1 lost to the first
    const double kept[] = {0.1, 0.3, 0.25, 0.2};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(v.weights[i].bone, bones[i]);
        EXPECT_NEAR(v.weights[i].weight, kept[i] / 0.85, 1e-6);
    }

    const double nearlyOne[] = {0.5, 0.499995}, short9[] = {0.6, 0.3, -0.1}, none[] = {0, 0};
    EXPECT_FALSE(PickBoneWeights(nearlyOne, 2, map, v));
    EXPECT_FLOAT_EQ(v.weights[1].weight, 0.499995f);
    PickBoneWeights(short9, 3, {1, -1, 3}, v);
    ASSERT_EQ(v.weights.size(), 1u); // the unmapped influence and the negative weight are ignored
    EXPECT_FLOAT_EQ(v.weights[0].weight, 1.0f);
    PickBoneWeights(none, 2, map, v);
    EXPECT_TRUE(v.weights.empty());
}

TEST(MayaSkinWeightTableTest, EqualsTheStepByStepIteratorWithOneReadAVertex)
{
    standin::ResetScene();
    const SRig rig = AddSkinnedCylinder(6);
    MFnSkinCluster skin(MObject::StandInNode(rig.skin));
    MDagPath path;
    MDagPath::getAPathTo(MObject::StandInNode(rig.mesh), path);
    const CSkinWeightTable table(skin, path);
    EXPECT_EQ(Scene().weightReads, 32);
    ASSERT_EQ(table.InfluenceCount(), 6u);
    for (int v = 0; v < 32; ++v)
    {
        MDoubleArray stepped;
        ASSERT_TRUE(ReadVertexWeightsByStepping(skin, path, v, stepped));
        for (unsigned int j = 0; j < 6; ++j)
            EXPECT_EQ(table.Weights(v)[j], stepped[j]) << v << " " << j;
    }
    EXPECT_EQ(table.Weights(32), nullptr);
}

using MayaSkinTest = CMayaTest;

TEST_F(MayaSkinTest, ASkinnedCylinderCarriesItsJointsAndWeights)
{
    AddSkinnedCylinder(6);
    ASSERT_EQ(Export("bExportSkin=1"), MStatus::kSuccess);
    EXPECT_EQ(m_log.Count("Warning (cyl): Ignoring some bone influences. \nThe maximum number of bone influences a "
                          "vertex may have is 4."),
              1);
    CReadBack back(m_dir / "out.tvo");
    const STVONode& node = *back.Node("cyl");
    const STVOMesh& mesh = back.model.pMesh[node.nIdx];
    ASSERT_EQ(mesh.sBoneBatch.nBatchCnt, 1u);
    const auto positions = back.Stream(mesh, mesh.sVertex);
    const auto bones = back.Stream(mesh, mesh.sBoneIdx), weights = back.Stream(mesh, mesh.sBoneWeight);
    ASSERT_EQ(bones.size(), positions.size());
    for (size_t v = 0; v < positions.size(); ++v)
    {
        float total = 0.0f, onTop = 0.0f;
        for (uint32_t b = 0; b < mesh.sBoneIdx.n; ++b)
        {
            total += weights[v][b];
            const int joint = mesh.sBoneBatch.pnBatches[static_cast<int>(bones[v][b] + 0.5f)];
            if (weights[v][b] > 0 && std::string(back.model.pNode[joint].pszName) == "j2")
                onTop += weights[v][b];
        }
        EXPECT_NEAR(total, 1.0f, 1e-5) << v;
        if (positions[v][1] == 3.0f)
        {
            EXPECT_NEAR(onTop, 1.0f, 1e-5) << v; // the top ring follows j2 alone
        }
    }
}

TEST_F(MayaSkinTest, MissingMeshOrSkeletonEndsTheSkinButNotTheExport)
{
    const SRig rig = AddSkinnedCylinder(3);
    const int cylinder = Scene().nodes[rig.mesh].parents[0];
    Scene().selection = {cylinder};
    ASSERT_EQ(Export("bExportSkin=1", "selected.tvo", true), MStatus::kSuccess);
    EXPECT_TRUE(m_log.entries.end() == std::find_if(m_log.entries.begin(), m_log.entries.end(), [](const auto& e) {
                    return e.text.find("could not be found") != std::string::npos;
                }));
    CReadBack selected(m_dir / "selected.tvo");
    ASSERT_EQ(selected.model.nNumMesh, 1u);
    EXPECT_EQ(selected.model.pMesh[0].sBoneIdx.n, 0u);

    Scene().nodes[cylinder].intermediate = true;
    ASSERT_EQ(Export("bExportSkin=1"), MStatus::kSuccess);
    EXPECT_EQ(m_log.Count("Error: cylShape could not be found for skinning."), 1);
    EXPECT_TRUE(CReadBack(m_dir / "out.tvo").Node("j2"));

    Scene().nodes[cylinder].intermediate = false;
    Scene().nodes[rig.joints[1]].intermediate = true;
    ASSERT_EQ(Export("bExportSkin=1"), MStatus::kSuccess);
    EXPECT_EQ(m_log.Count("Error: Joint |j0|j1 could not be found for skinning."), 1);
    CReadBack noSkeleton(m_dir / "out.tvo");
    EXPECT_EQ(noSkeleton.model.pMesh[noSkeleton.Node("cyl")->nIdx].sBoneIdx.n, 0u);
}
