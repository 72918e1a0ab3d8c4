#pragma once
// A file path, empty by default. The two strings come from the baker that
// builds the bag: the image file filter and a second free text.

#include "baking/Property.h"

#include <string>

namespace Ond::Baking {

class PropertyPath : public Property
{
public:
    PropertyPath(std::string fileFilter, std::string extra, std::string label, std::string description,
                 bool visible = true);

    const std::string& fileFilter() const { return m_fileFilter; }
    const std::string& extra() const { return m_extra; }

private:
    std::string m_fileFilter;
    std::string m_extra;
};

} // namespace Ond::Baking
