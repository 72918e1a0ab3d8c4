#pragma once
// Options a codec factory understands, described for the command line help.
// The values themselves travel as a QMap<QString, QVariant>.

#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace Ond::Surfaces {

using CodecOptions = QMap<QString, QVariant>;

struct OptionDesc
{
    enum Type : int32_t { Invalid = 0, Bool = 1, Int = 2, Enum = 3 };

    QString label;
    int32_t type = Invalid;
    QVariant defaultValue;
    QVariant minimum;
    QVariant maximum;
    // Enumerations only: "Label", then its key, for each value in order.
    QStringList values;
    QString description;

    static OptionDesc boolean(const QString& label, bool defaultValue, const QString& description);
    static OptionDesc integer(const QString& label, int defaultValue, int minimum, int maximum,
                              const QString& description);
    static OptionDesc enumeration(const QString& label, const QString& defaultKey,
                                  const QList<QPair<QString, QString>>& labelsAndKeys,
                                  const QString& description);

    // Keys of an enumeration, in order.
    QStringList keys() const;
};

// Option name ("png_compression") to its description.
using OptionMap = QMap<QString, OptionDesc>;

} // namespace Ond::Surfaces
