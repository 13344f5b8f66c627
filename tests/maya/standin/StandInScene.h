// The scripted in-memory scene behind the stand-in Maya API: a DAG of transforms and shapes,
// shading networks as named connections, skin clusters with their weights, keyed transform
// channels, a selection, the current time and a table of MEL command results. It records what the
// plug-in does through the API (commands run, lines displayed, registrations, weight reads), so
// tests can check both the output file and that the scene was left alone.
//
// Transform matrices follow Maya's row-vector convention:
//   -scalePivot * scale * scalePivot * -rotatePivot * rotation * rotatePivot * translation
// with the rotation composed in the node's rotation order (kXYZ: about X first).
#pragma once

#include <maya/MColor.h>
#include <maya/MCommandResult.h>
#include <maya/MFn.h>
#include <maya/MMatrix.h>
#include <maya/MTime.h>
#include <maya/MTypes.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace standin
{
using Vec3 = std::array<double, 3>;

// Keys of one transform channel (frame, value), linear between keys, held outside them.
struct SCurve
{
    std::vector<std::pair<double, double>> keys;
    double At(double frame) const;
};

struct SMesh
{
    std::vector<Vec3> points;
    std::vector<std::vector<int>> faces;   // mesh vertex ids per polygon
    std::vector<Vec3> normals;             // per vertex; none when empty
    struct SUVSet
    {
        std::string name;
        std::vector<std::vector<std::array<float, 2>>> uvs; // [face][corner]; empty for an empty set
    };
    std::vector<SUVSet> uvSets;
    std::map<std::string, std::vector<MColor>> colourSets; // per vertex
    std::string currentColourSet;
    std::set<int> badTriangulation;  // faces whose triangulation Maya calls invalid
    std::set<int> failingTriangles;  // faces whose getTriangle fails
    struct SGroup
    {
        int set;
        std::vector<int> faces; // empty: the whole object
    };
    std::vector<SGroup> groups;
    bool groupsFail = false;
};

struct SNode
{
    MFn::Type type = MFn::kInvalid;
    std::string name;
    std::vector<int> parents;
    std::vector<int> children;
    bool intermediate = false;
    std::set<std::string> attributes;
    std::map<std::string, std::string> strings; // string attribute values

    // Transforms and joints.
    Vec3 translate{0, 0, 0}, rotate{0, 0, 0}, scale{1, 1, 1}, rotatePivot{0, 0, 0}, scalePivot{0, 0, 0};
    int rotateOrder = 0; // MEulerRotation::RotationOrder
    std::map<std::string, SCurve> curves; // "tx", "ry", "sz", ...

    SMesh mesh;
    // Lights, cameras, shaders.
    MColor colour{0.5f, 0.5f, 0.5f, 1.0f};
    short decay = 0;
    double cone = 0.7;
    bool ortho = false;
    double nearPlane = 0.1, farPlane = 1000.0, verticalFov = 0.7;
    MColor ambient{0.0f, 0.0f, 0.0f, 1.0f}, transparency{0.0f, 0.0f, 0.0f, 1.0f}, specular{0.5f, 0.5f, 0.5f, 1.0f};
    float diffuseCoeff = 0.8f, cosPower = 20.0f, rollOff = 0.7f;

    // Skin clusters: output shapes, influence joints, weights[output shape][vertex][influence].
    std::vector<int> outputs;
    std::vector<int> influences;
    std::map<int, std::vector<std::vector<double>>> weights;
};

struct SConnection
{
    int srcNode;
    std::string srcAttr;
    int dstNode;
    std::string dstAttr;
};

struct SMelAnswer
{
    bool fails = false;
    MCommandResult::SValue value;
};

struct SPluginRecord
{
    std::string vendor, version, apiVersion;
    std::map<std::string, std::string> translators; // name -> pixmap
    std::set<std::string> commands;
    std::map<std::string, MCreatorFunction> creators; // translators and commands by name
    bool translatorOptionsGiven = false;
};

class CScene
{
  public:
    CScene();
    std::vector<SNode> nodes; // node 0 is the world
    std::vector<SConnection> connections;
    std::vector<int> selection;
    double minFrame = 0, maxFrame = 0, currentFrame = 0;
    MTime::Unit unit = MTime::kFilm;
    std::map<std::string, SMelAnswer> mel; // answers by exact command text
    std::vector<std::string> commandLog, infoLog, perrors;
    SPluginRecord plugin;
    bool failTranslatorRegistration = false, failCommandRegistration = false;
    long weightReads = 0;

    // Adds a node under parent (0: the world; -1: no DAG parent) and returns its id.
    int Add(MFn::Type type, const std::string& name, int parent = 0);
    void Connect(int src, const std::string& srcAttr, int dst, const std::string& dstAttr);
    MMatrix LocalMatrix(int node) const;
    double Channel(int node, const char* channel, double still) const;
    bool HasFn(int node, MFn::Type type) const;
    int FacesOf(int node) const { return static_cast<int>(nodes[node].mesh.faces.size()); }
};

CScene& Scene();
// A fresh, empty scene.
void ResetScene();
double FramesPerSecond(MTime::Unit unit);
} // namespace standin
