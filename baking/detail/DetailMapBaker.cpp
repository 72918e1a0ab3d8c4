#include "baking/detail/DetailMapBaker.h"

#include "baking/BakerCatalogue.h"
#include "baking/BakerRequirements.h"

namespace Ond::Baking {

namespace {

struct KindTexts
{
    const char* identifier;
    const char* progressName;
};

// In kind order.
const KindTexts kKinds[DetailMapBaker::KindCount] = {
    {"heightfrommesh", "Height from mesh"},
    {"normalfrommesh", "Normal from mesh"},
    {"colorfrommesh", "Color from mesh"},
    {"aofrommesh", "Ambient occlusion from mesh"},
    {"bentnormalsfrommesh", "Bent normals from mesh"},
    {"maskfrommesh", "Opacity mask from mesh"},
    {"thicknessfrommesh", "Thickness from mesh"},
    {"texturefrommesh", "Texture from mesh"},
    {"positionfrommesh", "Position from mesh"},
    {"curvaturefrommesh", "Curvature from mesh"},
    {"curvature1frommesh", "Curvature1 from mesh"},
};

} // namespace

DetailMapBaker::DetailMapBaker(Kind kind)
    : m_kind(kind)
{
}

std::vector<std::string> DetailMapBaker::ownPropertyIdentifiers() const
{
    return Baking::ownPropertyIdentifiers(identifier());
}

QString DetailMapBaker::label() const
{
    const BakerInfo* info = findBakerByIdentifier(identifier());
    return info ? trBaking(info->label) : QString();
}

QString DetailMapBaker::description() const
{
    const BakerInfo* info = findBakerByIdentifier(identifier());
    return info ? trBaking(info->description) : QString();
}

std::string DetailMapBaker::identifier() const
{
    return kKinds[m_kind].identifier;
}

bool DetailMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why) && checkSse3(why);
}

QString DetailMapBaker::progressName() const
{
    return trBaking(kKinds[m_kind].progressName);
}

Surfaces::SurfaceSPtr DetailMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& low,
                                              const SceneGraph::SceneSPtr& high, const SceneGraph::SceneSPtr& cage)
{
    (void)context;
    (void)low;
    (void)high;
    (void)cage;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
