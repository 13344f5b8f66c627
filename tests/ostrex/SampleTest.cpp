// The project's sample scene filled as authored: its frames, the box's texture, the skinned tube, and
// glTF's spot cone and field of view.
#include <gtest/gtest.h>

#include <filesystem>

#include "AssimpContent.h"
#include "TestSupport.h"

namespace
{
const std::string kSample = std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf";
} // namespace

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

    const SMaterial& checker = content.materials[node("Box").geom.faces[0].material];
    EXPECT_EQ(checker.name, "Checker");
    EXPECT_EQ(checker.textures[0], "checker.png");
    EXPECT_TRUE(std::filesystem::exists(std::string(OSTREX_SAMPLES_DIR) + "/" + checker.textures[0]));
    EXPECT_EQ(node("Tube").modifiers.size(), 1u);
    EXPECT_EQ(node("Bone2").frames.size(), 61u);

    const SLightData& light = node("Spot").light;
    EXPECT_EQ(light.lightType, eTVOLightSpot);
    EXPECT_FLOAT_EQ(light.falloffAngle, 1.2f); // the file's 0.6 from the axis is a 1.2 cone
    const SCameraData& cam = node("Camera").camera;
    EXPECT_FLOAT_EQ(cam.fov, 0.8f); // the file's vertical field of view
    EXPECT_EQ(cam.target, ContentIndex(content, "Camera.Target"));
}
