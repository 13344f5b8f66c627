// The scene model under construction: a CQMXTModelTVO plus the builder's lists, and the build
// stages that fill it from scene content.
//
// GenA turns the content into nodes, meshes, lights, cameras, materials and textures held in the
// builder lists; GenB moves the lists into the model's arrays and resolves content indices into
// node positions; GenC cleans up node animation; GenD runs the geometry pass on every mesh. Bone
// batches only exist once GenD has made them, so GenD resolves their bone tables (content index to
// node position) as it makes them; a skinned mesh without batches gets the node positions in its
// vertices' bone indices instead.
//
// Node order: mesh nodes first (nNumMeshNode of them), then one node per light, one per camera, the
// remaining nodes, and last the parents of split meshes. A node split by material becomes one
// "<name>-submeshN" node per material, with an identity transform, under a plain node that keeps
// the content node's name, transform, animation and place in the hierarchy.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BuilderSettings.h"
#include "Content.h"
#include "QMXTModelTVO.h"
#include "TVOMeshEx.h"
#include "TVONodeEx.h"

class CTVOSceneEx : public CQMXTModelTVO
{
  public:
    CTVOSceneEx() = default;
    ~CTVOSceneEx();
    CTVOSceneEx(const CTVOSceneEx&) = delete;
    CTVOSceneEx& operator=(const CTVOSceneEx&) = delete;

    // Empties the builder lists, freeing what they own.
    void Reset();
    // Frees the model's arrays (whether or not InitImpl ran) and the builder lists.
    void DestroyAll();

    bool GenA(const SContent* content, const SBuilderSettings& settings);
    // With a content given, GenA frees each node's geometry and skin there as soon as the node's
    // faces are in its meshes' stores: content (the same object GenA reads) that its host no longer needs then
    // stops holding memory while the later stages run. Null (the default) leaves the content as it is.
    void FreeGeometryOnceBuilt(SContent* content) { m_pFreeGeometryOf = content; }
    // Threads for assembling nodes' meshes in GenA and for GenD's per-mesh passes (0: one a core).
    // Output and messages do not depend on it.
    void SetThreads(unsigned threads) { m_nThreads = threads; }
    // False when an array cannot be allocated, with every count matching its array and each record
    // owned once, by an array or a builder list (DestroyAll frees both).
    bool GenB();
    void GenC(const SBuilderSettings& settings);
    bool GenD(const SBuilderSettings& settings);

    // Assembles the mesh node(s) of one content node; false (logged) when its geometry is invalid.
    bool AddMesh(const CNode& cnode, const SBuilderSettings& settings);
    // AddMesh in two steps, so that nodes can be assembled on several threads. BuildMeshes makes and
    // finishes the meshes of one node, one a material, touching nothing of the scene (giveUp, when
    // given, is the node's content to free once its faces are in the stores); false, logged, for
    // invalid geometry. PlaceMeshes then adds them to the scene with their nodes, in node order.
    struct SBuiltMeshes
    {
        std::vector<std::pair<int, std::unique_ptr<CTVOMeshEx>>> meshes; // by material
        bool split = false;   // more than one material
        bool finished = true; // false: the last mesh could not be finished (too large)
    };
    bool BuildMeshes(const CNode& cnode, const SBuilderSettings& settings, CNode* giveUp,
                     SBuiltMeshes& built);
    bool PlaceMeshes(const CNode& cnode, const SBuilderSettings& settings, SBuiltMeshes& built);
    // Index of an equal mesh among the scene's meshes (the new one is then dropped and "Instancing
    // mesh" logged), or of mesh appended.
    unsigned FindOrCreate(std::unique_ptr<CTVOMeshEx> mesh);
    // Index of the texture of that file name, appended when new; -1 for an empty name.
    int FindOrCreate(const std::string& fileName);

    // Node position of the first node built from content node sourceIndex, or sourceIndex itself
    // when there is none.
    int32_t ResolveSourceIndex(int32_t sourceIndex) const;
    // Rewrites the bone-batch table of a mesh (bones named by content index) to node positions;
    // without batches, the bone indices stored in the vertices instead.
    void ResolveBones(STVOMesh& mesh) const;

    std::vector<STVOCamera> cameras;
    std::vector<STVOLight> lights;
    std::vector<std::unique_ptr<CTVOMeshEx>> meshes;
    std::vector<CTVONodeEx> nodes;
    std::vector<CTVONodeEx> pendingNodes;
    std::vector<STVOMaterial> materials;
    std::vector<std::string> textures;

  private:
    SContent* m_pFreeGeometryOf = nullptr;
    unsigned m_nThreads = 0;
    void AddNode(CTVONodeEx&& node) { nodes.push_back(std::move(node)); }
    void ReportProgress(size_t contentNodes, const std::string& name) const;
    void GenMaterials(const SContent& content);
};

// Checks every index of a mesh node's geometry against its lists (normals and colours only when
// they are exported); false when one is out of range or a mapping channel has the wrong face count.
bool ValidateGeometry(const SGeomData& geom, const SBuilderSettings& settings);
