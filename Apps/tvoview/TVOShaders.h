// The viewer's two GLSL ES 1.00 programs (the target hardware's level): the scene program with
// matrix-palette skinning and per-pixel lighting, and a flat-colour program for overlay lines.
#pragma once

#include <GLES2/gl2.h>

#include <string>

// Attribute locations bound before linking, shared by the mesh upload.
enum ETVOAttribute : GLuint
{
    eAttribPosition = 0,
    eAttribNormal,
    eAttribUV,
    eAttribColour,
    eAttribBoneIndex,
    eAttribBoneWeight,
    eAttribCount
};

// Most lights the scene program takes; further lights are left out with a warning.
constexpr int kTVOMaxLights = 8;

// Compiles and links a program from the scene shaders with a palette of paletteSize bone matrices.
// Returns 0 and sets error (the compiler's log) on failure.
GLuint TVOBuildSceneProgram(int paletteSize, std::string& error);
// The same for the overlay line program.
GLuint TVOBuildLineProgram(std::string& error);
