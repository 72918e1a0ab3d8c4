#include "scene/load/SceneLoader.h"

namespace Ond::SceneLoad {

SceneLoader::~SceneLoader() = default;

bool SceneLoader::canLoad(const QByteArray& suffix, const SceneLoadOptions& options) const
{
    (void)options;
    const QString text = QString::fromLatin1(suffix);
    for (const auto& format : getSupportedFormats()) {
        if (format.hasExtension(text))
            return true;
    }
    return false;
}

QStringList SceneLoader::getSupportedExtensions() const
{
    return extensionsOf(getSupportedFormats());
}

QStringList SceneLoader::getSupportedFilters() const
{
    return filtersOf(getSupportedFormats());
}

} // namespace Ond::SceneLoad
