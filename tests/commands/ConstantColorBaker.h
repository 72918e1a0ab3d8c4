#pragma once
// A low-poly baker for tests of the bake run: it fills an 8 by 8 map with
// one colour, so that what is written can be checked pixel for pixel.

#include "baking/lowpoly/LowPolyMapBaker.h"

#include <cstdint>
#include <cstring>

namespace ZmfTest {

class ConstantColorBaker : public Ond::Baking::LowPolyMapBaker
{
public:
    QString label() const override { return QStringLiteral("Constant"); }
    QString description() const override { return QString(); }
    // Borrows the property list of a real low-poly baker.
    std::string identifier() const override { return "position"; }
    Ond::Surfaces::SurfaceSPtr process(Ond::Baking::AbstractBakingContext&,
                                       const Ond::SceneGraph::SceneSPtr&) override
    {
        ++runs;
        auto surface = Ond::Surfaces::SurfaceSPtr::create(
            Ond::Surfaces::SurfaceDesc(8, 8, Ond::Surfaces::PixelFormat::RGBA8));
        for (uint32_t y = 0; y < 8; ++y)
            for (uint32_t x = 0; x < 8; ++x)
                std::memcpy(surface->pixel<uint8_t>(x, y), rgba, 4);
        return surface;
    }

    uint8_t rgba[4] = {200, 100, 50, 255};
    int runs = 0;
};

} // namespace ZmfTest
