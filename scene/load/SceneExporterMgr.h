#pragma once
// Picks the exporter for a file by its suffix.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneFormat.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace Ond::SceneLoad {

class SceneExporter;

class SceneExporterMgr : public QObject
{
    Q_OBJECT

public:
    // Takes ownership; the order is the search order.
    explicit SceneExporterMgr(std::vector<std::unique_ptr<SceneExporter>>&& exporters);
    ~SceneExporterMgr() override;

    QStringList getSupportedExtensions() const;
    QStringList getSupportedFilters() const;

    // The first exporter that lists the format, compared without case,
    // writes. False if none does.
    bool exportScene(const SceneGraph::Scene& scene, const QString& path, const QString& format,
                     Core::ProgressInterface* progress) const;

private:
    std::vector<std::unique_ptr<SceneExporter>> m_exporters;
};

using SceneExporterMgrSPtr = QSharedPointer<SceneExporterMgr>;

// The program's exporters; none is built into this program yet, so the
// manager refuses every format.
SceneExporterMgrSPtr createSceneExporterMgr();

} // namespace Ond::SceneLoad
