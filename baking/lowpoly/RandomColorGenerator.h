#pragma once
// Colours from a seeded random generator: three 32-bit draws per colour.

#include "baking/lowpoly/ColorGenerator.h"

#include <QRandomGenerator>

namespace Ond::Baking {

class RandomColorGenerator : public ColorGenerator
{
public:
    explicit RandomColorGenerator(quint32 seed);

    // Blue, green, red from three draws in that order, each (draw * 255) >> 32;
    // opaque.
    QColor next() override;

    // A channel from one draw.
    static int channel(quint32 draw) { return int((quint64(draw) * 255u) >> 32); }

private:
    QRandomGenerator random;
};

} // namespace Ond::Baking
