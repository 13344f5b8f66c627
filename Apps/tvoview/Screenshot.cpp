#include "Screenshot.h"

#include <cstdio>

#include <QImage>
#include <QImageWriter>
#include <QSaveFile>

#include "EglHeadless.h"
#include "TVORenderer.h"

namespace
{
int Fail(const SViewArgs& args, const std::string& why)
{
    std::fprintf(stderr, "tvoview: %s: %s\n", args.sFile.c_str(), why.c_str());
    return 1;
}

// Writes through a temporary file, so a failed write leaves no half image behind.
bool SavePng(const QImage& image, const std::string& path, std::string& error)
{
    QSaveFile file(QString::fromStdString(path));
    QImageWriter writer(&file, "png");
    if (!file.open(QIODevice::WriteOnly) || !writer.write(image) || !file.commit())
    {
        error = "cannot write " + path + ": " +
                (writer.error() != QImageWriter::UnknownError ? writer.errorString() : file.errorString())
                    .toStdString();
        return false;
    }
    return true;
}
} // namespace

int TVORunScreenshot(CTVOViewScene& scene, const SViewArgs& args, int cameraIdx)
{
    CEglHeadless context;
    std::string error;
    if (!context.Create(args.nWidth, args.nHeight, error))
        return Fail(args, error);
    CQMXTModelTVO& model = scene.Model();
    model.SetFrame(args.fFrame > 0.0f ? std::min(args.fFrame, scene.LastFrame()) : 0.0f);
    const SSceneBounds bounds = TVOSceneBounds(model);
    const float aspect = static_cast<float>(args.nWidth) / static_cast<float>(args.nHeight);
    const SCameraView view = cameraIdx >= 0
                                 ? TVOFileCameraView(model, static_cast<uint32_t>(cameraIdx), bounds, aspect)
                                 : TVOOrbitView(bounds, SOrbit(), aspect);
    CTVORenderer renderer;
    if (!renderer.Init(model, scene.Folder(), error))
        return Fail(args, error);
    renderer.Draw(view, args.nWidth, args.nHeight, SViewToggles());
    for (const std::string& w : renderer.TakeWarnings())
        std::fprintf(stderr, "tvoview: warning: %s\n", w.c_str());
    const QImage image = context.ReadPixels();
    renderer.Release();
    if (!SavePng(image, args.sScreenshot, error))
        return Fail(args, error);
    return 0;
}
