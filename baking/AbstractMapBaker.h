#pragma once
// A baker whose result is a surface.

#include "baking/AbstractBaker.h"

#include "image/Surface.h"

namespace Ond::Baking {

class AbstractMapBaker : public AbstractBaker
{
public:
    // Whether this machine can run the baker; writes the reason to `why`
    // when it cannot and `why` is not null.
    virtual bool isAvailable(QString* why) const;

    // Empty until a bake stored one; after a failed bake, the fallback.
    const Surfaces::SurfaceSPtr& result() const { return m_result; }
    void setResult(const Surfaces::SurfaceSPtr& surface) { m_result = surface; }

private:
    Surfaces::SurfaceSPtr m_result;
};

} // namespace Ond::Baking
