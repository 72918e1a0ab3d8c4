#pragma once
// A sequence of colours for ids: each call to next() gives the colour of
// the next id. The id bakers, the colour-from-mesh kernels and the UV map
// draw their colours from one of these.

#include <QColor>

#include <cstdint>
#include <memory>

namespace Ond::Baking {

class ColorGenerator
{
public:
    virtual ~ColorGenerator();
    // The current colour; the generator moves on to the next.
    virtual QColor next() = 0;
};

// The ready-made sequences, by option value: 0 "Random", 1 "Hue Shift",
// 2 "Grayscale", for count ids. Any other value gives null.
std::shared_ptr<ColorGenerator> createColorGenerator(int32_t mode, uint32_t count);

} // namespace Ond::Baking
