// tvoview --screenshot: renders one frame without any display and writes it as a PNG.
#pragma once

#include "TVOViewScene.h"
#include "ViewArgs.h"

// Returns the process exit status: 0 written, 1 when no context can be made, the scene cannot be
// drawn or the image cannot be written (with one line on stderr).
int TVORunScreenshot(CTVOViewScene& scene, const SViewArgs& args, int cameraIdx);
