// Filling the scene content from a scene loaded by Assimp.
//
// Every node becomes a CNode (parents before children) whose transform sample rebuilds the
// importer's local transform, so the scene model's world matrices equal the importer's global
// transforms. Meshes become indexed triangle lists (one position, normal, colour and UVW entry per
// vertex, which the builder welds by value; several meshes of one node become one geometry with
// per-face material ids); meshes without normals get smooth ones. Bones become joint nodes with at
// most four influences a vertex.
// Lights and cameras become nodes whose matrices give the importer's position, direction and up
// through the scene model's light and camera queries. The chosen animation is sampled at every
// frame; the scene as it stands at frame 0 is the rest pose, and skinned meshes are written
// deformed at that frame.
//
// Messages go through Log. Nothing here throws.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Content.h"
#include "OptionsRules.h"

struct aiNode;
struct aiScene;

struct SAssimpFillSettings
{
    std::vector<std::string> selection; // node names; empty exports the whole scene
    std::string animation;              // name, else index from 0; empty means the first animation
    int fps = 0;                        // 0: the animation's own rate when it has one, else 30
    std::string sceneName;              // copied into the content's scene info
    std::string texturePrefix;          // names of embedded textures start with this text
    // Folder of the scene file: a texture name that only exists percent-decoded (a glTF URI such
    // as "my%20wall.png") is stored decoded. Empty: names are stored as the file writes them.
    std::string sceneFolder;
    // What is extracted, as the export options decide (ExtractedStreams); everything by default.
    SExtractedStreams streams = {true, true, true, true, true};
};

// A texture held inside the input file, to be written next to the output under fileName.
struct SEmbeddedTexture
{
    std::string fileName;
    std::vector<uint8_t> data;
};

struct SAssimpFillResult
{
    bool ok = false;
    std::string error; // why the scene cannot be exported, when not ok
    std::vector<SEmbeddedTexture> textures;
    int animation = -1; // index of the sampled animation, -1 for a still scene
    // For each content node, the importer's node it stands for; null for the nodes added to carry a
    // light, a camera or a camera's target.
    std::vector<const aiNode*> sources;
};

// Replaces content with the scene. Fails (with the reason) when the scene has no nodes or nothing
// to export, a selected node or the requested animation does not exist, or the animation is too long
// to sample.
SAssimpFillResult FillContentFromAssimp(const aiScene& scene, const SAssimpFillSettings& settings,
                                        SContent& content);
