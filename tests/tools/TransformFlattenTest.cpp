// Flattening to world space, and the deep copies it is made of.
#include <gtest/gtest.h>

#include <cmath>

#include "QMXTModelTVOTransform.h"
#include "TransformFixtures.h"

namespace
{
QMXTMATRIXf T(float x, float y, float z) { QMXTMATRIXf m; return QMXTMatrixTranslationF(m, x, y, z); }
QMXTMATRIXf S(float x, float y, float z) { QMXTMATRIXf m; return QMXTMatrixScalingF(m, x, y, z); }
QMXTMATRIXf RZ(float a) { QMXTMATRIXf m; return QMXTMatrixRotationZF(m, a); }
QMXTMATRIXf RX(float a) { QMXTMATRIXf m; return QMXTMatrixRotationXF(m, a); }
QMXTMATRIXf operator*(const QMXTMATRIXf& a, const QMXTMATRIXf& b) { QMXTMATRIXf m; return QMXTMatrixMultiplyF(m, a, b); }
QMXTMATRIXf Inverse(const QMXTMATRIXf& a) { QMXTMATRIXf m; return QMXTMatrixInverseF(m, a); }
QMXTVECTOR3f Point(const Vec4& p, const QMXTMATRIXf& m) { QMXTVECTOR3f v; return QMXTTransform(v, {p[0], p[1], p[2]}, m); }
QMXTVECTOR3f Add(QMXTVECTOR3f a, QMXTVECTOR3f b, float w) { return {a.x + w * b.x, a.y + w * b.y, a.z + w * b.z}; }
QMXTVECTOR3f Sub(QMXTVECTOR3f a, QMXTVECTOR3f b) { return Add(a, b, -1); }
QMXTVECTOR3f Unit(QMXTVECTOR3f v) { return QMXTMatrixVec3NormalizeF(v, v); }
void ExpectVec(const Vec4& got, QMXTVECTOR3f want, float tol = 1e-4f)
{
    EXPECT_NEAR(got[0], want.x, tol);
    EXPECT_NEAR(got[1], want.y, tol);
    EXPECT_NEAR(got[2], want.z, tol);
}

const uint32_t kFrames = 3;

float* MatrixKeys(const std::vector<QMXTMATRIXf>& keys)
{
    std::vector<float> f;
    for (const QMXTMATRIXf& m : keys)
        f.insert(f.end(), m.f, m.f + 16);
    return HeapCopy(f);
}

// Mesh nodes: 0 a tilted triangle (interleaved) under node 6 under node 5; 1 a skinned mesh with
// two batches over bones 7 and 8; 2 a second instance of mesh 0. Then a light (3) hanging off the
// triangle, a camera (4), the hierarchy nodes and the bones, several of them animated through their
// matrix channel.
struct SScene
{
    SMeshHolder h{2};
    CQMXTModelTVO& s = h.scene;
    std::vector<QMXTMATRIXf> rootKeys, bone0Keys, bone1Keys;

    STVONode& Node(uint32_t i, const char* name, int32_t parent, int32_t idx = -1)
    {
        STVONode& n = s.pNode[i];
        n.pszName = HeapString(name);
        n.nIdxParent = parent;
        n.nIdx = idx;
        return n;
    }

    SScene()
    {
        s.nNumFrame = kFrames;
        s.nNumNode = 9;
        s.nNumMeshNode = 3;
        s.pNode = static_cast<STVONode*>(std::calloc(s.nNumNode, sizeof(STVONode)));
        for (uint32_t f = 0; f < kFrames; ++f)
        {
            rootKeys.push_back(RZ(0.3f * f) * T(1, 2, 3.0f + f));
            bone0Keys.push_back(RZ(0.5f * f) * T(1, 0, 0));
            bone1Keys.push_back(RX(0.4f * f) * T(0, 1, 0));
        }
        STVONode& tri = Node(0, "triangle", 6, 0);
        tri.nAnimationFlags = eTVOHasPositionAnimation;
        tri.pfAnimPosition = HeapCopy(std::vector<float>{0, 0, 0, 1, 0, 0, 2, 0, 0});
        Node(1, "skin", -1, 1).pfAnimPosition = HeapCopy(std::vector<float>{0, 0, 1});
        Node(2, "instance", -1, 0).pfAnimPosition = HeapCopy(std::vector<float>{10, 0, 0});
        Node(3, "lamp", 0, 0).pfAnimPosition = HeapCopy(std::vector<float>{0, 0, 7});
        Node(4, "eye", -1, 0);
        Node(5, "root", -1).nAnimationFlags = eTVOHasMatrixAnimation;
        s.pNode[5].pfAnimMatrix = MatrixKeys(rootKeys);
        STVONode& arm = Node(6, "arm", 5);
        arm.pfAnimPosition = HeapCopy(std::vector<float>{0, 5, 0});
        arm.pfAnimScale = HeapCopy(std::vector<float>{2, 1, 1, 0, 0, 0, 0});
        Node(7, "bone0", -1).nAnimationFlags = eTVOHasMatrixAnimation;
        s.pNode[7].pfAnimMatrix = MatrixKeys(bone0Keys);
        Node(8, "bone1", 7).nAnimationFlags = eTVOHasMatrixAnimation;
        s.pNode[8].pfAnimMatrix = MatrixKeys(bone1Keys);
        s.nNumLight = 1;
        s.pLight = static_cast<STVOLight*>(std::calloc(1, sizeof(STVOLight)));
        s.nNumCamera = 1;
        s.pCamera = static_cast<STVOCamera*>(std::calloc(1, sizeof(STVOCamera)));
        s.pCamera[0].pfAnimFOV = HeapCopy(std::vector<float>{0.5f, 0.6f, 0.7f});
        s.nNumTexture = 1;
        s.pTexture = static_cast<STVOTexture*>(std::calloc(1, sizeof(STVOTexture)));
        s.pTexture[0].pszName = HeapString("wood.png");
        s.nNumMaterial = 1;
        s.pMaterial = static_cast<STVOMaterial*>(std::calloc(1, sizeof(STVOMaterial)));
        s.pMaterial[0].pszName = HeapString("wood");

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
        m1.sVertex = MakeStream(EQMXTDataFloat, 3,
                                {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 0, 1}, {0, 2, 1}, {9, 9, 9}});
        m1.sNormals = MakeStream(EQMXTDataFloat, 3,
                                 {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {0, r, r}, {r, 0, r}, {0, 0, 1}});
        m1.sBoneIdx = MakeStream(EQMXTDataUnsignedByte, 2, {{0, 1}, {0, 1}, {1, 0}, {0, 1}, {1, 0}, {1, 1}, {0, 0}});
        m1.sBoneWeight = MakeStream(EQMXTDataFloat, 2,
                                    {{1, 0}, {0.5f, 0.5f}, {0.75f, 0.25f}, {1, 0}, {0.3f, 0.7f}, {1, 0}, {1, 0}});
        CQMXTBoneBatches& b = m1.sBoneBatch;
        b.nBatchCnt = 2;
        b.nBatchBoneMax = 2;
        b.pnBatches = HeapCopy(std::vector<uint32_t>{7, 8, 8, 7}); // the second batch lists them reversed
        b.pnBatchBoneCnt = HeapCopy(std::vector<uint32_t>{2, 2});
        b.pnBatchOffset = HeapCopy(std::vector<uint32_t>{0, 2});
    }

    QMXTMATRIXf World(uint32_t node, uint32_t f) const
    {
        switch (node)
        {
        case 0: return T(float(f), 0, 0) * (S(2, 1, 1) * T(0, 5, 0)) * rootKeys[f];
        case 1: return T(0, 0, 1);
        case 2: return T(10, 0, 0);
        case 3: return T(0, 0, 7) * World(0, f);
        case 5: return rootKeys[f];
        case 6: return S(2, 1, 1) * T(0, 5, 0) * rootKeys[f];
        case 7: return bone0Keys[f];
        case 8: return bone1Keys[f] * bone0Keys[f];
        default: return T(0, 0, 0);
        }
    }
    QMXTMATRIXf Bone(uint32_t node, uint32_t f) const { return World(1, 0) * Inverse(World(node, 0)) * World(node, f); }
};
} // namespace

TEST(TransformFlatten, StaticMeshesGoToWorldSpaceAtTheCurrentFrame)
{
    for (uint32_t frame : {0u, 2u})
    {
        SCOPED_TRACE("frame " + std::to_string(frame));
        SScene scene;
        ASSERT_EQ(scene.s.InitImpl(), 0);
        scene.s.SetFrame(float(frame));
        CQMXTModelTVO d;
        ASSERT_EQ(QMXTModelTVOFlattenToWorldSpace(scene.s, d), 0);
        ASSERT_TRUE(d.IsLoaded());
        ASSERT_EQ(d.nNumMesh, 3u);
        for (uint32_t node : {0u, 2u})
        {
            const STVOMesh& src = scene.s.pMesh[0];
            const STVOMesh& m = d.pMesh[node];
            EXPECT_EQ(d.pNode[node].nIdx, int32_t(node));
            const QMXTMATRIXf w = scene.World(node, frame);
            QMXTVECTOR3f p[3];
            for (uint32_t v = 0; v < 3; ++v)
            {
                p[v] = Point(ReadVertex(src, src.sVertex, v), w);
                ExpectVec(ReadVertex(m, m.sVertex, v), p[v]);
            }
            // The normal stays perpendicular to the transformed triangle, on the same side, unit length.
            QMXTVECTOR3f faceNormal;
            QMXTMatrixVec3CrossProductF(faceNormal, Sub(p[1], p[0]), Sub(p[2], p[0]));
            const Vec4 n = ReadVertex(m, m.sNormals, 1);
            ExpectVec(n, Unit(faceNormal));
            EXPECT_NEAR(std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]), 1.0f, 1e-5f);
        }
        // Nodes, lights, cameras, materials and textures are copied; the node keeps its animation.
        EXPECT_STREQ(d.pNode[6].pszName, "arm");
        EXPECT_NE(d.pNode[6].pszName, scene.s.pNode[6].pszName);
        EXPECT_EQ(d.pNode[5].pfAnimMatrix[16 * 2 + 14], scene.rootKeys[2][14]);
        EXPECT_EQ(d.pCamera[0].pfAnimFOV[2], 0.7f);
        EXPECT_STREQ(d.pTexture[0].pszName, "wood.png");
        EXPECT_EQ(d.nNumLight, 1u);

        // Drawn through their nodes the meshes land where they stood: mesh nodes are identity roots.
        // Every other node keeps its world placement at every frame, the lamp under the triangle too.
        for (uint32_t f = 0; f < kFrames; ++f)
        {
            d.SetFrame(float(f));
            for (uint32_t node = 0; node < d.nNumNode; ++node)
            {
                const QMXTMATRIXf want = node < 3 ? T(0, 0, 0) : scene.World(node, f);
                const QMXTMATRIXf got = d.GetWorldMatrixNoCache(d.pNode[node]);
                for (int e = 0; e < 16; ++e)
                    ASSERT_NEAR(got.f[e], want.f[e], 1e-4f) << "node " << node << " frame " << f;
            }
        }
        EXPECT_EQ(d.pNode[3].nIdxParent, 6); // the triangle's nearest ancestor that is no mesh
        d.Destroy();
    }
}

TEST(TransformFlatten, SkinnedMeshIsBlendedByItsBatchBonesOncePerVertex)
{
    // (batch-local index resolved to a node, weight) pairs of every vertex met by a triangle.
    const std::vector<std::vector<std::pair<uint32_t, float>>> influences = {
        {{7, 1.0f}}, {{7, 0.5f}, {8, 0.5f}}, {{8, 0.75f}, {7, 0.25f}},
        {{8, 1.0f}}, {{7, 0.3f}, {8, 0.7f}}, {{7, 1.0f}}};
    for (bool strips : {false, true})
    for (uint32_t frame : {0u, 2u})
    {
        SCOPED_TRACE("frame " + std::to_string(frame) + (strips ? " strips" : " list"));
        SScene scene;
        if (strips)
        {
            ASSERT_EQ(QMXTModelTVOToggleStrips(scene.s.pMesh[1]), 0);
            ASSERT_EQ(scene.s.pMesh[1].nNumStrips, 2u);
        }
        ASSERT_EQ(scene.s.InitImpl(), 0);
        scene.s.SetFrame(float(frame));
        CQMXTModelTVO d;
        ASSERT_EQ(QMXTModelTVOFlattenToWorldSpace(scene.s, d), 0);
        const STVOMesh& src = scene.s.pMesh[1];
        const STVOMesh& m = d.pMesh[1];
        for (uint32_t v = 0; v < 6; ++v)
        {
            QMXTVECTOR3f p = {0, 0, 0}, n = {0, 0, 0};
            for (const auto& [node, weight] : influences[v])
            {
                const QMXTMATRIXf bone = scene.Bone(node, frame);
                QMXTMATRIXf invT, inv = Inverse(bone);
                QMXTMatrixTransposeF(invT, inv);
                QMXTVECTOR3f dir;
                const Vec4 n0 = ReadVertex(src, src.sNormals, v);
                QMXTTransformDirection(dir, {n0[0], n0[1], n0[2]}, invT);
                p = Add(p, Point(ReadVertex(src, src.sVertex, v), bone), weight);
                n = Add(n, dir, weight);
            }
            ExpectVec(ReadVertex(m, m.sVertex, v), p);
            ExpectVec(ReadVertex(m, m.sNormals, v), Unit(n));
        }
        EXPECT_EQ(ReadVertex(m, m.sVertex, 6), (Vec4{9, 9, 9, 1})); // met by no triangle
        d.Destroy();
    }
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

// Mesh copies are exercised by flattening (the scene and its copy are both freed under the
// sanitizer); a node copy must size indexed animation by the largest index it holds.
TEST(TransformCopy, IndexedAnimationIsCopiedUpToItsLastKey)
{
    SScene scene;
    STVONode& src = scene.s.pNode[0];
    src.nAnimationFlags |= eTVOHasRotationAnimation;
    src.pnAnimRotationIdx = HeapCopy(std::vector<uint32_t>{0, 4, 0}); // two keys for three frames
    src.pfAnimRotation = HeapCopy(std::vector<float>{0, 0, 0, 1, 0, 0, 1, 0});
    SMeshHolder holder;
    holder.scene.nNumNode = 1;
    holder.scene.pNode = static_cast<STVONode*>(std::malloc(sizeof(STVONode)));
    STVONode& n = holder.scene.pNode[0];
    ASSERT_EQ(QMXTModelTVOCopyNode(src, n, kFrames), 0);
    EXPECT_NE(n.pfAnimRotation, src.pfAnimRotation);
    EXPECT_EQ(n.pfAnimRotation[6], 1.0f);
    EXPECT_EQ(n.pnAnimRotationIdx[1], 4u);
    EXPECT_EQ(n.pfAnimPosition[6], 2.0f);
}
