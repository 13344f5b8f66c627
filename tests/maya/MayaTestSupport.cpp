#include "MayaTestSupport.h"

#include <maya/MArgList.h>
#include <maya/MFileObject.h>

#include "MelLauncher.h"

using standin::Scene;

CMayaTest::CMayaTest()
{
    standin::ResetScene();
    FakeOptionsWindow() = SFakeOptionsWindow();
}

MStatus CMayaTest::Mel(const std::vector<std::string>& args)
{
    MArgList list;
    for (const std::string& a : args)
        list.addArg(MString(a.c_str()));
    MelLauncher command;
    return command.doIt(list);
}

MStatus CMayaTest::Export(const std::string& options, const std::string& name, bool selection)
{
    const std::string config = Write("options.txt", options + "\n");
    MFileObject file;
    file.setRawFullName(MString((m_dir / name).c_str()));
    m_last = std::make_unique<Ostrex>();
    return m_last->writer(file, MString(("LaunchedFromMELCommand;" + config + ";").c_str()),
                          selection ? MPxFileTranslator::kExportActiveAccessMode
                                    : MPxFileTranslator::kExportAccessMode);
}

std::string CMayaTest::Write(const std::string& name, const std::string& text)
{
    const std::string path = m_dir / name;
    WriteAll(path, text);
    return path;
}

int AddTransform(const std::string& name, int parent, standin::Vec3 translate)
{
    const int id = Scene().Add(MFn::kTransform, name, parent);
    Scene().nodes[id].translate = translate;
    return id;
}

int AddShadingGroup(MFn::Type shaderType, const std::string& shaderName)
{
    const int group = Scene().Add(MFn::kShadingEngine, shaderName + "SG", -1);
    const int shader = Scene().Add(shaderType, shaderName, -1);
    Scene().Connect(shader, "outColor", group, "surfaceShader");
    return group;
}

int ShaderOf(int shadingGroup)
{
    for (const standin::SConnection& c : Scene().connections)
        if (c.dstNode == shadingGroup && c.dstAttr == "surfaceShader")
            return c.srcNode;
    return -1;
}

int AddCube(const std::string& name, int parent, int shadingGroup)
{
    const int group = shadingGroup >= 0 ? shadingGroup : AddShadingGroup(MFn::kLambert, name + "Lambert");
    const int transform = AddTransform(name, parent);
    const int shape = Scene().Add(MFn::kMesh, name + "Shape", transform);
    standin::SMesh& mesh = Scene().nodes[shape].mesh;
    for (int i = 0; i < 8; ++i)
    {
        const standin::Vec3 p{i & 1 ? 0.5 : -0.5, i & 2 ? 0.5 : -0.5, i & 4 ? 0.5 : -0.5};
        mesh.points.push_back(p);
        mesh.normals.push_back({p[0] * 2, p[1] * 2, p[2] * 2}); // not unit length: the export normalises
    }
    mesh.faces = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    mesh.groups.push_back({group, {}});
    return transform;
}

int ShapeOf(int transform)
{
    for (int child : Scene().nodes[transform].children)
        if (!Scene().HasFn(child, MFn::kTransform))
            return child;
    return -1;
}

CReadBack::CReadBack(const std::string& path) : ok(model.ReadFromFile(path.c_str()) == 0) {}

const STVONode* CReadBack::Node(const std::string& name) const
{
    for (uint32_t i = 0; i < model.nNumNode; ++i)
        if (name == model.pNode[i].pszName)
            return &model.pNode[i];
    return nullptr;
}

QMXTVECTOR3f CReadBack::World(const std::string& name, QMXTVECTOR3f p)
{
    QMXTVECTOR3f out{0, 0, 0};
    if (const STVONode* node = Node(name))
        QMXTTransform(out, p, model.GetWorldMatrixNoCache(*node));
    return out;
}

std::string CReadBack::Texture(const STVOMaterial& material, int slot) const
{
    const int index = material.nIdxTexture[slot];
    return index < 0 ? std::string() : std::string(model.pTexture[index].pszName);
}

std::vector<std::array<float, 4>> CReadBack::Stream(const STVOMesh& mesh, const CTVOData& stream) const
{
    std::vector<std::array<float, 4>> out;
    for (uint32_t v = 0; v < mesh.nNumVertex && stream.n > 0; ++v)
    {
        const uint8_t* base =
            mesh.pInterleaved ? mesh.pInterleaved + QMXTModelTVODataOffset(stream) : stream.pData;
        std::array<float, 4> value{};
        QMXTVertexRead(value.data(), base + static_cast<size_t>(v) * stream.nStride, stream.eType, stream.n);
        out.push_back(value);
    }
    return out;
}
