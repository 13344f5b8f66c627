#include "TVORenderer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "TVOShaders.h"

namespace
{
GLint U(GLuint program, const char* name)
{
    return glGetUniformLocation(program, name);
}

void Matrix(GLuint program, const char* name, const QMXTMATRIXf& m)
{
    glUniformMatrix4fv(U(program, name), 1, GL_FALSE, m.f);
}

// Bone matrices a mesh needs in the palette: its batch bone maximum, or every node when its
// vertices name nodes directly.
int PaletteSizeOf(const STVOScene& s, const STVOMesh& m)
{
    return static_cast<int>(m.sBoneBatch.nBatchCnt ? m.sBoneBatch.nBatchBoneMax : s.nNumNode);
}

// A distinct colour for bone batch b.
void BatchColour(uint32_t b, float out[3])
{
    const float hue = std::fmod(static_cast<float>(b) * 0.618034f, 1.0f) * 6.0f;
    const float x = 1.0f - std::fabs(std::fmod(hue, 2.0f) - 1.0f);
    const int sector = static_cast<int>(hue);
    const float rgb[6][3] = {{1, x, 0}, {x, 1, 0}, {0, 1, x}, {0, x, 1}, {x, 0, 1}, {1, 0, x}};
    std::memcpy(out, rgb[sector % 6], sizeof rgb[0]);
}
} // namespace

CTVORenderer::~CTVORenderer() = default;

bool CTVORenderer::Init(CQMXTModelTVO& scene, const std::string& baseDir, std::string& error)
{
    m_pScene = &scene;
    m_textures.Init(scene, baseDir);
    GLint vectors = 128;
    glGetIntegerv(GL_MAX_VERTEX_UNIFORM_VECTORS, &vectors);
    const int capacity = std::max(1, (vectors - 32) / 4);
    for (uint32_t i = 0; i < scene.nNumMesh; ++i)
    {
        const int paletteSize = PaletteSizeOf(scene, scene.pMesh[i]);
        if (paletteSize > capacity)
            m_warnings.push_back("mesh " + std::to_string(i) + " needs " + std::to_string(paletteSize) +
                                 " bone matrices, more than the " + std::to_string(capacity) +
                                 " this GPU holds: drawn unskinned");
        else
            m_nPaletteSize = std::max(m_nPaletteSize, paletteSize);
    }
    m_nProgram = TVOBuildSceneProgram(m_nPaletteSize, error);
    m_nLineProgram = m_nProgram ? TVOBuildLineProgram(error) : 0;
    if (!m_nLineProgram)
        return false;
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    const bool uint32Indices = extensions && std::strstr(extensions, "GL_OES_element_index_uint");
    for (uint32_t i = 0; i < scene.nNumMesh; ++i)
    {
        m_meshes.push_back(std::make_unique<CTVOGpuMesh>());
        if (!m_meshes.back()->Upload(scene.pMesh[i], uint32Indices, error))
            return false;
    }
    if (scene.nNumLight >= static_cast<uint32_t>(kTVOMaxLights))
        m_warnings.push_back("the scene has " + std::to_string(scene.nNumLight) + " lights; the first " +
                             std::to_string(kTVOMaxLights - 1) + " are drawn");
    if (glGetError() != GL_NO_ERROR)
    {
        error = "the scene could not be uploaded to the GPU";
        return false;
    }
    return true;
}

void CTVORenderer::SetLights(const SCameraView& view)
{
    CQMXTModelTVO& s = *m_pScene;
    const int count = static_cast<int>(std::min<uint32_t>(s.nNumLight, kTVOMaxLights - 1));
    GLint types[kTVOMaxLights] = {};
    float pos[kTVOMaxLights][3] = {}, dir[kTVOMaxLights][3] = {}, colour[kTVOMaxLights][3] = {},
          atten[kTVOMaxLights][3] = {}, spot[kTVOMaxLights][2] = {};
    for (int i = 0; i < count; ++i)
    {
        const STVOLight& l = s.pLight[i];
        QMXTVECTOR3f p, d;
        s.GetLight(p, d, static_cast<uint32_t>(i));
        types[i] = l.eType == eTVOLightDirectional ? 1 : l.eType == eTVOLightSpot ? 2 : 0;
        pos[i][0] = p.x, pos[i][1] = p.y, pos[i][2] = p.z;
        dir[i][0] = d.x, dir[i][1] = d.y, dir[i][2] = d.z;
        std::copy(l.pfColour, l.pfColour + 3, colour[i]);
        const bool unset = l.fConstantAttenuation + l.fLinearAttenuation + l.fQuadraticAttenuation <= 0.0f;
        atten[i][0] = unset ? 1.0f : l.fConstantAttenuation;
        atten[i][1] = l.fLinearAttenuation, atten[i][2] = l.fQuadraticAttenuation;
        spot[i][0] = std::cos(0.5f * l.fFalloffAngle);
        spot[i][1] = l.fFalloffExponent;
    }
    // A white fill light at the eye, so that parts the file's lights miss still read (full strength
    // when the file has no lights at all).
    const int used = count + 1;
    const float fill = count ? 0.6f : 1.0f;
    pos[count][0] = view.vEye.x, pos[count][1] = view.vEye.y, pos[count][2] = view.vEye.z;
    colour[count][0] = colour[count][1] = colour[count][2] = fill;
    atten[count][0] = 1.0f;
    const GLuint p = m_nProgram;
    glUniform1i(U(p, "uLightCount"), used);
    glUniform1iv(U(p, "uLightType"), kTVOMaxLights, types);
    glUniform3fv(U(p, "uLightPos"), kTVOMaxLights, &pos[0][0]);
    glUniform3fv(U(p, "uLightDir"), kTVOMaxLights, &dir[0][0]);
    glUniform3fv(U(p, "uLightColour"), kTVOMaxLights, &colour[0][0]);
    glUniform3fv(U(p, "uLightAtten"), kTVOMaxLights, &atten[0][0]);
    glUniform2fv(U(p, "uLightSpot"), kTVOMaxLights, &spot[0][0]);
    const float* ambient = s.pfColourAmbient;
    const bool dark = ambient[0] + ambient[1] + ambient[2] <= 0.0f;
    const float fallback[3] = {0.2f, 0.2f, 0.2f};
    glUniform3fv(U(p, "uAmbient"), 1, dark ? fallback : ambient);
    glUniform3f(U(p, "uEye"), view.vEye.x, view.vEye.y, view.vEye.z);
}

void CTVORenderer::SetMaterial(int32_t idx)
{
    const GLuint p = m_nProgram;
    const STVOScene& s = *m_pScene;
    if (idx < 0 || static_cast<uint32_t>(idx) >= s.nNumMaterial)
    {
        glUniform3f(U(p, "uMatAmbient"), 1, 1, 1);
        glUniform3f(U(p, "uMatDiffuse"), 0.7f, 0.7f, 0.7f);
        glUniform3f(U(p, "uMatSpecular"), 0, 0, 0);
        glUniform1f(U(p, "uShininess"), 1);
        glUniform1f(U(p, "uOpacity"), 1);
        glUniform1i(U(p, "uTextured"), 0);
        return;
    }
    const STVOMaterial& m = s.pMaterial[idx];
    glUniform3fv(U(p, "uMatAmbient"), 1, m.pfMatAmbient);
    glUniform3fv(U(p, "uMatDiffuse"), 1, m.pfMatDiffuse);
    glUniform3fv(U(p, "uMatSpecular"), 1, m.pfMatSpecular);
    glUniform1f(U(p, "uShininess"), m.fMatShininess);
    glUniform1f(U(p, "uOpacity"), m.fMatOpacity > 0.0f ? m.fMatOpacity : 1.0f);
    const GLuint texture = m_textures.Get(m.nIdxTexture[eTVOTexDiffuse], m_warnings);
    glUniform1i(U(p, "uTextured"), texture ? 1 : 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture);
    glUniform1i(U(p, "uTexture"), 0);
}

void CTVORenderer::LoadBatchBones(const STVONode& node, const STVOMesh& mesh, uint32_t batch)
{
    CQMXTModelTVO& s = *m_pScene;
    const CQMXTBoneBatches& b = mesh.sBoneBatch;
    const uint32_t count = b.nBatchCnt ? b.pnBatchBoneCnt[batch] : s.nNumNode;
    std::vector<float> palette(16 * static_cast<size_t>(std::max<uint32_t>(count, 1)), 0.0f);
    for (uint32_t j = 0; j < count; ++j)
    {
        const uint32_t bone = b.nBatchCnt ? b.pnBatches[batch * b.nBatchBoneMax + j] : j;
        const QMXTMATRIXf m = s.GetBoneWorldMatrix(node, s.pNode[bone]);
        std::copy(m.f, m.f + 16, &palette[16 * static_cast<size_t>(j)]);
    }
    glUniformMatrix4fv(U(m_nProgram, "uBones"), static_cast<GLsizei>(count), GL_FALSE, palette.data());
}

void CTVORenderer::DrawMeshNode(uint32_t nodeIdx, const SViewToggles& toggles)
{
    CQMXTModelTVO& s = *m_pScene;
    const STVONode& node = s.pNode[nodeIdx];
    const STVOMesh& mesh = s.pMesh[node.nIdx];
    const CTVOGpuMesh& gpu = *m_meshes[static_cast<size_t>(node.nIdx)];
    const GLuint p = m_nProgram;
    const bool skinned = gpu.Skinned() && PaletteSizeOf(s, mesh) <= m_nPaletteSize;
    Matrix(p, "uWorld", s.GetWorldMatrix(node));
    QMXTMATRIXf unpack;
    std::copy(mesh.mUnpackMatrix, mesh.mUnpackMatrix + 16, unpack.f);
    Matrix(p, "uUnpack", unpack);
    glUniform1i(U(p, "uSkinned"), skinned ? 1 : 0);
    glUniform1i(U(p, "uBonesPerVertex"), static_cast<GLint>(gpu.BonesPerVertex()));
    glUniform1i(U(p, "uHasNormals"), gpu.HasNormals() ? 1 : 0);
    SetMaterial(node.nIdxMaterial);
    gpu.Bind();
    uint32_t loadedBatch = UINT32_MAX;
    for (const SDrawRange& r : gpu.Ranges())
    {
        if (skinned && r.nBatch != loadedBatch)
            LoadBatchBones(node, mesh, loadedBatch = r.nBatch);
        // Edges are drawn white, or in their batch's colour; skinned faces get the batch colour mixed in.
        float tint[4] = {1, 1, 1, toggles.bWireframe ? 1.0f : 0.0f};
        if (toggles.bBatchColours && skinned)
        {
            BatchColour(r.nBatch, tint);
            tint[3] = toggles.bWireframe ? 1.0f : 0.6f;
        }
        glUniform4fv(U(p, "uTint"), 1, tint);
        gpu.DrawRange(r, toggles.bWireframe);
    }
}

void CTVORenderer::Draw(const SCameraView& view, int width, int height, const SViewToggles& toggles)
{
    const float* bg = m_pScene->pfColourBackground;
    glViewport(0, 0, width, height);
    glClearColor(bg[0], bg[1], bg[2], 1.0f);
    glClearDepthf(1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glUseProgram(m_nProgram);
    Matrix(m_nProgram, "uViewProj", view.mViewProj);
    SetLights(view);
    for (uint32_t i = 0; i < m_pScene->nNumMeshNode && i < m_pScene->nNumNode; ++i)
        DrawMeshNode(i, toggles);
    for (GLuint a = 0; a < eAttribCount; ++a)
        glDisableVertexAttribArray(a);
    DrawLines(view, toggles);
    glUseProgram(0);
}

// Overlays in the flat-colour program: vertex normals of unskinned meshes and the scene bounds.
void CTVORenderer::DrawLines(const SCameraView& view, const SViewToggles& toggles)
{
    if (!toggles.bNormals && !toggles.bBounds)
        return;
    CQMXTModelTVO& s = *m_pScene;
    const SSceneBounds bounds = TVOSceneBounds(s);
    std::vector<float> normals, box;
    const float length = 0.05f * bounds.Radius();
    for (uint32_t i = 0; toggles.bNormals && i < s.nNumMeshNode && i < s.nNumNode; ++i)
    {
        const STVOMesh& m = s.pMesh[s.pNode[i].nIdx];
        if (!TVOStreamPresent(m, m.sNormals) || m_meshes[s.pNode[i].nIdx]->Skinned())
            continue;
        QMXTMATRIXf unpack, world;
        std::copy(m.mUnpackMatrix, m.mUnpackMatrix + 16, unpack.f);
        QMXTMatrixMultiplyF(world, unpack, s.GetWorldMatrix(s.pNode[i]));
        for (uint32_t v = 0; v < m.nNumVertex; ++v)
        {
            float p[4], n[4];
            QMXTVertexRead(p, TVOStreamElement(m, m.sVertex, v), m.sVertex.eType, m.sVertex.n);
            QMXTVertexRead(n, TVOStreamElement(m, m.sNormals, v), m.sNormals.eType, m.sNormals.n);
            QMXTVECTOR3f a, d;
            QMXTTransform(a, {p[0], p[1], p[2]}, world);
            QMXTTransformDirection(d, {n[0], n[1], n[2]}, s.GetWorldMatrix(s.pNode[i]));
            QMXTMatrixVec3NormalizeF(d, d);
            normals.insert(normals.end(),
                           {a.x, a.y, a.z, a.x + length * d.x, a.y + length * d.y, a.z + length * d.z});
        }
    }
    if (toggles.bBounds && !bounds.bEmpty)
        for (int e = 0; e < 12; ++e)
        {
            // Edge e of the box: the axis it runs along and the two other corners' choices.
            const int axis = e / 4, bits = e % 4;
            for (int end = 0; end < 2; ++end)
            {
                const int pick[3] = {axis == 0 ? end : bits & 1,
                                     axis == 1 ? end : (axis == 0 ? bits & 1 : bits >> 1),
                                     axis == 2 ? end : bits >> 1};
                box.insert(box.end(),
                           {pick[0] ? bounds.vMax.x : bounds.vMin.x, pick[1] ? bounds.vMax.y : bounds.vMin.y,
                            pick[2] ? bounds.vMax.z : bounds.vMin.z});
            }
        }
    glUseProgram(m_nLineProgram);
    Matrix(m_nLineProgram, "uViewProj", view.mViewProj);
    glEnableVertexAttribArray(eAttribPosition);
    static const float kNormalColour[4] = {0.2f, 0.6f, 1.0f, 1.0f}, kBoxColour[4] = {1.0f, 0.8f, 0.1f, 1.0f};
    const std::pair<const std::vector<float>*, const float*> sets[2] = {{&normals, kNormalColour},
                                                                        {&box, kBoxColour}};
    for (const auto& set : sets)
    {
        if (set.first->empty())
            continue;
        glUniform4fv(U(m_nLineProgram, "uColour"), 1, set.second);
        glVertexAttribPointer(eAttribPosition, 3, GL_FLOAT, GL_FALSE, 0, set.first->data());
        glDrawArrays(GL_LINES, 0, static_cast<GLsizei>(set.first->size() / 3));
    }
    glDisableVertexAttribArray(eAttribPosition);
}

void CTVORenderer::Release()
{
    for (auto& m : m_meshes)
        m->Release();
    m_meshes.clear();
    m_textures.Release();
    if (m_nProgram)
        glDeleteProgram(m_nProgram);
    if (m_nLineProgram)
        glDeleteProgram(m_nLineProgram);
    m_nProgram = m_nLineProgram = 0;
}

std::vector<std::string> CTVORenderer::TakeWarnings()
{
    std::vector<std::string> fresh;
    for (const std::string& w : m_warnings)
        if (std::find(m_said.begin(), m_said.end(), w) == m_said.end())
            fresh.push_back(w), m_said.push_back(w);
    m_warnings.clear();
    return fresh;
}
