#include "ViewScenes.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <cmath>
#include <cstdlib>

#include "SceneFixtures.h"
#include "TVO.h"

bool ExportScene(const SContent& content, COptions& options, const std::string& path)
{
    CTVO tvo;
    return tvo.Process(content, options) && tvo.Write(path.c_str(), options, "viewer test", false);
}

SMaterial GreyMaterial()
{
    SMaterial m;
    m.name = "Grey";
    for (int c = 0; c < 3; ++c)
        m.diffuse[c] = 0.8f, m.ambient[c] = 1.0f;
    m.opacity = 1.0f;
    return m;
}

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

void ProjectTest(float cx, float cy, float x, float y, float z, int size, float& px, float& py)
{
    const float scale = (10.0f - z) * std::tan(0.3f);
    px = 0.5f * size * (1.0f + (x - cx) / scale);
    py = 0.5f * size * (1.0f - (y - cy) / scale);
}

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

    // Two boxes of half a bar each, one per bone; the second's texture coordinates differ, so no
    // corner of one is welded to a corner of the other.
    SGeomData bar;
    SModifier skin;
    for (int half = 0; half < 2; ++half)
    {
        SGeomData box = CubeGeometry();
        for (QMXTVECTOR3f& p : box.positions)
            p = {p.x + 0.5f + half, 0.2f * p.y, 0.2f * p.z};
        for (size_t t = 0; t < box.faces.size(); ++t)
        {
            const QMXTVECTOR3f corners[3] = {box.positions[3 * t], box.positions[3 * t + 1],
                                             box.positions[3 * t + 2]};
            const QMXTVECTOR3f uv[3] = {{2.0f * half, 0, 0}, {2.0f * half, 1, 0}, {2.0f * half + 1, 1, 0}};
            AddCornerTriangle(bar, corners, box.normals[3 * t], 0, uv);
        }
        for (size_t v = 0; v < box.positions.size(); ++v)
            skin.vertices.push_back({{{half, 1.0f}}});
    }
    CNode mesh = MeshNode("Bar", bar);
    mesh.modifiers = {skin};
    content.AddNode(mesh);
    content.materials = {GreyMaterial()};
    return content;
}

SShot Screenshot(const std::string& file, const std::string& out, const std::vector<std::string>& args,
                 const std::vector<std::string>& environment)
{
    QStringList arguments = {QString::fromStdString(file), "--screenshot", QString::fromStdString(out)};
    for (const std::string& a : args)
        arguments << QString::fromStdString(a);
    QFile::remove(QString::fromStdString(out));
    QProcess run;
    QStringList env = QProcess::systemEnvironment();
    for (const std::string& e : environment)
        env << QString::fromStdString(e);
    run.setEnvironment(env);
    run.start(TVOVIEW_PATH, arguments);
    SShot shot;
    if (!run.waitForFinished(60000))
        return shot;
    shot.nExit = run.exitStatus() == QProcess::NormalExit ? run.exitCode() : -1;
    shot.sErrors = run.readAllStandardError().toStdString();
    shot.image.load(QString::fromStdString(out));
    // TVOVIEW_TEST_KEEP=DIR keeps a copy of every image, to look at.
    static int taken = 0;
    if (const char* keep = std::getenv("TVOVIEW_TEST_KEEP"); keep && !shot.image.isNull())
        shot.image.save(QString("%1/%2-%3")
                            .arg(keep)
                            .arg(++taken)
                            .arg(QFileInfo(QString::fromStdString(file)).baseName()) +
                        ".png");
    return shot;
}

bool Covered(const QImage& image, float px, float py)
{
    const QRgb c = image.pixel(static_cast<int>(px), static_cast<int>(py));
    return qRed(c) + qGreen(c) + qBlue(c) > 24;
}

SCoverage Coverage(const QImage& image)
{
    SCoverage c;
    c.nLeft = image.width(), c.nTop = image.height();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (Covered(image, static_cast<float>(x), static_cast<float>(y)))
            {
                ++c.nPixels;
                c.fCentreX += x + 0.5, c.fCentreY += y + 0.5;
                c.nLeft = std::min(c.nLeft, x), c.nRight = std::max(c.nRight, x);
                c.nTop = std::min(c.nTop, y), c.nBottom = std::max(c.nBottom, y);
            }
    if (c.nPixels)
        c.fCentreX /= c.nPixels, c.fCentreY /= c.nPixels;
    return c;
}
