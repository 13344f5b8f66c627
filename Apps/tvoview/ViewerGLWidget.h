// The drawing area of the viewer window: hands its context to CTVORenderer, turns mouse drags into
// orbit turns and the wheel into zoom.
#pragma once

#include <QOpenGLWidget>
#include <QPoint>

#include "TVORenderer.h"
#include "TVOViewScene.h"

class CViewerGLWidget : public QOpenGLWidget
{
    Q_OBJECT
  public:
    CViewerGLWidget(CTVOViewScene& scene, QWidget* parent = nullptr);
    ~CViewerGLWidget() override;

    void SetFrame(float frame);
    void SetCamera(int cameraIdx); // -1 for the orbit camera
    void SetToggles(const SViewToggles& toggles);

  signals:
    // A warning or error of the renderer, for the log line of the window.
    void Message(const QString& text);

  protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    CTVOViewScene& m_scene;
    CTVORenderer m_renderer;
    bool m_bReady = false;
    SViewToggles m_toggles;
    SOrbit m_orbit;
    SSceneBounds m_bounds; // framed once, so the free camera stays put while the scene moves
    int m_nCamera = -1;
    QPoint m_lastMouse;
};
