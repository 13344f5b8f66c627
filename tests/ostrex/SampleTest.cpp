// The project's sample scene: the generator reproduces it, and the filled content keeps the box, the
// skinned tube, the spot light and the aimed camera as authored. (Its skinning and animation are
// compared with the importer's, through a written file, by the model-collection test.)
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "AssimpContent.h"
#include "Log.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";

class SampleTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        m_scene = LoadLikeTheCommandLine(m_importer, kSample);
        ASSERT_NE(m_scene, nullptr) << m_importer.GetErrorString();
        SAssimpFillSettings settings;
        settings.sceneName = "sample";
        m_fill = FillContentFromAssimp(*m_scene, settings, m_content);
        ASSERT_TRUE(m_fill.ok) << m_fill.error;
    }

    const CNode& Node(const std::string& name) const
    {
        return m_content.nodes[ContentIndex(m_content, name)];
    }

    Assimp::Importer m_importer;
    const aiScene* m_scene = nullptr;
    SContent m_content;
    SAssimpFillResult m_fill;
};

float Distance(const QMXTVECTOR3f& a, const aiVector3D& b)
{
    return (aiVector3D(a.x, a.y, a.z) - b).Length();
}
} // namespace

TEST(SampleFiles, GeneratorReproducesTheCommittedSample)
{
    const CTempDir dir;
    const std::string command =
        "python3 '" + std::string(OSTREX_SAMPLES_DIR) + "/make_sample.py' '" + dir.Path() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    EXPECT_EQ(ReadAll(dir / "sample.gltf"), ReadAll(kSample));
    EXPECT_EQ(ReadAll(dir / "checker.png"), ReadAll(std::string(OSTREX_SAMPLES_DIR) + "/checker.png"));
}

TEST_F(SampleTest, BoxTubeJointsAndMaterials)
{
    EXPECT_EQ(m_content.info.name, "sample");
    EXPECT_EQ(m_content.info.fps, 30);
    EXPECT_EQ(m_content.FrameCount(), 61); // two seconds at 30 frames per second

    const CNode& box = Node("Box");
    EXPECT_EQ(box.type, eNodeMesh);
    EXPECT_EQ(box.geom.faces.size(), 12u);
    EXPECT_EQ(box.geom.positions.size(), 24u); // each vertex once: four a side
    ASSERT_EQ(box.geom.channels.size(), 1u);
    const SMaterial& checker = m_content.materials[box.geom.faces[0].material];
    EXPECT_EQ(checker.name, "Checker");
    EXPECT_EQ(checker.textures[0], "checker.png");
    EXPECT_TRUE(fs::exists(std::string(OSTREX_SAMPLES_DIR) + "/" + checker.textures[0]));

    const CNode& tube = Node("Tube");
    EXPECT_EQ(tube.type, eNodeMesh);
    EXPECT_EQ(tube.geom.faces.size(), 8u * 12u * 2u);
    ASSERT_EQ(tube.modifiers.size(), 1u);
    EXPECT_EQ(tube.modifiers[0].vertices.size(), tube.geom.positions.size());
    EXPECT_EQ(m_content.materials[tube.geom.faces[0].material].name, "Copper");
    EXPECT_EQ(Node("Bone1").type, eNodeJoint);
    EXPECT_EQ(Node("Bone2").type, eNodeJoint);
    EXPECT_EQ(Node("Bone2").frames.size(), 61u);
    EXPECT_TRUE(Node("Box").frames.empty());
}

TEST_F(SampleTest, SpotLightAndCameraAsAuthored)
{
    const int spot = ContentIndex(m_content, "Spot");
    const int camera = ContentIndex(m_content, "Camera");
    ASSERT_EQ(m_content.nodes[spot].type, eNodeLight);
    ASSERT_EQ(m_content.nodes[camera].type, eNodeCamera);
    const SLightData& light = m_content.nodes[spot].light;
    EXPECT_EQ(light.lightType, eTVOLightSpot);
    EXPECT_FLOAT_EQ(light.falloffAngle, 1.2f); // the file's 0.6 from the axis is a 1.2 cone
    EXPECT_FLOAT_EQ(light.colour[1], 0.95f);
    const SCameraData& cam = m_content.nodes[camera].camera;
    EXPECT_FLOAT_EQ(cam.fov, 0.8f); // the file's vertical field of view
    EXPECT_FLOAT_EQ(cam.nearPlane, 0.1f);
    EXPECT_FLOAT_EQ(cam.farPlane, 100.0f);
    EXPECT_EQ(cam.target, ContentIndex(m_content, "Camera.Target"));
    EXPECT_EQ(cam.fovFrames.size(), 61u);

    // Where the generator put them: the light at (-0.5, 4, 2.5) aimed at the box at (-1.5, 0.5, 0),
    // the camera on its turned rig at (4, 3, 6) aimed at (0, 1, 0) with y up.
    CContentModel model(m_content);
    QMXTVECTOR3f pos, dir;
    model.Model().GetLight(pos, dir, static_cast<uint32_t>(model.LightNumber(spot)));
    EXPECT_LT(Distance(pos, {-0.5f, 4.0f, 2.5f}), 1e-5f);
    const aiVector3D toBox = aiVector3D(-1.0f, -3.5f, -2.5f).Normalize();
    EXPECT_GT(aiVector3D(dir.x, dir.y, dir.z).Normalize() * toBox, 0.999999f);
    QMXTVECTOR3f from, to, up;
    model.Model().GetCamera(from, to, up, static_cast<uint32_t>(model.CameraNumber(camera)));
    EXPECT_LT(Distance(from, {4.0f, 3.0f, 6.0f}), 1e-5f);
    const aiVector3D toTarget = aiVector3D(-4.0f, -2.0f, -6.0f).Normalize();
    EXPECT_GT(aiVector3D(to.x - from.x, to.y - from.y, to.z - from.z).Normalize() * toTarget, 0.999999f);
    EXPECT_NEAR(aiVector3D(up.x, up.y, up.z).Normalize() * toTarget, 0.0f, 1e-5f);
    EXPECT_GT(up.y, 0.0f);
}
