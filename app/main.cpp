// zmfbaker: bakes texture maps from meshes. The main function sets up the
// GL environment and the registries, runs the one command of the command
// line inside the GL context, then drains the event loop.

#include "app/Registration.h"

#include "opengl/DefaultSurfaceFormat.h"
#include "opengl/HeadlessDisplay.h"
#include "opengl/OglContextData.h"
#include "opengl/QGLManager.h"
#include "program/ClassicProgramOptions.h"
#include "program/LogChannel.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>

int main(int argc, char** argv)
{
    // A display to make GL contexts on, before Qt looks for one.
    auto display = Ond::OpenGLUtils::HeadlessDisplay::ensure();

    Ond::OpenGLUtils::setDefaultGLAttributes();

    int exitCode = -1;
    {
        QApplication application(argc, argv);
        QCoreApplication::setOrganizationName(QStringLiteral("Kestrel"));
        QCoreApplication::setApplicationName(QStringLiteral("zmfbaker"));

        auto glManager = std::make_unique<Ond::OpenGLUtils::QGLManager>();
        std::setlocale(LC_NUMERIC, "C");

        auto fileInfo = std::make_unique<QFileInfo>(QString::fromLocal8Bit(argv[0]));
        auto options = std::make_unique<Ond::Program::ClassicProgramOptions>(
            fileInfo->baseName(), 14, 0, 1, 8268, QStringLiteral("636da6f4"));

        Ond::Core::bakersChannel().setName(QStringLiteral("Bakers"));
        Zmf::registerCodecs();
        Zmf::registerCommands(*options);

        glManager->runInContext(false, [&](Ond::OglUtils::OglContextData& data) {
            exitCode = options->process(QCoreApplication::arguments());
            // A command may leave anything bound.
            data.restoreState();
            return 0;
        });

        QTimer::singleShot(0, &application, &QCoreApplication::quit);
        QApplication::exec();

#ifndef __SANITIZE_ADDRESS__
        // Every file is written and renamed by now. Tearing down gives
        // gigabytes back page by page and closes a GL context, whose last
        // client makes the X server reload its keymap: a third of a second
        // after a huge bake, for memory the kernel takes back at once. The
        // sanitizer build goes the long way, which its leak check reads.
        std::fflush(nullptr);
        display.reset();
        std::_Exit(exitCode);
#endif

        options.reset();
        fileInfo.reset();
        glManager.reset();
    }
    return exitCode;
}
