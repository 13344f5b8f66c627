// Flattening of a scene to world space: node and bone transforms baked into the mesh data.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "QMXTError.h"
#include "QMXTMeshStreams.h"
#include "QMXTModelTVOTransform.h"
#include "QMXTLargeArray.h"

namespace
{
// One influence on a vertex: its matrix for points, its inverse transpose for directions, its weight.
struct SInfluence
{
    const QMXTMATRIXf* pPoint;
    const QMXTMATRIXf* pDirection;
    float fWeight;
};

struct SBoneMatrices
{
    QMXTMATRIXf mPoint;
    QMXTMATRIXf mDirection;
};

SBoneMatrices MatricesOf(const QMXTMATRIXf& world)
{
    SBoneMatrices m;
    m.mPoint = world;
    QMXTMATRIXf inverse;
    QMXTMatrixInverseF(inverse, world);
    QMXTMatrixTransposeF(m.mDirection, inverse);
    return m;
}

// Transforms the first three components of one stream element as a point or as a (renormalised)
// direction, as the weighted sum over the influences; further components stay as they are.
void TransformElement(STVOMesh& mesh, const CTVOData& s, uint32_t v, const SInfluence* inf, uint32_t count,
                      bool point)
{
    if (!QMXTStreamPresent(mesh, s))
        return;
    uint8_t* at = QMXTStreamVertex(mesh, s, v);
    float value[4];
    QMXTVertexRead(value, at, s.eType, s.n);
    const QMXTVECTOR3f in = {value[0], value[1], value[2]};
    QMXTVECTOR3f sum = {0, 0, 0};
    for (uint32_t i = 0; i < count; ++i)
    {
        QMXTVECTOR3f out;
        if (point)
            QMXTTransform(out, in, *inf[i].pPoint);
        else
            QMXTTransformDirection(out, in, *inf[i].pDirection);
        sum.x += inf[i].fWeight * out.x;
        sum.y += inf[i].fWeight * out.y;
        sum.z += inf[i].fWeight * out.z;
    }
    if (!point)
        QMXTMatrixVec3NormalizeF(sum, sum);
    value[0] = sum.x;
    value[1] = sum.y;
    value[2] = sum.z;
    QMXTVertexWrite(at, s.eType, s.n, value);
}

void TransformVertex(STVOMesh& mesh, uint32_t v, const SInfluence* inf, uint32_t count)
{
    TransformElement(mesh, mesh.sVertex, v, inf, count, true);
    TransformElement(mesh, mesh.sNormals, v, inf, count, false);
    TransformElement(mesh, mesh.sTangents, v, inf, count, false);
    TransformElement(mesh, mesh.sBinormals, v, inf, count, false);
}

void BakeStatic(STVOMesh& mesh, const QMXTMATRIXf& world)
{
    const SBoneMatrices m = MatricesOf(world);
    const SInfluence inf = {&m.mPoint, &m.mDirection, 1.0f};
    for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
        TransformVertex(mesh, v, &inf, 1);
}

// Position of the first index of every triangle: 3t for a list, walked by strip lengths for strips.
bool TriangleStarts(const STVOMesh& mesh, std::vector<uint32_t>& starts)
{
    starts.resize(mesh.nNumFaces);
    if (mesh.nNumStrips == 0)
    {
        for (uint32_t t = 0; t < mesh.nNumFaces; ++t)
            starts[t] = 3 * t;
        return true;
    }
    if (!mesh.pnStripLength)
        return false;
    uint32_t t = 0, position = 0;
    for (uint32_t s = 0; s < mesh.nNumStrips; ++s)
    {
        for (uint32_t k = 0; k < mesh.pnStripLength[s]; ++k, ++t)
        {
            if (t >= mesh.nNumFaces)
                return false;
            starts[t] = position + k;
        }
        position += mesh.pnStripLength[s] + 2;
    }
    return t == mesh.nNumFaces;
}

class CSkinBaker
{
  public:
    CSkinBaker(CQMXTModelTVO& scene, const STVONode& meshNode, STVOMesh& mesh)
        : m_rScene(scene), m_rMeshNode(meshNode), m_rMesh(mesh), m_bDone(mesh.nNumVertex, 0)
    {
    }

    bool Bake()
    {
        const CQMXTBoneBatches& b = m_rMesh.sBoneBatch;
        if (!b.pnBatches || !b.pnBatchBoneCnt || !b.pnBatchOffset || !TriangleStarts(m_rMesh, m_Starts))
            return Fail("the bone batches or strips of a skinned mesh are incomplete");
        for (uint32_t batch = 0; batch < b.nBatchCnt; ++batch)
        {
            const uint32_t first = b.pnBatchOffset[batch];
            const uint32_t end = batch + 1 < b.nBatchCnt ? b.pnBatchOffset[batch + 1] : m_rMesh.nNumFaces;
            if (first > end || end > m_rMesh.nNumFaces)
                return Fail("bone batch offsets out of order");
            if (!LoadBones(batch))
                return false;
            for (uint32_t t = first; t < end; ++t)
                for (uint32_t c = 0; c < 3; ++c)
                    if (!BakeCorner(m_Starts[t] + c))
                        return false;
        }
        return true;
    }

  private:
    bool Fail(const char* why)
    {
        QMXTErrorOutputDebug("FlattenToWorldSpace: %s.\n", why);
        return false;
    }

    bool LoadBones(uint32_t batch)
    {
        const CQMXTBoneBatches& b = m_rMesh.sBoneBatch;
        const uint32_t count = b.pnBatchBoneCnt[batch] < b.nBatchBoneMax ? b.pnBatchBoneCnt[batch] : b.nBatchBoneMax;
        m_Bones.clear();
        for (uint32_t j = 0; j < count; ++j)
        {
            const uint32_t node = b.pnBatches[static_cast<size_t>(batch) * b.nBatchBoneMax + j];
            if (node >= m_rScene.nNumNode)
                return Fail("a bone batch names a node that does not exist");
            m_Bones.push_back(MatricesOf(m_rScene.GetBoneWorldMatrix(m_rMeshNode, m_rScene.pNode[node])));
        }
        return true;
    }

    bool BakeCorner(uint32_t position)
    {
        const uint32_t v = QMXTMeshIndexed(m_rMesh) ? QMXTMeshIndex(m_rMesh, position) : position;
        if (v >= m_rMesh.nNumVertex)
            return Fail("a triangle names a vertex that does not exist");
        if (m_bDone[v])
            return true;
        m_bDone[v] = 1;
        float bone[4], weight[4];
        QMXTVertexRead(bone, QMXTStreamVertex(m_rMesh, m_rMesh.sBoneIdx, v), m_rMesh.sBoneIdx.eType, m_rMesh.sBoneIdx.n);
        QMXTVertexRead(weight, QMXTStreamVertex(m_rMesh, m_rMesh.sBoneWeight, v), m_rMesh.sBoneWeight.eType,
                       m_rMesh.sBoneWeight.n);
        const uint32_t influences = InfluenceCount();
        SInfluence inf[4];
        uint32_t used = 0;
        for (uint32_t k = 0; k < influences; ++k)
        {
            if (weight[k] == 0.0f)
                continue;
            if (!(bone[k] >= 0.0f && bone[k] < static_cast<float>(m_Bones.size())))
                return Fail("a vertex names a bone outside its batch");
            const SBoneMatrices& m = m_Bones[static_cast<size_t>(bone[k])];
            inf[used++] = {&m.mPoint, &m.mDirection, weight[k]};
        }
        TransformVertex(m_rMesh, v, inf, used);
        return true;
    }

    // Influences a vertex carries: components of the index and weight streams, at most four.
    uint32_t InfluenceCount() const
    {
        auto components = [](const CTVOData& s) { return s.n * QMXTModelTVODataTypeComponentCount(s.eType); };
        uint32_t n = components(m_rMesh.sBoneIdx);
        if (components(m_rMesh.sBoneWeight) < n)
            n = components(m_rMesh.sBoneWeight);
        return n < 4 ? n : 4;
    }

    CQMXTModelTVO& m_rScene;
    const STVONode& m_rMeshNode;
    STVOMesh& m_rMesh;
    std::vector<uint8_t> m_bDone;
    std::vector<uint32_t> m_Starts;
    std::vector<SBoneMatrices> m_Bones;
};

bool BakeMesh(CQMXTModelTVO& src, const STVONode& node, STVOMesh& mesh)
{
    if (!QMXTStreamsConsistent(mesh))
    {
        QMXTErrorOutputDebug("FlattenToWorldSpace: a vertex stream of mesh node '%s' is inconsistent.\n",
                             node.pszName ? node.pszName : "");
        return false;
    }
    const bool skinned = mesh.sBoneBatch.nBatchCnt != 0 && QMXTStreamPresent(mesh, mesh.sBoneIdx) &&
                         QMXTStreamPresent(mesh, mesh.sBoneWeight);
    if (!skinned)
    {
        BakeStatic(mesh, src.GetWorldMatrix(node));
        return true;
    }
    return CSkinBaker(src, node, mesh).Bake();
}

// dst gets one mesh for each mesh node of src: a copy of the node's mesh, baked into world space.
bool FlattenMeshes(CQMXTModelTVO& src, CQMXTModelTVO& dst)
{
    if (src.nNumMeshNode == 0)
        return true;
    dst.pMesh = static_cast<STVOMesh*>(QMXTLargeCalloc(src.nNumMeshNode, sizeof(STVOMesh)));
    if (!dst.pMesh)
        return false;
    dst.nNumMesh = src.nNumMeshNode;
    for (uint32_t i = 0; i < src.nNumMeshNode; ++i)
    {
        const STVONode& node = src.pNode[i];
        if (node.nIdx < 0 || static_cast<uint32_t>(node.nIdx) >= src.nNumMesh)
        {
            QMXTErrorOutputDebug("FlattenToWorldSpace: mesh node %u names mesh %d of %u.\n", i, node.nIdx, src.nNumMesh);
            return false;
        }
        if (QMXTModelTVOCopyMesh(src.pMesh[node.nIdx], dst.pMesh[i]) != 0)
            return false;
        dst.pNode[i].nIdx = static_cast<int32_t>(i);
        if (!BakeMesh(src, node, dst.pMesh[i]))
            return false;
    }
    return true;
}

float* CopyOfFloats(const float* values, size_t count)
{
    float* copy = static_cast<float*>(std::malloc(count * sizeof(float)));
    if (copy)
        std::memcpy(copy, values, count * sizeof(float));
    return copy;
}

// Replaces a node's transform channels by one matrix channel holding the keys (no index).
bool SetMatrixKeys(STVONode& node, const std::vector<QMXTMATRIXf>& keys)
{
    float* values = static_cast<float*>(std::malloc(keys.size() * sizeof(QMXTMATRIXf)));
    if (!values)
        return false;
    for (size_t k = 0; k < keys.size(); ++k)
        std::memcpy(values + 16 * k, keys[k].f, sizeof(QMXTMATRIXf));
    QMXTModelTVOFreeNodeChannels(node);
    node.pfAnimMatrix = values;
    node.nAnimationFlags = keys.size() > 1 ? eTVOHasMatrixAnimation : 0u;
    return true;
}

// A static identity transform in the channels the node already uses: readers that expect position,
// rotation and scale keys still find them.
bool SetIdentity(STVONode& node)
{
    QMXTMATRIXf identity;
    QMXTMatrixIdentityF(identity);
    if (node.pfAnimMatrix || !node.pfAnimPosition)
        return SetMatrixKeys(node, {identity});
    // A scale key is the scale and the stretch quaternion (zeros when there is no stretch).
    const float position[3] = {0, 0, 0}, rotation[4] = {0, 0, 0, 1}, scale[7] = {1, 1, 1, 0, 0, 0, 0};
    float* p = CopyOfFloats(position, 3);
    float* r = CopyOfFloats(rotation, 4);
    float* sc = CopyOfFloats(scale, 7);
    if (!p || !r || !sc)
    {
        std::free(p);
        std::free(r);
        std::free(sc);
        return false;
    }
    QMXTModelTVOFreeNodeChannels(node);
    node.pfAnimPosition = p;
    node.pfAnimRotation = r;
    node.pfAnimScale = sc;
    return true;
}

bool IsMeshNode(const CQMXTModelTVO& scene, int32_t i)
{
    return i >= 0 && static_cast<uint32_t>(i) < scene.nNumMeshNode;
}

// The nearest ancestor of a node that is not a mesh node, -1 for none.
int32_t KeptAncestor(const CQMXTModelTVO& scene, int32_t parent)
{
    for (uint32_t depth = 0; IsMeshNode(scene, parent) && depth <= scene.nNumNode; ++depth)
        parent = scene.pNode[parent].nIdxParent;
    return IsMeshNode(scene, parent) || parent >= static_cast<int32_t>(scene.nNumNode) ? -1 : parent;
}

// Hangs a node whose parent is a mesh node under its nearest ancestor that is not, with local keys
// that give it the world transform it had at every frame.
bool Rehang(CQMXTModelTVO& src, uint32_t i, STVONode& out)
{
    const int32_t kept = KeptAncestor(src, src.pNode[i].nIdxParent);
    const uint32_t frames = src.nNumFrame ? src.nNumFrame : 1;
    std::vector<QMXTMATRIXf> keys(frames);
    for (uint32_t f = 0; f < frames; ++f)
    {
        src.SetFrame(static_cast<float>(f));
        const QMXTMATRIXf world = src.GetWorldMatrixNoCache(src.pNode[i]);
        QMXTMATRIXf parentInverse;
        QMXTMatrixIdentityF(parentInverse);
        if (kept >= 0)
            QMXTMatrixInverseF(parentInverse, src.GetWorldMatrixNoCache(src.pNode[kept]));
        QMXTMatrixMultiplyF(keys[f], world, parentInverse);
    }
    bool still = true;
    for (uint32_t f = 1; f < frames && still; ++f)
        still = std::memcmp(keys[f].f, keys[0].f, sizeof(QMXTMATRIXf)) == 0;
    if (still)
        keys.resize(1);
    out.nIdxParent = kept;
    return SetMatrixKeys(out, keys);
}

// Mesh nodes become roots with an identity transform, so their world-space data is drawn where it
// stood; every other node keeps its world placement.
bool RebaseNodes(CQMXTModelTVO& src, CQMXTModelTVO& dst)
{
    const float frame = src.GetFrame();
    bool ok = true;
    for (uint32_t i = src.nNumMeshNode; ok && i < src.nNumNode; ++i)
        if (IsMeshNode(src, src.pNode[i].nIdxParent))
            ok = Rehang(src, i, dst.pNode[i]);
    src.SetFrame(frame);
    for (uint32_t i = 0; ok && i < src.nNumMeshNode; ++i)
    {
        ok = SetIdentity(dst.pNode[i]);
        dst.pNode[i].nIdxParent = -1;
    }
    return ok;
}
} // namespace

int QMXTModelTVOFlattenToWorldSpace(CQMXTModelTVO& src, CQMXTModelTVO& dst)
{
    if (&src == &dst || src.nNumMeshNode > src.nNumNode)
    {
        QMXTErrorOutputDebug("FlattenToWorldSpace: bad source scene.\n");
        return 1;
    }
    dst.Destroy();
    if (QMXTModelTVOCopyScene(src, dst, false) != 0 || !FlattenMeshes(src, dst) || !RebaseNodes(src, dst))
    {
        // The private part ties ownership to the scene: give dst one so that Destroy frees it all.
        if (dst.InitImpl() == 0)
            dst.Destroy();
        return 1;
    }
    return dst.InitImpl();
}
