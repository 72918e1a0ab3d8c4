// Test main for suites that need an OpenGL context: the same headless
// bootstrap as the program, then one QGLManager for the whole run.
#include "opengl/DefaultSurfaceFormat.h"
#include "opengl/HeadlessDisplay.h"
#include "opengl/QGLManager.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv)
{
    auto display = Ond::OpenGLUtils::HeadlessDisplay::ensure();
    Ond::OpenGLUtils::setDefaultGLAttributes();
    int result = 1;
    {
        QApplication app(argc, argv);
        std::setlocale(LC_NUMERIC, "C");
        Ond::OpenGLUtils::QGLManager manager;
        ::testing::InitGoogleTest(&argc, argv);
        result = RUN_ALL_TESTS();
    }
    return result;
}
