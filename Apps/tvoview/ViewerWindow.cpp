#include "ViewerWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QSplitter>
#include <QStatusBar>
#include <QSurfaceFormat>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "TVOViewCamera.h"
#include "ViewerGLWidget.h"
#include "ViewerPanel.h"

namespace
{
// Slider steps a frame: the slider moves in tenths so playback between keys is smooth.
constexpr int kSteps = 10;

QWidget* SidePanel(CTVOViewScene& scene, CViewerGLWidget* view)
{
    auto* tabs = new QTabWidget;
    auto* summary = new QPlainTextEdit(QString::fromStdString(TVOSummaryText(scene.Model(), scene.Facts())));
    summary->setReadOnly(true);
    summary->setLineWrapMode(QPlainTextEdit::NoWrap);
    summary->setFont(QFont("monospace"));
    tabs->addTab(summary, "Summary");
    auto* tree = new QTreeWidget;
    TVOFillNodeTree(*tree, scene.Model());
    tabs->addTab(tree, "Nodes");
    auto* meshes = new QTableWidget;
    TVOFillMeshTable(*meshes, scene.Model());
    tabs->addTab(meshes, "Meshes");

    auto* toggles = new QWidget;
    auto* row = new QHBoxLayout(toggles);
    auto state = std::make_shared<SViewToggles>();
    const std::pair<const char*, bool SViewToggles::*> names[] = {
        {"Wireframe", &SViewToggles::bWireframe},
        {"Normals", &SViewToggles::bNormals},
        {"Bone batches", &SViewToggles::bBatchColours},
        {"Bounds", &SViewToggles::bBounds}};
    for (const auto& name : names)
    {
        auto* box = new QCheckBox(name.first);
        row->addWidget(box);
        const auto member = name.second;
        QObject::connect(box, &QCheckBox::toggled, view,
                         [view, state, member](bool on)
                         {
                             (*state).*member = on;
                             view->SetToggles(*state);
                         });
    }
    auto* panel = new QWidget;
    auto* column = new QVBoxLayout(panel);
    column->addWidget(toggles);
    column->addWidget(tabs);
    return panel;
}

QWidget* AnimationBar(CTVOViewScene& scene, CViewerGLWidget* view, int cameraIdx, float firstFrame)
{
    CQMXTModelTVO& model = scene.Model();
    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    auto* frameLabel = new QLabel;
    auto* play = new QPushButton("Play");
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, static_cast<int>(scene.LastFrame() * kSteps));
    // Playback follows the clock, so a slow frame skips ahead instead of slowing the animation.
    auto* timer = new QTimer(bar);
    timer->setInterval(15);
    auto clock = std::make_shared<QElapsedTimer>();
    auto startStep = std::make_shared<int>(0);
    const int fps = model.nFPS > 0 && model.nFPS <= 1000 ? static_cast<int>(model.nFPS) : 30;
    play->setEnabled(model.nNumFrame > 1);
    QObject::connect(play, &QPushButton::clicked, bar,
                     [timer, play, slider, clock, startStep]
                     {
                         timer->isActive() ? timer->stop() : timer->start();
                         clock->start();
                         *startStep = slider->value();
                         play->setText(timer->isActive() ? "Pause" : "Play");
                     });
    QObject::connect(timer, &QTimer::timeout, slider,
                     [slider, clock, startStep, fps]
                     {
                         const qint64 steps = *startStep + clock->elapsed() * fps * kSteps / 1000;
                         slider->setValue(
                             static_cast<int>(steps % (static_cast<qint64>(slider->maximum()) + 1)));
                     });
    const auto showFrame = [view, frameLabel, &scene](int value)
    {
        const float frame = static_cast<float>(value) / kSteps;
        view->SetFrame(frame);
        frameLabel->setText(QString("frame %1 of %2").arg(frame, 0, 'f', 1).arg(scene.Model().nNumFrame));
    };
    QObject::connect(slider, &QSlider::valueChanged, view, showFrame);
    slider->setValue(static_cast<int>(firstFrame * kSteps));
    showFrame(slider->value());
    auto* cameras = new QComboBox;
    cameras->addItem("Free orbit camera");
    for (uint32_t c = 0; c < model.nNumCamera; ++c)
        cameras->addItem(QString::fromStdString(TVOCameraName(model, c)));
    cameras->setCurrentIndex(cameraIdx + 1);
    QObject::connect(cameras, &QComboBox::currentIndexChanged, view,
                     [view](int i) { view->SetCamera(i - 1); });
    row->addWidget(play);
    row->addWidget(slider, 1);
    row->addWidget(frameLabel);
    row->addWidget(new QLabel(QString("%1 fps").arg(model.nFPS)));
    row->addWidget(cameras);
    return bar;
}
} // namespace

int TVORunViewerWindow(int argc, char** argv, CTVOViewScene& scene, const SViewArgs& args, int cameraIdx)
{
    // Without any display Qt would abort; say so and point to the headless path instead.
    if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY") && !std::getenv("QT_QPA_PLATFORM"))
    {
        std::fprintf(stderr, "tvoview: %s: no display to open a window on (use --screenshot OUT.png)\n",
                     args.sFile.c_str());
        return 1;
    }
    // The renderer speaks OpenGL ES 2, whoever makes the context.
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGLES);
    format.setVersion(2, 0);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication app(argc, argv);

    QMainWindow window;
    window.setWindowTitle(QString("tvoview - %1").arg(QString::fromStdString(args.sFile)));
    auto* view = new CViewerGLWidget(scene);
    view->SetCamera(cameraIdx);
    auto* left = new QWidget;
    auto* column = new QVBoxLayout(left);
    column->addWidget(view, 1);
    const float firstFrame = args.fFrame > 0.0f ? std::min(args.fFrame, scene.LastFrame()) : 0.0f;
    column->addWidget(AnimationBar(scene, view, cameraIdx, firstFrame));
    auto* splitter = new QSplitter;
    splitter->addWidget(left);
    splitter->addWidget(SidePanel(scene, view));
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    window.setCentralWidget(splitter);
    QObject::connect(view, &CViewerGLWidget::Message, &window,
                     [&window](const QString& text)
                     {
                         if (text.startsWith("warning") || text.startsWith("cannot"))
                             std::fprintf(stderr, "tvoview: %s\n", text.toUtf8().constData());
                         window.statusBar()->showMessage(text);
                     });
    auto* quit = new QShortcut(QKeySequence::Quit, &window);
    QObject::connect(quit, &QShortcut::activated, &window, &QWidget::close);
    window.resize(args.nWidth + 520, args.nHeight + 80);
    window.show();
    return app.exec();
}
