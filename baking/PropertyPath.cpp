#include "baking/PropertyPath.h"

namespace Ond::Baking {

PropertyPath::PropertyPath(std::string fileFilter, std::string extra, std::string label, std::string description,
                           bool visible)
    : Property(PropertyType::Path, PropertyValue(std::string()), std::move(label), std::move(description), visible)
    , m_fileFilter(std::move(fileFilter))
    , m_extra(std::move(extra))
{
}

} // namespace Ond::Baking
