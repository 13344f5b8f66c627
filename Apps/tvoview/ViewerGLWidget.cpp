#include "ViewerGLWidget.h"

#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>

CViewerGLWidget::CViewerGLWidget(CTVOViewScene& scene, QWidget* parent)
    : QOpenGLWidget(parent), m_scene(scene)
{
    setMinimumSize(320, 240);
}

CViewerGLWidget::~CViewerGLWidget()
{
    makeCurrent();
    m_renderer.Release();
    doneCurrent();
}

void CViewerGLWidget::SetFrame(float frame)
{
    m_scene.Model().SetFrame(frame);
    update();
}

void CViewerGLWidget::SetCamera(int cameraIdx)
{
    m_nCamera = cameraIdx;
    update();
}

void CViewerGLWidget::SetToggles(const SViewToggles& toggles)
{
    m_toggles = toggles;
    update();
}

void CViewerGLWidget::initializeGL()
{
    std::string error;
    m_bounds = TVOSceneBounds(m_scene.Model());
    m_bReady = m_renderer.Init(m_scene.Model(), m_scene.Folder(), error);
    if (!m_bReady)
        emit Message(QString::fromStdString("cannot draw the scene: " + error));
    else
    {
        const char* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
        const char* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
        emit Message(QString("%1 on %2").arg(version ? version : "?", renderer ? renderer : "?"));
    }
}

void CViewerGLWidget::paintGL()
{
    if (!m_bReady)
        return;
    const int w = static_cast<int>(width() * devicePixelRatioF()),
              h = static_cast<int>(height() * devicePixelRatioF());
    const float aspect = static_cast<float>(w) / static_cast<float>(std::max(h, 1));
    CQMXTModelTVO& model = m_scene.Model();
    const SCameraView view =
        m_nCamera >= 0 ? TVOFileCameraView(model, static_cast<uint32_t>(m_nCamera), m_bounds, aspect)
                       : TVOOrbitView(m_bounds, m_orbit, aspect);
    m_renderer.Draw(view, w, h, m_toggles);
    for (const std::string& warning : m_renderer.TakeWarnings())
        emit Message(QString::fromStdString("warning: " + warning));
}

void CViewerGLWidget::mousePressEvent(QMouseEvent* event)
{
    m_lastMouse = event->position().toPoint();
}

void CViewerGLWidget::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint now = event->position().toPoint();
    const QPoint delta = now - m_lastMouse;
    m_lastMouse = now;
    m_orbit.fYaw -= 0.01f * static_cast<float>(delta.x());
    m_orbit.fPitch = std::clamp(m_orbit.fPitch + 0.01f * static_cast<float>(delta.y()), -1.55f, 1.55f);
    update();
}

void CViewerGLWidget::wheelEvent(QWheelEvent* event)
{
    m_orbit.fZoom = std::clamp(m_orbit.fZoom * (event->angleDelta().y() > 0 ? 0.9f : 1.1f), 0.05f, 20.0f);
    update();
}
