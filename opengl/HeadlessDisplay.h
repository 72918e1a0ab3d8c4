#pragma once
// Gives the process a display to make OpenGL contexts on, without asking the
// user for one. Must run before the application object is built.
//
// With no QT_QPA_PLATFORM, DISPLAY or WAYLAND_DISPLAY set (or a DISPLAY that
// answers nobody), a private Xvfb is started as a child and the xcb platform
// is selected; the child dies with the process. Without Xvfb the offscreen
// platform is selected and contexts fall back to surfaceless EGL.

#include <sys/types.h>

#include <memory>

namespace Ond::OpenGLUtils {

class HeadlessDisplay
{
public:
    // Prepares the environment; the returned object owns the Xvfb child, if
    // one was started, and stops it when destroyed.
    static std::unique_ptr<HeadlessDisplay> ensure();

    ~HeadlessDisplay();
    HeadlessDisplay(const HeadlessDisplay&) = delete;
    HeadlessDisplay& operator=(const HeadlessDisplay&) = delete;

    bool ownsServer() const { return m_pid > 0; }

    // True when a connection to the X display named by `display` succeeds.
    static bool canConnect(const char* display);

private:
    HeadlessDisplay() = default;
    bool startXvfb();
    void stop();

    pid_t m_pid = -1;
};

} // namespace Ond::OpenGLUtils
