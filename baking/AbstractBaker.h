#pragma once
// Root of all bakers: a bag of properties built from the baker's property
// list, texts for the user, and the file filter that path properties offer.

#include "baking/NonCopyable.h"
#include "baking/PropertyBag.h"

#include <QSize>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace Ond::Baking {

class AbstractBaker : private noncopyable_::noncopyable
{
public:
    AbstractBaker();
    virtual ~AbstractBaker();

    // Builds the bag from allPropertyIdentifiers() and identifier().
    virtual void init();
    // The common properties, then the baker's own.
    virtual std::vector<std::string> allPropertyIdentifiers() const;
    virtual std::vector<std::string> ownPropertyIdentifiers() const;
    // Translated in context "baking".
    virtual QString label() const = 0;
    virtual QString description() const = 0;
    virtual std::string identifier() const = 0;

    // Null before init().
    const std::shared_ptr<PropertyBag>& propertyBag() const { return m_properties; }
    PropertyBag& properties() { return *m_properties; }
    const PropertyBag& properties() const { return *m_properties; }

    const std::string& fileFilter() const { return m_fileFilter; }
    void setFileFilter(const std::string& filter) { m_fileFilter = filter; }

    // Pixels of the map from "Common.OutputSize", which holds exponents of 2.
    QSize outputSize() const;

protected:
    // Translation in the bakers' context.
    static QString trBaking(const char* text);
    // For a baker whose algorithm this build lacks: fails the bake honestly,
    // so that the manager reports it and no map is pretended.
    [[noreturn]] static void throwAlgorithmMissing();

private:
    std::shared_ptr<PropertyBag> m_properties;
    std::string m_fileFilter;
};

} // namespace Ond::Baking
