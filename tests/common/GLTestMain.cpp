// Test main for suites that need an OpenGL context: the same headless
// bootstrap as the program, then one QGLManager for the whole run.
#include "opengl/HeadlessDisplay.h"
#include "opengl/QGLManager.h"

#include <QApplication>
#include <QSurfaceFormat>

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv)
{
    auto display = Ond::OpenGLUtils::HeadlessDisplay::ensure();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setVersion(4, 5);
    QSurfaceFormat::setDefaultFormat(format);
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
