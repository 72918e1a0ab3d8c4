#pragma once
// Base of shared scene resources.

namespace Ond::SceneGraph {

class Resource
{
public:
    virtual ~Resource() = default;
};

} // namespace Ond::SceneGraph
