// A small export under three option sets, run once for every allocation it makes with exactly that
// one failing: never a crash, leak or escaped exception; either the undisturbed run's file (or an
// error logged by a step that goes on without its result) or an error logged and no file left.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "FailingAllocator.h"
#include "Log.h"
#include "SceneFixtures.h"
#include "TVO.h"

namespace
{
CNode Joint(const char* name, int parent, float y, int type = eNodeJoint)
{
    CNode n;
    n.name = name;
    n.type = type;
    n.parent = parent;
    n.tm.pos[1] = y;
    return n;
}

// A cube split over two materials, a tube skinned to two joints (the second animated), and a
// camera with animated field of view and a light, both aimed at that joint.
SContent SmallScene()
{
    SContent content;
    content.info.endFrame = 2;
    const int root = content.AddNode(Joint("root", -1, 0.0f));
    CNode tip = Joint("tip", root, 1.0f);
    for (int f = 0; f < 3; ++f)
    {
        tip.frames.push_back(tip.tm);
        tip.frames.back().pos[0] = static_cast<float>(f);
    }
    const int tipIndex = content.AddNode(tip);
    content.AddNode(MeshNode("Cube", CubeGeometry(0, 1)));
    CNode tube = MeshNode("Tube", TubeGeometry(2, 4));
    tube.modifiers = {TubeSkin(tube.geom, 2, 4, {root, tipIndex})};
    content.AddNode(tube);
    CNode camera = Joint("camera", -1, 5.0f, eNodeCamera), light = Joint("light", -1, 6.0f, eNodeLight);
    camera.camera.target = light.light.target = tipIndex;
    camera.camera.fovFrames = {0.5f, 0.6f, 0.7f};
    content.AddNode(camera);
    content.AddNode(light);
    content.materials.resize(2);
    content.materials[0].name = "red";
    content.materials[1].name = "blue";
    content.materials[1].textures[0] = "blue.png";
    return content;
}

// Counts error messages, so the sweep can tell an export that failed without saying why.
class CErrorCount : public ILogSink
{
  public:
    void OnLog(int level, const std::string&) override { errors += level == eLogError; }
    void OnProgress(int, const std::string&) override {}
    int errors = 0;
};

// Process and Write with the failAt-th allocation failing (0: none); false when the export failed.
// An exception leaving the builder counts as a failed test.
bool Export(const SContent& content, const char* optionsText, const std::string& path, long failAt,
            long& allocations)
{
    COptions options;
    options.SetFromString(optionsText);
    bool ok = false, escaped = false;
    ArmAllocationFailure(failAt);
    try
    {
        CTVO tvo;
        ok = tvo.Process(content, options) && tvo.Write(path.c_str(), options, "history", false);
    }
    catch (...)
    {
        escaped = true;
    }
    allocations = DisarmAllocationFailure();
    EXPECT_FALSE(escaped) << "allocation " << failAt;
    return ok;
}
} // namespace

TEST(AllocFailure, EveryFailedAllocationFailsCleanlyOrChangesNothing)
{
    const struct
    {
        const char *text, *file;
    } sets[] = {
        {"bExportSkin=1\nbExportAnimations=1\nbExportMaterials=1\nbIndexAnimations=1\n", "scene.tvo"},
        {"bExportSkin=1\nbExportAnimations=1\nbExportMaterials=1\nbExportModelSpace=0\neExpFormat=1\n",
         "scene.h"},
        {"bExportSkin=1\nbExportAnimations=1\nbExportMatrices=1\nbTangentSpace=1\ncS=1\neTriSort=3\n"
         "ePrimType=1\nbIndexed=0\n",
         "strips.tvo"},
    };
    const SContent content = SmallScene();
    CTempDir dir;
    CErrorCount sink;
    ILogSink* previous = SetLogSink(&sink);
    for (const auto& set : sets)
    {
        SCOPED_TRACE(set.file);
        const std::string path = dir / set.file;
        long total = 0, seen = 0;
        ASSERT_TRUE(Export(content, set.text, path, 0, total));
        const std::string reference = ReadAll(path);
        ASSERT_FALSE(reference.empty());
        std::remove(path.c_str());

        std::vector<long> leftFiles, changedFiles, silentFailures;
        int failures = 0;
        for (long n = 1; n <= total; ++n)
        {
            sink.errors = 0;
            if (Export(content, set.text, path, n, seen))
            {
                // Only a step that logs its failure and goes on (tangent space) may change the file.
                if (ReadAll(path) != reference && sink.errors == 0)
                    changedFiles.push_back(n);
                std::remove(path.c_str());
            }
            else
            {
                ++failures;
                if (sink.errors == 0)
                    silentFailures.push_back(n);
            }
            if (!dir.Entries().empty())
            {
                leftFiles.push_back(n);
                for (const std::string& name : dir.Entries())
                    std::remove((dir / name).c_str());
            }
        }
        std::printf("%s: %ld allocations swept, %d exports failed\n", set.file, total, failures);
        EXPECT_GT(failures, 0);
        EXPECT_EQ(leftFiles, std::vector<long>{});
        EXPECT_EQ(changedFiles, std::vector<long>{});
        EXPECT_EQ(silentFailures, std::vector<long>{});
    }
    SetLogSink(previous);
}
