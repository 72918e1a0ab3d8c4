#pragma once
// The same colour for every id.

#include "baking/lowpoly/ColorGenerator.h"

namespace Ond::Baking {

class UniformColorGenerator : public ColorGenerator
{
public:
    explicit UniformColorGenerator(const QColor& color) : color(color) {}

    QColor next() override { return color; }

private:
    QColor color;
};

} // namespace Ond::Baking
