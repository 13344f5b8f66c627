// Scenes for the viewer tests, exported with the project's builder, and a runner of tvoview.
#pragma once

#include <QImage>

#include <string>
#include <vector>

#include "Content.h"
#include "Options.h"

// Exports content with options as a binary .tvo at path; false when the builder fails.
bool ExportScene(const SContent& content, COptions& options, const std::string& path);

// A grey, lit material (the builder's default colours are black).
SMaterial GreyMaterial();

// The camera the tests look through: at (cx, cy, 10), looking down -z with +y up, vertical field
// of view 0.6 radians, planes 1 and 100.
CNode TestCamera(float cx, float cy);
// Pixel of world point (x, y, z) seen through TestCamera(cx, cy) in a size x size image.
void ProjectTest(float cx, float cy, float x, float y, float z, int size, float& px, float& py);

// A bar from x = 0 to 2 (0.2 thick) skinned to two joints: "Bone0" at the origin holds x < 1,
// "Bone1" at (1, 0, 0) holds the rest and turns 90 degrees about +z from frame 0 to frame 1.
SContent SkinnedBar();

struct SShot
{
    int nExit = -1;
    std::string sErrors; // stderr of the run
    QImage image;        // the screenshot, null when none was written
};
// Runs tvoview FILE --screenshot OUT.png with more arguments (and NAME=VALUE environment entries).
SShot Screenshot(const std::string& file, const std::string& out, const std::vector<std::string>& args = {},
                 const std::vector<std::string>& environment = {});

// Pixels that are not the (black) background, and their bounding box.
struct SCoverage
{
    int nPixels = 0;
    int nLeft = 0, nTop = 0, nRight = -1, nBottom = -1;
    double fCentreX = 0, fCentreY = 0;
};
SCoverage Coverage(const QImage& image);
bool Covered(const QImage& image, float px, float py);
