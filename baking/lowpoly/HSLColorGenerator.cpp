#include "baking/lowpoly/HSLColorGenerator.h"

namespace Ond::Baking {

HSLColorGenerator::HSLColorGenerator(uint32_t count, float hue, float saturation, float lightness, int32_t mask)
    : step(count ? 1.0f / float(count) : 0.0f), hue(hue), saturation(saturation), lightness(lightness), mask(mask),
      hueStart(hue), saturationStart(saturation), lightnessStart(lightness)
{
}

QColor HSLColorGenerator::next()
{
    const QColor color = QColor::fromHslF(hue, saturation, lightness, 1.0f);
    // The i-th value from the start rather than by adding the step i times:
    // the sum drifts, and for some thousands of ids it leaves 0..1 before
    // the count is reached.
    ++calls;
    const float advance = step * float(calls);
    if (mask & Hue)
        hue = hueStart + advance;
    if (mask & Saturation)
        saturation = saturationStart + advance;
    if (mask & Lightness)
        lightness = lightnessStart + advance;
    return color;
}

} // namespace Ond::Baking
