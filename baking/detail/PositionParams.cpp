#include "baking/detail/PositionParams.h"

#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/SceneVisitor.h"

#include <algorithm>

namespace Ond::Baking {

PositionParams positionParamsOf(const PropertyBag& bag, const SceneGraph::Scene& lowScene, uint32_t uvSet)
{
    using LowPolyProperties::value;
    PositionParams params;
    if (value<int>(bag, "Position.Mode", 0) == 1)
        params.axis = std::clamp(value<int>(bag, "Position.Axis", 0), 0, 2);

    const int normalization = value<int>(bag, "Position.Normalization", 1);
    if (normalization != 0 && normalization != 1)
        return params;
    BBoxVisitor box(2u, uvSet);
    box.walk(lowScene);
    // Nothing selected: positions as they are rather than divided by zero.
    if (box.minimum.x() > box.maximum.x())
        return params;
    const Eigen::Vector3f extent = box.maximum - box.minimum;
    const float largest = extent.maxCoeff();
    for (int i = 0; i < 3; ++i) {
        if (normalization == 0) {
            params.offset[i] = box.minimum[i];
            params.scale[i] = extent[i] > 0.0f ? 1.0f / extent[i] : 1.0f;
        } else {
            params.offset[i] = box.minimum[i] + (extent[i] - largest) * 0.5f;
            params.scale[i] = largest > 0.0f ? 1.0f / largest : 1.0f;
        }
    }
    return params;
}

} // namespace Ond::Baking
