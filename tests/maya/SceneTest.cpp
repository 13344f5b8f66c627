// The scene walk and extraction, checked in the written file: geometry, hierarchy and transforms,
// UV and colour sets, materials and textures, lights and cameras, selections, bad scenes,
// animation, and user data.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "MayaTestSupport.h"

using standin::Scene;

namespace
{
const double kQuarter = 1.5707963267948966;

void ExpectNear(QMXTVECTOR3f a, QMXTVECTOR3f b)
{
    EXPECT_NEAR(a.x, b.x, 1e-5);
    EXPECT_NEAR(a.y, b.y, 1e-5);
    EXPECT_NEAR(a.z, b.z, 1e-5);
}

int AddShape(MFn::Type type, const std::string& name, int transform)
{
    return Scene().Add(type, name, transform);
}
} // namespace

using MayaSceneTest = CMayaTest;

TEST_F(MayaSceneTest, HierarchyKeepsParentsRotationOrdersAndPivots)
{
    const int root = AddTransform("root", 0, {1, 2, 3});
    Scene().nodes[root].rotate = {0, kQuarter, 0};
    const int arm = AddTransform("arm", root);
    Scene().nodes[arm].rotate = {0, 0, kQuarter};
    Scene().nodes[arm].rotatePivot = {1, 0, 0};
    AddShape(MFn::kLocator, "armShape", arm);
    const int yxz = AddTransform("yxz", root);
    Scene().nodes[yxz].rotate = {kQuarter, kQuarter, 0};
    Scene().nodes[yxz].rotateOrder = 4; // kYXZ: about Y first
    AddShape(MFn::kLocator, "yxzShape", yxz);
    const int scaled = AddTransform("scaled", 0, {0, 0, 1});
    Scene().nodes[scaled].rotate = {0, 0, kQuarter};
    Scene().nodes[scaled].scale = {2, 2, 2}; // its axes are normalised before the rotation is taken
    AddShape(MFn::kLocator, "scaledShape", scaled);
    const int lamp = AddTransform("lamp", 0, {4, 5, 6});
    Scene().nodes[lamp].rotate = {kQuarter, 0, 0};
    AddShape(MFn::kPointLight, "lampShape", lamp);
    ASSERT_EQ(Export(""), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    ASSERT_TRUE(back.Node("arm") && back.Node("yxz") && back.Node("scaled"));
    ExpectNear(back.World("scaled", {1, 0, 0}), {0, 2, 1});
    const QMXTVECTOR3f lampAt = back.model.GetLightPosition(0);
    ExpectNear(lampAt, {4, 5, 6}); // the quarter turn of lights leaves their place alone
    EXPECT_EQ(&back.model.pNode[back.Node("arm")->nIdxParent], back.Node("root"));
    ExpectNear(back.World("arm", {2, 0, 0}), {1, 3, 2});
    ExpectNear(back.World("yxz", {1, 0, 0}), {1, 3, 3}); // (0, 1, 0) in root space
}

TEST_F(MayaSceneTest, UVSetsAreCompactedAndCappedAndColourSetsExported)
{
    const int cube = AddCube("box");
    standin::SMesh& mesh = Scene().nodes[ShapeOf(cube)].mesh;
    for (int s = 0; s < 10; ++s)
    {
        standin::SMesh::SUVSet set{"set" + std::to_string(s), {}};
        for (size_t f = 0; f < mesh.faces.size() && s != 1; ++f)
            set.uvs.push_back({{float(s), 0.0f}, {float(s), 1.0f}, {float(s) + 0.5f, 1.0f}, {float(s) + 0.5f, 0.0f}});
        mesh.uvSets.push_back(set);
    }
    mesh.currentColourSet = "paint";
    for (int v = 0; v < 8; ++v)
        mesh.colourSets["paint"].push_back(MColor(v / 8.0f, 0.25f, 0.5f, 1.0f));
    ASSERT_EQ(Export("bExportMappingChannels=1\npsVcOptUVW[1].bExport=1\nsVcOptCol.bExport=1"), MStatus::kSuccess);

    const SGeomData& geom = Content().nodes.at(0).geom;
    ASSERT_EQ(geom.channels.size(), 7u); // sets 0 and 2 to 7: set 1 is empty, sets 8 and 9 are past the eighth
    EXPECT_EQ(geom.channels[1].uvw.front().x, 2.0f);
    EXPECT_EQ(geom.channels[6].uvw.front().x, 7.0f);

    CReadBack back(m_dir / "out.tvo");
    const STVOMesh& out = back.model.pMesh[0];
    ASSERT_EQ(out.nNumUVW, 2u);
    for (const auto& uv : back.Stream(out, out.psUVW[1]))
        EXPECT_TRUE(uv[0] == 2.0f || uv[0] == 2.5f);
    std::set<float> reds;
    for (const auto& c : back.Stream(out, out.sVtxColours))
        reds.insert(std::round(c[2] * 8.0f)); // the builder packs colours blue first
    EXPECT_EQ(reds, (std::set<float>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(MayaSceneTest, ShadingGroupsBecomeSharedMaterialsWithTextureNames)
{
    const int phongGroup = AddShadingGroup(MFn::kPhong, "shiny");
    const int blinnGroup = AddShadingGroup(MFn::kBlinn, "dull");
    const int split = AddCube("split", 0, phongGroup);
    Scene().nodes[ShapeOf(split)].mesh.groups = {{phongGroup, {0, 1, 2}}, {blinnGroup, {3, 4, 5}}};
    standin::SNode& phong = Scene().nodes[ShaderOf(phongGroup)];
    phong.transparency = MColor(1, 1, 1, 1);
    phong.cosPower = 33;
    phong.specular = MColor(0.25f, 0.5f, 0.75f);
    AddCube("sharing", 0, phongGroup);
    AddCube("sameName", 0, AddShadingGroup(MFn::kBlinn, "shiny")); // another shader of that name

    const int textured = AddShadingGroup(MFn::kLambert, "painted");
    const int lambert = ShaderOf(textured);
    const int file = Scene().Add(MFn::kFileTexture, "file1", -1);
    Scene().nodes[file].strings["fileTextureName"] = "/textures/wood.png";
    Scene().Connect(file, "outColor", lambert, "color");
    const int bumpFile = Scene().Add(MFn::kFileTexture, "file2", -1);
    Scene().nodes[bumpFile].strings["fileTextureName"] = "C:\\maps\\bumps.png";
    const int bump = Scene().Add(MFn::kDependencyNode, "bump2d", -1);
    Scene().Connect(bumpFile, "outAlpha", bump, "bumpValue");
    Scene().Connect(bump, "outNormal", lambert, "normalCamera");
    AddCube("wood", 0, textured);
    const int plainGroup = AddShadingGroup(MFn::kLambert, "noColourPlug");
    Scene().nodes[ShaderOf(plainGroup)].attributes.erase("color");
    AddCube("plain", 0, plainGroup);
    ASSERT_EQ(Export(""), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    ASSERT_EQ(back.model.nNumMaterial, 3u); // the blinn group is the last of two and left out
    EXPECT_EQ(Content().nodes[0].geom.faces.size(), 6u);
    EXPECT_EQ(back.Node("split")->nIdxMaterial, back.Node("sharing")->nIdxMaterial);
    EXPECT_EQ(back.Node("split")->nIdxMaterial, back.Node("sameName")->nIdxMaterial);
    const STVOMaterial& shiny = back.model.pMaterial[back.Node("split")->nIdxMaterial];
    EXPECT_STREQ(shiny.pszName, "shiny");
    EXPECT_NEAR(shiny.fMatOpacity, 0.1f, 1e-6);
    EXPECT_EQ(shiny.fMatShininess, 33.0f);
    EXPECT_EQ(shiny.pfMatSpecular[2], 0.75f);
    EXPECT_NEAR(shiny.pfMatDiffuse[0], 0.5f * 0.8f, 1e-6);
    const STVOMaterial& wood = back.model.pMaterial[back.Node("wood")->nIdxMaterial];
    EXPECT_EQ(back.Texture(wood, eTVOTexDiffuse), "wood.png");
    EXPECT_EQ(back.Texture(wood, eTVOTexBump), "C:\\maps\\bumps.png");
    EXPECT_NEAR(wood.pfMatDiffuse[1], 0.8f, 1e-6); // a textured diffuse is white times the coefficient
    EXPECT_EQ(m_log.Count("Warning: texture file '/textures/wood.png' of 'painted' does not exist."), 1);
    EXPECT_STREQ(back.model.pMaterial[back.Node("plain")->nIdxMaterial].pszName, "noColourPlug");
}

TEST_F(MayaSceneTest, LightsAndCamerasByKind)
{
    const std::pair<MFn::Type, short> lights[] = {{MFn::kPointLight, 3}, {MFn::kSpotLight, 1}, {MFn::kDirectionalLight, 0}};
    for (const auto& light : lights)
    {
        const int t = AddTransform("light" + std::to_string(light.first));
        const int shape = AddShape(light.first, "shape" + std::to_string(light.first), t);
        Scene().nodes[shape].decay = light.second;
        Scene().nodes[shape].colour = MColor(0.1f, 0.2f, 0.3f);
    }
    const int ambientT = AddTransform("ambientHolder");
    Scene().nodes[AddShape(MFn::kAmbientLight, "ambientShape", ambientT)].colour = MColor(0.2f, 0.3f, 0.4f);
    const int cameraT = AddTransform("persp");
    const int camera = AddShape(MFn::kCamera, "perspShape", cameraT);
    Scene().nodes[camera].verticalFov = 0.5;
    Scene().nodes[camera].farPlane = 250;
    const int orthoT = AddTransform("top");
    Scene().nodes[AddShape(MFn::kCamera, "topShape", orthoT)].ortho = true;
    AddShape(MFn::kLocator, "childShape", AddTransform("underTop", orthoT));
    ASSERT_EQ(Export(""), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    ASSERT_EQ(back.model.nNumLight, 3u);
    const STVOLight& point = back.model.pLight[0];
    EXPECT_EQ(point.eType, eTVOLightPoint);
    EXPECT_EQ(point.fQuadraticAttenuation, 1.0f); // cubic decay is taken as quadratic
    EXPECT_EQ(point.pfColour[2], 0.3f);
    EXPECT_EQ(back.model.pLight[1].eType, eTVOLightSpot);
    EXPECT_EQ(back.model.pLight[1].fLinearAttenuation, 1.0f);
    EXPECT_NEAR(back.model.pLight[1].fFalloffAngle, 0.7f, 1e-6);
    EXPECT_EQ(back.model.pLight[2].eType, eTVOLightDirectional);
    EXPECT_EQ(back.model.pfColourAmbient[1], 0.3f);
    EXPECT_EQ(m_log.Count("Unknown type kAmbientLight"), 1);
    ASSERT_EQ(back.model.nNumCamera, 1u);
    EXPECT_EQ(back.model.pCamera[0].fFOV, 0.5f);
    EXPECT_EQ(back.model.pCamera[0].fFar, 250.0f);
    EXPECT_EQ(back.Node("top"), nullptr);
    ASSERT_TRUE(back.Node("underTop"));
    EXPECT_LT(back.Node("underTop")->nIdxParent, 0); // the ortho camera's child hangs at the top
}

TEST_F(MayaSceneTest, ASelectionKeepsItsAncestorsAsPlainNodes)
{
    const int group = AddTransform("group");
    const int sub = AddTransform("sub", group);
    const int deep = AddCube("deep", sub);
    AddCube("sibling", group);
    AddCube("outside");
    Scene().selection = {deep};
    ASSERT_EQ(Export("", "out.tvo", true), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    ASSERT_EQ(back.model.nNumNode, 3u);
    EXPECT_EQ(back.model.nNumMesh, 1u);
    EXPECT_EQ(&back.model.pNode[back.Node("deep")->nIdxParent], back.Node("sub"));
    EXPECT_EQ(&back.model.pNode[back.Node("sub")->nIdxParent], back.Node("group"));
}

TEST_F(MayaSceneTest, BadGeometryWarnsAndTheExportGoesOn)
{
    const int empty = AddTransform("empty");
    const int emptyShape = AddShape(MFn::kMesh, "emptyShape", empty);
    Scene().nodes[emptyShape].mesh.groups = {{AddShadingGroup(MFn::kLambert, "e"), {}}};
    AddShape(MFn::kLocator, "kidShape", AddTransform("kid", empty));
    const int odd = AddCube("odd");
    standin::SMesh& mesh = Scene().nodes[ShapeOf(odd)].mesh;
    mesh.faces[0] = {0, 2, 3, 1, 0}; // five corners, the last repeating the first
    mesh.badTriangulation = {1, 2};
    mesh.failingTriangles = {3};
    const int broken = AddCube("broken");
    Scene().nodes[ShapeOf(broken)].mesh.groupsFail = true;
    for (const char* name : {"flat1", "flat2"})
    {
        const int flat = AddCube(name);
        Scene().nodes[flat].scale = {1, 0, 1};
    }
    ASSERT_EQ(Export(""), MStatus::kSuccess);

    EXPECT_EQ(m_log.Count("Warning: MFn::kMesh 'empty' has no polygon data. Exporting as a dummy node."), 1);
    EXPECT_EQ(m_log.Count("Some polygons have bad triangulation."), 2);
    EXPECT_EQ(m_log.Count("Failed to get connected sets and members for 'broken'"), 1);
    EXPECT_EQ(m_log.Count("Warning: One or more Singular transformation matrices detected.\n\t Calculating the "
                          "rotation from the Euler angles instead."),
              1);
    CReadBack back(m_dir / "out.tvo");
    ASSERT_TRUE(back.Node("empty") && back.Node("kid"));
    EXPECT_EQ(&back.model.pNode[back.Node("kid")->nIdxParent], back.Node("empty"));
    EXPECT_EQ(back.Node("broken"), nullptr);
    EXPECT_EQ(back.model.pMesh[back.Node("odd")->nIdx].nNumFaces, 11u); // 3 for the five corners, 2 for each quad, none for face 3
}

TEST_F(MayaSceneTest, AnimationIsSampledOverTheRangeAndTheSceneIsLeftAsItWas)
{
    const int box = AddCube("box");
    Scene().nodes[box].curves["tx"].keys = {{1, 0}, {5, 8}};
    Scene().minFrame = 1;
    Scene().maxFrame = 5;
    Scene().currentFrame = 3;
    Scene().selection = {box};
    const size_t nodes = Scene().nodes.size();
    ASSERT_EQ(Export("bExportAnimations=1"), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    EXPECT_EQ(back.model.nNumFrame, 5u);
    EXPECT_EQ(back.model.nFPS, 30u); // 5 frames over 4/24 s: the +1 of the format
    const STVONode& node = *back.Node("box");
    ASSERT_TRUE(node.nAnimationFlags & eTVOHasPositionAnimation);
    for (int f = 0; f < 5; ++f)
    {
        back.model.SetFrame(float(f));
        EXPECT_NEAR(back.World("box", {0, 0, 0}).x, 2.0f * f, 1e-5);
    }
    EXPECT_EQ(Scene().currentFrame, 3);
    EXPECT_EQ(Scene().nodes.size(), nodes);
    EXPECT_EQ(Scene().selection, std::vector<int>{box});
    for (const std::string& command : Scene().commandLog)
        EXPECT_EQ(command.rfind("currentTime ", 0), 0u) << command;

    Scene().minFrame = 1;
    Scene().maxFrame = 24;
    ASSERT_EQ(Export("bExportAnimations=1", "film.tvo"), MStatus::kSuccess);
    EXPECT_EQ(CReadBack(m_dir / "film.tvo").model.nFPS, 25u); // 24 film frames: the +1 of the format
    Scene().minFrame = Scene().maxFrame = 0;
    ASSERT_EQ(Export("bExportAnimations=1", "still.tvo"), MStatus::kSuccess);
    EXPECT_EQ(Content().nodes.at(0).frames.size(), 1u); // a still scene keeps its one sample, unpadded
}

TEST_F(MayaSceneTest, UserDataOfEveryResultType)
{
    using R = MCommandResult;
    const std::vector<std::pair<standin::SMelAnswer, std::vector<uint8_t>>> cases = {
        {{false, {R::kInt, {7}, {}, 0, 0}}, {7, 0, 0, 0}},
        {{false, {R::kIntArray, {1, 2, 3}, {}, 0, 0}}, {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0}},
        {{false, {R::kDouble, {1.0}, {}, 0, 0}}, {0, 0, 0x80, 0x3f}},
        {{false, {R::kDoubleArray, {2.0, -2.0}, {}, 0, 0}}, {0, 0, 0, 0x40, 0, 0, 0, 0xc0}},
        {{false, {R::kString, {}, {"ab"}, 0, 0}}, {'a', 'b', 0}},
        {{false, {R::kStringArray, {}, {"x", "yz"}, 0, 0}}, {'x', 0, 'y', 'z', 0}},
        {{false, {R::kVector, {1, 0, 2}, {}, 0, 0}}, {0, 0, 0x80, 0x3f, 0, 0, 0, 0, 0, 0, 0, 0x40}},
        {{false, {R::kVectorArray, {0, 0, 0, 0, 0, 1}, {}, 0, 0}}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x3f}},
        {{false, {R::kMatrix, {2, 1}, {}, 1, 2}}, {0, 0, 0, 0x40, 0, 0, 0x80, 0x3f}},
        {{false, {R::kMatrixArray, {1}, {}, 0, 0}}, {}},
        {{false, {R::kInvalid, {}, {}, 0, 0}}, {}},
        {{true, {}}, {}}};
    const std::string script = Write("data.mel", "// procedures\n");
    for (size_t i = 0; i < cases.size(); ++i)
    {
        const std::string name = "n" + std::to_string(i);
        AddShape(MFn::kLocator, name + "Shape", AddTransform(name));
        Scene().mel["DefineNodeUserData |" + name] = cases[i].first;
    }
    Scene().mel["DefineSceneUserData"] = {false, {R::kString, {}, {"s"}, 0, 0}};
    ASSERT_EQ(Export("bExportUserData=0\nsScriptFile=" + script, "off.tvo"), MStatus::kSuccess);
    EXPECT_TRUE(Scene().commandLog.empty() || Scene().commandLog.front().rfind("currentTime", 0) == 0);
    ASSERT_EQ(Export("bExportUserData=1\nsScriptFile=" + script), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    EXPECT_EQ(std::vector<uint8_t>(back.model.pUserData, back.model.pUserData + back.model.nUserDataSize),
              (std::vector<uint8_t>{'s', 0}));
    for (size_t i = 0; i < cases.size(); ++i)
    {
        const STVONode& node = *back.Node("n" + std::to_string(i));
        EXPECT_EQ(std::vector<uint8_t>(node.pUserData, node.pUserData + node.nUserDataSize), cases[i].second) << i;
    }
    EXPECT_EQ(m_log.Count("Failed to execute command 'DefineNodeUserData |n11'"), 1);
    EXPECT_EQ(CReadBack(m_dir / "off.tvo").model.nUserDataSize, 0u);
}

TEST_F(MayaSceneTest, WalkRulesForRigsInstancesAndSeveralShapes)
{
    const int group = AddTransform("group");
    const int rig = Scene().Add(MFn::kLookAt, "rig", group);
    const int cameraT = AddTransform("cam", rig);
    Scene().Add(MFn::kCamera, "camShape", cameraT);
    const int aim = AddTransform("aim", rig, {0, 0, -5});
    Scene().Add(MFn::kLocator, "aimShape", aim);
    AddShape(MFn::kLocator, "groupShape", group);

    const int twoShapes = AddCube("twoShapes");
    const int orig = ShapeOf(twoShapes); // the first shape is an intermediate one, as under a skin
    Scene().nodes[orig].intermediate = true;
    Scene().nodes[twoShapes].children.push_back(ShapeOf(AddCube("donor")));
    const int second = AddCube("second", twoShapes); // a transform child, not a shape
    const int instanced = AddCube("instanced");
    Scene().nodes[instanced].parents.push_back(second); // two parents: never started as a root
    ASSERT_EQ(Export(""), MStatus::kSuccess);

    CReadBack back(m_dir / "out.tvo");
    ASSERT_EQ(back.model.nNumCamera, 1u);
    ASSERT_TRUE(back.Node("cam") && back.Node("aim"));
    EXPECT_EQ(&back.model.pNode[back.model.pCamera[0].nIdxTarget], back.Node("aim"));
    EXPECT_LT(back.Node("cam")->nIdxParent, 0); // rigs hang at the top level
    EXPECT_EQ(std::count_if(Content().nodes.begin(), Content().nodes.end(), [](const CNode& n) { return n.name == "cam"; }), 1);
    const STVOMesh& cube = back.model.pMesh[back.Node("twoShapes")->nIdx];
    EXPECT_EQ(cube.nNumFaces, 12u);
    EXPECT_EQ(cube.nNumVertex, 8u);
    for (const auto& p : back.Stream(cube, cube.sVertex))
        EXPECT_EQ(std::fabs(p[0]) + std::fabs(p[1]) + std::fabs(p[2]), 1.5f);
    for (const auto& n : back.Stream(cube, cube.sNormals)) // the cube's normals are not unit length
        EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1.0f, 1e-5);
    EXPECT_EQ(&back.model.pNode[back.Node("second")->nIdxParent], back.Node("twoShapes"));
    EXPECT_EQ(back.Node("instanced"), nullptr);
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(back.model.pfColourAmbient[c], 1.0f); // no ambient light: white
}
