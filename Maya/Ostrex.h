// Ostrex: the plug-in's file translator ("Veldra Exporter") and the export driver behind it.
//
// Maya (or the Ostrex_Export command) calls writer with a path, an options string and an access
// mode. writer picks the output kind from the path's extension, takes the options from a
// configuration file or the options window, then runs Init, DoConversion (the scene walk that fills
// SContent), CTVO::Process and SaveFile. An export changes nothing in the scene: the current time is
// put back, the selection is only read, and no node or attribute is created.
//
// The scene walk decides per Maya node whether it becomes a CNode (eExportType), keeps a registry of
// exported nodes by full DAG path (SMatch) for the skin pass, and hands shapes to the mesh, light
// and camera converters. Every message goes through Log, which the host sink prints to standard
// output and Maya's script editor.
#pragma once

#include <maya/MFileObject.h>
#include <maya/MFn.h>
#include <maya/MObject.h>
#include <maya/MPxFileTranslator.h>
#include <maya/MString.h>
#include <maya/MTypes.h>

#include <string>
#include <vector>

#include "Content.h"
#include "Options.h"

class CTVO;
class MColor;
class MDagPath;
class MFnCamera;
class MFnDagNode;
class MFnDependencyNode;
class MFnLight;
class MFnMesh;
class MFnSkinCluster;
class MFnTransform;

// How a Maya node takes part in an export.
enum eExportType
{
    eNotExported = 0,
    eExportedFull = 1,    // the node (or its shape) is itself exported
    eExportedAncestor = 2 // kept as a plain transform so that selected descendants keep their hierarchy
};

// Registry entry: an exported Maya node by full DAG path, and its node index in the content.
struct SMatch
{
    MString path;
    int index;
};

class Ostrex : public MPxFileTranslator
{
  public:
    Ostrex();
    ~Ostrex() override;
    Ostrex(const Ostrex&) = delete;
    Ostrex& operator=(const Ostrex&) = delete;

    static void* creator();

    bool haveWriteMethod() const override;
    MString filter() const override;
    MString defaultExtension() const override;
    MPxFileTranslator::MFileKind identifyFile(const MFileObject& file, const char* buffer,
                                              short size) const override;
    MStatus writer(const MFileObject& file, const MString& optionsString, FileAccessMode mode) override;

    bool Init();
    bool DoConversion();
    bool SaveFile(const char* path);

    // The content built by the last export, and the options (which the next writer call replaces
    // from its options file or window; tools that call DoConversion directly set them here).
    const SContent* Content() const { return m_pContent; }
    COptions& Options() { return m_options; }

  private:
    // Scene walk.
    bool AddChild(MObject& node, MFnTransform& parentTransform, eExportType type, int parentIndex);
    bool AddTransform(MFnTransform& transform, eExportType type, int parentIndex);
    int AddLocator(const MObject& node, MFnTransform& transform, eExportType type, int parentIndex);
    int AddJoint(const MObject& node, eExportType type, int parentIndex);
    bool AddLookAt(const MFnTransform& lookAt, eExportType type, int parentIndex);
    void AddMesh(MFnMesh& mesh, MFnTransform& transform, eExportType type, int parentIndex);
    void AddLight(MFnLight& light, MFnTransform& transform, eExportType type, int parentIndex, MFn::Type lightType);
    void AddCamera(MFnCamera& camera, MFnTransform& transform, eExportType type, int parentIndex, int targetIndex);
    void AddTransformChildren(MFnTransform& transform, const MObject& except, int parentIndex);
    int NewNode(MFnTransform& transform, ENodeKind kind, eExportType type, int parentIndex);
    eExportType Exportable(const MObject& node);
    bool IsSelected(const MObject& node);
    bool AreChildrenSelected(const MObject& node);
    int GetObjectIDByPath(MString path) const;
    void ReadFrameRange();
    void ShowSelection();
    void LoadUserScript();

    // Meshes and skins.
    int ConvertMesh(MFnMesh& mesh, MFnTransform& transform, int parentIndex);
    MStatus ConvertSkin(MFnSkinCluster& skin);
    bool ConvertSkinConnection(MFnSkinCluster& skin, unsigned int connection);

    // Materials.
    int GetMaterialID(const MObject& shadingGroup);
    int AddMaterial(MObject shader);
    int AlreadyAdded(std::string name) const;
    template <class Shader> bool SetCommonAttributes(SMaterial& material, Shader& shader);
    template <class Shader> bool SetSpecular(SMaterial& material, Shader& shader);
    MString GetTexture(MFnDependencyNode& shader, MString attribute);

    // Transforms, lights, cameras, animation.
    void CopyTransform(SNodeTM& tm, MFnTransform& transform, MSpace::Space space, bool isCameraOrLight);
    // A new content node of that kind for dagNode (a shape, or the transform itself) under transform:
    // its index, the user data the user's script defines for dagNode's path, the transform's name
    // and local transform, and the parent.
    CNode StartNode(const MFnDagNode& dagNode, MFnTransform& transform, int parentIndex, ENodeKind kind);
    bool AddAnimation(CNode* node, MFnTransform& transform);
    bool ValidateAnimationData();
    int ConvertLight(MFnLight& light, MFnTransform& transform, int parentIndex, MFn::Type type);
    int ConvertCamera(MFnCamera& camera, MFnTransform& transform, int parentIndex, int targetIndex);

    // User data.
    bool ExecuteScriptCommand(std::vector<uint8_t>& data, const char* format, ...)
        __attribute__((format(printf, 3, 4)));

    bool m_bExportSelection = false;
    bool m_bSingularMatrixWarned = false;
    bool m_bUserScriptLoaded = false;
    COptions m_options;
    CTVO* m_pTVO = nullptr;
    SContent* m_pContent = nullptr;
    std::vector<SMatch> m_matches;
};

// The bare file name of a texture path: the text after the last "/" (a backslash is no separator).
MString TextureFileName(const MString& path);
// The extension of a file name, lower-cased, from its last "." (inclusive); empty when the only dot
// is the first character or there is none.
std::string LowerCaseExtension(const char* name);
