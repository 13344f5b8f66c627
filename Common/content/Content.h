// The scene content: the host-independent snapshot of a scene that a host (the Maya plug-in, the
// command line over Assimp, a test) fills and the builder turns into the scene model.
//
// Plain value records only. Records refer to each other by zero-based index into the lists of
// SContent, -1 meaning none. Copying a record copies everything below it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "QMXTMath.h"

// Node kinds (CNode::nType).
enum ENodeKind : int
{
    eNodePlain = 0,
    eNodeMesh = 1,
    eNodeCamera = 2,
    eNodeLight = 3,
    eNodeJoint = 4
};

// One transform sample: 30 floats. Position, rotation and scale-plus-stretch are the 3-, 4- and
// 7-float animation keys of the scene model; the matrix is used for matrix animation.
struct SNodeTM
{
    float pos[3];
    float rot[4];     // quaternion x, y, z, w
    float scale[3];
    float stretch[4]; // defaults to all zeros, not the identity quaternion
    float matrix[16]; // QMXTMATRIXf layout, translation in elements 12 to 14

    SNodeTM();
    SNodeTM(const SNodeTM&) = default;
    SNodeTM& operator=(const SNodeTM&) = default;
    bool operator==(const SNodeTM& o) const;
    bool operator!=(const SNodeTM& o) const { return !(*this == o); }
};

// One triangle.
struct SFace
{
    int pos[3] = {0, 0, 0};   // indices into positions
    int group = 0;            // per-face key taking part in vertex identity
    int material = 0;         // index into SContent::materials
    int normal[3] = {0, 0, 0}; // indices into normals
    int colour[3] = {-1, -1, -1}; // indices into colours; negative means no colour

    bool IsDegenerate() const { return pos[0] == pos[1] || pos[1] == pos[2] || pos[0] == pos[2]; }
};

struct CTriIdx
{
    int idx[3] = {0, 0, 0};
};

// One texture-coordinate set.
struct SMappingChannel
{
    std::vector<QMXTVECTOR3f> uvw;
    std::vector<CTriIdx> faces; // one entry per face of the owning geometry
};

struct SGeomData
{
    enum
    {
        eMaxMappingChannels = 8 // UVW sets 0 to 7, one for each UVW vertex format of the options
    };

    std::vector<QMXTVECTOR3f> positions;
    std::vector<QMXTVECTOR3f> normals;
    std::vector<QMXTVECTOR4f> colours; // r, g, b, a in 0..1
    std::vector<SFace> faces;
    std::vector<SMappingChannel> channels; // UVW set 0 first

    SGeomData() = default;
    SGeomData(const SGeomData&) = default;
    SGeomData& operator=(const SGeomData&) = default;
    SGeomData(SGeomData&&) noexcept = default;
    SGeomData& operator=(SGeomData&&) noexcept = default;
};

struct CBoneWeight
{
    int bone = -1; // index of the joint's node in SContent::nodes
    float weight = 0.0f;
};

struct SBonedVtx
{
    std::vector<CBoneWeight> weights;
};

enum EModifierKind : int
{
    eModifierSkin = 0
};

struct SModifier
{
    std::string name;
    int kind = eModifierSkin;
    bool enabled = true;
    std::vector<SBonedVtx> vertices; // for a skin: one entry per position of the mesh
};

struct SLightData
{
    int lightType = 0; // ETVOLightType
    float colour[3] = {0.0f, 0.0f, 0.0f};
    int target = -1;
    float constantAttenuation = 1.0f;
    float linearAttenuation = 0.0f;
    float quadraticAttenuation = 0.0f;
    float falloffAngle = 3.14159274f;
    float falloffExponent = 0.0f;
};

struct SCameraData
{
    int cameraType = 0;
    float fov = 0.0f;
    float farPlane = 0.0f;
    float nearPlane = 0.0f;
    int target = -1;
    std::vector<float> fovFrames; // one a frame, frame 0 first; empty when not animated

    SCameraData() = default;
    SCameraData(const SCameraData&) = default;
    SCameraData& operator=(const SCameraData&) = default;
    SCameraData(SCameraData&&) noexcept = default;
    SCameraData& operator=(SCameraData&&) noexcept = default;
};

class SMaterial
{
  public:
    enum
    {
        eTextureSlots = 10
    };

    std::string name;
    // diffuse, ambient, specular colour, specular level, bump, emissive, glossiness, opacity,
    // reflection, refraction; empty means no texture
    std::string textures[eTextureSlots];
    float diffuse[3] = {0.0f, 0.0f, 0.0f};
    float ambient[3] = {0.0f, 0.0f, 0.0f};
    float specular[3] = {0.0f, 0.0f, 0.0f};
    float opacity = 0.0f; // 1 is opaque
    float shininess = 0.0f;
    float reserved = 0.0f;
    std::string effectFile;
    std::string effectName;
    std::vector<uint8_t> userData;
    int blendSrcRGB = 1; // OpenGL blend factor enumerants
    int blendSrcA = 1;
    int blendDstRGB = 0;
    int blendDstA = 0;
    int blendOpRGB = 0x8006; // OpenGL blend equation enumerants (add)
    int blendOpA = 0x8006;
    float blendColour[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float blendFactor[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    int flags = 0; // bit 0 enables blending

    SMaterial() = default;
    SMaterial(const SMaterial&) = default;
    SMaterial& operator=(const SMaterial&) = default;
    SMaterial(SMaterial&&) noexcept = default;
    SMaterial& operator=(SMaterial&&) noexcept = default;
    virtual ~SMaterial() = default;
};

class CNode
{
  public:
    int index = -1;  // the node's own index in SContent::nodes
    int parent = -1; // -1 for a root
    std::string name;
    int type = eNodePlain; // ENodeKind
    SNodeTM tm;            // static transform
    SGeomData geom;        // read for mesh nodes only
    std::vector<SNodeTM> frames; // one a frame, frame 0 first; empty when not animated
    SLightData light;
    SCameraData camera;
    std::vector<SModifier> modifiers;
    std::vector<uint8_t> userData;

    CNode() = default;
    CNode(const CNode&) = default;
    CNode& operator=(const CNode&) = default;
    CNode(CNode&&) noexcept = default;
    CNode& operator=(CNode&&) noexcept = default;
};

struct SSceneInfo
{
    std::string name;
    int startFrame = 0;
    int endFrame = 0;
    int fps = 30;
    int flags = 0;
    std::string text;
    float ambient[3] = {0.0f, 0.0f, 0.0f}; // the host always sets it
};

class SContent
{
  public:
    SSceneInfo info;
    std::vector<CNode> nodes;
    std::vector<SMaterial> materials;
    std::vector<uint8_t> userData;

    SContent() = default;
    SContent(const SContent&) = default;
    SContent& operator=(const SContent&) = default;
    SContent(SContent&&) noexcept = default;
    SContent& operator=(SContent&&) noexcept = default;

    // Appends a node, setting its index to its place in the list; returns that index.
    int AddNode(const CNode& node);
    // Frame count of the scene: endFrame - startFrame + 1.
    int FrameCount() const { return info.endFrame - info.startFrame + 1; }
};
