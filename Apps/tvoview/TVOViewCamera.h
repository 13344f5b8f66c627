// Where the viewer looks from: the scene's bounds, a free orbit camera framed on them, and the
// scene's own cameras. Matrices are the toolkit's (row vectors, translation in elements 12 to 14),
// uploaded to the shaders as they are.
#pragma once

#include <string>

#include "QMXTModelTVO.h"

struct SCameraView
{
    QMXTMATRIXf mViewProj;
    QMXTVECTOR3f vEye;
};

struct SSceneBounds
{
    QMXTVECTOR3f vMin = {0, 0, 0}, vMax = {0, 0, 0};
    bool bEmpty = true;
    QMXTVECTOR3f Centre() const;
    float Radius() const; // half the diagonal, at least a small positive value
};

// Bounds of every mesh node's vertices (unpacked, in world space) at the scene's current frame.
SSceneBounds TVOSceneBounds(CQMXTModelTVO& scene);

struct SOrbit
{
    float fYaw = 0.6f;    // radians about +y, 0 looks along -z
    float fPitch = 0.45f; // radians above the horizon
    float fZoom = 1.0f;   // distance factor
};

// A perspective view of 45 degrees that holds the whole bounds, from the orbit's direction.
SCameraView TVOOrbitView(const SSceneBounds& bounds, const SOrbit& orbit, float aspect);
// The view through scene camera cameraIdx at the scene's current frame; near and far planes of the
// camera unless they are unusable, then planes that hold the bounds.
SCameraView TVOFileCameraView(CQMXTModelTVO& scene, uint32_t cameraIdx, const SSceneBounds& bounds,
                              float aspect);
// Index of the camera whose node is named name, or -1.
int TVOFindCamera(const STVOScene& scene, const std::string& name);
// Name of camera i's node.
std::string TVOCameraName(const STVOScene& scene, uint32_t cameraIdx);
