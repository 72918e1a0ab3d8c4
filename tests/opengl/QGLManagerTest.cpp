#include "opengl/OffscreenContext.h"
#include "opengl/OglContextData.h"
#include "opengl/OglUtils.h"
#include "opengl/QGLManager.h"

#include <QThread>

#include <GL/glew.h>

#include <gtest/gtest.h>

using Ond::OpenGLUtils::QGLManager;

TEST(QGLManager, GivesACoreContextOfAtLeast33WithFloatTargets)
{
    QGLManager* manager = QGLManager::instance();
    ASSERT_NE(manager, nullptr);
    ASSERT_FALSE(manager->hasFailed()) << manager->errorText().toStdString();

    int seen = 0;
    const int result = manager->runInContext(false, [&](Ond::OglUtils::OglContextData& data) {
        seen = Ond::OglUtils::glVersionNumber();
        GLint bound = 0;
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        EXPECT_EQ(static_cast<unsigned>(bound), data.framebuffer());

        // Render-to-float and unclamped read-back are what bakers rely on.
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, 4, 4, 0, GL_RGBA, GL_FLOAT, nullptr);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
        glViewport(0, 0, 4, 4);
        glClearColor(2.5f, -1.0f, 0.25f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        float pixel[4] = {};
        glReadPixels(1, 1, 1, 1, GL_RGBA, GL_FLOAT, pixel);
        EXPECT_FLOAT_EQ(pixel[0], 2.5f);
        EXPECT_FLOAT_EQ(pixel[1], -1.0f);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0, 0);
        glDeleteTextures(1, &texture);
        return 7;
    });
    EXPECT_EQ(result, 7);
    EXPECT_GE(seen, 330);
}

TEST(QGLManager, NoFramebufferFlagLeavesDefaultBound)
{
    QGLManager* manager = QGLManager::instance();
    ASSERT_NE(manager, nullptr);
    manager->runInContext(false, [](Ond::OglUtils::OglContextData&) {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        return 0;
    });
    GLint bound = -1;
    manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        return 0;
    });
    EXPECT_EQ(bound, 0);
}

TEST(QGLManager, WorkerThreadGetsASharedContextOfItsOwn)
{
    QGLManager* manager = QGLManager::instance();
    ASSERT_NE(manager, nullptr);

    // A buffer made on the main context must be visible from the worker's.
    GLuint buffer = 0;
    manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        glGenBuffers(1, &buffer);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        const float values[2] = {1.5f, 2.5f};
        glBufferData(GL_ARRAY_BUFFER, sizeof(values), values, GL_STATIC_DRAW);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glFinish();
        return 0;
    });

    float readBack[2] = {};
    int result = -1;
    QThread* worker = QThread::create([&] {
        result = manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
            glBindBuffer(GL_ARRAY_BUFFER, buffer);
            glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof(readBack), readBack);
            glBindBuffer(GL_ARRAY_BUFFER, 0);
            return 3;
        });
    });
    manager->addWorkerThread(worker);
    worker->start();
    worker->wait();
    delete worker;

    EXPECT_EQ(result, 3);
    EXPECT_FLOAT_EQ(readBack[1], 2.5f);
    manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        glDeleteBuffers(1, &buffer);
        return 0;
    });
}
