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
    // With `share` set, the context shares objects with the process's first
    // context (Qt's global share context on the Qt path).
    explicit OffscreenContext(bool share);
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
