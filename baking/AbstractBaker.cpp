#include "baking/AbstractBaker.h"

#include "baking/BakerCatalogue.h"

#include <QCoreApplication>

#include <stdexcept>

namespace Ond::Baking {

AbstractBaker::AbstractBaker() = default;
AbstractBaker::~AbstractBaker() = default;

void AbstractBaker::init()
{
    m_properties = std::make_shared<PropertyBag>(identifier(), allPropertyIdentifiers(), m_fileFilter, std::string());
}

std::vector<std::string> AbstractBaker::allPropertyIdentifiers() const
{
    std::vector<std::string> ids = commonPropertyIdentifiers();
    const std::vector<std::string> own = ownPropertyIdentifiers();
    ids.insert(ids.end(), own.begin(), own.end());
    return ids;
}

std::vector<std::string> AbstractBaker::ownPropertyIdentifiers() const
{
    return Baking::ownPropertyIdentifiers(identifier());
}

QSize AbstractBaker::outputSize() const
{
    const auto& exponents = properties()["Common.OutputSize"].valueAs<ComparableInt2>();
    const unsigned x = static_cast<unsigned>(exponents.x) % 32u;
    const unsigned y = static_cast<unsigned>(exponents.y) % 32u;
    return QSize(static_cast<int>(1u << x), static_cast<int>(1u << y));
}

QString AbstractBaker::trBaking(const char* text)
{
    return QCoreApplication::translate("baking", text);
}

void AbstractBaker::throwAlgorithmMissing()
{
    throw std::runtime_error(
        trBaking("The algorithm of this baker is not available in this build.").toStdString());
}

} // namespace Ond::Baking
