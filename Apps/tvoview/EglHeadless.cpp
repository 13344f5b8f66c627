#include "EglHeadless.h"

#include <EGL/eglext.h>
#include <GLES2/gl2.h>

#include <QImage>

#ifndef EGL_PLATFORM_SURFACELESS_MESA
#define EGL_PLATFORM_SURFACELESS_MESA 0x31DD
#endif

namespace
{
std::string EglFailure(const char* step)
{
    char code[16];
    std::snprintf(code, sizeof code, "0x%04x", static_cast<unsigned>(eglGetError()));
    return std::string("no OpenGL ES context can be made (") + step + " failed, EGL error " + code + ")";
}
} // namespace

CEglHeadless::~CEglHeadless()
{
    if (m_display == EGL_NO_DISPLAY)
        return;
    eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (m_context != EGL_NO_CONTEXT)
        eglDestroyContext(m_display, m_context);
    if (m_surface != EGL_NO_SURFACE)
        eglDestroySurface(m_display, m_surface);
    // No eglTerminate: the driver stays loaded until exit, as a one-shot program may leave it.
}

bool CEglHeadless::Create(int width, int height, std::string& error)
{
    const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const auto getPlatformDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!clientExtensions || !std::strstr(clientExtensions, "EGL_MESA_platform_surfaceless") ||
        !getPlatformDisplay)
    {
        error = "no OpenGL ES context can be made (EGL has no surfaceless platform; install libegl-mesa0)";
        return false;
    }
    m_display = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (m_display == EGL_NO_DISPLAY || !eglInitialize(m_display, nullptr, nullptr))
        return error = EglFailure("eglInitialize"), m_display = EGL_NO_DISPLAY, false;
    const EGLint configAttributes[] = {EGL_SURFACE_TYPE,
                                       EGL_PBUFFER_BIT,
                                       EGL_RENDERABLE_TYPE,
                                       EGL_OPENGL_ES2_BIT,
                                       EGL_RED_SIZE,
                                       8,
                                       EGL_GREEN_SIZE,
                                       8,
                                       EGL_BLUE_SIZE,
                                       8,
                                       EGL_ALPHA_SIZE,
                                       8,
                                       EGL_DEPTH_SIZE,
                                       24,
                                       EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(m_display, configAttributes, &config, 1, &count) || count < 1)
        return error = EglFailure("eglChooseConfig"), false;
    const EGLint surfaceAttributes[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    m_surface = eglCreatePbufferSurface(m_display, config, surfaceAttributes);
    if (m_surface == EGL_NO_SURFACE)
        return error = EglFailure("eglCreatePbufferSurface"), false;
    eglBindAPI(EGL_OPENGL_ES_API);
    const EGLint contextAttributes[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    m_context = eglCreateContext(m_display, config, EGL_NO_CONTEXT, contextAttributes);
    if (m_context == EGL_NO_CONTEXT)
        return error = EglFailure("eglCreateContext"), false;
    if (!eglMakeCurrent(m_display, m_surface, m_surface, m_context))
        return error = EglFailure("eglMakeCurrent"), false;
    m_nWidth = width, m_nHeight = height;
    return true;
}

QImage CEglHeadless::ReadPixels() const
{
    QImage image(m_nWidth, m_nHeight, QImage::Format_RGBA8888);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glFinish();
    glReadPixels(0, 0, m_nWidth, m_nHeight, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    // The framebuffer's first row is the bottom one; alpha is forced opaque for the PNG.
    image = image.mirrored(false, true).convertToFormat(QImage::Format_RGB32);
    return image;
}

std::string CEglHeadless::Describe() const
{
    const char* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    const char* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    return std::string(renderer ? renderer : "?") + ", " + (version ? version : "?");
}
