#include "baking/lowpoly/ColorGenerator.h"

#include "baking/lowpoly/HSLColorGenerator.h"
#include "baking/lowpoly/RandomColorGenerator.h"

#include <QTime>

namespace Ond::Baking {

ColorGenerator::~ColorGenerator() = default;

std::shared_ptr<ColorGenerator> createColorGenerator(int32_t mode, uint32_t count)
{
    switch (mode) {
    case 0:
        // Seeded by the clock on purpose: two runs give different colours.
        return std::make_shared<RandomColorGenerator>(quint32(QTime::currentTime().msec()));
    case 1:
        return std::make_shared<HSLColorGenerator>(count, 0.0f, 1.0f, 0.5f, HSLColorGenerator::Hue);
    case 2: {
        // The first grey half a step above black: n greys in the middles
        // of n equal bands.
        const float first = count ? 1.0f / (2.0f * float(count)) : 0.0f;
        return std::make_shared<HSLColorGenerator>(count, 0.0f, 0.0f, first, HSLColorGenerator::Lightness);
    }
    default:
        return nullptr;
    }
}

} // namespace Ond::Baking
