#pragma once
// Factories of the from-mesh bakers; they differ only in the kind they set.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/detail/DetailMapBaker.h"

namespace Ond::Baking {

class DetailMapBakerFactory : public AbstractMapBakerFactory
{
public:
    explicit DetailMapBakerFactory(DetailMapBaker::Kind kind) : m_kind(kind) {}
    AbstractMapBaker* create() const override { return new DetailMapBaker(m_kind); }

private:
    DetailMapBaker::Kind m_kind;
};

#define ZMF_DETAIL_FACTORY(Name, Kind)                                                                            \
    class Name : public DetailMapBakerFactory                                                                     \
    {                                                                                                             \
    public:                                                                                                       \
        Name() : DetailMapBakerFactory(DetailMapBaker::Kind) {}                                                   \
    };

ZMF_DETAIL_FACTORY(HeightDetailMapBakerFactory, Height)
ZMF_DETAIL_FACTORY(NormalDetailMapBakerFactory, Normal)
ZMF_DETAIL_FACTORY(ColorDetailMapBakerFactory, Color)
ZMF_DETAIL_FACTORY(AODetailMapBakerFactory, AmbientOcclusion)
ZMF_DETAIL_FACTORY(BentNormalsDetailMapBakerFactory, BentNormals)
ZMF_DETAIL_FACTORY(MaskDetailMapBakerFactory, Mask)
ZMF_DETAIL_FACTORY(ThicknessDetailMapBakerFactory, Thickness)
ZMF_DETAIL_FACTORY(TextureDetailMapBakerFactory, Texture)
ZMF_DETAIL_FACTORY(PositionDetailMapBakerFactory, Position)
ZMF_DETAIL_FACTORY(CurvatureDetailMapBakerFactory, Curvature)
ZMF_DETAIL_FACTORY(Curvature1DetailMapBakerFactory, Curvature1)

#undef ZMF_DETAIL_FACTORY

} // namespace Ond::Baking
