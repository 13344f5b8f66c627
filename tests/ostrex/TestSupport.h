// Helpers for the scene filler tests: scenes built in code with the importer's own structures,
// reference transforms straight from the importer's data, and a scene model holding the filled
// content's nodes, lights and cameras (in the builder's node order) for the model's own queries.
#pragma once

#include "TempFiles.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Content.h"
#include "QMXTModelTVO.h"

// Builds an aiScene; the scene owns everything added.
class CSceneKit
{
  public:
    CSceneKit();
    aiScene& Scene() { return *m_scene; }
    aiNode* Root() { return m_scene->mRootNode; }
    aiNode* AddNode(aiNode* parent, const std::string& name, const aiMatrix4x4& local = aiMatrix4x4());
    // A mesh of the given vertices and faces (each face a list of vertex indices); returns its index.
    unsigned AddMesh(std::vector<aiVector3D> vertices, std::vector<std::vector<unsigned>> faces,
                     unsigned material = 0);
    aiMesh& Mesh(unsigned i) { return *m_scene->mMeshes[i]; }
    void AttachMesh(aiNode* node, unsigned mesh);
    unsigned AddMaterial(aiMaterial* material);
    aiLight& AddLight(const std::string& node, aiLightSourceType type);
    aiCamera& AddCamera(const std::string& node);
    aiAnimation& AddAnimation(const std::string& name, double duration, double ticksPerSecond);
    aiNodeAnim& AddChannel(aiAnimation& anim, const std::string& node);
    void AddBone(unsigned mesh, const std::string& node, const aiMatrix4x4& offset,
                 std::vector<std::pair<unsigned, float>> weights);

  private:
    std::unique_ptr<aiScene> m_scene;
};

// The importer's global transform of a node: its matrix times those of its ancestors.
aiMatrix4x4 GlobalOf(const aiNode* node);
// The importer's matrix in the scene model's row-vector layout.
QMXTMATRIXf RowLayout(const aiMatrix4x4& m);
const aiNode* FindNode(const aiScene& scene, const std::string& name);

// A scene model with the content's nodes (static transform, or frames when animated), lights and
// cameras, mesh nodes first, then lights, then cameras, then the rest, as the builder orders them.
class CContentModel
{
  public:
    explicit CContentModel(const SContent& content);
    CQMXTModelTVO& Model() { return m_model; }
    // The scene model node of a content node.
    STVONode& Node(int contentIndex) { return m_model.pNode[m_modelIndex[contentIndex]]; }
    QMXTMATRIXf World(int contentIndex, float frame = 0.0f);
    // Light and camera numbers of content nodes, in content order.
    int LightNumber(int contentIndex) const;
    int CameraNumber(int contentIndex) const;

  private:
    CQMXTModelTVO m_model;
    std::vector<int> m_modelIndex;
    std::vector<int> m_lights, m_cameras;
};

// Loads a file the way the command line does.
const aiScene* LoadLikeTheCommandLine(Assimp::Importer& importer, const std::string& path);

// Index of the content node with that name, -1 when none (the first one).
int ContentIndex(const SContent& content, const std::string& name);

// The importer's own pose: global transforms of every node at time t of an animation (a channel
// drives the first node of its name; keys are put in time order), or of the still scene. Kept apart
// from the filler's sampling: a linear search over the keys.
class CImporterPose
{
  public:
    CImporterPose(const aiScene& scene, const aiAnimation* anim);
    void At(double t);
    const aiMatrix4x4& Global(const aiNode* node) const { return m_globals.at(node); }
    const aiMatrix4x4& Global(const std::string& name) const;

  private:
    struct SKeys
    {
        std::vector<aiVectorKey> pos, scale;
        std::vector<aiQuatKey> rot;
    };
    void Walk(const aiNode* node, const aiMatrix4x4& parent, double t);

    const aiScene& m_scene;
    std::map<const aiNode*, SKeys> m_channels;
    std::map<const aiNode*, aiMatrix4x4> m_globals;
};

// The world positions of a node's triangle corners by the importer at the pose's time: its global
// transform, or its skinning (global bone x offset, weighted) for skinned meshes. Corners of
// vertices with more than four influences are NaN, as the content keeps only four.
std::vector<aiVector3D> ImporterCorners(const aiScene& scene, const aiNode& node, const CImporterPose& pose);

// Largest distance from the origin of any mesh vertex after the global transforms: a size measure.
float SceneSize(const aiScene& scene);

// The importer's time (in ticks) of a frame sampled at fps: clamped to the last key or the duration.
double ImporterTime(const aiAnimation& anim, int frame, int fps);

// A scene model's light (camera) number against the importer's light (camera) of that name at the
// pose's time: empty when they agree (positions within 1e-4 of size, directions at a cosine above
// 0.99999), otherwise what differs. Point lights' directions count only when asked.
std::string CompareLight(const aiScene& scene, const CImporterPose& pose, CQMXTModelTVO& model,
                         uint32_t light, const std::string& name, float size, bool pointDirections);
std::string CompareCamera(const aiScene& scene, const CImporterPose& pose, CQMXTModelTVO& model,
                          uint32_t camera, const std::string& name, float size);

// Element-wise comparisons, failure messages naming what was compared.
void ExpectMatrixNear(const QMXTMATRIXf& got, const QMXTMATRIXf& want, float tol, const std::string& what);
void ExpectVecNear(const QMXTVECTOR3f& got, const aiVector3D& want, float tol, const std::string& what);
