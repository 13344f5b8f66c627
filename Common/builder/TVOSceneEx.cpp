#include "TVOSceneEx.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "Log.h"
#include "OrderedWork.h"
#include "QMXTVertexData.h"
#include "TVOBuilderStrings.h"
#include "QMXTLargeArray.h"

namespace
{
// Moves a builder list of plain records into a new model array and sets its count; the records'
// arrays go with them. On a failed allocation the list keeps them and the array stays empty.
template <typename T> bool MoveToArray(std::vector<T>& list, T*& array, uint32_t& count)
{
    if (list.empty())
        return true;
    array = static_cast<T*>(QMXTLargeAlloc(sizeof(T) * list.size()));
    if (!array)
        return false;
    std::memcpy(static_cast<void*>(array), list.data(), sizeof(T) * list.size());
    count = static_cast<uint32_t>(list.size());
    list.clear();
    return true;
}

// A copy of a content node without its geometry, for the node of one sub-mesh: the sub-mesh hangs
// under the node that keeps the transform, so its own transform is the identity and still.
CNode SubMeshNode(const CNode& cnode, unsigned counter)
{
    CNode sub;
    char name[1024];
    std::snprintf(name, sizeof name, "%s-submesh%u", cnode.name.c_str(), counter);
    sub.name = name;
    sub.index = -1; // never found when content indices are resolved: they belong to the parent
    sub.parent = cnode.parent;
    sub.type = cnode.type;
    sub.userData = cnode.userData;
    return sub;
}
} // namespace

CTVOSceneEx::~CTVOSceneEx()
{
    DestroyAll();
}

void CTVOSceneEx::Reset()
{
    for (STVOCamera& c : cameras)
        std::free(c.pfAnimFOV);
    cameras.clear();
    lights.clear();
    meshes.clear();
    nodes.clear();
    pendingNodes.clear();
    for (STVOMaterial& m : materials)
        QMXTModelTVOFreeMaterial(m);
    materials.clear();
    textures.clear();
}

void CTVOSceneEx::DestroyAll()
{
    Reset();
    // Destroy frees the arrays only once the private part exists, which a failed stage may not
    // have made.
    if (!IsCallerOwned())
        QMXTModelTVOFreeArrays(*this);
    Destroy();
}

void CTVOSceneEx::ReportProgress(size_t contentNodes, const std::string& name) const
{
    const float step = 40.0f / static_cast<float>(contentNodes);
    ProgressUpdate(static_cast<int>(static_cast<float>(nodes.size()) * step), "%s", name.c_str());
}

bool ValidateGeometry(const SGeomData& g, const SBuilderSettings& s)
{
    auto inRange = [](int i, size_t n) { return i >= 0 && static_cast<size_t>(i) < n; };
    for (const SMappingChannel& ch : g.channels)
        if (ch.faces.size() != g.faces.size())
            return false;
    for (size_t f = 0; f < g.faces.size(); ++f)
    {
        const SFace& face = g.faces[f];
        for (int c = 0; c < 3; ++c)
        {
            if (!inRange(face.pos[c], g.positions.size()))
                return false;
            if (s.ExportNormals() && !inRange(face.normal[c], g.normals.size()))
                return false;
            if (s.ExportColours() && face.colour[c] >= 0 && !inRange(face.colour[c], g.colours.size()))
                return false;
            for (const SMappingChannel& ch : g.channels)
                if (!inRange(ch.faces[f].idx[c], ch.uvw.size()))
                    return false;
        }
    }
    return true;
}

bool CTVOSceneEx::AddMesh(const CNode& cnode, const SBuilderSettings& settings)
{
    SBuiltMeshes built;
    return BuildMeshes(cnode, settings, nullptr, built) && PlaceMeshes(cnode, settings, built);
}

bool CTVOSceneEx::BuildMeshes(const CNode& cnode, const SBuilderSettings& settings, CNode* giveUp,
                              SBuiltMeshes& built)
{
    const SGeomData& geom = cnode.geom;
    if (!ValidateGeometry(geom, settings))
    {
        Log(eLogError, "Error: '%s' has geometry indices out of range.", cnode.name.c_str());
        return false;
    }
    const SBonedVtx* skin = nullptr;
    for (const SModifier& mod : cnode.modifiers)
    {
        if (!mod.enabled || mod.kind != eModifierSkin)
            continue;
        if (mod.vertices.size() == geom.positions.size())
            skin = mod.vertices.data();
        else
            Log(eLogWarning, "%s", CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eIgnoringSkin));
    }

    const uint32_t faceCount = static_cast<uint32_t>(geom.faces.size());
    const uint32_t uvwCount = static_cast<uint32_t>(geom.channels.size());
    std::map<int, std::unique_ptr<CTVOMeshEx>> byMaterial;
    {
        // Geometry that stores every corner's position apart gives the memo nothing to find.
        const bool shared = geom.positions.size() < 3 * static_cast<size_t>(faceCount);
        CCornerMemo memo(shared ? geom.positions.size() : 0, uvwCount);
        for (uint32_t f = 0; f < faceCount; ++f)
        {
            std::unique_ptr<CTVOMeshEx>& sub = byMaterial[geom.faces[f].material];
            if (!sub)
            {
                sub.reset(new CTVOMeshEx());
                sub->Init(faceCount, uvwCount);
                if (shared)
                    sub->UseCornerMemo(&memo, static_cast<uint32_t>(byMaterial.size()));
            }
            sub->AddFace(f, &geom, skin, settings);
        }
    }
    // The faces are all in the meshes' stores: content the host gave up goes before Finalise needs
    // room for the streams.
    if (giveUp)
    {
        giveUp->geom = SGeomData();
        std::vector<SModifier>().swap(giveUp->modifiers);
    }

    if (byMaterial.size() > 1)
        Log(eLogWarning, CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eSplitIntoMeshes),
            cnode.name.c_str(), static_cast<int>(byMaterial.size()));
    built.split = byMaterial.size() > 1;
    for (auto& entry : byMaterial)
    {
        // A mesh that cannot be finished ends the list; PlaceMeshes reports it in its turn.
        built.finished = entry.second->Finalise(settings);
        built.meshes.emplace_back(entry.first, std::move(entry.second));
        if (!built.finished)
            break;
    }
    return true;
}

bool CTVOSceneEx::PlaceMeshes(const CNode& cnode, const SBuilderSettings& settings, SBuiltMeshes& built)
{
    std::vector<uint32_t> children;
    unsigned counter = 0;
    for (size_t k = 0; k < built.meshes.size(); ++k)
    {
        if (k + 1 == built.meshes.size() && !built.finished)
        {
            Log(eLogError, "Error: '%s' is too large to build.", cnode.name.c_str());
            return false;
        }
        const unsigned meshIndex = FindOrCreate(std::move(built.meshes[k].second));
        CTVONodeEx node;
        if (built.split)
        {
            children.push_back(static_cast<uint32_t>(nodes.size()));
            node.Gen(SubMeshNode(cnode, counter), nNumFrame, settings);
        }
        else
            node.Gen(cnode, nNumFrame, settings);
        node.node.nIdx = static_cast<int32_t>(meshIndex);
        node.node.nIdxMaterial = built.meshes[k].first;
        AddNode(std::move(node));
        ++counter;
    }
    if (built.split)
    {
        CTVONodeEx parent;
        parent.Gen(cnode, nNumFrame, settings);
        parent.node.nIdx = -1;
        parent.children = children;
        pendingNodes.push_back(std::move(parent));
    }
    return true;
}

unsigned CTVOSceneEx::FindOrCreate(std::unique_ptr<CTVOMeshEx> mesh)
{
    for (size_t i = 0; i < meshes.size(); ++i)
        if (meshes[i]->Compare(*mesh))
        {
            mesh->Reset();
            Log(eLogInfo, "%s", CTVOBuilderStrings::CStrText(CTVOBuilderStrings::eInstancingMesh));
            return static_cast<unsigned>(i);
        }
    meshes.push_back(std::move(mesh));
    return static_cast<unsigned>(meshes.size() - 1);
}

int CTVOSceneEx::FindOrCreate(const std::string& fileName)
{
    if (fileName.empty())
        return -1;
    for (size_t i = 0; i < textures.size(); ++i)
        if (textures[i] == fileName)
        {
            Log(eLogDetail, "Instancing texture %d\n", static_cast<int>(i));
            return static_cast<int>(i);
        }
    textures.push_back(fileName);
    return static_cast<int>(textures.size() - 1);
}

void CTVOSceneEx::GenMaterials(const SContent& content)
{
    for (const SMaterial& src : content.materials)
    {
        // The list owns the record before its strings are copied: Reset frees them if one fails.
        materials.emplace_back();
        STVOMaterial& m = materials.back();
        std::memset(&m, 0, sizeof m);
        m.pszName = DuplicateString(src.name.c_str());
        for (int slot = 0; slot < SMaterial::eTextureSlots; ++slot)
            m.nIdxTexture[slot] = FindOrCreate(src.textures[slot]);
        m.fMatOpacity = src.opacity;
        std::memcpy(m.pfMatAmbient, src.ambient, sizeof m.pfMatAmbient);
        std::memcpy(m.pfMatDiffuse, src.diffuse, sizeof m.pfMatDiffuse);
        std::memcpy(m.pfMatSpecular, src.specular, sizeof m.pfMatSpecular);
        m.fMatShininess = src.shininess;
        m.pszEffectFile = DuplicateString(src.effectFile.c_str());
        m.pszEffectName = DuplicateString(src.effectName.c_str());
        m.eBlendSrcRGB = static_cast<uint32_t>(src.blendSrcRGB);
        m.eBlendSrcA = static_cast<uint32_t>(src.blendSrcA);
        m.eBlendDstRGB = static_cast<uint32_t>(src.blendDstRGB);
        m.eBlendDstA = static_cast<uint32_t>(src.blendDstA);
        m.eBlendOpRGB = static_cast<uint32_t>(src.blendOpRGB);
        m.eBlendOpA = static_cast<uint32_t>(src.blendOpA);
        std::memcpy(m.pfBlendColour, src.blendColour, sizeof m.pfBlendColour);
        std::memcpy(m.pfBlendFactor, src.blendFactor, sizeof m.pfBlendFactor);
        m.nFlags = static_cast<uint32_t>(src.flags);
        m.nUserDataSize = static_cast<uint32_t>(src.userData.size());
        m.pUserData = DuplicateBytes(src.userData);
        if (!(src.opacity == 1.0f)) // a NaN counts as not opaque
        {
            m.nFlags |= 1u;
            m.eBlendSrcRGB = m.eBlendSrcA = eTVOBlendSrcAlpha;
            m.eBlendDstRGB = m.eBlendDstA = eTVOBlendOneMinusSrcAlpha;
        }
    }
}

bool CTVOSceneEx::GenA(const SContent* content, const SBuilderSettings& settings)
{
    Reset();
    const SContent& c = *content;

    // Frames: needed for animation, and for flattening at the static frame.
    if (settings.bExportAnimations || !settings.bExportModelSpace)
    {
        int64_t frames = static_cast<int64_t>(c.info.endFrame) - c.info.startFrame + 1;
        for (const CNode& n : c.nodes)
            if (!n.frames.empty() && static_cast<int64_t>(n.frames.size()) < frames)
                frames = static_cast<int64_t>(n.frames.size());
        nNumFrame = frames > 0 ? static_cast<uint32_t>(frames) : 0u;
        nFPS = static_cast<uint32_t>(c.info.fps);
    }
    else
    {
        nNumFrame = 0;
        nFPS = 30;
    }

    std::memcpy(pfColourAmbient, c.info.ambient, sizeof pfColourAmbient);
    std::free(pUserData);
    nUserDataSize = static_cast<uint32_t>(c.userData.size());
    pUserData = DuplicateBytes(c.userData);

    const size_t total = c.nodes.size();
    std::vector<bool> taken(total, false);
    if (settings.bExportGeometry)
    {
        std::vector<size_t> meshNodes;
        for (size_t i = 0; i < total; ++i)
            if (c.nodes[i].type == eNodeMesh || (c.nodes[i].type == eNodeJoint && settings.bExportBoneGeometry))
                meshNodes.push_back(i);
        // Nodes' meshes are assembled on the scene's threads and placed in node order, as a loop
        // over the nodes places them.
        std::vector<SBuiltMeshes> built(meshNodes.size());
        const bool placed = RunInOrder(
            static_cast<uint32_t>(meshNodes.size()), m_nThreads,
            [&](uint32_t k) {
                const size_t i = meshNodes[k];
                CNode* giveUp = m_pFreeGeometryOf ? &m_pFreeGeometryOf->nodes[i] : nullptr;
                return BuildMeshes(c.nodes[i], settings, giveUp, built[k]);
            },
            [&](uint32_t k) { ReportProgress(total, c.nodes[meshNodes[k]].name); },
            [&](uint32_t k) {
                const bool ok = PlaceMeshes(c.nodes[meshNodes[k]], settings, built[k]);
                built[k] = SBuiltMeshes();
                taken[meshNodes[k]] = true;
                return ok;
            });
        if (!placed)
            return false;
    }
    nNumMeshNode = static_cast<uint32_t>(nodes.size());

    for (size_t i = 0; i < total; ++i)
    {
        const CNode& n = c.nodes[i];
        if (n.type != eNodeLight)
            continue;
        ReportProgress(total, n.name);
        lights.push_back(CTVOLightEx::Gen(&n.light));
        CTVONodeEx node;
        node.Gen(n, nNumFrame, settings);
        node.node.nIdx = static_cast<int32_t>(lights.size() - 1);
        AddNode(std::move(node));
        taken[i] = true;
    }
    for (size_t i = 0; i < total; ++i)
    {
        const CNode& n = c.nodes[i];
        if (n.type != eNodeCamera)
            continue;
        ReportProgress(total, n.name);
        cameras.emplace_back(); // listed first, so Reset frees its animation should a later step fail
        cameras.back() = CTVOCameraEx::Gen(&n.camera, nNumFrame);
        CTVONodeEx node;
        node.Gen(n, nNumFrame, settings);
        node.node.nIdx = static_cast<int32_t>(cameras.size() - 1);
        AddNode(std::move(node));
        taken[i] = true;
    }
    for (size_t i = 0; i < total; ++i)
    {
        const CNode& n = c.nodes[i];
        // Mesh nodes without geometry export are dropped, not turned into plain nodes.
        if (taken[i] || n.type == eNodeMesh || n.type == eNodeLight || n.type == eNodeCamera ||
            (n.type == eNodeJoint && settings.bExportBoneGeometry))
            continue;
        ReportProgress(total, n.name);
        CTVONodeEx node;
        node.Gen(n, nNumFrame, settings);
        node.node.nIdx = -1;
        AddNode(std::move(node));
    }

    if (settings.bExportGeometry)
        for (CTVONodeEx& parent : pendingNodes)
        {
            for (uint32_t child : parent.children)
                nodes[child].node.nIdxParent = parent.nSourceIndex;
            AddNode(std::move(parent));
        }
    pendingNodes.clear();

    if (settings.bExportMaterials)
        GenMaterials(c);
    return true;
}

int32_t CTVOSceneEx::ResolveSourceIndex(int32_t sourceIndex) const
{
    for (size_t i = 0; i < nodes.size(); ++i)
        if (nodes[i].nSourceIndex == sourceIndex)
            return static_cast<int32_t>(i);
    return sourceIndex;
}

bool CTVOSceneEx::GenB()
{
    // Every count is set together with its array, so a failed allocation leaves a model whose counts
    // match its arrays and whose records are each owned once, by an array or by a builder list.
    if (!MoveToArray(cameras, pCamera, nNumCamera) || !MoveToArray(lights, pLight, nNumLight) ||
        !MoveToArray(materials, pMaterial, nNumMaterial))
        return false;
    if (!meshes.empty())
    {
        pMesh = static_cast<STVOMesh*>(QMXTLargeAlloc(sizeof(STVOMesh) * meshes.size()));
        if (!pMesh)
            return false;
        nNumMesh = static_cast<uint32_t>(meshes.size());
        for (uint32_t i = 0; i < nNumMesh; ++i)
            pMesh[i] = meshes[i]->Release();
    }
    // The builder nodes stay: GenC reads their static transforms.
    if (!nodes.empty())
    {
        pNode = static_cast<STVONode*>(QMXTLargeAlloc(sizeof(STVONode) * nodes.size()));
        if (!pNode)
            return false;
        nNumNode = static_cast<uint32_t>(nodes.size());
        for (uint32_t i = 0; i < nNumNode; ++i)
            pNode[i] = nodes[i].Release();
    }
    if (!textures.empty())
    {
        pTexture = static_cast<STVOTexture*>(std::calloc(textures.size(), sizeof(STVOTexture)));
        if (!pTexture)
            return false;
        nNumTexture = static_cast<uint32_t>(textures.size());
        for (uint32_t i = 0; i < nNumTexture; ++i)
            pTexture[i].pszName = DuplicateString(textures[i].c_str());
    }

    for (uint32_t i = 0; i < nNumCamera; ++i)
        if (pCamera[i].nIdxTarget != -1)
            pCamera[i].nIdxTarget = ResolveSourceIndex(pCamera[i].nIdxTarget);
    for (uint32_t i = 0; i < nNumLight; ++i)
        if (pLight[i].nIdxTarget != -1)
            pLight[i].nIdxTarget = ResolveSourceIndex(pLight[i].nIdxTarget);
    for (uint32_t i = 0; i < nNumNode; ++i)
    {
        if (pNode[i].nIdxParent != -1)
            pNode[i].nIdxParent = ResolveSourceIndex(pNode[i].nIdxParent);
        // A host may hand faces material ids that name no written material (materials switched
        // off, or a bad id): a reader must never follow a node into a list it does not have.
        if (pNode[i].nIdxMaterial < -1 || pNode[i].nIdxMaterial >= static_cast<int32_t>(nNumMaterial))
            pNode[i].nIdxMaterial = -1;
    }
    // Meshes get their batches in GenD, which resolves them as it makes them; any present now are
    // resolved here.
    for (uint32_t i = 0; i < nNumMesh; ++i)
        if (pMesh[i].sBoneBatch.nBatchCnt)
            ResolveBones(pMesh[i]);
    return true;
}

void CTVOSceneEx::ResolveBones(STVOMesh& mesh) const
{
    CQMXTBoneBatches& b = mesh.sBoneBatch;
    if (b.nBatchCnt)
    {
        for (uint32_t batch = 0; batch < b.nBatchCnt; ++batch)
            for (uint32_t k = 0; k < b.pnBatchBoneCnt[batch]; ++k)
            {
                uint32_t& bone = b.pnBatches[batch * b.nBatchBoneMax + k];
                bone = static_cast<uint32_t>(ResolveSourceIndex(static_cast<int32_t>(bone)));
            }
        return;
    }
    // No batches: the vertices name their bones directly.
    CTVOData& idx = mesh.sBoneIdx;
    const CTVOData& wt = mesh.sBoneWeight;
    if (!idx.n || !wt.n || !mesh.nNumVertex)
        return;
    uint8_t* idxBase = mesh.pInterleaved ? mesh.pInterleaved + QMXTModelTVODataOffset(idx) : idx.pData;
    const uint8_t* wtBase = mesh.pInterleaved ? mesh.pInterleaved + QMXTModelTVODataOffset(wt) : wt.pData;
    if (!idxBase || !wtBase)
        return;
    const uint32_t count = std::min<uint32_t>({idx.n, wt.n, eQMXTMaxBonesPerVertex});
    for (uint32_t v = 0; v < mesh.nNumVertex; ++v)
    {
        float bones[eQMXTMaxBonesPerVertex], weights[eQMXTMaxBonesPerVertex];
        uint8_t* pi = idxBase + static_cast<size_t>(v) * idx.nStride;
        QMXTVertexRead(bones, pi, idx.eType, count);
        QMXTVertexRead(weights, wtBase + static_cast<size_t>(v) * wt.nStride, wt.eType, count);
        for (uint32_t k = 0; k < count; ++k)
            if (weights[k] != 0.0f)
                bones[k] = static_cast<float>(ResolveSourceIndex(static_cast<int32_t>(bones[k])));
        QMXTVertexWrite(pi, idx.eType, count, bones);
    }
}

void CTVOSceneEx::GenC(const SBuilderSettings& settings)
{
    for (uint32_t i = 0; i < nNumNode && i < nodes.size(); ++i)
        GenNodeAnimation(pNode[i], nodes[i], nNumFrame, settings);
}
