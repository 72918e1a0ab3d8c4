#pragma once
// The GL set-up of the GL benches, in the program's order: a display when
// there is none, the default attributes and format, the application, then
// one QGLManager for the run.

#include "opengl/DefaultSurfaceFormat.h"
#include "opengl/HeadlessDisplay.h"
#include "opengl/QGLManager.h"

#include <QApplication>

#include <clocale>
#include <cstdio>
#include <memory>

namespace ZmfBench {

class BenchGL
{
public:
    BenchGL(int& argc, char** argv)
        : m_display(prepareDisplay()),
          m_app(argc, argv)
    {
        std::setlocale(LC_NUMERIC, "C");
        m_manager = std::make_unique<Ond::OpenGLUtils::QGLManager>();
    }

    // False, after saying why, when no context could be made.
    bool ready() const
    {
        if (!m_manager->hasFailed())
            return true;
        std::fprintf(stderr, "%s\n", qPrintable(m_manager->errorText()));
        return false;
    }

    Ond::OpenGLUtils::QGLManager& manager() { return *m_manager; }

private:
    static std::unique_ptr<Ond::OpenGLUtils::HeadlessDisplay> prepareDisplay()
    {
        auto display = Ond::OpenGLUtils::HeadlessDisplay::ensure();
        Ond::OpenGLUtils::setDefaultGLAttributes();
        return display;
    }

    std::unique_ptr<Ond::OpenGLUtils::HeadlessDisplay> m_display;
    QApplication m_app;
    std::unique_ptr<Ond::OpenGLUtils::QGLManager> m_manager;
};

} // namespace ZmfBench
