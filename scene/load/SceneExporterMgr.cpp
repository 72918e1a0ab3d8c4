#include "scene/load/SceneExporterMgr.h"

#include "scene/load/SceneExporter.h"

#include <QFileInfo>

namespace Ond::SceneLoad {

SceneExporterMgr::SceneExporterMgr(std::vector<std::unique_ptr<SceneExporter>>&& exporters)
    : m_exporters(std::move(exporters))
{
}

SceneExporterMgr::~SceneExporterMgr() = default;

QStringList SceneExporterMgr::getSupportedExtensions() const
{
    QStringList all;
    for (const auto& exporter : m_exporters)
        all += extensionsOf(exporter->getSupportedFormats());
    return all;
}

QStringList SceneExporterMgr::getSupportedFilters() const
{
    QStringList all;
    for (const auto& exporter : m_exporters)
        all += filtersOf(exporter->getSupportedFormats());
    return all;
}

bool SceneExporterMgr::exportScene(const SceneGraph::Scene& scene, const QString& path, const QString& format,
                                   Core::ProgressInterface* progress) const
{
    const QString wanted = format.toLower();
    for (const auto& exporter : m_exporters) {
        if (extensionsOf(exporter->getSupportedFormats()).contains(wanted, Qt::CaseInsensitive))
            return exporter->exportScene(scene, path, progress);
    }
    return false;
}

SceneExporterMgrSPtr createSceneExporterMgr()
{
    return SceneExporterMgrSPtr::create(std::vector<std::unique_ptr<SceneExporter>>());
}

} // namespace Ond::SceneLoad
