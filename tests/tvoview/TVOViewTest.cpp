// tvoview run headless (--screenshot, Mesa's EGL) on scenes the builder exports: what it draws
// (pixels), and how it refuses bad files.
#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <fstream>

#include "Content.h"
#include "Options.h"
#include "QMXTModelTVO.h"
#include "SceneFixtures.h"
#include "TVO.h"

namespace
{
// Exports content with options as a binary .tvo at path; false when the builder fails.
bool ExportScene(const SContent& content, COptions& options, const std::string& path)
{
    CTVO tvo;
    return tvo.Process(content, options) && tvo.Write(path.c_str(), options, "viewer test", false);
}

// A grey, lit material (the builder's default colours are black).
SMaterial GreyMaterial()
{
    SMaterial m;
    m.name = "Grey";
    for (int c = 0; c < 3; ++c)
        m.diffuse[c] = 0.8f, m.ambient[c] = 1.0f;
    m.opacity = 1.0f;
    return m;
}

// The camera the tests look through: at (cx, cy, 10), looking down -z with +y up, vertical field
// of view 0.6 radians, planes 1 and 100.
CNode TestCamera(float cx, float cy)
{
    CNode cam;
    cam.name = "Cam";
    cam.type = eNodeCamera;
    cam.tm.pos[0] = cx, cam.tm.pos[1] = cy, cam.tm.pos[2] = 10.0f;
    // A camera node looks along its -y axis with -z up: this turn takes its -y onto -z and its -z
    // onto +y (the toolkit's quaternions turn the other way round an axis than the right hand).
    QMXTQUATERNIONf q;
    QMXTMatrixQuaternionRotationAxisF(q, {1, 0, 0}, -1.5707964f);
    cam.tm.rot[0] = q.x, cam.tm.rot[1] = q.y, cam.tm.rot[2] = q.z, cam.tm.rot[3] = q.w;
    cam.camera.fov = 0.6f;
    cam.camera.nearPlane = 1.0f;
    cam.camera.farPlane = 100.0f;
    return cam;
}

// Pixel of world point (x, y, z) seen through TestCamera(cx, cy) in a size x size image.
void ProjectTest(float cx, float cy, float x, float y, float z, int size, float& px, float& py)
{
    const float scale = (10.0f - z) * std::tan(0.3f);
    px = 0.5f * size * (1.0f + (x - cx) / scale);
    py = 0.5f * size * (1.0f - (y - cy) / scale);
}

// A bar from x = 0 to 2 (0.2 thick) skinned to two joints: "Bone0" at the origin holds x < 1,
// "Bone1" at (1, 0, 0) holds the rest and turns 90 degrees about +z from frame 0 to frame 1.
SContent SkinnedBar()
{
    SContent content;
    CNode bone0;
    bone0.name = "Bone0";
    bone0.type = eNodeJoint;
    CNode bone1 = bone0;
    bone1.name = "Bone1";
    bone1.parent = 0;
    bone1.tm.pos[0] = 1.0f;
    QMXTQUATERNIONf bent;
    QMXTMatrixQuaternionRotationAxisF(bent, {0, 0, 1}, -1.5707964f); // +x turns onto +y
    bone1.frames = {bone1.tm, bone1.tm};
    std::copy(&bent.x, &bent.x + 4, bone1.frames[1].rot);
    content.AddNode(bone0);
    content.AddNode(bone1);
    content.info.endFrame = 1;

    // Two boxes of half a bar each, one mesh node per bone, so no corner of one is welded to the other.
    for (int half = 0; half < 2; ++half)
    {
        SGeomData box = CubeGeometry();
        for (QMXTVECTOR3f& p : box.positions)
            p = {p.x + 0.5f + half, 0.2f * p.y, 0.2f * p.z};
        CNode mesh = MeshNode(half ? "Bar1" : "Bar0", box);
        mesh.modifiers.resize(1);
        mesh.modifiers[0].vertices.assign(box.positions.size(), SBonedVtx{{{half, 1.0f}}});
        content.AddNode(mesh);
    }
    content.materials = {GreyMaterial()};
    return content;
}

struct SShot
{
    int nExit = -1;
    std::string sErrors; // stderr of the run
    QImage image;        // the screenshot, null when none was written
};

// Runs tvoview FILE --screenshot OUT.png with more arguments.
SShot Screenshot(const std::string& file, const std::string& out, const std::vector<std::string>& args = {})
{
    QStringList arguments = {QString::fromStdString(file), "--screenshot", QString::fromStdString(out)};
    for (const std::string& a : args)
        arguments << QString::fromStdString(a);
    QFile::remove(QString::fromStdString(out));
    QProcess run;
    run.start(TVOVIEW_PATH, arguments);
    SShot shot;
    if (!run.waitForFinished(60000))
        return shot;
    shot.nExit = run.exitStatus() == QProcess::NormalExit ? run.exitCode() : -1;
    shot.sErrors = run.readAllStandardError().toStdString();
    shot.image.load(QString::fromStdString(out));
    return shot;
}

// Whether a pixel is not the (black) background.
bool Covered(const QImage& image, float px, float py)
{
    const QRgb c = image.pixel(static_cast<int>(px), static_cast<int>(py));
    return qRed(c) + qGreen(c) + qBlue(c) > 24;
}

// How many pixels are not the background.
int Coverage(const QImage& image)
{
    int pixels = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            pixels += Covered(image, static_cast<float>(x), static_cast<float>(y));
    return pixels;
}

class TVOView : public ::testing::Test
{
  protected:
    CTempDir dir;
};

struct SCubeVariant
{
    const char* name;
    EPrimType primitive;
    bool indexed, interleaved;
    EQMXTDataType positions, normals;
};

SContent Cube()
{
    SContent content;
    content.AddNode(MeshNode("Cube", CubeGeometry()));
    content.materials = {GreyMaterial()};
    return content;
}

// Options of the form to export; the model read back must have it.
void ExportCube(const SCubeVariant& v, const std::string& path)
{
    COptions options;
    options.SetOption(COptionsData::ePrimType, v.primitive);
    options.SetOption(COptionsData::eIndexed, v.indexed);
    options.SetOption(COptionsData::eInterleaved, v.interleaved);
    options.SetOption(COptionsData::eUnpackMatrix, v.positions != EQMXTDataFloat);
    options.SetOption(COptionsData::eVcOptPos, CVectorOpt::eDataType, v.positions);
    options.SetOption(COptionsData::eVcOptNor, CVectorOpt::eDataType, v.normals);
    options.HandleOptimisations(); // strips want the strip triangle order, as the options window sets it
    ASSERT_TRUE(ExportScene(Cube(), options, path));
    CQMXTModelTVO model;
    ASSERT_EQ(model.ReadFromFile(path.c_str()), 0);
    const STVOMesh& m = model.pMesh[0]; // two strips a side
    EXPECT_EQ((std::vector<uint32_t>{m.nNumStrips, m.sFaces.pData != nullptr, m.pInterleaved != nullptr,
                                     m.sVertex.eType, m.sNormals.eType}),
              (std::vector<uint32_t>{v.primitive == ePrimTriangleStrips ? 6u : 0u, v.indexed, v.interleaved,
                                     v.positions, v.normals}))
        << v.name;
}

// Mean absolute difference of the colour channels of two images of one size.
double MeanDifference(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
        {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            sum +=
                std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    return sum / (3.0 * a.width() * a.height());
}
} // namespace

TEST_F(TVOView, EveryPrimitiveAndVertexTypeDrawsTheSameCube)
{
    const SCubeVariant variants[] = {
        {"float list", ePrimTriangleList, false, false, EQMXTDataFloat, EQMXTDataFloat},
        {"indexed list", ePrimTriangleList, true, true, EQMXTDataFloat, EQMXTDataShortNorm},
        {"strips", ePrimTriangleStrips, false, false, EQMXTDataFloat, EQMXTDataDEC3N},
        {"indexed strips", ePrimTriangleStrips, true, true, EQMXTDataFloat, EQMXTDataByteNorm},
        {"byte positions", ePrimTriangleList, true, false, EQMXTDataByte, EQMXTDataFloat},
        {"short strips", ePrimTriangleStrips, true, true, EQMXTDataShort, EQMXTDataFixed16_16},
        {"fixed positions", ePrimTriangleList, true, false, EQMXTDataFixed16_16, EQMXTDataFloat},
        {"ushort norm strips", ePrimTriangleStrips, false, true, EQMXTDataUnsignedShortNorm, EQMXTDataFloat},
        {"int positions", ePrimTriangleList, false, true, EQMXTDataInt, EQMXTDataFloat},
        {"ubyte norm strips", ePrimTriangleStrips, true, false, EQMXTDataUnsignedByteNorm, EQMXTDataFloat},
    };
    int reference = 0;
    QImage first;
    for (const SCubeVariant& v : variants)
    {
        const std::string file = dir / (std::string(v.name) + ".tvo");
        ExportCube(v, file);
        const SShot shot = Screenshot(file, dir / "cube.png", {"--size", "200x200"});
        ASSERT_EQ(shot.nExit, 0) << v.name << ": " << shot.sErrors;
        const int c = Coverage(shot.image);
        if (&v == variants)
        {
            reference = c;
            first = shot.image;
            ASSERT_GT(c, 200 * 200 / 10); // the cube fills a good part of the frame
            continue;
        }
        EXPECT_NEAR(c, reference, reference / 100) << v.name;
        // The same place and shading too: a triangle left out shows the back of the cube through the hole.
        EXPECT_LT(MeanDifference(shot.image, first), 1.5) << v.name;
    }
}

// Packed colours reach a GLES 2 GPU as four bytes in file order, which the builder's ARGB packing
// (and D3DCOLOR, the same packing) keeps as red, green, blue, alpha; a texture that cannot be read
// is drawn as a magenta checker, with a warning.
TEST_F(TVOView, PackedVertexColoursAndAMissingTextureDrawTheirColour)
{
    const struct
    {
        EQMXTDataType colours; // EQMXTDataNone: no colours, the texture instead
        const char* warning;
    } rows[] = {{EQMXTDataARGB, ""},
                {EQMXTDataD3DCOLOR, ""},
                {EQMXTDataNone, "warning: texture 'nothere.png' cannot be read"}};
    for (const auto& row : rows)
    {
        const bool texture = row.colours == EQMXTDataNone;
        SContent content = Cube();
        COptions options;
        if (texture)
            content.materials[0].textures[0] = "nothere.png";
        else
        {
            options.SetOption(COptionsData::eVcOptCol, CVectorOpt(true, row.colours, 0x0f));
            content.nodes[0].geom.colours = {{1.0f, 0.1f, 0.0f, 1.0f}};
            for (SFace& f : content.nodes[0].geom.faces)
                f.colour[0] = f.colour[1] = f.colour[2] = 0;
        }
        ASSERT_TRUE(ExportScene(content, options, dir / "colour.tvo"));
        const SShot shot = Screenshot(dir / "colour.tvo", dir / "colour.png", {"--size", "64x64"});
        ASSERT_EQ(shot.nExit, 0) << shot.sErrors;
        EXPECT_NE(shot.sErrors.find(row.warning), std::string::npos) << shot.sErrors;
        int hits = 0;
        for (int y = 0; y < shot.image.height(); ++y)
            for (int x = 0; x < shot.image.width(); ++x)
            {
                const int r = qRed(shot.image.pixel(x, y)), g = qGreen(shot.image.pixel(x, y)),
                          b = qBlue(shot.image.pixel(x, y));
                hits += texture ? r > 2 * g + 40 && b > 2 * g + 40 : r > 60 && g * 4 < r && b * 4 < r;
            }
        EXPECT_GT(hits, 100) << QMXTModelTVODataTypeName(row.colours);
    }
}

// Drawn through the file's camera: the bar's pixels are where that camera puts them.
TEST_F(TVOView, SkinnedBarBendsWhereTheJointPutsIt)
{
    SContent content = SkinnedBar();
    content.AddNode(TestCamera(1.0f, 0.5f));
    COptions options;
    options.SetOption(COptionsData::eExportAnimations, true);
    options.SetOption(COptionsData::eExportSkin, true);
    options.SetOption(COptionsData::eBoneLimit, 2u);
    ASSERT_TRUE(ExportScene(content, options, dir / "bar.tvo"));
    const int size = 240;
    // Points on the second half straight (frame 0), on both sides of its middle line once bent up
    // about the joint at x = 1 (frame 1), and on the first half (always).
    const float points[4][2] = {{1.7f, 0.0f}, {0.95f, 0.85f}, {1.05f, 0.85f}, {0.3f, 0.0f}};
    float px[4], py[4];
    for (int i = 0; i < 4; ++i)
        ProjectTest(1.0f, 0.5f, points[i][0], points[i][1], 0.0f, size, px[i], py[i]);
    for (int frame = 0; frame < 2; ++frame)
    {
        const SShot shot =
            Screenshot(dir / "bar.tvo", dir / "bar.png",
                       {"--camera", "Cam", "--frame", std::to_string(frame), "--size", "240x240"});
        ASSERT_EQ(shot.nExit, 0) << shot.sErrors;
        EXPECT_EQ(Covered(shot.image, px[0], py[0]), frame == 0) << "frame " << frame;
        EXPECT_EQ(Covered(shot.image, px[1], py[1]), frame == 1) << "frame " << frame;
        EXPECT_EQ(Covered(shot.image, px[2], py[2]), frame == 1) << "frame " << frame;
        EXPECT_TRUE(Covered(shot.image, px[3], py[3])) << "frame " << frame;
    }
    const SShot unknown = Screenshot(dir / "bar.tvo", dir / "none.png", {"--camera", "Nobody"});
    EXPECT_EQ(unknown.nExit, 1);
    EXPECT_NE(unknown.sErrors.find("no camera named 'Nobody' (cameras: Cam)"), std::string::npos);
}

// Files that must be refused, and a machine without EGL: one line, exit status 1, no image written.
TEST_F(TVOView, BadFilesAndNoContextAreRefusedWithOneLine)
{
    COptions options;
    options.SetOption(COptionsData::eExportAnimations, true);
    options.SetOption(COptionsData::eExportSkin, true);
    options.SetOption(COptionsData::eBoneLimit, 2u);
    options.SetOption(COptionsData::eInterleaved, false);
    options.SetOption(COptionsData::eVcOptBoneInd, CVectorOpt::eDataType, EQMXTDataUnsignedByte);
    ASSERT_TRUE(ExportScene(SkinnedBar(), options, dir / "good.tvo"));
    const std::string good = ReadAll(dir / "good.tvo");
    std::ofstream(dir / "truncated.tvo", std::ios::binary) << good.substr(0, good.size() / 2);

    CQMXTModelTVO model;
    ASSERT_EQ(model.ReadFromFile((dir / "good.tvo").c_str()), 0);
    STVOMesh& mesh = model.pMesh[0];
    ASSERT_EQ(mesh.sBoneIdx.eType, EQMXTDataUnsignedByte);
    mesh.sBoneIdx.pData[0] = 7; // the batch holds fewer bones
    ASSERT_EQ(model.SaveTVO((dir / "bone.tvo").c_str()), 0);
    mesh.sBoneIdx.pData[0] = 0;
    ASSERT_EQ(model.pNode[0].nIdxParent, model.pNode[1].nIdxParent);
    model.pNode[0].nIdxParent = 1, model.pNode[1].nIdxParent = 0; // two nodes name each other
    ASSERT_EQ(model.SaveTVO((dir / "loop.tvo").c_str()), 0);

    const std::pair<const char*, const char*> cases[] = {
        {"truncated.tvo", ""},
        {"bone.tvo", "vertex 0 uses bone 7 beyond the palette of"},
        {"loop.tvo", "its parents form a loop"},
        {"absent.tvo", "cannot open the file"},
        {"good.tvo", "no OpenGL ES context can be made"},
    };
    for (const auto& c : cases)
    {
        const bool noEgl = std::string(c.first) == "good.tvo"; // EGL finds no vendor library
        const QByteArray vendors = qgetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
        if (noEgl)
            qputenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent.json");
        const SShot shot = Screenshot(dir / c.first, dir / "bad.png");
        if (noEgl && vendors.isNull())
            qunsetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
        else if (noEgl)
            qputenv("__EGL_VENDOR_LIBRARY_FILENAMES", vendors);
        EXPECT_EQ(shot.nExit, 1) << c.first;
        EXPECT_EQ(shot.sErrors.rfind("tvoview: " + dir / c.first + ": ", 0), 0u) << shot.sErrors;
        EXPECT_EQ(std::count(shot.sErrors.begin(), shot.sErrors.end(), '\n'), 1) << shot.sErrors;
        EXPECT_NE(shot.sErrors.find(c.second), std::string::npos) << shot.sErrors;
        EXPECT_TRUE(shot.image.isNull()) << c.first;
    }
}
