#include "baking/lowpoly/RandomColorGenerator.h"

namespace Ond::Baking {

RandomColorGenerator::RandomColorGenerator(quint32 seed) : random(seed) {}

QColor RandomColorGenerator::next()
{
    const int blue = channel(random.generate());
    const int green = channel(random.generate());
    const int red = channel(random.generate());
    return QColor(red, green, blue, 255);
}

} // namespace Ond::Baking
