// The .tvo file: exact bytes, write -> read -> write identity, the values a read restores, the
// texts-only reads, every way a file can be wrong, and the byte-order layer under it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "QMXTError.h"
#include "QMXTModelTVO.h"
#include "QMXTModelTVOFile.h"
#include "QMXTSink.h"
#include "QMXTSource.h"
#include "TVOTestScenes.h"

namespace
{
// Hand assembly of .tvo bytes: blocks are spelt out word by word, independently of the writer.
class CBytes
{
  public:
    std::vector<uint8_t> b;

    CBytes& U32(uint32_t v)
    {
        for (int i = 0; i < 4; ++i)
            b.push_back(static_cast<uint8_t>(v >> (8 * i)));
        return *this;
    }
    CBytes& Raw(const void* p, size_t n)
    {
        const uint8_t* q = static_cast<const uint8_t*>(p);
        b.insert(b.end(), q, q + n);
        return *this;
    }
    CBytes& Begin(uint32_t tag) { return U32(tag).U32(0); }
    CBytes& End(uint32_t tag) { return U32(tag | 0x80000000u).U32(0); }
    CBytes& Leaf(uint32_t tag, const void* p, uint32_t n) { return U32(tag).U32(n).Raw(p, n).End(tag); }
    CBytes& LeafU32(uint32_t tag, uint32_t v) { return U32(tag).U32(4).U32(v).End(tag); }
    CBytes& LeafStr(uint32_t tag, const std::string& s)
    {
        return Leaf(tag, s.c_str(), static_cast<uint32_t>(s.size() + 1));
    }
    CBytes& Version() { return LeafStr(1000, "AB.TVO.2.0"); }
    CBytes& Append(const CBytes& other)
    {
        b.insert(b.end(), other.b.begin(), other.b.end());
        return *this;
    }
    uint32_t Size() const { return static_cast<uint32_t>(b.size()); }
    const uint8_t* Data() const { return b.data(); }
};

std::vector<uint8_t> Save(const CQMXTModelTVO& s, const char* options = nullptr,
                          const char* history = nullptr)
{
    CSinkMemory sink;
    EXPECT_EQ(s.SaveTVO(sink, options, history), 0);
    return sink.Data();
}

int Read(CQMXTModelTVO& s, const std::vector<uint8_t>& bytes)
{
    return s.ReadFromMemory(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

// Reads and returns the one-line error the source recorded ("" on success).
std::string ReadError(const std::vector<uint8_t>& bytes)
{
    CSourceStream source;
    source.Init(bytes.data(), static_cast<uint32_t>(bytes.size()));
    CQMXTModelTVO s;
    const int result = s.ReadFromSource(source);
    EXPECT_EQ(result != 0, source.Failed());
    return source.DescribeError();
}

// A scene block with the given count fields (zeros elsewhere) and extra content before its end.
CBytes Scene(uint32_t nodes, const CBytes& records = CBytes(), uint32_t frames = 0)
{
    CBytes b;
    b.Begin(1001);
    for (uint32_t tag = 2002; tag <= 2009; ++tag)
        b.LeafU32(tag, tag == 2005 ? nodes : (tag == 2009 ? frames : 0));
    b.Append(records);
    return b.End(1001);
}
} // namespace

TEST(TVOFile, GoldenBytesOfVersionOptionsSceneAndOneNode)
{
    CQMXTModelTVO s;
    s.nNumNode = 1;
    s.pNode = static_cast<STVONode*>(std::calloc(1, sizeof(STVONode)));
    STVONode& n = s.pNode[0];
    n.pszName = tvotest::Str("n");
    n.nIdxMaterial = n.nIdxParent = -1;
    n.pfAnimPosition = tvotest::Floats(3, 1.0f, 1.0f);
    s.nFPS = 30; // not written without frames
    ASSERT_EQ(s.InitImpl(), 0);

    // Spelt out block by block: tag, length, data, tag | 0x80000000, 0, all little-endian.
    const uint8_t zeros[12] = {};
    const float position[3] = {1, 2, 3};
    CBytes expected;
    expected.Version().LeafStr(1002, "a=1").Begin(1001).Leaf(2000, zeros, 12).Leaf(2001, zeros, 12);
    for (uint32_t tag = 2002; tag <= 2009; ++tag)
        expected.LeafU32(tag, tag == 2005 ? 1 : 0);
    expected.LeafU32(2016, 0).Begin(2013).LeafU32(5000, 0).LeafStr(5001, "n").LeafU32(5002, 0xFFFFFFFF);
    expected.LeafU32(5003, 0xFFFFFFFF).LeafU32(5012, 0).Leaf(5007, position, 12).End(2013).End(1001);
    EXPECT_EQ(Save(s, "a=1", ""), expected.b);
}

// A scene read back, and a deep copy of it (the copy flattening makes), write the same bytes.
TEST(TVOFile, WriteReadWriteIsByteIdenticalForEveryBlock)
{
    const char *options = "bOpt=1\nfScale=2\n", *history = "exported today";
    CQMXTModelTVO s;
    tvotest::MakeRichScene(s);
    const std::vector<uint8_t> first = Save(s, options, history);
    CQMXTModelTVO r, deep;
    ASSERT_EQ(Read(r, first), 0);
    EXPECT_TRUE(r.IsLoaded());
    EXPECT_EQ(Save(r, options, history), first);
    ASSERT_EQ(deep.CopyFromMemory(s), 0);
    EXPECT_NE(deep.pMesh[0].pInterleaved, s.pMesh[0].pInterleaved);
    EXPECT_EQ(Save(deep, options, history), first);
    EXPECT_FLOAT_EQ(deep.pLight[1].fConstantAttenuation, 1.0f); // which the file leaves out
    // Found by fuzzing: an absent stream of an interleaved mesh with a stray offset writes none.
    QMXTModelTVODataSetOffset(s.pMesh[0].sTangents, 8);
    EXPECT_EQ(Save(s, options, history), first);
}

// The values read back that the tvoinfo summary does not show, among them those a symmetric
// omission in writer and reader would lose.
TEST(TVOFile, ReadRestoresTheSceneValues)
{
    CQMXTModelTVO s;
    tvotest::MakeRichScene(s);
    CQMXTModelTVO r;
    ASSERT_EQ(Read(r, Save(s)), 0);
    EXPECT_FLOAT_EQ(r.pfColourBackground[2], 0.4f);
    ASSERT_EQ(r.nUserDataSize, 7u);
    EXPECT_EQ(std::memcmp(r.pUserData, s.pUserData, 7), 0);
    EXPECT_EQ(r.pNode[0].pnAnimPositionIdx[3], 6u);
    EXPECT_FLOAT_EQ(r.pNode[7].pfAnimScale[27], 1.27f);
    EXPECT_EQ(r.pNode[0].pUserData[4], static_cast<uint8_t>(40 + 4 * 31));
    EXPECT_EQ(std::memcmp(r.pMesh[0].pInterleaved, s.pMesh[0].pInterleaved, 6 * 44), 0);
    EXPECT_EQ(r.pMesh[0].sBoneBatch.pnBatches[3], 3u);
    EXPECT_EQ(std::memcmp(r.pMesh[1].sTangents.pData, s.pMesh[1].sTangents.pData, 15), 0);
    EXPECT_FLOAT_EQ(r.pMesh[1].mUnpackMatrix[12], -3.0f);
    // Attenuation is stored for point and spot lights only, falloff for spot lights only.
    EXPECT_FLOAT_EQ(r.pLight[0].fQuadraticAttenuation, 0.25f);
    EXPECT_FLOAT_EQ(r.pLight[0].fFalloffAngle, 0.0f);
    EXPECT_FLOAT_EQ(r.pLight[1].fConstantAttenuation, 0.0f);
    EXPECT_FLOAT_EQ(r.pCamera[0].pfAnimFOV[3], 0.95f);
    EXPECT_EQ(r.pMaterial[0].nFlags, 3u);
}

TEST(TVOFile, TextsOnlyReadsFillBuffersAndLeaveTheSceneAlone)
{
    CQMXTModelTVO s;
    tvotest::MakeRichScene(s);
    const std::vector<uint8_t> bytes = Save(s, "key=value\n", "history line");
    const uint32_t n = static_cast<uint32_t>(bytes.size());

    // Whole texts are checked through tvoinfo; here a buffer too small for them.
    CQMXTModelTVO r;
    char options[4] = {'-', '-', '-', '-'};
    ASSERT_EQ(r.ReadFromMemory(bytes.data(), n, options, sizeof options), 0);
    EXPECT_EQ(std::string(options, 4), "key=");
    EXPECT_FALSE(r.IsLoaded());
    // A loaded scene stays as it was.
    ASSERT_EQ(Read(r, bytes), 0);
    char h[5] = {};
    ASSERT_EQ(r.ReadFromMemory(bytes.data(), n, nullptr, 0, h, 4), 0);
    EXPECT_STREQ(h, "hist");
    EXPECT_EQ(r.nNumNode, 8u);
}

TEST(TVOFile, UnknownBlocksAreSkippedAtEveryLevel)
{
    const uint8_t junk[5] = {1, 2, 3, 4, 5};
    CBytes node;
    node.Begin(2013).Leaf(5999, junk, 5).LeafStr(5001, "n");
    node.LeafU32(5003, 0xFFFFFFFF).Begin(5998).End(5998).End(2013);
    CBytes mesh;
    mesh.Begin(2012).LeafU32(6000, 3).Leaf(6099, junk, 5);
    mesh.Begin(6006).LeafU32(9000, 1).LeafU32(9001, 1).LeafU32(9002, 4).Leaf(9099, junk, 3);
    const float xyz[3] = {1, 2, 3};
    mesh.Leaf(9003, xyz, 12).End(6006).End(2012);
    CBytes records;
    records.Leaf(2099, junk, 5).Append(node).Append(mesh);
    CBytes scene = Scene(1, records);
    // One mesh: patch the mesh count (the 2004 leaf is the third count in Scene()).
    scene.b[8 + 2 * 20 + 8] = 1;
    const CBytes file = CBytes().Leaf(999, junk, 5).Version().Append(scene).Leaf(1999, junk, 2);
    CQMXTModelTVO r;
    ASSERT_EQ(r.ReadFromMemory(file.Data(), file.Size()), 0) << ReadError(file.b);
    EXPECT_STREQ(r.pNode[0].pszName, "n");
    ASSERT_EQ(r.nNumMesh, 1u);
    float read[3];
    std::memcpy(read, r.pMesh[0].sVertex.pData, 12);
    EXPECT_FLOAT_EQ(read[2], 3.0f);
}

TEST(TVOFile, OlderStaticNodeBlocksBecomeChannels)
{
    const float pos[3] = {1, 2, 3}, scale[3] = {2, 2, 2}, anim[4] = {0, 0, 0, 1};
    CBytes node;
    node.Begin(2013).LeafU32(5003, 0xFFFFFFFF).Leaf(5004, pos, 12);
    node.Leaf(5006, scale, 12).Leaf(5008, anim, 16).End(2013);
    const CBytes file = CBytes().Version().Append(Scene(1, node, 1));
    CQMXTModelTVO r;
    ASSERT_EQ(r.ReadFromMemory(file.Data(), file.Size()), 0) << ReadError(file.b);
    const STVONode& n = r.pNode[0];
    EXPECT_FLOAT_EQ(n.pfAnimPosition[2], 3.0f);
    const float expectedScale[7] = {2, 2, 2, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(n.pfAnimScale, expectedScale, sizeof expectedScale), 0);
    // The rotation had an array of its own: it is marked animated instead of replaced.
    EXPECT_EQ(n.nAnimationFlags, static_cast<uint32_t>(eTVOHasRotationAnimation));
    EXPECT_FLOAT_EQ(n.pfAnimRotation[3], 1.0f);
}

// Each row is a file the reader must refuse: result 1, an empty scene, and an error naming the byte
// offset and (where given) the reason, or the reason logged where the file cannot be read at all.
TEST(TVOFile, MalformedFilesAreRefusedWithTheirReason)
{
    auto withScene = [](const CBytes& scene) { return CBytes().Version().Append(scene); };
    auto meshFile = [&](const CBytes& fields)
    {
        CBytes scene;
        scene.Begin(1001).LeafU32(2004, 1).Begin(2012).Append(fields).End(2012).End(1001);
        return withScene(scene);
    };
    CBytes emptyNode, twoNodes;
    emptyNode.Begin(2013).End(2013);
    twoNodes.Append(emptyNode).Append(emptyNode);
    const uint16_t faces[3] = {0, 1, 5};
    const float pos[9] = {};
    const uint32_t lengths[2] = {2, 2};
    CBytes badIndex, shortStream, strips, overlap, fewerUVW, animated;
    badIndex.LeafU32(6000, 3).LeafU32(6001, 1);
    badIndex.Begin(6003).LeafU32(9000, 3).LeafU32(9001, 1).LeafU32(9002, 2).Leaf(9003, faces, 6).End(6003);
    shortStream.LeafU32(6000, 4);
    shortStream.Begin(6006).LeafU32(9000, 1).LeafU32(9001, 3).LeafU32(9002, 12).Leaf(9003, pos, 36).End(6006);
    strips.LeafU32(6001, 3).Leaf(6004, lengths, 8).LeafU32(6005, 2);
    overlap.LeafU32(6000, 1).Leaf(6014, pos, 24); // normals start inside the positions
    overlap.Begin(6006).LeafU32(9000, 1).LeafU32(9001, 3).LeafU32(9002, 24).LeafU32(9003, 0).End(6006);
    overlap.Begin(6007).LeafU32(9000, 1).LeafU32(9001, 3).LeafU32(9002, 24).LeafU32(9003, 8).End(6007);
    fewerUVW.LeafU32(6002, 2).Begin(6010).LeafU32(9000, 1).LeafU32(9001, 2).LeafU32(9002, 8).End(6010);
    // Animation keys must cover every frame the node claims to be animated for.
    animated.Begin(2013).LeafU32(5012, eTVOHasPositionAnimation).Leaf(5007, pos, 24).End(2013);
    CBytes tinyHugeCount; // 20 bytes claiming four billion nodes
    tinyHugeCount.Begin(1001).LeafU32(2005, 0xFFFFFFFF);
    tinyHugeCount.b.resize(20);
    CBytes hugeCount, hugeLength;
    hugeCount.Begin(1001).LeafU32(2005, 0x10000000).End(1001);
    hugeLength.Begin(1001).U32(2018).U32(0xFFFFFFF0).U32(0); // almost 4 GiB of user data
    CBytes oddLength;
    oddLength.LeafU32(6001, 1).Begin(6003).LeafU32(9000, 3).LeafU32(9001, 1).LeafU32(9002, 2);
    oddLength.Leaf(9003, faces, 5).End(6003);
    CBytes swapped, fixed;
    swapped.U32(0xE8030000u).U32(0x0B000000u);
    fixed.LeafU32(2016, 1);

    const struct
    {
        const char* name;
        CBytes file;
        std::string reason;
    } rows[] = {
        {"longer version", CBytes().LeafStr(1000, "AB.TVO.2.0x").Append(Scene(0)),
         "version block of 12 bytes"},
        {"other version", CBytes().LeafStr(1000, "AB.TVO.1.0").Append(Scene(0)), ""},
        {"no version", Scene(0), ""},
        {"fewer nodes", withScene(Scene(2, emptyNode)), "1 nodes for a count of 2"},
        {"more nodes", withScene(Scene(1, twoNodes)), "more nodes than their count 1"},
        {"fewer UVW", meshFile(fewerUVW),
         "end of block 2012 (mesh) in 1001 (scene): 1 UVW blocks for a UVW count of 2"},
        {"bad index", meshFile(badIndex), "index 5 at position 2 is not below the vertex count 3"},
        {"short stream", meshFile(shortStream), "positions: 36 bytes of data for 4 vertices of 12 bytes"},
        {"strips", meshFile(strips), "strips of 4 triangles for a face count of 3"},
        {"overlap", meshFile(overlap), "interleaved streams that overlap"},
        {"animation", withScene(Scene(1, animated, 3)),
         "node 0: 6 position floats where the animation needs 9"},
        {"tiny huge count", tinyHugeCount, ""},
        {"huge count", withScene(hugeCount), "268435456 records cannot fit in the 16 bytes left"},
        {"huge length", withScene(hugeLength), "unexpected end of data (4294967280 bytes needed, 4 left)"},
        {"odd length", meshFile(oddLength), "length 5 is not a whole number of 2-byte elements"},
        {"byte order", swapped, "Error: Endianness mismatch between the .tvo file and the platform.\n"},
        {"fixed point", withScene(Scene(0, fixed)),
         "Error: The TVO file is in fixed point format but the tools haven't been compiled with fixed point "
         "enabled.\n"},
    };
    std::string logged;
    const QMXTErrorSink previous = QMXTSetErrorSink([&logged](const std::string& t) { logged += t; });
    for (const auto& row : rows)
    {
        CQMXTModelTVO r;
        logged.clear();
        EXPECT_EQ(r.ReadFromMemory(row.file.Data(), row.file.Size()), 1) << row.name;
        EXPECT_FALSE(r.IsLoaded()) << row.name;
        EXPECT_EQ(r.nNumNode, 0u) << row.name; // a failed read leaves an empty scene
        EXPECT_EQ(r.pNode, nullptr) << row.name;
        const std::string error = ReadError(row.file.b);
        EXPECT_EQ(error.rfind("byte ", 0), 0u) << row.name << ": " << error; // where it went wrong
        EXPECT_NE((error + logged).find(row.reason), std::string::npos) << row.name << ": " << error;
    }
    QMXTSetErrorSink(previous);
}

TEST(TVOFile, EveryTruncatedPrefixFailsCleanly)
{
    CQMXTModelTVO s;
    tvotest::MakeRichScene(s);
    const std::vector<uint8_t> bytes = Save(s, "opts", "hist");
    for (size_t n = 0; n < bytes.size(); ++n)
    {
        // A copy of exactly n bytes, so the sanitizer sees any read past the prefix.
        const std::vector<uint8_t> prefix(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
        CQMXTModelTVO r;
        ASSERT_EQ(Read(r, prefix), 1) << "prefix of " << n << " bytes";
        ASSERT_FALSE(r.IsLoaded());
    }
}

TEST(TVOFile, WriterStopsAtTheFirstFailedWriteAndLeavesNoFile)
{
    class CFailingSink : public CSink
    {
      public:
        int calls = 0;
        bool Write(const void*, size_t) override
        {
            ++calls;
            return false;
        }
    } failing;
    CQMXTModelTVO s;
    tvotest::MakeBigScene(s, 20000, false); // several buffers' worth
    EXPECT_EQ(s.SaveTVO(failing), 1);
    EXPECT_EQ(failing.calls, 1);

    const std::string path = testing::TempDir() + "no-such-dir/x.tvo";
    EXPECT_EQ(s.SaveTVO(path.c_str()), 1);

    // An interleaved layout whose streams overlap cannot be written.
    CQMXTModelTVO bad;
    tvotest::MakeBigScene(bad, 3, true);
    QMXTModelTVODataSetOffset(bad.pMesh[0].sNormals, 4);
    const std::string file = testing::TempDir() + "bad.tvo";
    EXPECT_EQ(bad.SaveTVO(file.c_str()), 1);
    EXPECT_EQ(std::fopen(file.c_str(), "rb"), nullptr);
    EXPECT_EQ(std::fopen((file + ".tmp").c_str(), "rb"), nullptr);
}

// Big-endian hosts swap interleaved vertices in place, each component on its own.
TEST(TVOByteOrder, InterleavedSwapReversesEachComponentOnly)
{
    CQMXTModelTVO s;
    tvotest::MakeBigScene(s, 2, true);
    STVOMesh& m = s.pMesh[0];
    std::vector<uint8_t> swapped(m.pInterleaved, m.pInterleaved + 56);
    for (size_t i = 0, size; i < swapped.size(); i += size)
    {
        size = i % 28 < 24 ? 4 : 2; // six floats, then two unsigned shorts a vertex
        std::reverse(swapped.begin() + i, swapped.begin() + i + size);
    }
    QMXTTVOSwapInterleaved(m);
    EXPECT_EQ(std::vector<uint8_t>(m.pInterleaved, m.pInterleaved + 56), swapped);
}
