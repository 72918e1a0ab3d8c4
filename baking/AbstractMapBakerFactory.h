#pragma once
// Makes one kind of baker for GLMapBakerManager.

#include <memory>

namespace Ond::Baking {

class AbstractMapBaker;

class AbstractMapBakerFactory
{
public:
    virtual ~AbstractMapBakerFactory() = default;
    // A new, uninitialised baker; the caller owns it.
    virtual AbstractMapBaker* create() const = 0;
};

using AbstractMapBakerFactorySPtr = std::shared_ptr<AbstractMapBakerFactory>;

} // namespace Ond::Baking
