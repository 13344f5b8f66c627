// Export and read back: the sample and a handful of skinned and animated test models are filled,
// built with skins and animation, written as .tvo and read again. At several frames every triangle
// of the file, its corners placed by the read scene's world and bone matrices, matches one of the
// importer's world-space triangles (its skinning applied) and the counts agree; lights and cameras
// sit where the importer puts them. Frame 0 is the bind pose in the file, so only models whose
// first animation frame is their bind pose are listed.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <set>

#include "AssimpContent.h"
#include "Log.h"
#include "Options.h"
#include "TVO.h"
#include "TestSupport.h"

namespace
{
namespace fs = std::filesystem;

using STriangle = std::array<aiVector3D, 3>;

struct SStats
{
    int models = 0, frames = 0, lights = 0, cameras = 0;
    long triangles = 0, skinnedTriangles = 0;
    double worst = 0.0; // relative to the scene's size
};

// A mesh stream's element for vertex v: interleaved streams carry their offset in pData.
const uint8_t* Element(const STVOMesh& mesh, const CTVOData& s, uint32_t v)
{
    const uint8_t* base = mesh.pInterleaved ? mesh.pInterleaved + QMXTModelTVODataOffset(s) : s.pData;
    return base + static_cast<size_t>(v) * s.nStride;
}

// The index list as triangles of vertex numbers (strips unrolled).
std::vector<std::array<uint32_t, 3>> Triangles(const STVOMesh& mesh)
{
    const uint32_t size = QMXTModelTVODataTypeSize(mesh.sFaces.eType);
    auto index = [&](uint32_t i)
    {
        uint32_t out = 0;
        QMXTVertexRead(out, mesh.sFaces.pData + static_cast<size_t>(i) * size, mesh.sFaces.eType);
        return out;
    };
    std::vector<std::array<uint32_t, 3>> tris;
    if (mesh.ePrimitiveType == eTVOIndexedTriangleStrip && mesh.pnStripLength)
    {
        uint32_t first = 0;
        for (uint32_t s = 0; s < mesh.nNumStrips; ++s)
        {
            for (uint32_t t = 0; t < mesh.pnStripLength[s]; ++t)
                tris.push_back({index(first + t), index(first + t + 1), index(first + t + 2)});
            first += mesh.pnStripLength[s] + 2;
        }
    }
    else
        for (uint32_t t = 0; t < mesh.nNumFaces; ++t)
            tris.push_back({index(3 * t), index(3 * t + 1), index(3 * t + 2)});
    return tris;
}

// World-space triangles of every mesh node of the read scene at its current frame.
std::vector<STriangle> ExportedTriangles(CQMXTModelTVO& model, SStats& stats)
{
    std::vector<STriangle> out;
    for (uint32_t n = 0; n < model.nNumMeshNode; ++n)
    {
        STVONode& node = model.pNode[n];
        const STVOMesh& mesh = model.pMesh[node.nIdx];
        QMXTMATRIXf unpack;
        std::copy(mesh.mUnpackMatrix, mesh.mUnpackMatrix + 16, unpack.f);
        const QMXTMATRIXf world = model.GetWorldMatrix(node);
        const CQMXTBoneBatches& batches = mesh.sBoneBatch;
        const bool skinned = batches.nBatchCnt > 0 && mesh.sBoneIdx.n > 0 && mesh.sBoneWeight.n > 0;
        const std::vector<std::array<uint32_t, 3>> tris = Triangles(mesh);
        uint32_t batch = 0;
        for (uint32_t t = 0; t < tris.size(); ++t)
        {
            while (skinned && batch + 1 < batches.nBatchCnt && batches.pnBatchOffset[batch + 1] <= t)
                ++batch;
            STriangle tri;
            for (int c = 0; c < 3; ++c)
            {
                const uint32_t v = tris[t][c];
                float raw[4];
                QMXTVertexRead(raw, Element(mesh, mesh.sVertex, v), mesh.sVertex.eType, mesh.sVertex.n);
                QMXTVECTOR3f p;
                QMXTTransform(p, {raw[0], raw[1], raw[2]}, unpack);
                QMXTVECTOR3f w = {0, 0, 0};
                if (skinned)
                {
                    float bones[4], weights[4];
                    QMXTVertexRead(bones, Element(mesh, mesh.sBoneIdx, v), mesh.sBoneIdx.eType,
                                   mesh.sBoneIdx.n);
                    QMXTVertexRead(weights, Element(mesh, mesh.sBoneWeight, v), mesh.sBoneWeight.eType,
                                   mesh.sBoneWeight.n);
                    for (uint32_t b = 0; b < mesh.sBoneIdx.n && b < 4; ++b)
                    {
                        if (!(weights[b] > 0.0f))
                            continue;
                        const uint32_t slot = static_cast<uint32_t>(bones[b] + 0.5f);
                        const STVONode& bone =
                            model.pNode[batches.pnBatches[batch * batches.nBatchBoneMax + slot]];
                        QMXTVECTOR3f q;
                        QMXTTransform(q, p, model.GetBoneWorldMatrix(node, bone));
                        w = {w.x + weights[b] * q.x, w.y + weights[b] * q.y, w.z + weights[b] * q.z};
                    }
                }
                else
                    QMXTTransform(w, p, world);
                tri[c] = aiVector3D(w.x, w.y, w.z);
            }
            out.push_back(tri);
            stats.skinnedTriangles += skinned ? 1 : 0;
        }
    }
    return out;
}

// The importer's world-space triangles of every node the content exports as a mesh.
std::vector<STriangle> ImporterTriangles(const aiScene& scene, const SContent& content,
                                         const SAssimpFillResult& fill, const CImporterPose& pose)
{
    std::set<const aiNode*> sources;
    for (size_t i = 0; i < content.nodes.size(); ++i)
        if (content.nodes[i].type == eNodeMesh && fill.sources[i])
            sources.insert(fill.sources[i]);
    std::vector<STriangle> out;
    for (const aiNode* node : sources)
    {
        const std::vector<aiVector3D> corners = ImporterCorners(scene, *node, pose);
        for (size_t c = 0; c + 2 < corners.size(); c += 3)
            out.push_back({corners[c], corners[c + 1], corners[c + 2]});
    }
    return out;
}

// Largest distance from a corner of one triangle to the nearest corner of the other, both ways.
double CornerDistance(const STriangle& a, const STriangle& b)
{
    double worst = 0.0;
    for (int pass = 0; pass < 2; ++pass)
        for (const aiVector3D& p : pass ? a : b)
        {
            double nearest = 1e300;
            for (const aiVector3D& q : pass ? b : a)
                nearest = std::min(nearest, static_cast<double>((p - q).Length()));
            worst = std::max(worst, nearest);
        }
    return worst;
}

// Each exported triangle takes the nearest unused importer triangle within tolerance. Returns the
// first failure, empty when all match.
std::string MatchTriangles(const std::vector<STriangle>& got, const std::vector<STriangle>& want, float size,
                           SStats& stats)
{
    if (got.size() != want.size())
        return "the file has " + std::to_string(got.size()) + " triangles, the importer " +
               std::to_string(want.size());
    for (const STriangle& t : want)
        if (std::isnan(t[0].x) || std::isnan(t[1].x) || std::isnan(t[2].x))
            return "the importer gives a vertex more than four influences";
    std::vector<bool> used(want.size(), false);
    for (size_t i = 0; i < got.size(); ++i)
    {
        size_t found = want.size();
        double best = 1e-4 * size;
        for (size_t k = 0; k < want.size(); ++k)
        {
            const double d = used[k] ? 1e300 : CornerDistance(got[i], want[k]);
            if (d <= best)
                best = d, found = k;
        }
        if (found == want.size())
        {
            char text[160];
            std::snprintf(text, sizeof text, "triangle %zu (%g %g %g) matches none of the importer's", i,
                          got[i][0].x, got[i][0].y, got[i][0].z);
            return text;
        }
        used[found] = true;
        stats.worst = std::max(stats.worst, best / size);
    }
    stats.triangles += static_cast<long>(got.size());
    return "";
}

// Lights and cameras of the read scene against the importer's at the pose's time.
void CheckLightsAndCameras(const aiScene& scene, CQMXTModelTVO& model, const CImporterPose& pose, float size,
                           const std::string& where, SStats& stats)
{
    for (uint32_t l = 0; l < model.nNumLight; ++l, ++stats.lights)
        EXPECT_EQ(
            CompareLight(scene, pose, model, l, model.pNode[model.nNumMeshNode + l].pszName, size, false), "")
            << where;
    for (uint32_t c = 0; c < model.nNumCamera; ++c, ++stats.cameras)
        EXPECT_EQ(CompareCamera(scene, pose, model, c,
                                model.pNode[model.nNumMeshNode + model.nNumLight + c].pszName, size),
                  "")
            << where;
}

void CheckRoundTrip(const std::string& file, const std::string& dir, SStats& stats)
{
    Assimp::Importer importer;
    const aiScene* scene = LoadLikeTheCommandLine(importer, file);
    ASSERT_NE(scene, nullptr) << file << ": " << importer.GetErrorString();
    SContent content;
    const SAssimpFillResult fill = FillContentFromAssimp(*scene, SAssimpFillSettings(), content);
    ASSERT_TRUE(fill.ok) << file << ": " << fill.error;

    CRecordingLogSink log;
    COptions options;
    options.SetFromString("bExportAnimations=1\nbExportSkin=1\n");
    CTVO builder;
    ASSERT_TRUE(builder.Process(content, options)) << file;
    const std::string path = dir + "/" + fs::path(file).stem().string() + ".tvo";
    ASSERT_TRUE(builder.Write(path.c_str(), options, "fidelity", false)) << file;
    CQMXTModelTVO model;
    ASSERT_EQ(model.ReadFromFile(path.c_str()), 0) << file;

    const float size = SceneSize(*scene);
    const aiAnimation* anim = fill.animation >= 0 ? scene->mAnimations[fill.animation] : nullptr;
    CImporterPose pose(*scene, anim);
    const int count = content.FrameCount();
    ASSERT_EQ(static_cast<int>(model.nNumFrame), count) << file;
    std::vector<int> frames = {0};
    if (anim && count > 3)
        frames.insert(frames.end(), {count / 3, (2 * count) / 3, count - 1});
    for (int frame : frames)
    {
        pose.At(anim ? ImporterTime(*anim, frame, content.info.fps) : 0.0);
        model.SetFrame(static_cast<float>(frame));
        const std::string where = file + " frame " + std::to_string(frame) + ": ";
        const std::string failure = MatchTriangles(
            ExportedTriangles(model, stats), ImporterTriangles(*scene, content, fill, pose), size, stats);
        ASSERT_EQ(failure, "") << where;
        CheckLightsAndCameras(*scene, model, pose, size, where, stats);
        ++stats.frames;
    }
    ++stats.models;
}
} // namespace

TEST(ExportFidelity, ReadBackTrianglesLightsAndCamerasMatchTheImporterAtSeveralFrames)
{
    const CTempDir dir;
    const std::string models = OSTREX_ASSIMP_MODELS;
    const std::vector<std::string> files = {
        std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf",
        models + "/glTF2/simple_skin/simple_skin.gltf",
        models + "/glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf",
        models + "/FBX/huesitos.fbx",
        models + "/FBX/cubes_with_mirroring_and_pivot.fbx",
        models + "/Collada/box_nested_animation.dae",
        models + "/Collada/anims_with_full_rotations_between_keys.DAE",
        models + "/Collada/cameras.dae",
        models + "/Collada/lights.dae",
    };
    SStats stats;
    for (const std::string& file : files)
    {
        CheckRoundTrip(file, dir.Path(), stats);
        if (HasFatalFailure())
            break;
    }
    std::cout << "[ fidelity ] " << stats.models << " models, " << stats.frames << " frames, "
              << stats.triangles << " triangles (" << stats.skinnedTriangles << " through bone batches), "
              << stats.lights << " lights, " << stats.cameras << " cameras; worst corner error "
              << stats.worst << " of the scene size\n";
    EXPECT_EQ(stats.models, static_cast<int>(files.size()));
    EXPECT_GT(stats.skinnedTriangles, 0);
    EXPECT_GT(stats.lights, 0);
    EXPECT_GT(stats.cameras, 0);
}
