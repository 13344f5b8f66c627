// Flattening to world space (against golden digests) and bad bone batches.
#include <gtest/gtest.h>

#include <cmath>

#include "GoldenDigests.h"
#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

namespace
{
const uint32_t kFrames = 3;

// kFrames matrix keys: a rotation by angle x frame about z (or x), then a translation that moves dz
// a frame.
float* MatrixKeys(float angle, bool aboutX, float x, float y, float z, float dz = 0)
{
    std::vector<float> keys;
    for (uint32_t f = 0; f < kFrames; ++f)
    {
        QMXTMATRIXf r, t, m;
        if (aboutX)
            QMXTMatrixRotationXF(r, angle * f);
        else
            QMXTMatrixRotationZF(r, angle * f);
        QMXTMatrixMultiplyF(m, r, QMXTMatrixTranslationF(t, x, y, z + dz * f));
        keys.insert(keys.end(), m.f, m.f + 16);
    }
    return HeapCopy(keys);
}

// Mesh nodes: 0 a tilted triangle (interleaved) under node 6 under node 5; 1 a skinned mesh with
// two batches over bones 7 and 8; 2 a second instance of mesh 0. Then a light (3) hanging off the
// triangle, a camera (4), the hierarchy nodes and the bones, several of them animated through their
// matrix channel.
struct SScene
{
    SMeshHolder h{2};
    CQMXTModelTVO& s = h.scene;

    STVONode& Node(uint32_t i, const char* name, int32_t parent, int32_t idx = -1, uint32_t flags = 0)
    {
        STVONode& n = s.pNode[i];
        n.pszName = HeapString(name);
        n.nIdxParent = parent;
        n.nIdx = idx;
        n.nAnimationFlags = flags;
        return n;
    }

    SScene()
    {
        s.nNumFrame = kFrames;
        s.nNumNode = 9;
        s.nNumMeshNode = 3;
        s.pNode = static_cast<STVONode*>(std::calloc(s.nNumNode, sizeof(STVONode)));
        Node(0, "triangle", 6, 0, eTVOHasPositionAnimation).pfAnimPosition =
            HeapCopy(std::vector<float>{0, 0, 0, 1, 0, 0, 2, 0, 0});
        Node(1, "skin", -1, 1).pfAnimPosition = HeapCopy(std::vector<float>{0, 0, 1});
        Node(2, "instance", -1, 0).pfAnimPosition = HeapCopy(std::vector<float>{10, 0, 0});
        Node(3, "lamp", 0, 0).pfAnimPosition = HeapCopy(std::vector<float>{0, 0, 7});
        Node(4, "eye", -1, 0);
        Node(5, "root", -1, -1, eTVOHasMatrixAnimation).pfAnimMatrix = MatrixKeys(0.3f, false, 1, 2, 3, 1);
        STVONode& arm = Node(6, "arm", 5);
        arm.pfAnimPosition = HeapCopy(std::vector<float>{0, 5, 0});
        arm.pfAnimScale = HeapCopy(std::vector<float>{2, 1, 1, 0, 0, 0, 0});
        Node(7, "bone0", -1, -1, eTVOHasMatrixAnimation).pfAnimMatrix = MatrixKeys(0.5f, false, 1, 0, 0);
        Node(8, "bone1", 7, -1, eTVOHasMatrixAnimation).pfAnimMatrix = MatrixKeys(0.4f, true, 0, 1, 0);
        s.nNumLight = 1;
        s.pLight = static_cast<STVOLight*>(std::calloc(1, sizeof(STVOLight)));
        s.nNumCamera = 1;
        s.pCamera = static_cast<STVOCamera*>(std::calloc(1, sizeof(STVOCamera)));

        STVOMesh& m0 = s.pMesh[0];
        m0.nNumVertex = 3;
        m0.nNumFaces = 1;
        m0.sFaces = MakeIndices(EQMXTDataUnsignedShort, {0, 1, 2});
        m0.sVertex = MakeStream(EQMXTDataFloat, 3, {{0, 0, 0}, {1, 0, 1}, {0, 1, 0}});
        const float r = 1 / std::sqrt(2.0f);
        m0.sNormals = MakeStream(EQMXTDataFloat, 3, {{-r, 0, r}, {-r, 0, r}, {-r, 0, r}});
        QMXTModelTVOToggleInterleaved(m0, 4);

        STVOMesh& m1 = s.pMesh[1];
        m1.nNumVertex = 7;
        m1.nNumFaces = 4; // two double-sided triangles: each batch's pair shares its vertices
        m1.sFaces = MakeIndices(EQMXTDataUnsignedShort, {0, 1, 2, 2, 1, 0, 3, 4, 5, 5, 4, 3});
        m1.sVertex = MakeStream(
            EQMXTDataFloat, 3, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 0, 1}, {0, 2, 1}, {9, 9, 9}});
        m1.sNormals = MakeStream(
            EQMXTDataFloat, 3, {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {0, r, r}, {r, 0, r}, {0, 0, 1}});
        m1.sBoneIdx =
            MakeStream(EQMXTDataUnsignedByte, 2, {{0, 1}, {0, 1}, {1, 0}, {0, 1}, {1, 0}, {1, 1}, {0, 0}});
        m1.sBoneWeight = MakeStream(
            EQMXTDataFloat, 2, {{1, 0}, {0.5f, 0.5f}, {0.75f, 0.25f}, {1, 0}, {0.3f, 0.7f}, {1, 0}, {1, 0}});
        CQMXTBoneBatches& b = m1.sBoneBatch;
        b.nBatchCnt = 2;
        b.nBatchBoneMax = 2;
        b.pnBatches = HeapCopy(std::vector<uint32_t>{7, 8, 8, 7}); // the second batch lists them reversed
        b.pnBatchBoneCnt = HeapCopy(std::vector<uint32_t>{2, 2});
        b.pnBatchOffset = HeapCopy(std::vector<uint32_t>{0, 2});
    }
};
} // namespace

// The scene flattened at frames 0 and 2, the skinned mesh as a list and as strips: static meshes baked
// at their world matrix, skinned ones blended by their batch bones, mesh nodes as identity roots.
TEST(TransformFlatten, MatchesGoldenDigests)
{
    CGoldenDigests golden(
        "flatten.txt",
        "# Digests of QMXTModelTVOFlattenToWorldSpace output (every vertex's position and normal,\n"
        "# then every node's parent and world matrix at every frame, rounded to 1/1000) for the scene\n"
        "# of tests/tools/TransformFlattenTest.cpp, one line a case. Written by the test with\n"
        "# OSTREX_WRITE_GOLDEN=1 from the code at ebb7b7c, whose output matched the test's former\n"
        "# hand-computed world matrices and bone blends within 1e-4.\n");
    auto add = [&golden](const float* f, int n)
    {
        for (int i = 0; i < n; ++i)
            golden.AddValue(static_cast<uint64_t>(std::llround(f[i] * 1000.0f)));
    };
    for (bool strips : {false, true})
        for (uint32_t frame : {0u, 2u})
        {
            SScene scene;
            if (strips)
            {
                ASSERT_EQ(QMXTModelTVOToggleStrips(scene.s.pMesh[1]), 0);
            }
            ASSERT_EQ(scene.s.InitImpl(), 0);
            scene.s.SetFrame(float(frame));
            CQMXTModelTVO d;
            ASSERT_EQ(QMXTModelTVOFlattenToWorldSpace(scene.s, d), 0);
            ASSERT_EQ(d.nNumMesh, 3u);
            for (uint32_t i = 0; i < d.nNumMesh; ++i)
                for (uint32_t v = 0; v < d.pMesh[i].nNumVertex; ++v)
                {
                    add(ReadVertex(d.pMesh[i], d.pMesh[i].sVertex, v).data(), 3);
                    add(ReadVertex(d.pMesh[i], d.pMesh[i].sNormals, v).data(), 3);
                }
            for (uint32_t f = 0; f < kFrames; ++f)
            {
                d.SetFrame(float(f));
                for (uint32_t node = 0; node < d.nNumNode; ++node)
                {
                    golden.AddValue(static_cast<uint64_t>(d.pNode[node].nIdxParent));
                    add(d.GetWorldMatrixNoCache(d.pNode[node]).f, 16);
                }
            }
            golden.EndLine(std::string(strips ? "strips" : "list") + "@" + std::to_string(frame));
            d.Destroy();
        }
    golden.Check();
}

TEST(TransformFlatten, BadBatchesFailAndLeaveTheDestinationEmpty)
{
    SScene scene;
    scene.s.pMesh[1].sBoneBatch.pnBatches[3] = 42; // no such node
    ASSERT_EQ(scene.s.InitImpl(), 0);
    CQMXTModelTVO d;
    EXPECT_EQ(QMXTModelTVOFlattenToWorldSpace(scene.s, d), 1);
    EXPECT_FALSE(d.IsLoaded());
    EXPECT_EQ(d.nNumMesh, 0u);
    EXPECT_EQ(d.pNode, nullptr);
}
