#pragma once
// What the low-poly bakers need around them in a bench: a context that
// cancels nothing and reports nowhere, and a generated OBJ read back as the
// program reads it.

#include "baking/AbstractBakingContext.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneImporter.h"
#include "scene/obj/OBJSceneLoader.h"

#include <cstdio>
#include <memory>

namespace ZmfBench {

class BenchContext : public Ond::Baking::AbstractBakingContext
{
public:
    std::string tangentPluginName() const override { return {}; }
    bool isCancelled() const override { return false; }
    bool perFragmentBinormal() const override { return false; }
    bool loadSurface(const QString&, Ond::Surfaces::SurfaceSPtr&) override { return false; }
    void tileOutput(const Ond::Surfaces::SurfaceSPtr&, int, int, bool) override {}
    void progressBegin(const QString&) override {}
    void progressValue(double) override {}
    void progressEnd() override {}
    void progressText(const QString&) override {}
    bool gpuAllowed() const override { return false; }
    bool forceDxr() const override { return false; }
    bool forceOptix() const override { return false; }
};

// The OBJ at path with every part selected, as an empty selection does;
// null after saying why.
inline Ond::SceneGraph::SceneSPtr loadSelectedObj(const QString& path)
{
    Ond::SceneLoad::OBJSceneLoader loader;
    std::unique_ptr<Ond::SceneLoad::SceneImporter> importer(loader.createImporter(path, "obj"));
    Ond::SceneGraph::SceneSPtr scene(
        importer ? importer->import(Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::AllLoadFlags), nullptr) : nullptr);
    if (!scene) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return nullptr;
    }
    scene->forAllMeshes([](const Ond::SceneGraph::Mesh::SPtr& mesh) {
        const auto data = mesh->getData();
        for (size_t i = 0; i < data->getSubMeshCount(); ++i)
            data->getSubMesh(i)->renderFlags.set(Ond::SceneGraph::SelectedRenderFlag, true);
        return true;
    });
    return scene;
}

} // namespace ZmfBench
