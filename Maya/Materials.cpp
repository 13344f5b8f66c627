// Shading groups to materials: Lambert, Blinn and Phong shaders become SMaterial records, shared by
// shader name, with the bare file names of the textures on three shader inputs.
#include "Ostrex.h"

#include <maya/MColor.h>
#include <maya/MFnBlinnShader.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MFnLambertShader.h>
#include <maya/MFnPhongShader.h>
#include <maya/MItDependencyGraph.h>
#include <maya/MPlug.h>
#include <maya/MPlugArray.h>

#include <sys/stat.h>

#include "Log.h"
#include "QMXTModelTVO.h"

namespace
{
void CopyColour(float (&out)[3], const MColor& colour)
{
    out[0] = colour.r;
    out[1] = colour.g;
    out[2] = colour.b;
}

// A texture that cannot be found is still named in the file (the viewer may find it elsewhere), but
// the user hears of it.
void WarnIfMissing(const MString& path, const MString& shader)
{
    struct stat info;
    if (path.length() > 0 && stat(path.asChar(), &info) != 0)
        Log(eLogWarning, "Warning: texture file '%s' of '%s' does not exist.", path.asChar(), shader.asChar());
}
} // namespace

MString TextureFileName(const MString& path)
{
    const int slash = path.rindex('/');
    if (slash < 0)
        return path;
    if (slash + 1 >= static_cast<int>(path.length()))
        return MString("");
    return path.substring(slash + 1, static_cast<int>(path.length()) - 1);
}

int Ostrex::GetMaterialID(const MObject& shadingGroup)
{
    MFnDependencyNode group(shadingGroup);
    const MPlug shaderPlug = group.findPlug("surfaceShader", true);
    if (shaderPlug.isNull())
        return -1;
    MPlugArray connected;
    shaderPlug.connectedTo(connected, true, true);
    for (unsigned int i = 0; i < connected.length(); ++i)
    {
        const int index = AddMaterial(connected[i].node());
        if (index != -1)
            return index;
    }
    return -1;
}

int Ostrex::AlreadyAdded(std::string name) const
{
    for (size_t i = 0; i < m_pContent->materials.size(); ++i)
        if (m_pContent->materials[i].name == name)
            return static_cast<int>(i);
    return -1;
}

int Ostrex::AddMaterial(MObject shader)
{
    const MFn::Type type = shader.apiType();
    if (type != MFn::kLambert && type != MFn::kBlinn && type != MFn::kPhong)
        return -1;
    const int existing = AlreadyAdded(MFnDependencyNode(shader).name().asChar());
    if (existing != -1)
        return existing;
    SMaterial material;
    if (type == MFn::kLambert)
    {
        MFnLambertShader lambert(shader);
        SetCommonAttributes(material, lambert);
    }
    else if (type == MFn::kBlinn)
    {
        MFnBlinnShader blinn(shader);
        SetCommonAttributes(material, blinn);
        SetSpecular(material, blinn);
        material.reserved = blinn.specularRollOff();
    }
    else
    {
        MFnPhongShader phong(shader);
        SetCommonAttributes(material, phong);
        SetSpecular(material, phong);
        material.shininess = phong.cosPower();
    }
    m_pContent->materials.push_back(material);
    return static_cast<int>(m_pContent->materials.size()) - 1;
}

template <class Shader> bool Ostrex::SetCommonAttributes(SMaterial& material, Shader& shader)
{
    const MString name = shader.name();
    if (name.length() > 0)
        ExecuteScriptCommand(material.userData, "DefineMaterialUserData %s", name.asChar());
    material.name = name.asChar();
    CopyColour(material.ambient, shader.ambientColor());
    CopyColour(material.diffuse, shader.color());
    material.textures[eTVOTexDiffuse] = GetTexture(shader, "color").asChar();
    material.textures[eTVOTexAmbient] = GetTexture(shader, "ambientColor").asChar();
    material.textures[eTVOTexBump] = GetTexture(shader, "normalCamera").asChar();
    material.specular[0] = material.specular[1] = material.specular[2] = 0.0f;
    // 0.3, not a third: full transparency gives an opacity of 0.1.
    const MColor transparency = shader.transparency();
    material.opacity = 1.0f + (transparency.r + transparency.g + transparency.b) * transparency.a * -0.3f;
    material.shininess = 0.5f;
    material.reserved = 0.0f;
    if (!material.textures[eTVOTexDiffuse].empty())
        material.diffuse[0] = material.diffuse[1] = material.diffuse[2] = 1.0f;
    const float coefficient = shader.diffuseCoeff();
    for (float& d : material.diffuse)
        d *= coefficient;
    return true;
}

template <class Shader> bool Ostrex::SetSpecular(SMaterial& material, Shader& shader)
{
    CopyColour(material.specular, shader.specularColor());
    material.reserved = 1.0f;
    return true;
}

MString Ostrex::GetTexture(MFnDependencyNode& shader, MString attribute)
{
    MStatus status;
    MPlug plug = shader.findPlug(attribute, true, &status);
    MPlugArray sources;
    if (!status || plug.isNull() || !plug.connectedTo(sources, true, false, &status) || !status)
        return MString("");
    MItDependencyGraph it(plug, MFn::kFileTexture, MItDependencyGraph::kUpstream, MItDependencyGraph::kBreadthFirst,
                          MItDependencyGraph::kNodeLevel, &status);
    if (!status)
        return MString("");
    it.disablePruningOnFilter();
    if (it.isDone())
        return MString("");
    MFnDependencyNode texture(it.currentItem());
    MString path;
    texture.findPlug("fileTextureName", true).getValue(path);
    WarnIfMissing(path, shader.name());
    return TextureFileName(path);
}
