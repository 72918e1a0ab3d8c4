#include "opengl/DefaultSurfaceFormat.h"

#include <QCoreApplication>
#include <QSurfaceFormat>

namespace Ond::OpenGLUtils {

void setDefaultGLAttributes()
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setSamples(0);
    format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
    format.setSwapInterval(0);
    format.setVersion(4, 5);
    format.setStencilBufferSize(0);
    format.setDepthBufferSize(0);
    QSurfaceFormat::setDefaultFormat(format);
}

} // namespace Ond::OpenGLUtils
