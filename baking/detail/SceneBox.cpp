#include "baking/detail/SceneBox.h"

#include "baking/lowpoly/SceneVisitor.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>

namespace Ond::Baking {

float SceneBox::largestExtent() const
{
    if (isEmpty())
        return 0.0f;
    return std::max({maximum[0] - minimum[0], maximum[1] - minimum[1], maximum[2] - minimum[2]});
}

float SceneBox::largestAbsoluteCoordinate() const
{
    if (isEmpty())
        return 0.0f;
    float largest = 0.0f;
    for (int i = 0; i < 3; ++i)
        largest = std::max({largest, std::fabs(minimum[size_t(i)]), std::fabs(maximum[size_t(i)])});
    return largest;
}

namespace {

struct BoxEntry
{
    std::weak_ptr<SceneGraph::Scene> scene;
    uint64_t revision = 0;
    SceneBox box;
};

} // namespace

SceneBox cachedBoundingBox(const SceneGraph::SceneSPtr& scene)
{
    if (!scene)
        return {};
    static std::mutex mutex;
    static std::map<const SceneGraph::Scene*, BoxEntry> cache;
    std::lock_guard<std::mutex> lock(mutex);
    auto it = cache.find(scene.get());
    if (it != cache.end() && it->second.scene.lock() == scene && it->second.revision == scene->getRevision())
        return it->second.box;

    BBoxVisitor visitor(0xFFFFFFFFu, 0u);
    visitor.walk(*scene);
    SceneBox box;
    if (visitor.minimum.x() <= visitor.maximum.x()) {
        for (int i = 0; i < 3; ++i) {
            box.minimum[size_t(i)] = visitor.minimum[i];
            box.maximum[size_t(i)] = visitor.maximum[i];
        }
    }
    cache[scene.get()] = BoxEntry{scene, scene->getRevision(), box};
    return box;
}

} // namespace Ond::Baking
