#include "baking/BakerRequirements.h"

#include "opengl/OglUtils.h"

#include <GL/glew.h>

#include <QCoreApplication>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace Ond::Baking {

namespace {

const char* const kGlVersionToken = "GL_VERSION_3_3 ";

} // namespace

bool checkGlVersion33(QString* why)
{
    // The loader's version flags are unreliable when it loads every entry
    // point regardless, so the context's own version confirms a "no".
    if (glewIsSupported(kGlVersionToken) || OglUtils::glVersionNumber() >= 330)
        return true;
    if (why)
        *why = QCoreApplication::translate("baking", "REQUIRED_EXTENSIONS_MISSING:\n%1")
                   .arg(QString::fromLatin1(kGlVersionToken), 1, QLatin1Char(' '));
    return false;
}

bool checkSse3(QString* why)
{
#if defined(__x86_64__) || defined(__i386__)
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) && (ecx & bit_SSE3))
        return true;
    if (why)
        *why = QStringLiteral("REQUIRED_SSE3_MISSING\n");
    return false;
#else
    (void)why;
    return true;
#endif
}

bool checkSupportedRenderer(QString* why)
{
    const GLubyte* text = glGetString(GL_RENDERER);
    const QString renderer = text ? QString::fromLatin1(reinterpret_cast<const char*>(text)) : QString();
    static const char* const unsupported[] = {"GeForce 7000M", "GeForce 8400M", "GeForce 8600M", "GeForce 8700M",
                                              "GeForce 9300M", "GeForce 9500M", "GeForce 9600M"};
    for (const char* card : unsupported) {
        if (renderer.contains(QLatin1String(card))) {
            if (why)
                *why = QStringLiteral("UNSUPORTED_GRAPHIC_CARD:\n%1").arg(renderer);
            return false;
        }
    }
    return true;
}

} // namespace Ond::Baking
