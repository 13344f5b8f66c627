// An OpenGL ES 2 context without any display, for screenshots: Mesa's EGL on the surfaceless
// platform with a pbuffer of the image's size (llvmpipe when there is no GPU).
#pragma once

#include <EGL/egl.h>

#include <string>

class QImage;

class CEglHeadless
{
  public:
    CEglHeadless() = default;
    CEglHeadless(const CEglHeadless&) = delete;
    CEglHeadless& operator=(const CEglHeadless&) = delete;
    ~CEglHeadless();

    // Makes a current ES 2 context with a width x height pbuffer (RGBA 8 bits, 24-bit depth).
    // Returns false with a message saying which step failed.
    bool Create(int width, int height, std::string& error);
    // The pbuffer's pixels, top row first.
    QImage ReadPixels() const;
    // Renderer and version strings of the context, for messages.
    std::string Describe() const;

  private:
    EGLDisplay m_display = EGL_NO_DISPLAY;
    EGLSurface m_surface = EGL_NO_SURFACE;
    EGLContext m_context = EGL_NO_CONTEXT;
    int m_nWidth = 0, m_nHeight = 0;
};
