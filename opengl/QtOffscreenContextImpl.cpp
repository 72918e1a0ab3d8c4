// Qt's side of the offscreen context. Kept apart from GLEW, whose header
// clashes with Qt's GL headers.
#include "opengl/OffscreenContextImpl.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QPointer>
#include <QSurfaceFormat>

namespace Ond::OpenGLUtils {

namespace {

class QtOffscreenContextImpl final : public OffscreenContextImpl
{
public:
    QtOffscreenContextImpl(bool share, bool compatibility)
    {
        QSurfaceFormat format = QSurfaceFormat::defaultFormat();
        if (compatibility) {
            // On xcb a compatibility request without deprecated functions
            // comes back as core.
            format.setProfile(QSurfaceFormat::CompatibilityProfile);
            format.setOption(QSurfaceFormat::DeprecatedFunctions);
        }
        m_context = std::make_unique<QOpenGLContext>();
        m_context->setFormat(format);
        if (share)
            m_context->setShareContext(QOpenGLContext::globalShareContext());
        if (!m_context->create())
            return;
        m_surface = std::make_unique<QOffscreenSurface>();
        m_surface->setFormat(m_context->format());
        m_surface->create();
    }

    ~QtOffscreenContextImpl() override { destroy(); }

    void destroy() override
    {
        if (m_context && QOpenGLContext::currentContext() == m_context.get())
            m_context->doneCurrent();
        m_context.reset();
        m_surface.reset();
    }

    bool makeCurrent() override { return isValid() && m_context->makeCurrent(m_surface.get()); }

    void doneCurrent() override
    {
        if (m_context)
            m_context->doneCurrent();
    }

    bool isValid() const override
    {
        return m_context && m_context->isValid() && m_surface && m_surface->isValid();
    }

    void moveToThread(QThread* thread) override
    {
        if (m_context)
            m_context->moveToThread(thread);
    }

    void savePrevious() override
    {
        m_previous = QOpenGLContext::currentContext();
        m_previousSurface = m_previous ? m_previous->surface() : nullptr;
    }

    void restorePrevious() override
    {
        if (m_previous && m_previousSurface)
            m_previous->makeCurrent(m_previousSurface);
        else if (m_context && QOpenGLContext::currentContext() == m_context.get())
            m_context->doneCurrent();
        m_previous = nullptr;
        m_previousSurface = nullptr;
    }

private:
    std::unique_ptr<QOpenGLContext> m_context;
    std::unique_ptr<QOffscreenSurface> m_surface;
    QPointer<QOpenGLContext> m_previous;
    QSurface* m_previousSurface = nullptr;
};

} // namespace

std::unique_ptr<OffscreenContextImpl> createQtOffscreenContext(bool share, bool compatibility)
{
    return std::make_unique<QtOffscreenContextImpl>(share, compatibility);
}

} // namespace Ond::OpenGLUtils
