#pragma once
// The two ways the process gets an offscreen OpenGL context: through Qt's
// platform plugin, or through a raw surfaceless EGL context when the
// platform has no GL (no X server at all).

#include <memory>

class QThread;

namespace Ond::OpenGLUtils {

class OffscreenContextImpl
{
public:
    virtual ~OffscreenContextImpl() = default;
    virtual void destroy() = 0;
    virtual bool makeCurrent() = 0;
    virtual void doneCurrent() = 0;
    virtual bool isValid() const = 0;
    virtual void moveToThread(QThread* thread) = 0;
    // Remembers the context current on this thread now, and puts it back.
    virtual void savePrevious() = 0;
    virtual void restorePrevious() = 0;
};

// With `compatibility` the context has the fixed-function calls too; the
// default format's profile otherwise.
std::unique_ptr<OffscreenContextImpl> createQtOffscreenContext(bool share, bool compatibility = false);
std::unique_ptr<OffscreenContextImpl> createEglOffscreenContext(bool share, bool compatibility = false);

} // namespace Ond::OpenGLUtils
