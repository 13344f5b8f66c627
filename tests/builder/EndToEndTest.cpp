// Whole exports: scene content through Process and Write, read back from the file.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <set>
#include <string>
#include <vector>
#include <unistd.h>

#include "Log.h"
#include "ModelCompare.h"
#include "SceneFixtures.h"
#include "TVO.h"

namespace
{
class EndToEnd : public ::testing::Test
{
  protected:
    std::string Path(const char* name) const { return dir / name; }

    // Process, Write (binary unless the options say otherwise) and read the file back.
    bool Export(const SContent& content, COptions& options, const std::string& path, CQMXTModelTVO& model)
    {
        CTVO tvo;
        if (!tvo.Process(content, options) || !tvo.Write(path.c_str(), options, "test history", false))
            return false;
        return model.ReadFromFile(path.c_str()) == 0;
    }

    CTempDir dir;
};

// Component values of vertex v of a stream, whether the mesh is interleaved or not.
void ReadVertex(const STVOMesh& m, const CTVOData& d, uint32_t v, float out[4])
{
    const uint8_t* base = m.pInterleaved ? m.pInterleaved + QMXTModelTVODataOffset(d) : d.pData;
    QMXTVertexRead(out, base + static_cast<size_t>(v) * d.nStride, d.eType, d.n);
}

uint32_t Index(const STVOMesh& m, uint32_t k)
{
    uint32_t i = 0;
    QMXTVertexRead(i, m.sFaces.pData + static_cast<size_t>(k) * m.sFaces.nStride, m.sFaces.eType);
    return i;
}

CNode Plain(const char* name, float x, float y, float z)
{
    CNode n;
    n.name = name;
    n.tm.pos[0] = x, n.tm.pos[1] = y, n.tm.pos[2] = z;
    return n;
}
} // namespace

TEST_F(EndToEnd, CubeWeldsTo24VerticesAndEveryStageIsReported)
{
    SContent content;
    content.AddNode(MeshNode("Cube", CubeGeometry()));
    COptions options;
    CRecordingLogSink sink;
    CQMXTModelTVO model;
    ASSERT_TRUE(Export(content, options, Path("cube.tvo"), model));
    ASSERT_EQ(model.nNumMesh, 1u);
    const STVOMesh& m = model.pMesh[0];
    EXPECT_EQ(m.nNumFaces, 12u);
    EXPECT_EQ(m.nNumVertex, 24u);
    EXPECT_EQ(m.sNormals.n, 3u);
    EXPECT_EQ(m.sFaces.eType, EQMXTDataUnsignedShort);
    ASSERT_NE(m.pInterleaved, nullptr);
    EXPECT_EQ(m.sVertex.nStride, 12u + 12u + 8u); // positions, normals, two uv components

    std::string steps;
    for (const CRecordingLogSink::SProgress& step : sink.progress)
        steps += std::to_string(step.percent) + " " + step.text + "\n";
    EXPECT_EQ(steps, "0 Export stage 1\n0 Cube\n40 Export stage 2\n50 Export stage 3\n75 Final export stage\n"
                     "95 Saving\n100 Complete\n");
    EXPECT_EQ(sink.Count("Complete"), 4);
    EXPECT_TRUE(sink.Has(eLogInfo, "Processing mesh 0"));

    CQMXTModelTVO empty;
    ASSERT_TRUE(Export(SContent(), options, Path("empty.tvo"), empty));
    EXPECT_EQ(empty.nNumNode + empty.nNumMesh, 0u);
}

TEST_F(EndToEnd, StillTracksGoIndexingShrinksTracksAndWorldSpaceTakesTheStaticFrame)
{
    // A still node, one swinging between two places, and a cube sliding along x by 10 a frame.
    SContent content;
    content.info.endFrame = 9;
    CNode still = Plain("still", 1, 1, 1);
    CNode swing = Plain("swing", 0, 0, 0);
    CNode cube = MeshNode("Cube", CubeGeometry());
    for (int f = 0; f < 10; ++f)
    {
        still.frames.push_back(still.tm);
        SNodeTM t = swing.tm;
        t.pos[1] = (f % 2) ? 1.0f : -1.0f;
        swing.frames.push_back(t);
        t.pos[0] = 10.0f * static_cast<float>(f), t.pos[1] = 0.0f;
        cube.frames.push_back(t);
    }
    content.AddNode(still);
    content.AddNode(swing);
    content.AddNode(cube);
    COptions options;
    options.SetOption(COptionsData::eExportAnimations, true);
    options.SetOption(COptionsData::eIndexAnimations, true);
    CQMXTModelTVO indexed;
    ASSERT_TRUE(Export(content, options, Path("indexed.tvo"), indexed));
    EXPECT_EQ(indexed.nNumFrame, 10u);
    EXPECT_EQ(indexed.pNode[1].nAnimationFlags, 0u); // the mesh node comes first
    const STVONode& n = indexed.pNode[2];
    EXPECT_EQ(n.nAnimationFlags, unsigned(eTVOHasPositionAnimation));
    ASSERT_NE(n.pnAnimPositionIdx, nullptr);
    EXPECT_EQ(QMXTModelTVOGetAnimArraySize(n.pnAnimPositionIdx, 10, 3), 6u);
    QMXTVECTOR3f p{0, 0, 0};
    indexed.SetFrame(3.0f);
    indexed.GetTranslation(p, n);
    EXPECT_EQ(p.y, 1.0f);

    COptions world;
    world.SetOption(COptionsData::eExportModelSpace, false);
    auto minX = [](const CQMXTModelTVO& m)
    {
        float lowest = 1e30f;
        for (uint32_t v = 0; v < m.pMesh[0].nNumVertex; ++v)
        {
            float q[4];
            ReadVertex(m.pMesh[0], m.pMesh[0].sVertex, v, q);
            lowest = std::fmin(lowest, q[0]);
        }
        return lowest;
    };
    for (const auto& [frame, x] : {std::pair<uint32_t, float>{2, 19.5f}, {10, -0.5f}}) // beyond the frames: 0
    {
        world.SetOption(COptionsData::eStaticFrame, frame);
        CQMXTModelTVO flat;
        ASSERT_TRUE(Export(content, world, Path("world.tvo"), flat));
        EXPECT_EQ(flat.nNumFrame, 10u); // frames are kept for flattening even without animation export
        EXPECT_FLOAT_EQ(minX(flat), x) << frame;
    }
}

TEST_F(EndToEnd, DirectXMirrorsZReversesWindingAndFlipsV)
{
    SContent content;
    CNode cube = MeshNode("Cube", CubeGeometry());
    cube.tm.pos[0] = 1, cube.tm.pos[1] = 2, cube.tm.pos[2] = 3;
    cube.tm.scale[2] = 4.0f;
    content.AddNode(cube);
    COptions gl;
    gl.SetOption(COptionsData::eInterleaved, false);
    gl.SetOption(COptionsData::eTriSort, eTriSortNone);
    gl.SetOption(COptionsData::eUseCustomOptSettings, true);
    COptions dx = gl;
    dx.SetOption(COptionsData::eCS, eCoordSystemDirectX);
    CQMXTModelTVO a, b;
    ASSERT_TRUE(Export(content, gl, Path("gl.tvo"), a));
    ASSERT_TRUE(Export(content, dx, Path("dx.tvo"), b));
    const float* p = b.pNode[0].pfAnimPosition;
    EXPECT_EQ(std::vector<float>(p, p + 3), (std::vector<float>{1, 2, -3}));
    EXPECT_EQ(b.pNode[0].pfAnimScale[2], 4.0f);
    const STVOMesh& ma = a.pMesh[0];
    const STVOMesh& mb = b.pMesh[0];
    ASSERT_EQ(ma.nNumVertex, mb.nNumVertex);
    ASSERT_EQ(ma.nNumFaces, mb.nNumFaces);
    for (uint32_t k = 0; k < 3 * ma.nNumFaces; ++k) // the same triangles with corners 1 and 2 swapped
        EXPECT_EQ(Index(mb, k), Index(ma, k - k % 3 + (3 - k % 3) % 3)) << k;
    // Component c of every vertex becomes offset - c; the other components stay.
    auto mirrored = [&](const CTVOData& da, const CTVOData& db, uint32_t c, float offset)
    {
        for (uint32_t v = 0; v < ma.nNumVertex; ++v)
        {
            float pa[4], pb[4];
            ReadVertex(ma, da, v, pa);
            ReadVertex(mb, db, v, pb);
            for (uint32_t k = 0; k < da.n; ++k)
                EXPECT_EQ(pb[k], k == c ? offset - pa[k] : pa[k]) << v;
        }
    };
    mirrored(ma.sVertex, mb.sVertex, 2, 0.0f);
    mirrored(ma.sNormals, mb.sNormals, 2, 0.0f);
    mirrored(ma.psUVW[0], mb.psUVW[0], 1, 1.0f);
}

TEST_F(EndToEnd, SkinnedTubeIsBatchedWithTablesNamingBoneNodes)
{
    const int rings = 23, sides = 8;
    SContent content;
    std::vector<int> bones;
    for (int b = 0; b < 12; ++b)
    {
        CNode joint = Plain(("bone" + std::to_string(b)).c_str(), 0, static_cast<float>(2 * b), 0);
        joint.type = eNodeJoint;
        joint.parent = b ? b - 1 : -1;
        bones.push_back(content.AddNode(joint));
    }
    CNode tube = MeshNode("Tube", TubeGeometry(rings, sides));
    tube.modifiers = {TubeSkin(tube.geom, rings, sides, bones)};
    content.AddNode(tube);
    COptions options;
    options.SetOption(COptionsData::eBoneLimit, 9u);
    CQMXTModelTVO model;
    ASSERT_TRUE(Export(content, options, Path("tube.tvo"), model));
    ASSERT_EQ(model.nNumMesh, 1u);
    const STVOMesh& m = model.pMesh[0];
    const CQMXTBoneBatches& bb = m.sBoneBatch;
    ASSERT_GE(bb.nBatchCnt, 2u);
    EXPECT_EQ(bb.nBatchBoneMax, 9u);
    std::set<std::string> named;
    for (uint32_t b = 0; b < bb.nBatchCnt; ++b)
    {
        const uint32_t first = bb.pnBatchOffset[b];
        const uint32_t end = b + 1 < bb.nBatchCnt ? bb.pnBatchOffset[b + 1] : m.nNumFaces;
        for (uint32_t t = first; t < end; ++t)
            for (int c = 0; c < 3; ++c)
            {
                const uint32_t v = Index(m, 3 * t + c);
                float pos[4], idx[4];
                ReadVertex(m, m.sVertex, v, pos);
                ReadVertex(m, m.sBoneIdx, v, idx);
                // The tube's ring (its y) says which content bones weight this vertex.
                const int ring = static_cast<int>(std::lround(pos[1]));
                const int expected = ring * 12 / (rings + 1);
                const uint32_t local = static_cast<uint32_t>(idx[0]);
                ASSERT_LT(local, bb.pnBatchBoneCnt[b]);
                const uint32_t node = bb.pnBatches[b * bb.nBatchBoneMax + local];
                ASSERT_LT(node, model.nNumNode);
                EXPECT_EQ(std::string(model.pNode[node].pszName), "bone" + std::to_string(expected));
                named.insert(model.pNode[node].pszName);
            }
    }
    EXPECT_EQ(named.size(), 12u);

    options.SetOption(COptionsData::eBoneLimit, 0u); // no palette: exported without batches
    CTVO unbatched;
    ASSERT_TRUE(unbatched.Process(content, options));
    EXPECT_EQ(unbatched.Scene()->pMesh[0].sBoneBatch.nBatchCnt, 0u);
}

TEST_F(EndToEnd, MergeTakesBlendSettingsFromAnExistingFile)
{
    SContent first;
    first.AddNode(MeshNode("Cube", CubeGeometry()));
    SMaterial wood;
    wood.name = "wood";
    wood.opacity = 0.5f; // becomes source-alpha blending
    wood.textures[0] = "wood.png";
    first.materials = {wood};
    COptions options;
    CQMXTModelTVO source;
    ASSERT_TRUE(Export(first, options, Path("source.tvo"), source));

    // The field rules of a merge are TransformMerge's; here: which file is read, and when.
    SContent second = first;
    second.materials[0].opacity = 1.0f;
    second.materials[0].textures[0] = "wood.qmx";
    COptions merge;
    merge.SetOption(COptionsData::eMerge, true);
    merge.SetOption(COptionsData::eMergeSrc, CQMXTString(Path("source.tvo").c_str()));
    CQMXTModelTVO merged;
    ASSERT_TRUE(Export(second, merge, Path("merged.tvo"), merged));
    const STVOMaterial& m = merged.pMaterial[0];
    EXPECT_EQ(m.eBlendSrcRGB, 770u);
    EXPECT_EQ(m.fMatOpacity, 1.0f); // opacity is not merged
    EXPECT_STREQ(merged.pTexture[m.nIdxTexture[0]].pszName, "wood.png");

    // Without a merge source the file being overwritten is the source.
    COptions overwrite;
    overwrite.SetOption(COptionsData::eMerge, true);
    overwrite.m_sPath = Path("source.tvo").c_str();
    CQMXTModelTVO again;
    ASSERT_TRUE(Export(second, overwrite, Path("source.tvo"), again));
    EXPECT_EQ(again.pMaterial[0].eBlendSrcRGB, 770u);

    // A source that can't be read is no error.
    merge.SetOption(COptionsData::eMergeSrc, CQMXTString(Path("missing.tvo").c_str()));
    CQMXTModelTVO unmerged;
    ASSERT_TRUE(Export(second, merge, Path("unmerged.tvo"), unmerged));
    EXPECT_EQ(unmerged.pMaterial[0].eBlendSrcRGB, 1u);
}

TEST_F(EndToEnd, FailuresAreReportedByTheirTexts)
{
    CRecordingLogSink sink;
    SContent content;
    content.AddNode(MeshNode("Cube", CubeGeometry()));
    COptions options;
    CTVO tvo;
    ASSERT_TRUE(tvo.Process(content, options));
    EXPECT_FALSE(tvo.Write(Path("no/such/dir/x.tvo").c_str(), options, nullptr, false));
    EXPECT_TRUE(sink.Has(eLogError, "Failed to write output file"));
    options.SetOption(COptionsData::eExpFormat, static_cast<EExportFormat>(7));
    EXPECT_FALSE(tvo.Write(Path("x.tvo").c_str(), options, nullptr, false));
    EXPECT_EQ(sink.Count("Failed to write output file"), 2);
    EXPECT_NE(::access(Path("x.tvo").c_str(), F_OK), 0);

    // Five influences on a vertex stop the export.
    SContent five;
    CNode cube = MeshNode("Cube", CubeGeometry());
    SModifier skin;
    skin.vertices.resize(cube.geom.positions.size());
    for (SBonedVtx& v : skin.vertices)
        v.weights = {{0, 0.2f}, {1, 0.2f}, {2, 0.2f}, {3, 0.2f}, {4, 0.2f}};
    cube.modifiers = {skin};
    five.AddNode(cube);
    COptions defaults;
    EXPECT_FALSE(tvo.Process(five, defaults));
    EXPECT_TRUE(sink.Has(eLogError, "A maximum of four bones may be used per vertex."));
}

TEST_F(EndToEnd, TangentsAreWrittenOrSkippedWithAMessage)
{
    CRecordingLogSink sink;
    SContent content;
    content.AddNode(MeshNode("Cube", CubeGeometry()));
    COptions options;
    options.SetOption(COptionsData::eTangentSpace, true);
    CQMXTModelTVO model;
    ASSERT_TRUE(Export(content, options, Path("ts.tvo"), model));
    EXPECT_EQ(sink.Count("Tangent-space generation failed due to too many split vertices."), 0);
    ASSERT_EQ(model.pMesh[0].sTangents.n, 3u);
    EXPECT_EQ(model.pMesh[0].sBinormals.n, 3u);

    CTVO tvo;
    options.SetOption(COptionsData::eTSUseUVW, 1u); // the cube has one uv set
    ASSERT_TRUE(tvo.Process(content, options));
    EXPECT_TRUE(sink.Has(
        eLogWarning, "Warning: Tangent-space generation skipped due to no UVW data in mapping channel 1."));
    EXPECT_EQ(tvo.Scene()->pMesh[0].sTangents.n, 0u);

    // Two corners of a face at the same place weld into one vertex: the generator refuses that
    // triangle, the export goes on without tangents.
    options.SetOption(COptionsData::eTSUseUVW, 0u);
    const QMXTVECTOR3f p[3] = {{0, 0, 0}, {0, 0, 0}, {0, 1, 0}};
    const QMXTVECTOR3f uv[3] = {{0, 0, 0}, {0, 0, 0}, {0, 1, 0}};
    AddCornerTriangle(content.nodes[0].geom, p, {0, 0, 1}, 0, uv);
    ASSERT_TRUE(tvo.Process(content, options));
    EXPECT_TRUE(sink.Has(eLogError, "Tangent-space generation failed due to too many split vertices."));
    EXPECT_EQ(tvo.Scene()->pMesh[0].sTangents.n, 0u);
}

TEST_F(EndToEnd, StripsUnindexedAndUnsortedForms)
{
    SContent content;
    content.AddNode(MeshNode("Cube", CubeGeometry()));
    COptions strips;
    strips.SetOption(COptionsData::ePrimType, ePrimTriangleStrips);
    strips.HandleOptimisations();
    CQMXTModelTVO s;
    ASSERT_TRUE(Export(content, strips, Path("strips.tvo"), s));
    const STVOMesh& m = s.pMesh[0];
    EXPECT_EQ(m.ePrimitiveType, unsigned(eTVOIndexedTriangleStrip));
    EXPECT_EQ(std::accumulate(m.pnStripLength, m.pnStripLength + m.nNumStrips, 0u), 12u);
    EXPECT_LT(m.nNumStrips, 12u); // the cube's sides join into longer strips

    COptions flat;
    flat.SetOption(COptionsData::eIndexed, false);
    CQMXTModelTVO f;
    ASSERT_TRUE(Export(content, flat, Path("flat.tvo"), f));
    EXPECT_EQ(f.pMesh[0].nNumVertex, 36u); // one vertex a corner
    EXPECT_EQ(f.pMesh[0].sFaces.n, 0u);

    // "D3DX" sorting keeps the assembled order, like no sorting.
    COptions none, d3dx;
    none.SetOption(COptionsData::eUseCustomOptSettings, true);
    none.SetOption(COptionsData::eTriSort, eTriSortNone);
    d3dx.SetOption(COptionsData::eUseCustomOptSettings, true);
    d3dx.SetOption(COptionsData::eTriSort, eTriSortD3DX);
    CQMXTModelTVO a, b;
    ASSERT_TRUE(Export(content, none, Path("none.tvo"), a));
    ASSERT_TRUE(Export(content, d3dx, Path("d3dx.tvo"), b));
    EXPECT_EQ(DescribeModelDifference(a, b), "");
    for (uint32_t t = 0; t < 12; ++t)
        EXPECT_EQ(Index(a.pMesh[0], 3 * t), t % 2 ? Index(a.pMesh[0], 3 * t - 3) : 4 * (t / 2)) << t;
}

TEST_F(EndToEnd, PostExportRunsAfterAWriteWhenAsked)
{
    SContent content;
    content.AddNode(MeshNode("Cube", CubeGeometry()));
    COptions options;
    options.SetOption(COptionsData::eClPostTarget, CQMXTString("cp"));
    options.SetOption(COptionsData::eClPostArgs,
                      CQMXTString(("'" + Path("a.tvo") + "' '" + Path("copy.tvo") + "'").c_str()));
    CTVO tvo;
    ASSERT_TRUE(tvo.Process(content, options));
    ASSERT_TRUE(tvo.Write(Path("a.tvo").c_str(), options, nullptr, false));
    EXPECT_NE(::access(Path("copy.tvo").c_str(), F_OK), 0); // not asked
    ASSERT_TRUE(tvo.Write(Path("a.tvo").c_str(), options, nullptr, true));
    EXPECT_EQ(ReadAll(Path("copy.tvo")), ReadAll(Path("a.tvo")));
}
