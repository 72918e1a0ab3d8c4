#pragma once
// A file format as loaders and exporters report it.

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace Ond::SceneLoad {

struct SceneFormat
{
    QString label;
    QStringList extensions;
    QVariant data;

    // Case-insensitive.
    bool hasExtension(const QString& suffix) const { return extensions.contains(suffix, Qt::CaseInsensitive); }
};

using SceneFormatList = QList<SceneFormat>;

// All extensions of the formats, in order.
QStringList extensionsOf(const SceneFormatList& formats);
// "<label> (*.<first extension>)" per format.
QStringList filtersOf(const SceneFormatList& formats);

} // namespace Ond::SceneLoad
