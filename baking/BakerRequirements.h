#pragma once
// Machine checks behind the bakers' isAvailable.

#include <QString>

namespace Ond::Baking {

// The GL loader reports the 3.3 core version. Otherwise writes
// "REQUIRED_EXTENSIONS_MISSING:\n<token>" to `why`, if given.
bool checkGlVersion33(QString* why);

// The processor has SSE3 (cpuid leaf 1). Otherwise writes
// "REQUIRED_SSE3_MISSING\n" to `why`, if given.
bool checkSse3(QString* why);

// The GL renderer is none of the graphics cards the screen-space occlusion
// is known to fail on. Otherwise writes "UNSUPORTED_GRAPHIC_CARD:\n<renderer>".
bool checkSupportedRenderer(QString* why);

} // namespace Ond::Baking
