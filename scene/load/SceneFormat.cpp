#include "scene/load/SceneFormat.h"

namespace Ond::SceneLoad {

QStringList extensionsOf(const SceneFormatList& formats)
{
    QStringList all;
    for (const auto& format : formats)
        all += format.extensions;
    return all;
}

QStringList filtersOf(const SceneFormatList& formats)
{
    QStringList filters;
    for (const auto& format : formats) {
        const QString first = format.extensions.isEmpty() ? QString() : format.extensions.first();
        filters << format.label + QStringLiteral(" (*.%1)").arg(first);
    }
    return filters;
}

} // namespace Ond::SceneLoad
