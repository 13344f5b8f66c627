// The project's sample scene: the generator reproduces it, and the filled content keeps the box, the
// skinned tube, the spot light and the aimed camera as authored (glTF's cone and field of view).
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "AssimpContent.h"
#include "TestSupport.h"

namespace
{
const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";
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

TEST(SampleFiles, BoxTubeSpotLightAndCameraAsAuthored)
{
    Assimp::Importer importer;
    const aiScene* scene = LoadLikeTheCommandLine(importer, kSample);
    ASSERT_NE(scene, nullptr) << importer.GetErrorString();
    SAssimpFillSettings settings;
    settings.sceneName = "sample";
    SContent content;
    const SAssimpFillResult fill = FillContentFromAssimp(*scene, settings, content);
    ASSERT_TRUE(fill.ok) << fill.error;
    auto node = [&](const char* name) -> const CNode&
    { return content.nodes.at(ContentIndex(content, name)); };
    EXPECT_EQ(content.info.name, "sample");
    EXPECT_EQ(content.info.fps, 30);
    EXPECT_EQ(content.FrameCount(), 61); // two seconds at 30 frames per second

    const CNode& box = node("Box");
    EXPECT_EQ(box.geom.faces.size(), 12u);
    EXPECT_EQ(box.geom.positions.size(), 24u); // each vertex once: four a side
    ASSERT_EQ(box.geom.channels.size(), 1u);
    const SMaterial& checker = content.materials[box.geom.faces[0].material];
    EXPECT_EQ(checker.name, "Checker");
    EXPECT_EQ(checker.textures[0], "checker.png");
    EXPECT_TRUE(std::filesystem::exists(std::string(OSTREX_SAMPLES_DIR) + "/" + checker.textures[0]));
    const CNode& tube = node("Tube");
    EXPECT_EQ(tube.geom.faces.size(), 8u * 12u * 2u);
    ASSERT_EQ(tube.modifiers.size(), 1u);
    EXPECT_EQ(content.materials[tube.geom.faces[0].material].name, "Copper");
    EXPECT_EQ(node("Bone1").type, eNodeJoint);
    EXPECT_EQ(node("Bone2").frames.size(), 61u);
    EXPECT_TRUE(box.frames.empty());

    const SLightData& light = node("Spot").light;
    EXPECT_EQ(light.lightType, eTVOLightSpot);
    EXPECT_FLOAT_EQ(light.falloffAngle, 1.2f); // the file's 0.6 from the axis is a 1.2 cone
    EXPECT_FLOAT_EQ(light.colour[1], 0.95f);
    const SCameraData& cam = node("Camera").camera;
    EXPECT_FLOAT_EQ(cam.fov, 0.8f); // the file's vertical field of view
    EXPECT_FLOAT_EQ(cam.farPlane, 100.0f);
    EXPECT_EQ(cam.target, ContentIndex(content, "Camera.Target"));
    EXPECT_EQ(cam.fovFrames.size(), 61u);
}
