// The plug-in's face to Maya: registration, file kinds, the MEL command, where options come from,
// and what may run after an export.
#include <maya/MFileObject.h>
#include <maya/MObject.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "ExportSettings.h"
#include "MayaTestSupport.h"
#include "MelLauncher.h"
#include "Ostrex.h"
#include "PostExport.h"
#include "QMXPreferences.h"

PLUGIN_EXPORT MStatus initializePlugin(MObject obj);
PLUGIN_EXPORT MStatus uninitializePlugin(MObject obj);

using standin::Scene;

namespace
{
std::vector<std::string> g_shellCommands;
int RecordingShell(const char* command)
{
    g_shellCommands.push_back(command);
    return 0;
}
} // namespace

using MayaPluginTest = CMayaTest;

TEST_F(MayaPluginTest, RegistersTheTranslatorAndTheCommandAndRemovesThem)
{
    MObject plugin;
    EXPECT_EQ(initializePlugin(plugin), MStatus::kSuccess);
    EXPECT_EQ(Scene().plugin.vendor, "Corvell Ltd.");
    EXPECT_EQ(Scene().plugin.version, "2.12  Build: 3.0@2149614");
    EXPECT_EQ(Scene().plugin.apiVersion, "Any");
    EXPECT_EQ(Scene().plugin.translators.at("Veldra Exporter"), "");
    EXPECT_FALSE(Scene().plugin.translatorOptionsGiven);
    EXPECT_EQ(Scene().plugin.commands.count("Ostrex_Export"), 1u);
    std::unique_ptr<MPxCommand> command(
        static_cast<MPxCommand*>(Scene().plugin.creators.at("Ostrex_Export")()));
    EXPECT_TRUE(dynamic_cast<MelLauncher*>(command.get()));
    std::unique_ptr<MPxFileTranslator> translator(
        static_cast<MPxFileTranslator*>(Scene().plugin.creators.at("Veldra Exporter")()));
    EXPECT_TRUE(dynamic_cast<Ostrex*>(translator.get()));

    EXPECT_EQ(uninitializePlugin(plugin), MStatus::kSuccess);
    EXPECT_TRUE(Scene().plugin.translators.empty());
    EXPECT_TRUE(Scene().plugin.commands.empty());

    EXPECT_NE(uninitializePlugin(plugin), MStatus::kSuccess);
    EXPECT_EQ(Scene().perrors, std::vector<std::string>{"Ostrex::deregisterFileTranslator"});

    Scene().perrors.clear();
    Scene().failTranslatorRegistration = true;
    EXPECT_NE(initializePlugin(plugin), MStatus::kSuccess);
    EXPECT_EQ(Scene().perrors, std::vector<std::string>{"Failed to register our file translator"});
    EXPECT_TRUE(Scene().plugin.commands.empty());
}

TEST_F(MayaPluginTest, ClaimsOnlyItsExtensionsAndNeverForSure)
{
    Ostrex translator;
    EXPECT_EQ(translator.filter(), "*.tvo;*.h;*.cpp");
    EXPECT_EQ(translator.defaultExtension(), "");
    EXPECT_TRUE(translator.haveWriteMethod());
    const std::pair<const char*, MPxFileTranslator::MFileKind> cases[] = {
        {"/a/scene.TVO", MPxFileTranslator::kCouldBeMyFileType},
        {"x.h", MPxFileTranslator::kCouldBeMyFileType},
        {"x.Cpp", MPxFileTranslator::kCouldBeMyFileType},
        {"x.obj", MPxFileTranslator::kNotMyFileType},
        {".tvo", MPxFileTranslator::kNotMyFileType},
        {"/a.tvo/noext", MPxFileTranslator::kNotMyFileType}};
    for (const auto& c : cases)
    {
        MFileObject file;
        file.setRawFullName(c.first);
        EXPECT_EQ(translator.identifyFile(file, "", 0), c.second) << c.first;
    }
}

TEST_F(MayaPluginTest, TheExtensionChoosesTheOutputKindAndNoExtensionKeepsTheStoredOne)
{
    AddCube("box");
    ASSERT_EQ(Export("", "scene.CPP"), MStatus::kSuccess);
    EXPECT_NE(ReadAll(m_dir / "scene.CPP").find("\tExpOpt{"), std::string::npos);
    EXPECT_EQ(CReadBack(m_dir / "scene.CPP").ok, false);

    std::filesystem::create_directory(m_dir / "v1.2"); // a dot in a folder is no extension
    ASSERT_EQ(Export("eExpFormat=1", "v1.2/noextension"), MStatus::kSuccess);
    EXPECT_NE(ReadAll(m_dir / "v1.2/noextension").find("\tExpOpt{"), std::string::npos);
    ASSERT_EQ(Export("eExpFormat=1", "scene.tvo"), MStatus::kSuccess);
    EXPECT_TRUE(CReadBack(m_dir / "scene.tvo").ok);
}

TEST_F(MayaPluginTest, TheCommandExplainsItselfWithoutArguments)
{
    EXPECT_NE(Mel({}), MStatus::kSuccess);
    const std::vector<std::string> usage = {"Error: Insufficient arguments to complete export.",
                                            "e.g.Ostrex_Export(\"filename.tvo\") - Export the .tvo file "
                                            "using the settings stored from the last export",
                                            "Ostrex_Export(\"filename.tvo\", \"optionsfilename.txt\") - "
                                            "Export the .tvo file using the settings stored in "
                                            "optionsfilename.txt",
                                            "Ostrex_Export(\"filename.tvo\", \"optionsfilename.txt\", "
                                            "exportActive) - Export only the selected meshes using "
                                            "the settins stored in optionsfilename.txt"};
    EXPECT_EQ(Scene().infoLog, usage);
}

TEST_F(MayaPluginTest, TheWindowDecidesOnlyWhenNoOptionsFileIsNamedAndItsCancelWritesNothing)
{
    AddCube("box");
    FakeOptionsWindow().answer = false;
    EXPECT_NE(Mel({m_dir / "a.tvo"}), MStatus::kSuccess);
    EXPECT_EQ(FakeOptionsWindow().calls, 1);
    EXPECT_TRUE(FakeOptionsWindow().lastLaunchedFromMel);
    EXPECT_FALSE(std::filesystem::exists(m_dir / "a.tvo"));

    FakeOptionsWindow().answer = true;
    EXPECT_EQ(Mel({m_dir / "a.tvo"}), MStatus::kSuccess);
    EXPECT_TRUE(CReadBack(m_dir / "a.tvo").ok);
    EXPECT_EQ(FakeOptionsWindow().logOpened, 0); // a script gets no log window

    Ostrex fromFileMenu;
    MFileObject file;
    file.setRawFullName((m_dir / "b.tvo").c_str());
    EXPECT_EQ(fromFileMenu.writer(file, "", MPxFileTranslator::kExportAccessMode), MStatus::kSuccess);
    EXPECT_FALSE(FakeOptionsWindow().lastLaunchedFromMel);
    EXPECT_EQ(FakeOptionsWindow().logOpened, 1);
    EXPECT_EQ(FakeOptionsWindow().logClosed, 1);

    // A named options file that is missing gives the defaults, without the window.
    Scene().infoLog.clear();
    EXPECT_EQ(Mel({m_dir / "c.tvo", m_dir / "missing options.txt"}), MStatus::kSuccess);
    EXPECT_EQ(FakeOptionsWindow().calls, 3);
    const std::vector<std::string>& editor = Scene().infoLog; // what Maya's script editor shows
    EXPECT_NE(std::find(editor.begin(), editor.end(), "Export stage 1"), editor.end());
    EXPECT_EQ(CReadBack(m_dir / "c.tvo").model.nNumMesh, 1u);
}

TEST_F(MayaPluginTest, OptionsThatCannotMakeAFileAreRefusedBeforeAnyWork)
{
    AddCube("box");
    EXPECT_NE(Export("sVcOptPos.bExport=0"), MStatus::kSuccess);
    EXPECT_FALSE(std::filesystem::exists(m_dir / "out.tvo"));
    ASSERT_FALSE(m_log.entries.empty());
    EXPECT_EQ(m_log.entries.back().level, eLogError);
    EXPECT_NE(m_log.entries.back().text.find("sVcOptPos"), std::string::npos);
    EXPECT_TRUE(Scene().commandLog.empty()); // not even the time was touched
}

TEST_F(MayaPluginTest, ExportActiveExportsTheSelectionAndAnyOtherWordTheScene)
{
    Scene().selection = {AddCube("picked")};
    AddCube("other");
    const std::string config = Write("o.txt", "");
    for (const char* word : {"exportActive", "everything"})
    {
        ASSERT_EQ(Mel({m_dir / "s.tvo", config, word}), MStatus::kSuccess);
        CReadBack back(m_dir / "s.tvo");
        EXPECT_TRUE(back.Node("picked"));
        EXPECT_EQ(back.Node("other") != nullptr, std::string(word) != "exportActive") << word;
        EXPECT_EQ(Scene().infoLog.at(0), "picked"); // the selection is listed first
        Scene().infoLog.clear();
    }
}

TEST_F(MayaPluginTest, OptionsEmbeddedInAnExportedFileNeverRunAnythingButTheUsersOwnFileDoes)
{
    AddCube("box");
    const std::string script = Write("user.mel", "global proc DefineSceneUserData() {}\n");
    const PostExportShell previous = SetPostExportShell(RecordingShell);
    g_shellCommands.clear();
    const std::string users =
        "bUsePostExportCL=1\nsClPostTarget=touch\nsClPostArgs=ran\nbExportUserData=1\nsScriptFile=" + script;
    ASSERT_EQ(Export(users, "first.tvo"), MStatus::kSuccess);
    ASSERT_EQ(Export(users, "first.h"), MStatus::kSuccess);
    EXPECT_EQ(g_shellCommands, (std::vector<std::string>{"touch ran", "touch ran"}));
    EXPECT_EQ(std::count(Scene().commandLog.begin(), Scene().commandLog.end(), "source " + script), 2);

    for (const char* embedded : {"first.tvo", "first.h"})
    {
        g_shellCommands.clear();
        Scene().commandLog.clear();
        ASSERT_EQ(Mel({m_dir / "second.tvo", m_dir / embedded}), MStatus::kSuccess);
        EXPECT_TRUE(g_shellCommands.empty()) << embedded;
        EXPECT_EQ(std::count(Scene().commandLog.begin(), Scene().commandLog.end(), "source " + script), 0)
            << embedded;
        EXPECT_EQ(m_log.Count("Warning: '" + m_dir / embedded +
                              "' carries a post-export command, viewer launch or "
                              "user-data script, which was not run; name an options text file to run them."),
                  1);
    }
    SetPostExportShell(previous);
}

TEST_F(MayaPluginTest, HistoryRecentFilesAndPathsWithSpacesAndAccents)
{
    AddCube("box");
    std::filesystem::create_directory(m_dir / "my scenes");
    const std::string out = m_dir / "my scenes/Scène ü.tvo";
    const std::string config = Write("réglages du jour.txt", "bExportMaterials=0\n");
    ASSERT_EQ(Mel({out, config}), MStatus::kSuccess);
    CQMXTModelTVO model;
    char options[4096] = {}, history[512] = {};
    ASSERT_EQ(model.ReadFromFile(out.c_str(), options, sizeof options - 1, history, sizeof history - 1), 0);
    EXPECT_STREQ(history, "Ostrex 2.12 | Maya API v201602 | 3.0@2149614");
    EXPECT_NE(std::string(options).find("bExportMaterials=0"), std::string::npos);

    ASSERT_EQ(Mel({m_dir / "b.tvo", config}), MStatus::kSuccess);
    EXPECT_EQ(FakeOptionsWindow().recentFiles, (std::vector<std::string>{m_dir / "b.tvo", out}));
    CQMXPreferences prefs(kMayaPreferencesName); // the options used are the next export's starting point
    CQMXTString errors;
    ASSERT_TRUE(prefs.Load(errors));
    COptions stored;
    ASSERT_TRUE(stored.Load(prefs, kCurrentOptionsPrefix));
    EXPECT_FALSE(stored.GetOption(COptionsData::eExportMaterials));
}
