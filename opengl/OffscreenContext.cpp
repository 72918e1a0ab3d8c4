#include "opengl/OffscreenContext.h"

#include "opengl/OffscreenContextImpl.h"

namespace Ond::OpenGLUtils {

OffscreenContext::OffscreenContext(bool share, Profile profile)
{
    const bool compatibility = profile == Profile::Compatibility;
    m_impl = createQtOffscreenContext(share, compatibility);
    if (!m_impl || !m_impl->isValid()) {
        if (m_impl)
            m_impl->destroy();
        m_impl = createEglOffscreenContext(share, compatibility);
    }
}

OffscreenContext::~OffscreenContext()
{
    destroy();
}

void OffscreenContext::destroy()
{
    if (m_impl)
        m_impl->destroy();
}

bool OffscreenContext::makeCurrent() { return m_impl && m_impl->makeCurrent(); }

void OffscreenContext::doneCurrent()
{
    if (m_impl)
        m_impl->doneCurrent();
}

bool OffscreenContext::isValid() const { return m_impl && m_impl->isValid(); }

void OffscreenContext::moveToThread(QThread* thread)
{
    if (m_impl)
        m_impl->moveToThread(thread);
}

void OffscreenContext::savePrevious()
{
    if (m_impl)
        m_impl->savePrevious();
}

void OffscreenContext::restorePrevious()
{
    if (m_impl)
        m_impl->restorePrevious();
}

} // namespace Ond::OpenGLUtils
