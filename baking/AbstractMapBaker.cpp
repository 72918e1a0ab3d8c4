#include "baking/AbstractMapBaker.h"

namespace Ond::Baking {

bool AbstractMapBaker::isAvailable(QString* why) const
{
    (void)why;
    return true;
}

} // namespace Ond::Baking
