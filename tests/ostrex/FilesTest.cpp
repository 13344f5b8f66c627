// The scene filler over every model of the Assimp test collection and the sample: each one the
// importer loads is filled without a crash into consistent content whose world matrices, triangle
// corners (skinning applied), lights and cameras match the importer's at frame 0, and whose node
// matrices match the importer's animation at later frames. Some also go through the builder and a
// written file, which must still match the importer at several frames.
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

std::vector<std::string> ModelFiles()
{
    std::vector<std::string> files;
    Assimp::Importer importer;
    for (const auto& entry : fs::recursive_directory_iterator(OSTREX_ASSIMP_MODELS))
    {
        const std::string path = entry.path().string();
        if (!entry.is_regular_file() || path.find("/invalid/") != std::string::npos)
            continue;
        if (importer.IsExtensionSupported(entry.path().extension().string()))
            files.push_back(path);
    }
    std::sort(files.begin(), files.end());
    return files;
}

float MaxAbs(const QMXTMATRIXf& m)
{
    float largest = 0.0f;
    for (float f : m.f)
        largest = std::max(largest, std::fabs(f));
    return largest;
}

// Index and list invariants the builder relies on.
void ExpectConsistent(const SContent& c, const std::string& file)
{
    const int nodes = static_cast<int>(c.nodes.size());
    const int materials = static_cast<int>(c.materials.size());
    const size_t frames = static_cast<size_t>(c.FrameCount());
    for (int i = 0; i < nodes; ++i)
    {
        const CNode& n = c.nodes[i];
        const std::string where = file + ": node " + std::to_string(i) + " '" + n.name + "'";
        ASSERT_EQ(n.index, i) << where;
        ASSERT_TRUE(n.parent >= -1 && n.parent < i) << where; // parents come first
        ASSERT_TRUE(n.frames.empty() || n.frames.size() == frames) << where;
        for (float f : n.tm.pos)
            ASSERT_TRUE(std::isfinite(f)) << where;
        const SGeomData& g = n.geom;
        if (n.type == eNodeMesh)
        {
            ASSERT_FALSE(g.faces.empty()) << where;
        }
        for (const SFace& f : g.faces)
            for (int k = 0; k < 3; ++k)
            {
                ASSERT_TRUE(f.pos[k] >= 0 && f.pos[k] < static_cast<int>(g.positions.size())) << where;
                ASSERT_TRUE(f.normal[k] >= 0 && f.normal[k] < static_cast<int>(g.normals.size())) << where;
                ASSERT_LT(f.colour[k], static_cast<int>(g.colours.size())) << where;
                ASSERT_TRUE(f.material >= -1 && f.material < materials) << where;
            }
        ASSERT_LE(g.channels.size(), 8u) << where;
        for (const SMappingChannel& ch : g.channels)
        {
            ASSERT_EQ(ch.faces.size(), g.faces.size()) << where;
            for (const CTriIdx& t : ch.faces)
                for (int idx : t.idx)
                    ASSERT_TRUE(idx >= 0 && idx < static_cast<int>(ch.uvw.size())) << where;
        }
        for (const QMXTVECTOR3f& normal : g.normals)
            ASSERT_NEAR(QMXTMatrixVec3LengthF(normal), 1.0f, 1e-3f) << where;
        for (const SModifier& m : n.modifiers)
        {
            ASSERT_EQ(m.vertices.size(), g.positions.size()) << where;
            for (const SBonedVtx& v : m.vertices)
            {
                ASSERT_TRUE(!v.weights.empty() && v.weights.size() <= 4) << where;
                float total = 0.0f;
                for (const CBoneWeight& w : v.weights)
                {
                    ASSERT_TRUE(w.bone >= 0 && w.bone < nodes) << where;
                    total += w.weight;
                }
                ASSERT_NEAR(total, 1.0f, 1e-4f) << where;
            }
        }
        if (n.type == eNodeCamera)
        {
            ASSERT_TRUE(n.camera.target >= -1 && n.camera.target < nodes) << where;
            ASSERT_TRUE(n.camera.fovFrames.empty() || n.camera.fovFrames.size() == frames) << where;
        }
        if (n.type == eNodeLight)
        {
            ASSERT_TRUE(n.light.target >= -1 && n.light.target < nodes) << where;
        }
    }
}

struct SStats
{
    int loaded = 0, exported = 0, nothing = 0, roundTrips = 0;
    long corners = 0, skinnedCorners = 0, lights = 0, cameras = 0, animatedChecks = 0;
    long triangles = 0, skinnedTriangles = 0, fileLights = 0, fileCameras = 0;
    double worstCorner = 0.0, worstTriangle = 0.0; // relative to the scene's size
};

using STriangle = std::array<aiVector3D, 3>;

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
        stats.worstTriangle = std::max(stats.worstTriangle, best / size);
    }
    stats.triangles += static_cast<long>(got.size());
    return "";
}

// Lights and cameras of the read scene against the importer's at the pose's time.
void CheckLightsAndCameras(const aiScene& scene, CQMXTModelTVO& model, const CImporterPose& pose, float size,
                           const std::string& where, SStats& stats)
{
    for (uint32_t l = 0; l < model.nNumLight; ++l, ++stats.fileLights)
        EXPECT_EQ(
            CompareLight(scene, pose, model, l, model.pNode[model.nNumMeshNode + l].pszName, size, false), "")
            << where;
    for (uint32_t c = 0; c < model.nNumCamera; ++c, ++stats.fileCameras)
        EXPECT_EQ(CompareCamera(scene, pose, model, c,
                                model.pNode[model.nNumMeshNode + model.nNumLight + c].pszName, size),
                  "")
            << where;
}

// Builds the content with skins and animation, writes it as .tvo and reads it back: at several frames
// every triangle of the file (its corners placed by the read scene's world and bone matrices) matches
// one of the importer's world-space triangles, and lights and cameras sit where the importer puts them.
void CheckRoundTrip(const aiScene& scene, const SContent& content, const SAssimpFillResult& fill,
                    const std::string& file, const std::string& dir, SStats& stats)
{
    CRecordingLogSink log;
    COptions options;
    options.SetFromString("bExportAnimations=1\nbExportSkin=1\n");
    CTVO builder;
    ASSERT_TRUE(builder.Process(content, options)) << file;
    const std::string path = dir + "/" + fs::path(file).stem().string() + ".tvo";
    ASSERT_TRUE(builder.Write(path.c_str(), options, "fidelity", false)) << file;
    CQMXTModelTVO model;
    ASSERT_EQ(model.ReadFromFile(path.c_str()), 0) << file;

    const float size = SceneSize(scene);
    const aiAnimation* anim = fill.animation >= 0 ? scene.mAnimations[fill.animation] : nullptr;
    CImporterPose pose(scene, anim);
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
            ExportedTriangles(model, stats), ImporterTriangles(scene, content, fill, pose), size, stats);
        ASSERT_EQ(failure, "") << where;
        CheckLightsAndCameras(scene, model, pose, size, where, stats);
    }
    ++stats.roundTrips;
}

// World matrices of every node with a source (lights and cameras aside) at a frame against the
// importer's at the pose's time.
void CheckWorlds(const SContent& content, const SAssimpFillResult& fill, CContentModel& model,
                 const CImporterPose& ref, int frame, const std::string& file)
{
    for (size_t i = 0; i < content.nodes.size(); ++i)
    {
        const CNode& n = content.nodes[i];
        if (!fill.sources[i] || n.type == eNodeLight || n.type == eNodeCamera)
            continue;
        const QMXTMATRIXf want = RowLayout(ref.Global(fill.sources[i]));
        const QMXTMATRIXf got = model.World(static_cast<int>(i), static_cast<float>(frame));
        for (int e = 0; e < 16; ++e)
            ASSERT_NEAR(got[e], want[e], 1e-4f * (1.0f + MaxAbs(want)))
                << file << ": '" << n.name << "' frame " << frame << " element " << e;
    }
}

// Frame 0: world matrices, triangle corners (skinning applied), lights and cameras.
void CheckFrameZero(const aiScene& scene, const SContent& content, const SAssimpFillResult& fill,
                    CContentModel& model, CImporterPose& ref, float size, const std::string& file,
                    SStats& stats)
{
    ref.At(0.0);
    CheckWorlds(content, fill, model, ref, 0, file);
    for (size_t i = 0; i < content.nodes.size() && !::testing::Test::HasFatalFailure(); ++i)
    {
        const CNode& n = content.nodes[i];
        const int index = static_cast<int>(i);
        const std::string where = file + ": '" + n.name + "'";
        if (n.type == eNodeMesh && fill.sources[i])
        {
            const std::vector<aiVector3D> want = ImporterCorners(scene, *fill.sources[i], ref);
            ASSERT_EQ(want.size(), 3 * n.geom.faces.size()) << where;
            const QMXTMATRIXf world = model.World(index);
            for (size_t c = 0; c < want.size(); ++c)
            {
                if (std::isnan(want[c].x))
                    continue;
                QMXTVECTOR3f p;
                QMXTTransform(p, n.geom.positions[n.geom.faces[c / 3].pos[c % 3]], world);
                const double d = (aiVector3D(p.x, p.y, p.z) - want[c]).Length() / size;
                stats.worstCorner = std::max(stats.worstCorner, d);
                ASSERT_LT(d, 1e-4) << where << " corner " << c;
                ++stats.corners;
                stats.skinnedCorners += n.modifiers.empty() ? 0 : 1;
            }
        }
        if (n.type == eNodeLight)
        {
            const uint32_t light = static_cast<uint32_t>(model.LightNumber(index));
            ASSERT_EQ(CompareLight(scene, ref, model.Model(), light, n.name, size, true), "") << file;
            ++stats.lights;
        }
        if (n.type == eNodeCamera)
        {
            const uint32_t camera = static_cast<uint32_t>(model.CameraNumber(index));
            ASSERT_EQ(CompareCamera(scene, ref, model.Model(), camera, n.name, size), "") << file;
            ++stats.cameras;
        }
    }
}

void CheckFile(const std::string& file, bool roundTrip, const std::string& dir, SStats& stats)
{
    Assimp::Importer importer;
    const aiScene* scene = LoadLikeTheCommandLine(importer, file);
    if (!scene)
        return;
    ++stats.loaded;
    CRecordingLogSink log;
    SContent content;
    const SAssimpFillResult fill = FillContentFromAssimp(*scene, SAssimpFillSettings(), content);
    if (!fill.ok)
    {
        ASSERT_EQ(fill.error.rfind("nothing to export", 0), 0u) << file << ": " << fill.error;
        ++stats.nothing;
        return;
    }
    ++stats.exported;
    ExpectConsistent(content, file);
    CContentModel model(content);
    CImporterPose ref(*scene, fill.animation >= 0 ? scene->mAnimations[fill.animation] : nullptr);
    CheckFrameZero(*scene, content, fill, model, ref, SceneSize(*scene), file, stats);
    if (roundTrip && !::testing::Test::HasFatalFailure())
        CheckRoundTrip(*scene, content, fill, file, dir, stats);
    const int count = content.FrameCount();
    if (::testing::Test::HasFatalFailure() || fill.animation < 0 || count <= 3)
        return;
    // Later frames: node world matrices against the importer's animation at the frame's time.
    for (int frame : {count / 3, (2 * count) / 3, count - 1})
    {
        ref.At(ImporterTime(*scene->mAnimations[fill.animation], frame, content.info.fps));
        CheckWorlds(content, fill, model, ref, frame, file);
        ++stats.animatedChecks;
    }
}
} // namespace

// Every model: filled and compared at the content level. Models whose first animation frame is their
// bind pose (frame 0 of a file is the bind pose) also go through the builder and the file.
TEST(AssimpFiles, EveryLoadableModelFillsAndMatchesTheImporter)
{
    const std::string models = std::string(OSTREX_ASSIMP_MODELS) + "/";
    const std::set<std::string> roundTrips = {
        std::string(OSTREX_SAMPLES_DIR) + "/sample.gltf",
        models + "glTF2/simple_skin/simple_skin.gltf",
        models + "glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf",
        models + "FBX/huesitos.fbx",
        models + "FBX/cubes_with_mirroring_and_pivot.fbx",
        models + "Collada/box_nested_animation.dae",
        models + "Collada/anims_with_full_rotations_between_keys.DAE",
        models + "Collada/cameras.dae",
        models + "Collada/lights.dae",
    };
    std::vector<std::string> files = ModelFiles();
    ASSERT_GT(files.size(), 300u)
        << "the Assimp test models are missing (scripts/install-deps installs them)";
    files.push_back(*roundTrips.begin());
    const CTempDir dir;
    SStats stats;
    for (const std::string& file : files)
    {
        CheckFile(file, roundTrips.count(file) > 0, dir.Path(), stats);
        if (HasFatalFailure())
            return;
    }
    std::cout << "[ models   ] " << files.size() << " files, " << stats.loaded << " loaded by Assimp, "
              << stats.exported << " filled, " << stats.nothing << " with nothing to export\n"
              << "[ checked  ] " << stats.corners << " corners (" << stats.skinnedCorners << " skinned), "
              << stats.lights << " lights, " << stats.cameras << " cameras, " << stats.animatedChecks
              << " animated frames; worst corner error " << stats.worstCorner << " of the scene size\n"
              << "[ files    ] " << stats.roundTrips << " written and read back: " << stats.triangles
              << " triangles (" << stats.skinnedTriangles << " through bone batches), " << stats.fileLights
              << " lights, " << stats.fileCameras << " cameras; worst corner error " << stats.worstTriangle << "\n";
    EXPECT_GT(stats.exported, 200);
    EXPECT_GT(stats.skinnedCorners, 0);
    EXPECT_GT(stats.animatedChecks, 0);
    EXPECT_EQ(stats.roundTrips, static_cast<int>(roundTrips.size()));
    EXPECT_GT(stats.skinnedTriangles, 0);
    EXPECT_GT(stats.fileLights, 0);
    EXPECT_GT(stats.fileCameras, 0);
}
