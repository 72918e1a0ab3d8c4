// Surfaceless EGL context on Mesa: GL without any window system. Used when
// Qt's platform plugin cannot make a GL context (no X server).
#include "opengl/OffscreenContextImpl.h"

#include <QSurfaceFormat>

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <mutex>

namespace Ond::OpenGLUtils {

namespace {

EGLDisplay surfacelessDisplay()
{
    static EGLDisplay display = [] {
        auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
            eglGetProcAddress("eglGetPlatformDisplayEXT"));
        if (!getPlatformDisplay)
            return EGL_NO_DISPLAY;
        EGLDisplay d = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        EGLint major = 0, minor = 0;
        if (d == EGL_NO_DISPLAY || !eglInitialize(d, &major, &minor))
            return EGL_NO_DISPLAY;
        return d;
    }();
    return display;
}

// The first context made is the share root of all later shared ones, as
// Qt's global share context is on the Qt path.
std::mutex rootMutex;
EGLContext rootContext = EGL_NO_CONTEXT;

EGLContext createContext(EGLDisplay display, EGLContext share, bool compatibility)
{
    const QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    const EGLint profile = compatibility || format.profile() == QSurfaceFormat::CompatibilityProfile
        ? EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT
        : EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT;
    const int versions[][2] = {{format.majorVersion(), format.minorVersion()}, {3, 3}};
    for (const auto& version : versions) {
        const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION, version[0],
                                     EGL_CONTEXT_MINOR_VERSION, version[1],
                                     EGL_CONTEXT_OPENGL_PROFILE_MASK, profile,
                                     EGL_NONE};
        EGLContext context = eglCreateContext(display, EGL_NO_CONFIG_KHR, share, attributes);
        if (context != EGL_NO_CONTEXT)
            return context;
    }
    return EGL_NO_CONTEXT;
}

class EglOffscreenContextImpl final : public OffscreenContextImpl
{
public:
    EglOffscreenContextImpl(bool share, bool compatibility)
    {
        m_display = surfacelessDisplay();
        if (m_display == EGL_NO_DISPLAY || !eglBindAPI(EGL_OPENGL_API))
            return;
        std::lock_guard lock(rootMutex);
        m_context = createContext(m_display, share ? rootContext : EGL_NO_CONTEXT, compatibility);
        if (m_context != EGL_NO_CONTEXT && rootContext == EGL_NO_CONTEXT)
            rootContext = m_context;
    }

    ~EglOffscreenContextImpl() override { destroy(); }

    void destroy() override
    {
        if (m_context == EGL_NO_CONTEXT)
            return;
        if (eglGetCurrentContext() == m_context)
            eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        std::lock_guard lock(rootMutex);
        // The root stays alive while shared contexts may still use its objects.
        if (m_context != rootContext)
            eglDestroyContext(m_display, m_context);
        m_context = EGL_NO_CONTEXT;
    }

    bool makeCurrent() override
    {
        eglBindAPI(EGL_OPENGL_API);
        return isValid() && eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context);
    }

    void doneCurrent() override
    {
        if (isValid() && eglGetCurrentContext() == m_context)
            eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }

    bool isValid() const override { return m_context != EGL_NO_CONTEXT; }

    // EGL contexts have no thread affinity: current on one thread at a time.
    void moveToThread(QThread*) override {}

    void savePrevious() override
    {
        m_previous = eglGetCurrentContext();
        m_previousDraw = eglGetCurrentSurface(EGL_DRAW);
        m_previousRead = eglGetCurrentSurface(EGL_READ);
    }

    void restorePrevious() override
    {
        if (m_previous != EGL_NO_CONTEXT)
            eglMakeCurrent(m_display, m_previousDraw, m_previousRead, m_previous);
        else
            doneCurrent();
        m_previous = EGL_NO_CONTEXT;
    }

private:
    EGLDisplay m_display = EGL_NO_DISPLAY;
    EGLContext m_context = EGL_NO_CONTEXT;
    EGLContext m_previous = EGL_NO_CONTEXT;
    EGLSurface m_previousDraw = EGL_NO_SURFACE;
    EGLSurface m_previousRead = EGL_NO_SURFACE;
};

} // namespace

std::unique_ptr<OffscreenContextImpl> createEglOffscreenContext(bool share, bool compatibility)
{
    return std::make_unique<EglOffscreenContextImpl>(share, compatibility);
}

} // namespace Ond::OpenGLUtils
