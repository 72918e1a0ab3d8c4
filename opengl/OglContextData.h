#pragma once
// GL state the process keeps bound to one context: the frame buffer that
// run-in-context binds for its callers.

namespace Ond::OglUtils {

class OglContextData
{
public:
    // Creates the frame buffer in the current context.
    OglContextData();
    // Deletes it; the context must be current.
    ~OglContextData();
    OglContextData(const OglContextData&) = delete;
    OglContextData& operator=(const OglContextData&) = delete;

    unsigned framebuffer() const { return m_framebuffer; }
    unsigned framebufferTarget() const { return m_target; }

    void bindFramebuffer() const;
    // Puts back the state a command may have changed: no program, no
    // vertex array, default pixel store, the frame buffer bound.
    void restoreState() const;

private:
    unsigned m_framebuffer = 0;
    unsigned m_target = 0;
};

} // namespace Ond::OglUtils
