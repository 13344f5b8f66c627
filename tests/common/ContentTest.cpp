// The scene content records: node indices, frame count and degenerate faces.
#include <gtest/gtest.h>

#include "Content.h"

TEST(Content, NodeIndicesFramesAndDegenerateFaces)
{
    SContent content;
    content.info.startFrame = 2;
    content.info.endFrame = 6;
    EXPECT_EQ(content.FrameCount(), 5);
    CNode stale;
    stale.index = 7;
    EXPECT_EQ(content.AddNode(stale), 0);
    EXPECT_EQ(content.AddNode(stale), 1);
    EXPECT_EQ(content.nodes[1].index, 1); // set to its place, whatever it held
    EXPECT_EQ(SSceneInfo().fps, 30);

    SFace face;
    face.pos[0] = 1;
    face.pos[1] = 2;
    face.pos[2] = 1;
    EXPECT_TRUE(face.IsDegenerate());
    face.pos[2] = 3;
    EXPECT_FALSE(face.IsDegenerate());
}
