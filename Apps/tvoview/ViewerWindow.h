// The viewer window: the scene drawn in a QOpenGLWidget (an OpenGL ES 2 context), a side panel
// with the tvoinfo summary, the node tree, per-mesh statistics and the drawing toggles, and the
// animation controls (play, pause, frame slider at the file's frame rate) and camera choice.
#pragma once

#include "TVOViewScene.h"
#include "ViewArgs.h"

// Runs the Qt application with the window; returns its exit status.
int TVORunViewerWindow(int argc, char** argv, CTVOViewScene& scene, const SViewArgs& args, int cameraIdx);
