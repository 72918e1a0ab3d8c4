#pragma once
// Walks hue, saturation or lightness in equal steps: colour i of a sequence
// made for n ids is i / n along the chosen axes.

#include "baking/lowpoly/ColorGenerator.h"

namespace Ond::Baking {

class HSLColorGenerator : public ColorGenerator
{
public:
    // Axes that advance, as mask bits.
    enum : int32_t { Hue = 1, Saturation = 2, Lightness = 4 };

    // step is 1 / count. A count of 0 gives a step of 0: one colour forever.
    HSLColorGenerator(uint32_t count, float hue, float saturation, float lightness, int32_t mask);

    // fromHslF(hue, saturation, lightness, 1); then the masked axes advance.
    // Past count calls an axis leaves 0..1 and the colour is invalid: the
    // count must be the exact number of ids.
    QColor next() override;

    float getStep() const { return step; }

private:
    float step;
    float hue;
    float saturation;
    float lightness;
    int32_t mask;
    float hueStart;
    float saturationStart;
    float lightnessStart;
    uint32_t calls = 0;
};

} // namespace Ond::Baking
