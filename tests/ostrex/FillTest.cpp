// The Assimp scene filler on scenes built in code: geometry, materials, skins, lights and cameras,
// animation, selection and refusals.
#include <gtest/gtest.h>

#include <assimp/material.h>
#include <assimp/texture.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "AssimpContent.h"
#include "AssimpInternal.h"
#include "Log.h"
#include "TestSupport.h"

namespace
{
// Appends an item to an array the importer's structures own (allocated with new[], count entries);
// returns the item.
template <class T> T Append(T*& array, unsigned& count, T item)
{
    T* grown = new T[count + 1];
    std::copy(array, array + count, grown);
    grown[count++] = item;
    delete[] array;
    array = grown;
    return item;
}

template <class T> T* Named(T* item, const std::string& name)
{
    item->mName = name;
    return item;
}

// Builds an aiScene; the scene owns everything added.
class CSceneKit
{
  public:
    CSceneKit() : m_scene(new aiScene) { m_scene->mRootNode = new aiNode("Root"); }
    aiScene& Scene() { return *m_scene; }
    aiNode* Root() { return m_scene->mRootNode; }
    aiMesh& Mesh(unsigned i) { return *m_scene->mMeshes[i]; }

    aiNode* AddNode(aiNode* parent, const std::string& name, const aiMatrix4x4& local = aiMatrix4x4())
    {
        aiNode* node = Append(parent->mChildren, parent->mNumChildren, new aiNode(name));
        node->mTransformation = local;
        node->mParent = parent;
        return node;
    }
    // A mesh of the given vertices and faces (each face a list of vertex indices); returns its index.
    unsigned AddMesh(const std::vector<aiVector3D>& vertices, const std::vector<std::vector<unsigned>>& faces,
                     unsigned material = 0)
    {
        aiMesh* mesh = Append(m_scene->mMeshes, m_scene->mNumMeshes, new aiMesh);
        mesh->mNumVertices = static_cast<unsigned>(vertices.size());
        mesh->mVertices = new aiVector3D[vertices.size()];
        std::copy(vertices.begin(), vertices.end(), mesh->mVertices);
        mesh->mNumFaces = static_cast<unsigned>(faces.size());
        mesh->mFaces = new aiFace[faces.size()];
        for (size_t f = 0; f < faces.size(); ++f)
        {
            mesh->mFaces[f].mNumIndices = static_cast<unsigned>(faces[f].size());
            mesh->mFaces[f].mIndices = new unsigned[faces[f].size()];
            std::copy(faces[f].begin(), faces[f].end(), mesh->mFaces[f].mIndices);
        }
        mesh->mMaterialIndex = material;
        mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
        return m_scene->mNumMeshes - 1;
    }
    void AttachMesh(aiNode* node, unsigned mesh) { Append(node->mMeshes, node->mNumMeshes, mesh); }
    void AddMaterial(aiMaterial* material) { Append(m_scene->mMaterials, m_scene->mNumMaterials, material); }
    aiLight& AddLight(const std::string& node, aiLightSourceType type)
    {
        aiLight* light = Append(m_scene->mLights, m_scene->mNumLights, Named(new aiLight, node));
        light->mType = type;
        return *light;
    }
    aiCamera& AddCamera(const std::string& node)
    {
        return *Append(m_scene->mCameras, m_scene->mNumCameras, Named(new aiCamera, node));
    }
    aiAnimation& AddAnimation(const std::string& name, double duration, double ticksPerSecond)
    {
        aiAnimation* anim =
            Append(m_scene->mAnimations, m_scene->mNumAnimations, Named(new aiAnimation, name));
        anim->mDuration = duration;
        anim->mTicksPerSecond = ticksPerSecond;
        return *anim;
    }
    aiNodeAnim& AddChannel(aiAnimation& anim, const std::string& node,
                           const std::vector<aiVectorKey>& positions,
                           const std::vector<aiQuatKey>& rotations = {})
    {
        aiNodeAnim* channel = Append(anim.mChannels, anim.mNumChannels, new aiNodeAnim);
        channel->mNodeName = node;
        for (const aiVectorKey& key : positions)
            Append(channel->mPositionKeys, channel->mNumPositionKeys, key);
        for (const aiQuatKey& key : rotations)
            Append(channel->mRotationKeys, channel->mNumRotationKeys, key);
        return *channel;
    }
    void AddBone(unsigned mesh, const std::string& node, const aiMatrix4x4& offset,
                 const std::vector<std::pair<unsigned, float>>& weights)
    {
        aiBone* bone = Append(Mesh(mesh).mBones, Mesh(mesh).mNumBones, Named(new aiBone, node));
        bone->mOffsetMatrix = offset;
        bone->mNumWeights = static_cast<unsigned>(weights.size());
        bone->mWeights = new aiVertexWeight[weights.size()];
        for (size_t i = 0; i < weights.size(); ++i)
            bone->mWeights[i] = aiVertexWeight(weights[i].first, weights[i].second);
    }

  private:
    std::unique_ptr<aiScene> m_scene;
};

aiMatrix4x4 TRS(const aiVector3D& t, const aiQuaternion& r = aiQuaternion(), const aiVector3D& s = {1, 1, 1})
{
    return AssimpCompose(s, r, t);
}

aiQuaternion Turn(const aiVector3D& axis, float angle)
{
    return aiQuaternion(aiVector3D(axis).Normalize(), angle);
}

SContent Fill(CSceneKit& kit, const SAssimpFillSettings& settings = {})
{
    SContent content;
    const SAssimpFillResult r = FillContentFromAssimp(kit.Scene(), settings, content);
    EXPECT_TRUE(r.ok) << r.error;
    return content;
}

std::string FillError(CSceneKit& kit, const SAssimpFillSettings& settings = {})
{
    SContent content;
    content.nodes.resize(3); // replaced even on failure
    const SAssimpFillResult r = FillContentFromAssimp(kit.Scene(), settings, content);
    EXPECT_FALSE(r.ok);
    EXPECT_TRUE(content.nodes.empty());
    return r.error;
}

unsigned Triangle(CSceneKit& kit, unsigned material = 0)
{
    return kit.AddMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}, material);
}

aiMaterial* NamedMaterial(const char* name)
{
    aiMaterial* m = new aiMaterial;
    const aiString s(name);
    m->AddProperty(&s, AI_MATKEY_NAME);
    return m;
}

// Every node as "name kind parent", with the light kind (0 point, 1 directional, 2 spot) and
// "->target" for lights and cameras.
std::string Nodes(const SContent& c)
{
    std::string s;
    for (const CNode& n : c.nodes)
    {
        const bool light = n.type == eNodeLight, view = light || n.type == eNodeCamera;
        const int target = light ? n.light.target : n.camera.target;
        s += n.name + " " + std::to_string(n.type) + " " + (n.parent < 0 ? "-" : c.nodes[n.parent].name) +
             (light ? " " + std::to_string(n.light.lightType) : "") +
             (view && target >= 0 ? " ->" + c.nodes[target].name : "") + ", ";
    }
    return s;
}

// Values as text, rounded to four decimals.
std::string Text(const float* v, int n)
{
    std::string s;
    char b[24];
    for (int i = 0; i < n; ++i)
    {
        std::snprintf(b, sizeof b, i ? " %g" : "%g", std::round(v[i] * 1e4f) / 1e4f + 0.0f);
        s += b;
    }
    return s;
}

// Every corner of a geometry as "position n normal c colour t uvw-of-each-channel m material".
std::vector<std::string> Corners(const SGeomData& g)
{
    std::vector<std::string> corners;
    for (size_t f = 0; f < g.faces.size(); ++f)
        for (int c = 0; c < 3; ++c)
        {
            const SFace& face = g.faces[f];
            std::string s =
                Text(&g.positions[face.pos[c]].x, 3) + " n " + Text(&g.normals[face.normal[c]].x, 3);
            s += face.colour[c] < 0 ? " c -" : " c " + Text(&g.colours[face.colour[c]].x, 4);
            for (const SMappingChannel& ch : g.channels)
                s += " t " + Text(&ch.uvw[ch.faces[f].idx[c]].x, 3);
            corners.push_back(s + " m " + std::to_string(face.material));
        }
    return corners;
}

void AddTexture(aiMaterial* m, aiTextureType type, const char* path)
{
    const aiString s(path);
    m->AddProperty(&s, AI_MATKEY_TEXTURE(type, 0));
}
} // namespace

// The roof, the second mesh, has no normals: two triangles at a right angle sharing an edge with
// separate vertices, and one that names a vertex twice; its normals are smoothed over the corners at the
// same place. Materials are added on first use and shared, embedded textures named after the scene.
TEST(AssimpFill, MeshesAndMaterialsWithChannelsColoursSlotsSmoothedNormalsAndEmbeddedTextures)
{
    CSceneKit kit;
    const unsigned quad =
        kit.AddMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}, {0, 1}}, 1);
    aiMesh& m = kit.Mesh(quad);
    m.mNormals = new aiVector3D[4]{{0, 0, 1}, {0, 0, 2}, {0, 0, 0}, {0, 0, 1}}; // one unusable
    m.mTextureCoords[0] = new aiVector3D[4]{{0, 0, 9}, {1, 0, 9}, {1, 1, 9}, {0, 1, 9}};
    m.mNumUVComponents[0] = 2;
    m.mTextureCoords[2] = new aiVector3D[4]{{.1f, .2f, .3f}, {.4f, .5f, .6f}, {.7f, .8f, .9f}, {1, 1, 1}};
    m.mNumUVComponents[2] = 3;
    m.mColors[0] = new aiColor4D[4]{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 0.5f}};
    const unsigned roof = kit.AddMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 0, 1}, {1, 0, 0}},
                                      {{0, 1, 2}, {3, 4, 5}, {4, 4, 1}}, 2);
    aiNode* geo = kit.AddNode(kit.Root(), "Geo");
    kit.AttachMesh(geo, quad);
    kit.AttachMesh(geo, roof);
    aiMaterial* red = NamedMaterial("Red");
    const aiColor3D diffuse(1, 0, 0), specular(0.5f, 0.5f, 0.5f), ambient(0.1f, 0.2f, 0.3f);
    const float shininess = 20.0f, opacity = 0.25f;
    red->AddProperty(&diffuse, 1, AI_MATKEY_COLOR_DIFFUSE);
    red->AddProperty(&specular, 1, AI_MATKEY_COLOR_SPECULAR);
    red->AddProperty(&ambient, 1, AI_MATKEY_COLOR_AMBIENT);
    red->AddProperty(&shininess, 1, AI_MATKEY_SHININESS);
    AddTexture(red, aiTextureType_DIFFUSE, "C:\\maps\\brick.png");
    AddTexture(red, aiTextureType_HEIGHT, "textures/bump.jpg");
    AddTexture(red, aiTextureType_SHININESS, "gloss.png");
    AddTexture(red, aiTextureType_OPACITY, "*0");
    AddTexture(red, aiTextureType_EMISSIVE, "*1");
    aiMaterial* glass = NamedMaterial("Glass");
    glass->AddProperty(&opacity, 1, AI_MATKEY_OPACITY);
    AddTexture(glass, aiTextureType_HEIGHT, "h.png");
    AddTexture(glass, aiTextureType_NORMALS, "n.png");
    AddTexture(glass, aiTextureType_BASE_COLOR, "base.png");
    AddTexture(glass, aiTextureType_LIGHTMAP, "*0"); // the same embedded texture again
    kit.AddMaterial(NamedMaterial("Unused"));
    kit.AddMaterial(red);
    kit.AddMaterial(glass);
    aiTexture* png = new aiTexture;
    png->mWidth = 5; // compressed: five bytes of file
    std::strcpy(png->achFormatHint, "png");
    png->pcData = new aiTexel[2];
    std::memcpy(png->pcData, "\x89PNG!", 5);
    aiTexture* texels = new aiTexture;
    texels->mWidth = 2;
    texels->mHeight = 1;
    texels->pcData = new aiTexel[2]{{10, 20, 30, 40}, {50, 60, 70, 80}}; // b, g, r, a
    texels->mFilename = "glow.bmp";
    kit.Scene().mNumTextures = 2;
    kit.Scene().mTextures = new aiTexture* [2] { png, texels };
    kit.AttachMesh(kit.AddNode(kit.Root(), "Other"), Triangle(kit, 1)); // Red again
    kit.AttachMesh(kit.AddNode(kit.Root(), "Wire"), kit.AddMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 1}}, 1));

    SAssimpFillSettings settings;
    settings.texturePrefix = "scene";
    CRecordingLogSink log;
    SContent content;
    const SAssimpFillResult r = FillContentFromAssimp(kit.Scene(), settings, content);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_TRUE(
        log.Has(eLogWarning,
                "Warning: 'Geo': 1 point and line primitives (or faces with bad indices) are not exported."));
    EXPECT_TRUE(log.Has(eLogWarning, "Warning: Mesh 'Wire' has no triangles. Exporting as a dummy node."));
    const SGeomData& g = content.nodes[ContentIndex(content, "Geo")].geom;
    // Indexed: each vertex once; the two corners at the quad's vertex without a usable normal take
    // their triangle's normal as entries of their own. Channels are compacted (sets 0 and 2).
    EXPECT_EQ(
        (std::vector<size_t>{g.positions.size(), g.normals.size(), g.colours.size(), g.channels.size()}),
        (std::vector<size_t>{13, 12, 4, 2}));
    EXPECT_EQ(Corners(g), (std::vector<std::string>{
                              "0 0 0 n 0 0 1 c 1 0 0 1 t 0 0 0 t 0.1 0.2 0.3 m 0",
                              "1 0 0 n 0 0 1 c 0 1 0 1 t 1 0 0 t 0.4 0.5 0.6 m 0",
                              "1 1 0 n 0 0 1 c 0 0 1 1 t 1 1 0 t 0.7 0.8 0.9 m 0",
                              "0 0 0 n 0 0 1 c 1 0 0 1 t 0 0 0 t 0.1 0.2 0.3 m 0",
                              "1 1 0 n 0 0 1 c 0 0 1 1 t 1 1 0 t 0.7 0.8 0.9 m 0",
                              "0 1 0 n 0 0 1 c 1 1 1 0.5 t 0 1 0 t 1 1 1 m 0",
                              "0 0 0 n 0 0.7071 0.7071 c - t 0 0 0 t 0 0 0 m 1",
                              "1 0 0 n 0 0.7071 0.7071 c - t 0 0 0 t 0 0 0 m 1",
                              "0 1 0 n 0 0 1 c - t 0 0 0 t 0 0 0 m 1",
                              "0 0 0 n 0 0.7071 0.7071 c - t 0 0 0 t 0 0 0 m 1",
                              "0 0 1 n 0 1 0 c - t 0 0 0 t 0 0 0 m 1",
                              "1 0 0 n 0 0.7071 0.7071 c - t 0 0 0 t 0 0 0 m 1",
                              "0 0 1 n 0 1 0 c - t 0 0 0 t 0 0 0 m 1",
                              "0 0 1 n 0 1 0 c - t 0 0 0 t 0 0 0 m 1",
                              "1 0 0 n 0 0.7071 0.7071 c - t 0 0 0 t 0 0 0 m 1",
                          }));
    EXPECT_FALSE(g.faces[4].IsDegenerate()); // the repeating triangle keeps three corners of its own
    ASSERT_EQ(content.materials.size(), 2u); // Red and Glass in the order of first use
    EXPECT_EQ(content.nodes[ContentIndex(content, "Other")].geom.faces[0].material, 0);
    const SMaterial &m0 = content.materials[0], &m1 = content.materials[1];
    EXPECT_EQ(m0.name + " " + m1.name, "Red Glass");
    EXPECT_EQ((std::vector<float>{m0.diffuse[0], m0.specular[1], m0.ambient[2], m0.shininess, m0.opacity,
                                  m1.opacity}),
              (std::vector<float>{1.0f, 0.5f, 0.3f, 20.0f, 1.0f, 0.25f}));
    EXPECT_EQ(std::vector<std::string>(m0.textures, m0.textures + SMaterial::eTextureSlots),
              (std::vector<std::string>{"brick.png", "", "", "", "bump.jpg", "scene_glow.tga", "gloss.png",
                                        "scene_tex0.png", "", ""}));
    EXPECT_EQ(m1.textures[0] + " " + m1.textures[1] + " " + m1.textures[4], "base.png scene_tex0.png n.png");

    ASSERT_EQ(r.textures.size(), 2u); // in the order first named: the emissive slot comes first
    EXPECT_EQ(r.textures[1].fileName, "scene_tex0.png");
    EXPECT_EQ(std::string(r.textures[1].data.begin(), r.textures[1].data.end()), "\x89PNG!");
    EXPECT_EQ(r.textures[0].fileName, "scene_glow.tga");
    // A 32-bit true-colour TGA of 2 x 1 texels, eight alpha bits, rows from the top.
    EXPECT_EQ(r.textures[0].data, (std::vector<uint8_t>{0, 0, 2, 0,  0,    0,  0,  0,  0,  0,  0,  0,  2,
                                                        0, 1, 0, 32, 0x28, 10, 20, 30, 40, 50, 60, 70, 80}));
}

TEST(AssimpFill, SkinnedMeshIsDeformedAtFrameZeroWithFourInfluencesAndFoundJoints)
{
    CSceneKit kit;
    aiNode* arm = kit.AddNode(kit.Root(), "Arm", TRS({0, 0, 5}));
    kit.AddNode(kit.AddNode(kit.Root(), "B1", TRS({0, 0, 5})), "B2", TRS({0, 2, 0}));
    for (const char* extra : {"B3", "B4", "B5"})
        kit.AddNode(kit.Root(), extra, TRS({0, 0, 5}));
    const unsigned mesh =
        kit.AddMesh({{1, 0, 0}, {1, 2, 0}, {1, 1, 0}, {0, 0, 0}, {2, 2, 0}}, {{0, 1, 2}, {2, 3, 4}});
    kit.AttachMesh(arm, mesh);
    kit.AddMaterial(new aiMaterial);
    // Offsets: mesh space to bone space at the bind pose (globals before animation).
    auto offset = [&](const char* bone)
    { return aiMatrix4x4(GlobalOf(kit.Root()->FindNode(bone))).Inverse() * GlobalOf(arm); };
    kit.AddBone(mesh, "B1", offset("B1"), {{0, 1.0f}, {2, 0.5f}, {4, 0.1f}});
    kit.AddBone(mesh, "B2", offset("B2"), {{1, 1.0f}, {2, 0.5f}, {4, 0.3f}});
    kit.AddBone(mesh, "B3", offset("B3"), {{4, 0.05f}});
    kit.AddBone(mesh, "B4", offset("B4"), {{4, 0.2f}});
    kit.AddBone(mesh, "B5", offset("B5"), {{4, 0.35f}});
    const unsigned body = Triangle(kit); // a skin naming a joint that is not there
    kit.AttachMesh(kit.AddNode(kit.Root(), "Body"), body);
    kit.AddBone(body, "Ghost", aiMatrix4x4(), {{0, 1.0f}});
    // The animation moves the bones away from the bind pose already at frame 0.
    aiAnimation& anim = kit.AddAnimation("Wave", 10, 10);
    kit.AddChannel(anim, "B1", {{0, {0, 1, 5}}, {10, {3, 1, 5}}});
    kit.AddChannel(anim, "B2", {}, {{0, Turn({0, 0, 1}, AI_MATH_HALF_PI_F)}});

    CRecordingLogSink log;
    const SContent content = Fill(kit);
    EXPECT_EQ(
        log.Count("Warning (Arm): Ignoring some bone influences. \nThe maximum number of bone influences a "
                  "vertex may have is 4."),
        1);
    const int armIndex = ContentIndex(content, "Arm");
    const CNode& node = content.nodes[armIndex];
    ASSERT_EQ(node.modifiers.size(), 1u);
    const SModifier& skin = node.modifiers[0];
    for (const char* joint : {"B1", "B2", "B3", "B4", "B5"})
        EXPECT_EQ(content.nodes[ContentIndex(content, joint)].type, eNodeJoint) << joint;

    // Importer's skinning at frame 0 (globals with the first keys), with the kept weights; B4 and B5
    // rest where the mesh node is, so theirs is its global transform.
    const aiMatrix4x4 g1 = TRS({0, 1, 5}), s1 = g1 * offset("B1"), s5 = GlobalOf(arm),
                      s2 = g1 * TRS({0, 2, 0}, Turn({0, 0, 1}, AI_MATH_HALF_PI_F)) * offset("B2");
    const aiVector3D* v = kit.Mesh(mesh).mVertices;
    const aiVector3D expected[5] = {s1 * v[0], s2 * v[1], 0.5f * (s1 * v[2]) + 0.5f * (s2 * v[2]), s5 * v[3],
                                    (0.1f * (s1 * v[4]) + 0.3f * (s2 * v[4]) + 0.55f * (s5 * v[4])) / 0.95f};
    const QMXTMATRIXf world = ContentWorld(content, armIndex);
    for (int i = 0; i < 5; ++i)
    {
        QMXTVECTOR3f p;
        ExpectVecNear(QMXTTransform(p, node.geom.positions[i], world), expected[i], 1e-4f, std::to_string(i));
    }
    // Vertex 3 has no influences and follows the mesh node; B5 (0.35) took the place of B3 (0.05).
    std::string weights;
    for (const SBonedVtx& v : skin.vertices)
        for (const CBoneWeight& w : v.weights)
            weights += content.nodes[w.bone].name + " " + Text(&w.weight, 1) +
                       (&w == &v.weights.back() ? "; " : " ");
    EXPECT_EQ(weights, "B1 1; B2 1; B1 0.5 B2 0.5; Arm 1; B1 0.1053 B2 0.3158 B5 0.3684 B4 0.2105; ");

    EXPECT_TRUE(log.Has(eLogError, "Error: Joint Ghost could not be found for skinning."));
    const CNode& ghostly = content.nodes[ContentIndex(content, "Body")];
    ASSERT_EQ(ghostly.modifiers.size(), 1u);
    for (const SBonedVtx& v : ghostly.modifiers[0].vertices) // the mesh stays rigid with its node
        EXPECT_EQ(v.weights[0].bone, ContentIndex(content, "Body"));
}

// One rig of meshes, lights and cameras: placed and set as the importer has them, selected in part,
// and animated.
TEST(AssimpFill, LightsCamerasSelectionAndAnimationOfOneRig)
{
    CSceneKit kit;
    aiNode* rig = kit.AddNode(kit.Root(), "Rig", TRS({1, 2, 3}, Turn({0, 1, 0}, 0.7f), {2, 2, 2}));
    kit.AttachMesh(rig, Triangle(kit));
    const aiNode* lampNode = kit.AddNode(rig, "Lamp", TRS({0, 1, 0}));
    const aiNode* spotNode = kit.AddNode(kit.Root(), "Spot", TRS({4, 0, 0}, Turn({1, 0, 1}, 1.3f)));
    kit.AddNode(kit.Root(), "Spot.Target", TRS({9, 9, 9}));
    aiNode* sunNode = kit.AddNode(kit.Root(), "Sun", TRS({0, 10, 0}, Turn({1, 0, 0}, -0.4f)));
    kit.AttachMesh(sunNode, Triangle(kit));
    const aiNode* camNode = kit.AddNode(rig, "Cam", TRS({1, 0, 0}, Turn({0, 1, 0}, 0.5f)));
    kit.AddNode(kit.AddNode(kit.Root(), "Eye", TRS({0, 2, 0})), "Lens");
    kit.AddNode(kit.Root(), "Eye.Target", TRS({0, 0, -4}));
    kit.AddNode(kit.Root(), "Flat");
    kit.AddMaterial(new aiMaterial);
    aiLight& lamp = kit.AddLight("Lamp", aiLightSource_POINT);
    lamp.mPosition = {0.5f, 0, 0};
    lamp.mAttenuationLinear = 0; // no falloff at all
    lamp.mColorDiffuse = {1, 0.5f, 0.25f};
    aiLight& spot = kit.AddLight("Spot", aiLightSource_SPOT);
    spot.mDirection = {1, 0, 0};
    spot.mUp = {0, 0, 0}; // no usable up
    spot.mAngleOuterCone = 0.8f;
    spot.mAttenuationConstant = 1;
    spot.mAttenuationLinear = 0.1f;
    kit.AddLight("Sun", aiLightSource_DIRECTIONAL).mDirection = {0, -1, 0};
    kit.AddLight("Sky", aiLightSource_AMBIENT).mColorAmbient = {0.1f, 0.2f, 0.3f};
    kit.AddLight("Panel", aiLightSource_AREA);
    kit.AddLight("Orphan", aiLightSource_POINT);
    aiCamera& cam = kit.AddCamera("Cam");
    cam.mPosition = {1, 2, 3};
    cam.mLookAt = {2, 0, 0};
    cam.mUp = {0, 1, 0.2f}; // not quite perpendicular
    cam.mHorizontalFOV = 1.2f;
    cam.mAspect = 1.5f;
    cam.mClipPlaneNear = 0.5f;
    cam.mClipPlaneFar = 500;
    kit.AddCamera("Eye").mLookAt = {0, 0, -1};
    kit.AddCamera("Flat").mOrthographicWidth = 2;
    kit.AddAnimation("Idle", 5, 24); // the first: sampled by default, moving nothing
    kit.AddChannel(kit.AddAnimation("Move", 24, 24), "Rig", {{0, {0, 0, 0}}, {24, {24, 0, 0}}},
                   {{0, aiQuaternion()}, {24, Turn({0, 1, 0}, AI_MATH_HALF_PI_F)}});
    // Key times in float seconds (as glTF keeps them) meet frame times in double: two places
    // alternating at every frame give two distinct samples, each landing on its key exactly.
    std::vector<aiVectorKey> flipKeys;
    for (unsigned k = 0; k < 20; ++k)
        flipKeys.emplace_back(double(float(k) / 30.0f), k % 2 ? aiVector3D(1.3f, 0.7f, -2.1f) : aiVector3D());
    kit.AddChannel(kit.AddAnimation("Flip", double(19.0f / 30.0f), 1.0), "Rig", flipKeys);
    kit.AddAnimation("Long", 1e12, 1000);

    CRecordingLogSink log;
    const SContent content = Fill(kit);
    EXPECT_TRUE(log.Has(
        eLogWarning, "Warning: Light 'Panel' is an area light or of an unknown kind; it is not exported."));
    EXPECT_TRUE(log.Has(eLogWarning, "Warning: Light 'Orphan' has no node; it is not exported."));
    EXPECT_TRUE(log.Has(eLogWarning, "Warning: Camera 'Flat' is orthographic; it is not exported."));
    // A leaf light or camera is the node itself; one on a mesh node, or on a node with children, is a
    // child named after the node; an existing ".Target" node is its target, else one is made.
    ASSERT_EQ(Nodes(content),
              "Root 0 -, Rig 1 Root, Lamp 3 Rig 0, Cam 2 Rig ->Cam.Target, Spot 3 Root 2 ->Spot.Target, "
              "Spot.Target 0 Root, Sun 1 Root, Sun 3 Sun 1, Eye 0 Root, Eye 2 Eye ->Eye.Target, "
              "Lens 0 Eye, Eye.Target 0 Root, Flat 0 Root, Cam.Target 0 Cam, ");
    const int lampIndex = 2, camIndex = 3, spotIndex = 4, sunIndex = 7; // as listed
    const SLightData &lampLight = content.nodes[lampIndex].light, &spotLight = content.nodes[spotIndex].light;
    const SCameraData& camera = content.nodes[camIndex].camera;
    EXPECT_EQ((std::vector<float>{content.info.ambient[1], lampLight.colour[1], lampLight.constantAttenuation,
                                  spotLight.falloffAngle, spotLight.linearAttenuation, camera.nearPlane,
                                  camera.farPlane}),
              (std::vector<float>{0.2f, 0.5f, 1.0f, 0.8f, 0.1f, 0.5f, 500.0f}));
    EXPECT_FLOAT_EQ(camera.fov, 2.0f * std::atan(std::tan(0.6f) / 1.5f)); // vertical, from the horizontal

    // A view frame looks along -y, its up along -z (world rows 1 and 2); row 3 is its place.
    auto row = [&](int node, int r)
    {
        const QMXTMATRIXf w = ContentWorld(content, node);
        QMXTVECTOR3f v = {w[4 * r], w[4 * r + 1], w[4 * r + 2]}, unit;
        return r == 3 ? v : QMXTMatrixVec3NormalizeF(unit, {-v.x, -v.y, -v.z});
    };
    ExpectVecNear(row(lampIndex, 3), GlobalOf(lampNode) * lamp.mPosition, 1e-4f, "lamp position");
    ExpectVecNear(row(spotIndex, 1), (aiMatrix3x3(GlobalOf(spotNode)) * spot.mDirection).Normalize(), 1e-5f,
                  "spot direction");
    ExpectVecNear(row(sunIndex, 1), (aiMatrix3x3(GlobalOf(sunNode)) * aiVector3D(0, -1, 0)).Normalize(),
                  1e-5f, "sun direction");
    const aiMatrix4x4 g = GlobalOf(camNode);
    const aiVector3D view = (aiMatrix3x3(g) * cam.mLookAt).Normalize(), upWorld = aiMatrix3x3(g) * cam.mUp;
    ExpectVecNear(row(camIndex, 3), g * cam.mPosition, 1e-4f, "from");
    ExpectVecNear(row(camIndex, 1), view, 1e-5f, "view");
    ExpectVecNear(row(camIndex, 2), (upWorld - view * (upWorld * view)).Normalize(), 1e-5f, "up");
    // The target made for the camera is ahead of it, as far as its look-at vector reaches.
    ASSERT_GE(camera.target, 0);
    ExpectVecNear(row(camera.target, 3), g * (cam.mPosition + cam.mLookAt), 1e-4f, "target");

    // A selection keeps the subtrees of the nodes named, with their ancestors as plain transforms.
    SAssimpFillSettings settings;
    settings.selection = {"Lamp", "Eye"};
    const SContent selected = Fill(kit, settings);
    EXPECT_EQ(Nodes(selected), "Root 0 -, Rig 0 Root, Lamp 3 Rig 0, Eye 0 Root, Eye 2 Eye ->Eye.Target, "
                               "Lens 0 Eye, Eye.Target 0 Eye, ");
    const QMXTMATRIXf w = ContentWorld(selected, ContentIndex(selected, "Lamp"));
    ExpectVecNear({w[12], w[13], w[14]}, GlobalOf(lampNode) * lamp.mPosition, 1e-4f, "selected lamp");

    // Animation: by name at its own rate with lerp and slerp, by index at a chosen rate with float key
    // times, and one too long to sample.
    settings = SAssimpFillSettings();
    settings.animation = "Move";
    SContent moved;
    const SAssimpFillResult r = FillContentFromAssimp(kit.Scene(), settings, moved);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(r.animation, 1);
    EXPECT_EQ(moved.info.fps, 24);
    EXPECT_EQ(moved.info.endFrame, 24);
    const CNode& rigNode = moved.nodes[1]; // Rig, as listed
    ASSERT_EQ(rigNode.frames.size(), 25u);
    EXPECT_TRUE(moved.nodes[ContentIndex(moved, "Sun")].frames.empty());
    EXPECT_EQ(moved.nodes[ContentIndex(moved, "Cam")].camera.fovFrames.size(), 25u);
    EXPECT_EQ(rigNode.tm, rigNode.frames[0]); // the still transform is frame 0
    for (int f : {0, 6, 12, 24})
    {
        const aiMatrix4x4 want =
            TRS({float(f), 0, 0}, Turn({0, 1, 0}, AI_MATH_HALF_PI_F * f / 24.0f), {2, 2, 2});
        ExpectMatrixNear(ContentWorld(moved, 1, f), RowLayout(want), 1e-5f * 48,
                         "frame " + std::to_string(f));
    }
    settings.animation = "2"; // Flip, by index, at a chosen rate
    settings.fps = 30;
    ASSERT_TRUE(FillContentFromAssimp(kit.Scene(), settings, moved).ok);
    const std::vector<SNodeTM>& flips = moved.nodes[1].frames;
    ASSERT_EQ(flips.size(), 20u);
    EXPECT_FALSE(flips[0] == flips[1]);
    for (unsigned k = 2; k < 20; ++k)
        EXPECT_TRUE(flips[k] == flips[k % 2]) << "frame " << k;
    settings.animation = "Long";
    const std::string error = FillError(kit, settings);
    EXPECT_NE(error.find("the animation 'Long' is too long to sample"), std::string::npos) << error;
    EXPECT_NE(error.find("choose a lower --fps"), std::string::npos) << error;
}

TEST(AssimpFill, ScenesWithNothingToExportAreRefused)
{
    CSceneKit kit;
    EXPECT_EQ(FillError(kit), "nothing to export: the scene holds no triangles, lights or cameras");
    kit.Scene().mNumMaterials = 1; // counts materials it does not hold
    EXPECT_EQ(FillError(kit), "the scene is malformed (a list it counts entries in is missing)");
    kit.Scene().mNumMaterials = 0;
    aiNode* a = kit.AddNode(kit.Root(), "A"); // reached twice: not a tree
    Append(kit.Root()->mChildren, kit.Root()->mNumChildren, a);
    EXPECT_EQ(FillError(kit), "the node tree is not a tree (node 'A' is reached twice)");
    kit.Root()->mNumChildren = 1; // let the scene free the node once

    aiScene rootless;
    SContent content;
    EXPECT_EQ(FillContentFromAssimp(rootless, {}, content).error, "the file holds no scene (no root node)");
}
