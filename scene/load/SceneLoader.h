#pragma once
// Says which suffixes an importer reads and makes that importer. A loader
// joins the SceneLoaderMgr through the factory in SceneLoaderMgr.h.

#include "scene/load/SceneFormat.h"
#include "scene/load/SceneLoadOptions.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace Ond::SceneLoad {

class SceneImporter;

class SceneLoader
{
public:
    virtual ~SceneLoader();

    // Compares the suffix with the extensions of getSupportedFormats,
    // ignoring case.
    virtual bool canLoad(const QByteArray& suffix, const SceneLoadOptions& options) const;
    // A new importer for the file, owned by the caller.
    virtual SceneImporter* createImporter(const QString& filePath, const QByteArray& suffix) const = 0;
    virtual SceneFormatList getSupportedFormats() const = 0;

    QStringList getSupportedExtensions() const;
    // "<label> (*.<first extension>)" per format.
    QStringList getSupportedFilters() const;
};

} // namespace Ond::SceneLoad
