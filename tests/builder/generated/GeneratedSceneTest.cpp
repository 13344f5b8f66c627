// Scenes exported as header and source at build time, compiled in, and loaded by file name through
// the memory file system: each must equal the binary export of the same scene.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "GenScene.h" // registers GenScene.tvo; GenSceneSrc.cpp, compiled alongside, GenSceneSrc.tvo
#include "ModelCompare.h"
#include "QMXTMemoryFileSystem.h"
#include "QMXTModelTVO.h"

TEST(GeneratedSource, EmbeddedScenesLoadByNameAndEqualTheBinaryExport)
{
    CQMXTModelTVO binary;
    ASSERT_EQ(binary.ReadFromFile(GENERATED_BINARY), 0);
    ASSERT_EQ(binary.nNumNode, 4u); // two sub-meshes, the crate above them, the lamp
    ASSERT_EQ(binary.nNumFrame, 5u);

    for (const char* name : {"GenScene.tvo", "GenSceneSrc.tvo"})
    {
        ASSERT_TRUE(CQMXTMemoryFileSystem::GetFile(name)) << name;
        CQMXTModelTVO embedded;
        ASSERT_EQ(embedded.ReadFromFile(name), 0) << name;
        EXPECT_EQ(DescribeModelDifference(binary, embedded), "") << name;
    }
}

TEST(GeneratedSource, TheHeaderOpensWithItsOptionsAndHistoryInAComment)
{
    std::stringstream text;
    text << std::ifstream(GENERATED_HEADER).rdbuf();
    const std::string h = text.str();
    EXPECT_EQ(h.rfind("/*\n\tExpOpt{\nbFlipTextureV=0\n", 0), 0u);
    EXPECT_NE(h.find("\t}ExpOpt\n\n\tHistory{\ngenerated for the embedded-scene test\n\t}History\n*/\n"),
              std::string::npos);
}
