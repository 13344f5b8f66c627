// Pieces of the Assimp scene filler, shared by its source files only (it pulls in Assimp).
#pragma once

#include <assimp/scene.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "AssimpContent.h"
#include "Content.h"
#include "QMXTMath.h"

// The importer's column-vector matrix in the scene model's row-vector layout (its transpose).
QMXTMATRIXf AssimpRowMatrix(const aiMatrix4x4& m);

// translation x rotation x scaling for column vectors: scale first, then rotate, then move. Written
// out rather than composed with the importer's operations: its constructor from these three scales
// the rotation's rows, not its columns, and its matrix products add exact zeros that turn -0 into
// +0, which changes the written bytes.
aiMatrix4x4 AssimpCompose(const aiVector3D& scaling, const aiQuaternion& rotation,
                          const aiVector3D& position);

// The node tree flattened depth-first, parents before children.
class CAssimpGraph
{
  public:
    // False with the reason when there is no root or a node is reached twice.
    bool Build(const aiScene& scene, std::string& error);

    int Count() const { return static_cast<int>(m_nodes.size()); }
    const aiNode& Node(int i) const { return *m_nodes[i]; }
    int Parent(int i) const { return m_parents[i]; }
    const std::vector<int>& Children(int i) const { return m_children[i]; }
    // The first node of that name in depth-first order, -1 when none.
    int Find(const std::string& name) const;

  private:
    std::vector<const aiNode*> m_nodes;
    std::vector<int> m_parents;
    std::vector<std::vector<int>> m_children;
    std::unordered_map<std::string, int> m_byName;
};

// Index of the animation a request names (a name first, else an index from 0); the first one for an
// empty request; -1 for a scene without animations. -2 with the reason when the request matches none.
int ChooseAssimpAnimation(const aiScene& scene, const std::string& request, std::string& error);

// Frames per second an animation is sampled at by default: its tick rate when that is a plausible
// frame rate (1 to 240 ticks a second), else 30.
int AssimpAnimationRate(const aiAnimation& anim);

// Key sampling at time t in ticks: clamped to the first and last key, linear between keys (spherical
// for rotations), interpolated in double. A t within tolerance of a key's time gives that key's value
// exactly. fallback is returned when there are no keys. Key is aiVectorKey (positions, scalings)
// or aiQuatKey (rotations).
template <class Key> using AssimpKeyValue = decltype(Key::mValue);
template <class Key>
AssimpKeyValue<Key> SampleAssimpKeys(const Key* keys, unsigned count, double t, const AssimpKeyValue<Key>& fallback,
                                     double tolerance = 0.0);

// Local and global transforms of the graph's nodes at every frame of one animation (or of the still
// scene, which has one frame).
class CAssimpSampler
{
  public:
    // Most node-frames sampled; a longer animation is refused rather than exhausting memory.
    static const long long kMaxSamples = 4000000;

    // anim may be null. fps 0 takes the animation's own rate. False with the reason when the
    // animation is too long to sample.
    bool Init(const CAssimpGraph& graph, const aiAnimation* anim, int fps, std::string& error);

    int FrameCount() const { return m_iFrames; }
    int Fps() const { return m_iFps; }
    bool IsAnimated(int node) const { return m_channelOf[node] >= 0; }
    double TimeOfFrame(int frame) const; // in ticks
    aiMatrix4x4 Local(int node, int frame) const;
    void Globals(int frame, std::vector<aiMatrix4x4>& out) const;

  private:
    // A channel's keys in time order (some importers deliver them unordered).
    struct SChannel
    {
        std::vector<aiVectorKey> positions, scalings;
        std::vector<aiQuatKey> rotations;
    };

    const CAssimpGraph* m_pGraph = nullptr;
    std::vector<int> m_channelOf; // per graph node, index into m_channelKeys or -1 when not animated
    std::vector<SChannel> m_channelKeys;
    int m_iFrames = 1;
    int m_iFps = 30;
    double m_dTicksPerFrame = 1.0;
    double m_dLastTick = 0.0;
};

// Materials of the content, added on first use; texture names, with embedded textures collected.
class CAssimpMaterials
{
  public:
    CAssimpMaterials(const aiScene& scene, SContent& content, const std::string& texturePrefix,
                     const std::string& sceneFolder);
    // Content index of the importer's material, added on first use; -1 for an invalid index.
    int Use(unsigned materialIndex);
    std::vector<SEmbeddedTexture>& Textures() { return m_textures; }

  private:
    std::string TextureName(const aiString& path);
    std::string EmbeddedName(const aiTexture& texture, unsigned index);

    const aiScene& m_scene;
    SContent& m_content;
    std::string m_sPrefix;
    std::string m_sSceneFolder;
    std::vector<int> m_contentIndex; // per importer material, -1 until used
    std::unordered_map<const aiTexture*, std::string> m_embeddedNames;
    std::vector<SEmbeddedTexture> m_textures;
};

// Fills the geometry of a node from its meshes. globals0 are the global transforms at frame 0.
// A skinned mesh is deformed at frame 0 and gets a skin whose bone values are GRAPH node indices
// (the caller maps them to content indices); corners without influences are bound to the node
// itself. Messages name the content node.
// Only the streams asked for are extracted: without materials faces keep -1 and no material is
// added; without skins the mesh stays deformed at frame 0 but carries no skin.
void FillAssimpGeometry(CNode& node, int graphIndex, const aiScene& scene, const CAssimpGraph& graph,
                        const std::vector<aiMatrix4x4>& globals0, CAssimpMaterials& materials,
                        const SExtractedStreams& streams);

// The matrix (row vectors) that places a light's or camera's view in its node's space: row 1 is the
// negated view direction and row 2 the negated up (the scene model's light looks along -row 1, its
// camera looks along -row 1 with up -row 2), row 0 completes a right-handed frame, row 3 holds the
// position. An up that is missing or parallel to the direction is replaced by a perpendicular.
QMXTMATRIXf AssimpViewFrame(const aiVector3D& position, const aiVector3D& direction, const aiVector3D& up);

// Where an importer departs from the documented meaning of the camera and light fields, told by
// the scene's "SourceAsset_Format". The glTF 2 importer of Assimp 5.2 stores the vertical field of
// view times the aspect as the horizontal angle, copies the node's translation into the camera's
// position (which is relative to that very node) and passes spot cone angles measured from the axis
// instead of full cone angles.
struct SAssimpQuirks
{
    bool fovIsVerticalTimesAspect = false;
    bool cameraPositionRepeatsNode = false;
    bool coneAnglesFromAxis = false;
};
SAssimpQuirks AssimpQuirksOf(const aiScene& scene);

// Light kinds the scene model has: fills light and returns true; false for ambient, area and
// undefined lights.
bool FillAssimpLight(const aiLight& source, const SAssimpQuirks& quirks, SLightData& light);

// Full vertical field of view in radians from the importer's full horizontal angle and aspect.
float AssimpVerticalFov(const aiCamera& camera, const SAssimpQuirks& quirks);

// The camera's position in its node's space.
aiVector3D AssimpCameraPosition(const aiCamera& camera, const SAssimpQuirks& quirks);
