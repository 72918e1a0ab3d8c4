#include "baking/lowpoly/HSLColorGenerator.h"

namespace Ond::Baking {

HSLColorGenerator::HSLColorGenerator(uint32_t count, float hue, float saturation, float lightness, int32_t mask)
    : step(count ? 1.0f / float(count) : 0.0f), hue(hue), saturation(saturation), lightness(lightness), mask(mask)
{
}

QColor HSLColorGenerator::next()
{
    const QColor color = QColor::fromHslF(hue, saturation, lightness, 1.0f);
    if (mask & Hue)
        hue += step;
    if (mask & Saturation)
        saturation += step;
    if (mask & Lightness)
        lightness += step;
    return color;
}

} // namespace Ond::Baking
