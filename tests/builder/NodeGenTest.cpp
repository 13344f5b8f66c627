// Node and camera generation and the animation clean-up of one node.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "Log.h"
#include "TVONodeEx.h"

namespace
{
CNode AnimatedNode(const char* name, int frames)
{
    CNode n;
    n.index = 4;
    n.parent = 1;
    n.name = name;
    n.tm.pos[0] = 1, n.tm.pos[1] = 2, n.tm.pos[2] = 3;
    for (int f = 0; f < frames; ++f)
        n.frames.push_back(n.tm);
    return n;
}

struct SBuilt
{
    CTVONodeEx ex;
    STVONode node;
    ~SBuilt() { ex.node = node, ex.Free(); }
};

void Build(SBuilt& b, const CNode& cnode, uint32_t frames, const SBuilderSettings& s)
{
    b.ex.Gen(cnode, frames, s);
    b.node = b.ex.Release();
    GenNodeAnimation(b.node, b.ex, frames, s);
}
} // namespace

TEST(NodeGen, CopiesIdentityTransformAndUserData)
{
    CNode c = AnimatedNode("", 3);
    c.userData = {9, 8, 7};
    c.frames[2].pos[0] = 5.0f;
    CTVONodeEx ex;
    ex.Gen(c, 3, SBuilderSettings());
    EXPECT_EQ(ex.nSourceIndex, 4);
    EXPECT_EQ(ex.node.nIdxParent, 1);
    ASSERT_NE(ex.node.pszName, nullptr);
    EXPECT_STREQ(ex.node.pszName, "");
    ASSERT_NE(ex.node.pfAnimPosition, nullptr);
    EXPECT_EQ(ex.node.pfAnimPosition[6], 5.0f);
    ASSERT_NE(ex.node.pfAnimRotation, nullptr);
    EXPECT_EQ(ex.node.pfAnimRotation[4 * 2 + 3], 1.0f);
    ASSERT_NE(ex.node.pfAnimScale, nullptr);
    EXPECT_EQ(ex.node.pfAnimScale[7 * 1 + 0], 1.0f);
    EXPECT_EQ(ex.node.pfAnimScale[7 * 1 + 6], 0.0f); // stretch defaults to zeros
    EXPECT_EQ(ex.node.pfAnimMatrix, nullptr);
    ASSERT_EQ(ex.node.nUserDataSize, 3u);
    EXPECT_EQ(ex.node.pUserData[2], 7);
    EXPECT_EQ(ex.pfStaticPRS[2], 3.0f);

    SBuilderSettings matrices;
    matrices.bExportMatrices = true;
    c.frames[1].matrix[12] = 4.0f;
    ex.Gen(c, 3, matrices);
    EXPECT_EQ(ex.node.pfAnimPosition, nullptr);
    ASSERT_NE(ex.node.pfAnimMatrix, nullptr);
    EXPECT_EQ(ex.node.pfAnimMatrix[16 + 12], 4.0f);

    ex.Gen(c, 0, SBuilderSettings()); // no frames exported: no arrays
    EXPECT_EQ(ex.node.pfAnimPosition, nullptr);
    EXPECT_EQ(ex.node.pfAnimScale, nullptr);
}

TEST(NodeGen, StillAnimationIsRemovedAndMovingAnimationKept)
{
    CRecordingLogSink sink;
    SBuilt still;
    Build(still, AnimatedNode("still", 10), 10, SBuilderSettings());
    EXPECT_EQ(still.node.nAnimationFlags, 0u);
    ASSERT_NE(still.node.pfAnimPosition, nullptr); // one static key remains
    EXPECT_EQ(still.node.pfAnimPosition[2], 3.0f);
    EXPECT_EQ(still.node.pfAnimMatrix, nullptr);
    EXPECT_TRUE(sink.Has(eLogDetail, "\"still\": pos anim: removed\n"));

    // Held still at a pose other than the static transform: that is animation.
    CNode held = AnimatedNode("held", 4);
    for (SNodeTM& f : held.frames)
        f.rot[0] = 0.5f;
    held.frames[3].scale[1] = 2.0f;
    SBuilt moving;
    Build(moving, held, 4, SBuilderSettings());
    EXPECT_EQ(moving.node.nAnimationFlags, unsigned(eTVOHasRotationAnimation | eTVOHasScaleAnimation));
    EXPECT_EQ(moving.node.pnAnimRotationIdx, nullptr);
    EXPECT_EQ(moving.node.pfAnimRotation[4 * 3], 0.5f);
    EXPECT_TRUE(sink.Has(eLogDetail, "\"held\": rot anim: kept\n"));
}

TEST(NodeGen, ScaleAndMatrixCompareBytesPositionComparesFloats)
{
    CNode c = AnimatedNode("signs", 2);
    c.tm.pos[0] = 0.0f;
    c.tm.stretch[0] = 0.0f;
    for (SNodeTM& f : c.frames)
    {
        f.pos[0] = -0.0f;     // equal as a float: still
        f.stretch[0] = -0.0f; // different bytes: animated
    }
    SBuilt b;
    Build(b, c, 2, SBuilderSettings());
    EXPECT_EQ(b.node.nAnimationFlags, unsigned(eTVOHasScaleAnimation));

    CNode m = AnimatedNode("matrix", 2);
    m.tm.matrix[3] = std::numeric_limits<float>::quiet_NaN();
    for (SNodeTM& f : m.frames)
        f.matrix[3] = m.tm.matrix[3];
    SBuilderSettings matrices;
    matrices.bExportMatrices = true;
    SBuilt bm;
    Build(bm, m, 2, matrices);
    EXPECT_EQ(bm.node.nAnimationFlags, 0u); // same NaN bytes: still
    ASSERT_NE(bm.node.pfAnimMatrix, nullptr);
    EXPECT_EQ(bm.node.pfAnimPosition, nullptr);
}

TEST(NodeGen, IndexedAnimationStoresUniqueKeysOrGivesUp)
{
    // Ten frames alternating between two positions: indices 0, 3, 0, 3, ... over six floats.
    CNode c = AnimatedNode("swing", 10);
    for (int f = 0; f < 10; ++f)
        c.frames[f].pos[1] = (f % 2) ? 7.0f : 8.0f;
    SBuilderSettings s;
    s.bIndexAnimations = true;
    SBuilt b;
    Build(b, c, 10, s);
    ASSERT_EQ(b.node.nAnimationFlags, unsigned(eTVOHasPositionAnimation));
    ASSERT_NE(b.node.pnAnimPositionIdx, nullptr);
    for (int f = 0; f < 10; ++f)
        EXPECT_EQ(b.node.pnAnimPositionIdx[f], (f % 2) ? 3u : 0u) << f;
    EXPECT_EQ(QMXTModelTVOGetAnimArraySize(b.node.pnAnimPositionIdx, 10, 3), 6u);
    EXPECT_EQ(b.node.pfAnimPosition[1], 8.0f);
    EXPECT_EQ(b.node.pfAnimPosition[4], 7.0f);

    // Indexing that saves nothing is refused: two differing frames (3 + 2 + 3 >= 6 floats), and
    // A, B, A at exactly the size of the plain keys (6 + 3 = 9).
    const std::vector<float> rows[] = {{1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6, 1, 2, 3}};
    for (const std::vector<float>& values : rows)
    {
        float* data = static_cast<float*>(std::malloc(values.size() * sizeof(float)));
        std::memcpy(data, values.data(), values.size() * sizeof(float));
        float* const before = data;
        uint32_t* idx = reinterpret_cast<uint32_t*>(1);
        EXPECT_FALSE(CreateIndexedAnimation(&idx, &data, uint32_t(values.size() / 3), 3)) << values.size();
        EXPECT_EQ(idx, nullptr);
        EXPECT_EQ(data, before);
        EXPECT_EQ(std::memcmp(data, values.data(), values.size() * sizeof(float)), 0);
        std::free(data);
    }
}

TEST(NodeGen, CamerasDropStillFieldOfView)
{
    SCameraData cam;
    cam.fov = 0.8f;
    cam.farPlane = 100.0f;
    cam.nearPlane = 0.5f;
    cam.target = 6;
    cam.fovFrames = {0.8f, 0.8f, 0.8f};
    STVOCamera still = CTVOCameraEx::Gen(&cam, 3);
    EXPECT_EQ(still.pfAnimFOV, nullptr);
    EXPECT_EQ(still.nIdxTarget, 6);
    EXPECT_EQ(still.fNear, 0.5f);
    cam.fovFrames[1] = 0.9f;
    STVOCamera zoom = CTVOCameraEx::Gen(&cam, 3);
    ASSERT_NE(zoom.pfAnimFOV, nullptr);
    EXPECT_EQ(zoom.pfAnimFOV[1], 0.9f);
    std::free(zoom.pfAnimFOV);
    STVOCamera shortList = CTVOCameraEx::Gen(&cam, 4); // fewer values than frames: not animated
    EXPECT_EQ(shortList.pfAnimFOV, nullptr);
}
