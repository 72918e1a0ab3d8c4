#include "image/SurfaceCodecOptions.h"

namespace Ond::Surfaces {

OptionDesc OptionDesc::boolean(const QString& label, bool defaultValue, const QString& description)
{
    OptionDesc d;
    d.label = label;
    d.type = Bool;
    d.defaultValue = defaultValue;
    d.description = description;
    return d;
}

OptionDesc OptionDesc::integer(const QString& label, int defaultValue, int minimum, int maximum,
                               const QString& description)
{
    OptionDesc d;
    d.label = label;
    d.type = Int;
    d.defaultValue = defaultValue;
    d.minimum = minimum;
    d.maximum = maximum;
    d.description = description;
    return d;
}

OptionDesc OptionDesc::enumeration(const QString& label, const QString& defaultKey,
                                   const QList<QPair<QString, QString>>& labelsAndKeys,
                                   const QString& description)
{
    OptionDesc d;
    d.label = label;
    d.type = Enum;
    d.defaultValue = defaultKey;
    for (const auto& lk : labelsAndKeys) {
        d.values << lk.first << lk.second;
    }
    d.description = description;
    return d;
}

QStringList OptionDesc::keys() const
{
    QStringList out;
    for (int i = 1; i < values.size(); i += 2)
        out << values.at(i);
    return out;
}

} // namespace Ond::Surfaces
