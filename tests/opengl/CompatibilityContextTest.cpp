// The two contexts of the process: the core one every baker draws in, and
// the compatibility one beside it for the fixed-function UV mask.

#include "opengl/OglContextData.h"
#include "opengl/QGLManager.h"

#include <GL/glew.h>

#include <gtest/gtest.h>

using Ond::OpenGLUtils::QGLManager;

namespace {

GLint profileMask()
{
    GLint mask = 0;
    glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &mask);
    return mask;
}

// Whether glPushAttrib is refused, leaving no error behind.
bool fixedFunctionRefused()
{
    while (glGetError() != GL_NO_ERROR) {
    }
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    const bool refused = glGetError() == GL_INVALID_OPERATION;
    if (!refused)
        glPopAttrib();
    while (glGetError() != GL_NO_ERROR) {
    }
    return refused;
}

} // namespace

TEST(CompatibilityContext, FixedFunctionRunsBesideTheCoreContextAndSharesItsObjects)
{
    QGLManager* manager = QGLManager::instance();
    ASSERT_NE(manager, nullptr);
    ASSERT_FALSE(manager->hasFailed()) << manager->errorText().toStdString();

    manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        EXPECT_TRUE(profileMask() & GL_CONTEXT_CORE_PROFILE_BIT);
        EXPECT_TRUE(fixedFunctionRefused());
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glBindTexture(GL_TEXTURE_2D, 0);

        for (int run = 0; run < 2; ++run) { // made once, then reused
            bool ran = false;
            const int result = manager->runInCompatibilityContext([&] {
                ran = true;
                EXPECT_TRUE(profileMask() & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT);
                EXPECT_FALSE(fixedFunctionRefused());
                EXPECT_TRUE(glIsTexture(texture));
                return 5;
            });
            EXPECT_TRUE(ran);
            EXPECT_EQ(result, 5);
        }

        // The core context is current again.
        EXPECT_TRUE(profileMask() & GL_CONTEXT_CORE_PROFILE_BIT);
        EXPECT_TRUE(fixedFunctionRefused());
        glDeleteTextures(1, &texture);
        return 0;
    });
}
