#include "baking/PropertyBag.h"

#include "baking/PropertyCatalogue.h"
#include "baking/PropertyNumerical.h"

#include <QColor>
#include <QPoint>
#include <QSize>

#include <limits>
#include <stdexcept>

namespace Ond::Baking {

namespace {

const char* const kInvalidKey = "invalid map<K, T> key";

} // namespace

PropertyBag::PropertyBag(std::string bakerIdentifier, std::vector<std::string> identifiers,
                         const std::string& fileFilter, const std::string& pathExtra)
    : m_bakerIdentifier(std::move(bakerIdentifier))
    , m_identifiers(std::move(identifiers))
{
    for (const std::string& id : m_identifiers) {
        std::unique_ptr<Property> property = createProperty(m_bakerIdentifier, id, fileFilter, pathExtra);
        if (property)
            m_properties.emplace(id, std::move(property));
    }
}

PropertyBag::~PropertyBag() = default;

bool PropertyBag::contains(const std::string& id) const
{
    return m_properties.count(id) != 0;
}

Property& PropertyBag::operator[](const std::string& id)
{
    Property* property = find(id);
    if (!property)
        throw std::out_of_range(kInvalidKey);
    return *property;
}

const Property& PropertyBag::operator[](const std::string& id) const
{
    const Property* property = find(id);
    if (!property)
        throw std::out_of_range(kInvalidKey);
    return *property;
}

Property* PropertyBag::find(const std::string& id) const
{
    auto it = m_properties.find(id);
    return it == m_properties.end() ? nullptr : it->second.get();
}

// A bag holds only what its baker lists, so every dependant is optional.
void PropertyBag::setVisible(const std::string& id, bool visible, std::vector<std::string>& touched)
{
    if (Property* property = find(id)) {
        property->setVisible(visible);
        touched.push_back(id);
    }
}

void PropertyBag::setFloatMaximum(const std::string& id, float maximum, std::vector<std::string>& touched)
{
    if (auto* property = dynamic_cast<PropertyNumerical<float>*>(find(id))) {
        property->setMaximum(maximum);
        touched.push_back(id);
    }
}

bool PropertyBag::boolValue(const std::string& id) const
{
    const Property* property = find(id);
    const bool* v = property ? std::get_if<bool>(&property->value()) : nullptr;
    return v && *v;
}

int PropertyBag::intValue(const std::string& id) const
{
    const Property* property = find(id);
    const int* v = property ? std::get_if<int>(&property->value()) : nullptr;
    return v ? *v : 0;
}

bool PropertyBag::hasPath(const std::string& id) const
{
    const Property* property = find(id);
    const std::string* v = property ? std::get_if<std::string>(&property->value()) : nullptr;
    return v && !v->empty();
}

std::vector<std::string> PropertyBag::update(const std::string& id)
{
    std::vector<std::string> touched;
    const float largest = std::numeric_limits<float>::max();

    if (id == "Additional.NormalMap") {
        bool f = hasPath(id);
        setVisible("Additional.NormalWorldSpace", f, touched);
        if (f && contains("Additional.NormalWorldSpace"))
            f = !boolValue("Additional.NormalWorldSpace");
        if (contains("NWS.BakeType") && f)
            f = intValue("NWS.BakeType") == 0;
        setVisible("Additional.InvertGreen", f, touched);
    } else if (id == "Additional.NormalWorldSpace") {
        const bool f = !boolValue(id) && hasPath("Additional.NormalMap");
        setVisible("Additional.InvertGreen", f, touched);
    } else if (id == "Detail.Distance.MaximizeRange") {
        setVisible("Detail.Distance.Divisor", m_bakerIdentifier == "heightfrommesh" && intValue(id) == 3, touched);
    } else if (id == "Detail.RelativeScale") {
        const float maximum = boolValue(id) ? 1.0f : largest;
        setFloatMaximum("Detail.MaxHeight", maximum, touched);
        setFloatMaximum("Detail.MaxDepth", maximum, touched);
    } else if (id == "Detail.UseCage") {
        const bool f = !boolValue(id);
        for (const char* dependant : {"Detail.RelativeScale", "Detail.SmoothNormals", "Detail.MaxHeight",
                                      "Detail.MaxDepth", "Detail.SkewCorrection"})
            setVisible(dependant, f, touched);
        const bool skew = f && boolValue("Detail.SkewCorrection");
        setVisible("Detail.InvertSkewCorrection", skew, touched);
        setVisible("Detail.SkewMap", skew, touched);
        setVisible("Detail.Distance.MaximizeRange", true, touched);
        setVisible("Detail.Distance.Divisor", false, touched);
    } else if (id == "Detail.SkewCorrection") {
        const bool v = boolValue(id);
        setVisible("Detail.InvertSkewCorrection", v, touched);
        setVisible("Detail.SkewMap", v, touched);
    } else if (id == "Detail.LowAsHigh") {
        if (contains("Detail.AO.Attenuation")) {
            const bool v = boolValue(id);
            setVisible("Additional.InvertGreen", v, touched);
            setVisible("Additional.NormalMap", v, touched);
            setVisible("Additional.NormalWorldSpace", v, touched);
        }
    } else if (id == "Detail.NormalCommon.ResultType") {
        setVisible("Detail.NormalCommon.InvertGreen", intValue(id) == 1, touched);
    } else if (id == "Detail.Color.ColorSource") {
        const int v = intValue(id);
        setVisible("Detail.Color.ColorGenerator", v == 2 || v == 3, touched);
    } else if (id == "Detail.SecondaryCommon.MaxDistanceRelativeScale") {
        const bool v = boolValue(id);
        setFloatMaximum("Detail.SecondaryCommon.MaxDistance", v ? 1.0f : largest, touched);
        setFloatMaximum("Detail.Curvature1.SamplingRadius", v ? 0.01f : largest, touched);
    } else if (id == "Detail.Curvature.SoftSaturate") {
        const bool v = boolValue(id);
        setVisible("Detail.Curvature.Intensity", !v, touched);
        setVisible("Detail.Curvature.MaximizeRange", v, touched);
    } else if (id == "Detail.AO.GroundPlane") {
        setVisible("Detail.AO.GroundOffset", boolValue(id), touched);
    } else if (id == "Detail.Curvature1.AutoMinMax") {
        const bool v = boolValue(id);
        setVisible("Detail.Curvature1.TonemappingMin", !v, touched);
        setVisible("Detail.Curvature1.TonemappingMax", !v, touched);
    } else if (id == "Curvature.EnableSeams") {
        setVisible("Curvature.SeamsPower", boolValue(id), touched);
    } else if (id == "NWS.BakeType") {
        const bool normal = intValue(id) == 0;
        setVisible("Additional.InvertGreen", normal && hasPath("Additional.NormalMap"), touched);
        setVisible("Additional.NormalMap", normal, touched);
    } else if (id == "Position.Mode") {
        setVisible("Position.Axis", intValue(id) == 1, touched);
    } else if (id == "Position.Normalization") {
        setVisible("Position.NormalizationScale", intValue(id) != 2, touched);
    } else if (id == "WorldDirection.ConstDirection") {
        const bool uniform = intValue(id) == 1;
        setVisible("Additional.InvertGreen", !uniform, touched);
        setVisible("WorldDirection.DirectionMap", !uniform, touched);
        setVisible("WorldDirection.X", uniform, touched);
        setVisible("WorldDirection.Y", uniform, touched);
        setVisible("WorldDirection.Z", uniform, touched);
    } else if (id == "Curvature.PerVertex") {
        // Per vertex takes no normal map, so its two companions hide with it.
        const bool normalMapShown = intValue(id) != 1;
        const bool pathGiven = normalMapShown && hasPath("Additional.NormalMap");
        setVisible("Additional.NormalMap", normalMapShown, touched);
        setVisible("Additional.InvertGreen", pathGiven && !boolValue("Additional.NormalWorldSpace"), touched);
        setVisible("Additional.NormalWorldSpace", pathGiven, touched);
    }
    return touched;
}

namespace {

int toIntWithBoolFallback(const QVariant& value)
{
    bool ok = false;
    const int i = value.toInt(&ok);
    if (ok)
        return i;
    const int typeId = value.typeId();
    if (typeId == QMetaType::QString || typeId == QMetaType::Bool)
        return value.toBool() ? 1 : 0;
    return i;
}

QColor toColor(const QVariant& value)
{
    if (value.typeId() == QMetaType::QColor)
        return value.value<QColor>();
    return QColor::fromString(value.toString());
}

} // namespace

std::vector<std::string> setPropertyValue(PropertyBag& bag, const std::string& id, const QVariant& value)
{
    Property& property = bag[id];
    switch (property.type()) {
    case PropertyType::Int:
    case PropertyType::Enum:
        property.setValue(toIntWithBoolFallback(value));
        break;
    case PropertyType::Int2:
        if (id == "Common.UVTile") {
            const QPoint p = value.toPoint();
            property.setValue(ComparableInt2{p.x(), p.y()});
        } else {
            const QSize s = value.toSize();
            property.setValue(ComparableInt2{s.width(), s.height()});
        }
        break;
    case PropertyType::ColorInt4: {
        const QColor color = toColor(value);
        if (color.isValid())
            property.setValue(ComparableColorInt4{color.red(), color.green(), color.blue(), color.alpha()});
        break;
    }
    case PropertyType::Float:
        property.setValue(value.toFloat());
        break;
    case PropertyType::Bool:
        property.setValue(value.toBool());
        break;
    case PropertyType::Path:
        property.setValue(value.toString().toUtf8().toStdString());
        break;
    }
    // Asked for its side effects in derived properties only; out-of-range
    // values are stored as given.
    (void)property.isInRange();
    std::vector<std::string> touched = bag.update(id);
    touched.push_back(id);
    return touched;
}

} // namespace Ond::Baking
