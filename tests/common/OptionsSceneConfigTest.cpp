// ReadConfig of a scene file: the options text the exporter stores in a .tvo file.
#include <gtest/gtest.h>

#include <string>

#include "Options.h"
#include "OptionsTestSupport.h"
#include "TempFiles.h"
#include "QMXTModelTVO.h"

namespace
{
using O = COptionsData;

// An empty scene saved with the given options and history texts.
void SaveScene(const std::string& path, const std::string& options)
{
    CQMXTModelTVO model;
    ASSERT_EQ(model.SaveTVO(path.c_str(), options.c_str(), "Exported by test"), 0);
}
} // namespace

TEST(OptionsSceneConfig, OptionsComeFromTheSceneFile)
{
    CTempHome home;
    const COptionsData source = NonDefaultOptions();
    const std::string path = home.Path() + "/scene.TVO";
    SaveScene(path, source.ToString().c_str());
    COptions read;
    EXPECT_EQ(read.ReadConfig(path.c_str()), kOptionLines);
    EXPECT_TRUE(static_cast<const COptionsData&>(read) == source);

    // Only the first 10239 bytes of the text count: a line that starts beyond them is not read.
    const std::string padding = "x=" + std::string(10239 - 2 - 1, 'y') + "\n";
    SaveScene(path, padding + "bMerge=1\n");
    COptions cut;
    EXPECT_EQ(cut.ReadConfig(path.c_str()), 0);
    EXPECT_FALSE(cut.GetOption(O::eMerge));
}

TEST(OptionsSceneConfig, UnreadableSceneFilesGiveZero)
{
    CTempHome home;
    COptions options;
    const COptions defaults;
    EXPECT_EQ(options.ReadConfig((home.Path() + "/absent.tvo").c_str()), 0);
    const std::string junk = home.Path() + "/junk.tvo";
    WriteAll(junk, "bMerge=1\nnot a scene file at all");
    EXPECT_EQ(options.ReadConfig(junk.c_str()), 0);
    EXPECT_TRUE(options == defaults);
    // A scene saved without options has nothing to give.
    SaveScene(home.Path() + "/bare.tvo", "");
    EXPECT_EQ(options.ReadConfig((home.Path() + "/bare.tvo").c_str()), 0);
}
