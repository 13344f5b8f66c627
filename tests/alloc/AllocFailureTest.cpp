// A small export with a skin, animation and two materials, run once for every allocation it makes
// with exactly that allocation failing: it must never crash, leak or let an exception out, and it
// either succeeds with the same file as an undisturbed run (or with an error logged by a step that
// goes on without its result) or fails with an error logged and no file left behind.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "FailingAllocator.h"
#include "Log.h"
#include "SceneFixtures.h"
#include "TVO.h"

namespace
{
CNode Joint(const char* name, int parent, float y)
{
    CNode n;
    n.name = name;
    n.type = eNodeJoint;
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
    CNode camera = Joint("camera", -1, 5.0f), light = Joint("light", -1, 6.0f);
    camera.type = eNodeCamera;
    camera.camera.target = light.light.target = tipIndex;
    camera.camera.fovFrames = {0.5f, 0.6f, 0.7f};
    light.type = eNodeLight;
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

struct SOptionSet
{
    const char* text;
    const char* file;
};

// Test names and listings show the output file, not the record's bytes (which change from run to run).
void PrintTo(const SOptionSet& set, std::ostream* out)
{
    *out << set.file;
}

class AllocFailure : public ::testing::TestWithParam<SOptionSet>
{
  protected:
    // Process and Write with the failAt-th allocation failing (0: none); false when the export
    // failed. An exception leaving the builder counts as a failed test.
    bool Export(long failAt, long* allocations = nullptr)
    {
        COptions options;
        options.SetFromString(GetParam().text);
        const std::string path = Output();
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
        const long seen = DisarmAllocationFailure();
        if (allocations)
            *allocations = seen;
        EXPECT_FALSE(escaped) << "allocation " << failAt;
        return ok;
    }
    std::string Output() const { return dir / GetParam().file; }

    const SContent content = SmallScene();
    CTempDir dir;
};
} // namespace

TEST_P(AllocFailure, EveryFailedAllocationFailsCleanlyOrChangesNothing)
{
    CErrorCount sink;
    ILogSink* previous = SetLogSink(&sink);
    long total = 0;
    ASSERT_TRUE(Export(0, &total));
    const std::string reference = ReadAll(Output());
    ASSERT_FALSE(reference.empty());
    std::remove(Output().c_str());

    std::vector<long> leftFiles, changedFiles, silentFailures;
    int failures = 0;
    for (long n = 1; n <= total; ++n)
    {
        sink.errors = 0;
        if (Export(n))
        {
            // Only a step that logs its failure and goes on (tangent space) may change the file.
            if (ReadAll(Output()) != reference && sink.errors == 0)
                changedFiles.push_back(n);
            std::remove(Output().c_str());
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
    SetLogSink(previous);
    std::printf("%ld allocations swept, %d exports failed\n", total, failures);
    EXPECT_GT(failures, 0);
    EXPECT_EQ(leftFiles, std::vector<long>{});
    EXPECT_EQ(changedFiles, std::vector<long>{});
    EXPECT_EQ(silentFailures, std::vector<long>{});
}

INSTANTIATE_TEST_SUITE_P(
    OptionSets, AllocFailure,
    ::testing::Values(
        SOptionSet{"bExportSkin=1\nbExportAnimations=1\nbExportMaterials=1\nbIndexAnimations=1\n",
                   "scene.tvo"},
        SOptionSet{
            "bExportSkin=1\nbExportAnimations=1\nbExportMaterials=1\nbExportModelSpace=0\neExpFormat=1\n",
            "scene.h"},
        SOptionSet{
            "bExportSkin=1\nbExportAnimations=1\nbExportMatrices=1\nbTangentSpace=1\ncS=1\neTriSort=3\n"
            "ePrimType=1\nbIndexed=0\n",
            "strips.tvo"}),
    // Named by the output file, so test names stay the same from run to run.
    [](const ::testing::TestParamInfo<SOptionSet>& info)
    {
        std::string name = info.param.file;
        for (char& c : name)
            if (!std::isalnum(static_cast<unsigned char>(c)))
                c = '_';
        return name;
    });
