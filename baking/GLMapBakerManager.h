#pragma once
// The registry of bakers by key, and the one protected way to run a baker:
// a failing baker leaves a fallback image and a line in the log, never an
// exception.

#include "baking/AbstractMapBakerFactory.h"

#include "image/Surface.h"
#include "scene/graph/Scene.h"

#include <QByteArray>
#include <QList>

#include <memory>
#include <string>

namespace Ond::Baking {

class AbstractBakingContext;
class AbstractMapBaker;
class DetailMapBaker;
class LowPolyMapBaker;

class GLMapBakerManager
{
public:
    // Created on first use with the built-in factories (all but the UV map,
    // which the program registers itself).
    static GLMapBakerManager& instance();

    ~GLMapBakerManager();
    GLMapBakerManager(const GLMapBakerManager&) = delete;
    GLMapBakerManager& operator=(const GLMapBakerManager&) = delete;

    // Stores or replaces the factory under `key`.
    void registerFactory(const QByteArray& key, const AbstractMapBakerFactorySPtr& factory);
    // In ascending byte order.
    QList<QByteArray> keys() const;
    bool hasFactory(const QByteArray& key) const;

    // A new, initialised baker; `fileFilter` reaches its path properties.
    // Throws std::invalid_argument for a key without factory.
    std::unique_ptr<AbstractMapBaker> create(const QByteArray& key, const std::string& fileFilter = {}) const;

    // Runs the baker and stores its surface as the baker's result. True if a
    // map was made and the run not cancelled. `cage` may be null.
    bool apply(AbstractBakingContext& context, DetailMapBaker& baker, const SceneGraph::SceneSPtr& low,
               const SceneGraph::SceneSPtr& high, const SceneGraph::SceneSPtr& cage);
    bool apply(AbstractBakingContext& context, LowPolyMapBaker& baker, const SceneGraph::SceneSPtr& low);

    // What a failed baker is left with: 8 by 8, opaque black RGBA8.
    static Surfaces::SurfaceSPtr fallbackSurface();

private:
    GLMapBakerManager();

    struct Impl_;
    std::unique_ptr<Impl_> m_impl;
};

} // namespace Ond::Baking
