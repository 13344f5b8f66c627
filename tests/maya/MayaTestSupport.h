// Support for the plug-in tests: a fixture with a fresh stand-in scene, a private HOME and a
// recording log; builders of small scenes; running Ostrex_Export; reading the written file back.
#pragma once

#include <gtest/gtest.h>

#include <maya/MStatus.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "FakeHostWindows.h"
#include "Ostrex.h"
#include "Log.h"
#include "QMXTModelTVO.h"
#include "StandInScene.h"
#include "TempFiles.h"

class CMayaTest : public testing::Test
{
  protected:
    CMayaTest();

    // Runs Ostrex_Export with these arguments.
    MStatus Mel(const std::vector<std::string>& args);
    // Exports to dir/name through the translator with an options text file holding these lines ("" for
    // the defaults); the translator stays in m_last for a look at the content it built.
    MStatus Export(const std::string& options, const std::string& name = "out.tvo", bool selection = false);
    const SContent& Content() const { return *m_last->Content(); }
    std::string Write(const std::string& name, const std::string& text);

    CTempHome m_dir; // preferences and recent files stay in the test's folder
    CRecordingLogSink m_log;
    std::unique_ptr<Ostrex> m_last;
};

// Scene builders; each returns the id of the transform it adds.
int AddTransform(const std::string& name, int parent = 0, standin::Vec3 translate = {0, 0, 0});
// A shading group with a shader of the given type and name; returns the group.
int AddShadingGroup(MFn::Type shaderType, const std::string& shaderName);
int ShaderOf(int shadingGroup);
// A unit cube (8 points, 6 quads, per-vertex normals) shaded by one group.
int AddCube(const std::string& name, int parent = 0, int shadingGroup = -1);
// The mesh shape under a transform.
int ShapeOf(int transform);

// The written file as the scene model reader gives it.
class CReadBack
{
  public:
    explicit CReadBack(const std::string& path);
    CQMXTModelTVO model;
    bool ok;
    const STVONode* Node(const std::string& name) const;
    // A point of the node's local space, in world space at the current frame.
    QMXTVECTOR3f World(const std::string& node, QMXTVECTOR3f p);
    std::string Texture(const STVOMaterial& material, int slot) const;
    // Every vertex of a stream of the mesh, as four floats.
    std::vector<std::array<float, 4>> Stream(const STVOMesh& mesh, const CTVOData& stream) const;
};
