#pragma once
// An OpenGL context with a surface nobody sees. Qt's platform plugin is tried
// first; where it has no GL, a surfaceless EGL context takes its place.

#include <memory>

class QThread;

namespace Ond::OpenGLUtils {

class OffscreenContextImpl;

class OffscreenContext
{
public:
    // Default: the profile of the process's default format (core).
    // Compatibility: the fixed-function calls as well, which a core profile
    // refuses.
    enum class Profile { Default, Compatibility };

    // With `share` set, the context shares objects with the process's first
    // context (Qt's global share context on the Qt path).
    explicit OffscreenContext(bool share, Profile profile = Profile::Default);
    virtual ~OffscreenContext();

    virtual void destroy();
    virtual bool makeCurrent();
    virtual void doneCurrent();
    virtual bool isValid() const;

    void moveToThread(QThread* thread);
    void savePrevious();
    void restorePrevious();

private:
    std::unique_ptr<OffscreenContextImpl> m_impl;
};

} // namespace Ond::OpenGLUtils
