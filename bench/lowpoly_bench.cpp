// Times the low-poly bakes without post-process: upload of the GL scene and
// the tile loop of the world-space normal and position bakers at several
// map sizes, on a mesh read from an OBJ file.
// Usage: lowpoly_bench <mesh.obj> [repetitions]

#include "baking/AbstractBakingContext.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/PositionMapBaker.h"
#include "baking/lowpoly/SceneGL.h"
#include "opengl/HeadlessDisplay.h"
#include "opengl/OglContextData.h"
#include "opengl/QGLManager.h"
#include "scene/load/SceneImporter.h"
#include "scene/obj/OBJSceneLoader.h"

#include <QApplication>
#include <QSize>
#include <QSurfaceFormat>

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

namespace {

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

double bestOf(int repetitions, const std::function<void()>& run)
{
    double best = 1e30;
    for (int i = 0; i < repetitions; ++i) {
        glFinish();
        const auto start = std::chrono::steady_clock::now();
        run();
        glFinish();
        const auto end = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double, std::milli>(end - start).count());
    }
    return best;
}

void prepare(Ond::Baking::LowPolyMapBaker& baker, int log2Size)
{
    using Ond::Baking::setPropertyValue;
    setPropertyValue(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(log2Size, log2Size)));
    setPropertyValue(baker.properties(), "Common.DilationWidth", 0);
    setPropertyValue(baker.properties(), "Common.ApplyDiffusion", false);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: lowpoly_bench <mesh.obj> [repetitions]\n");
        return 2;
    }
    const int repetitions = argc > 2 ? std::max(std::atoi(argv[2]), 1) : 3;

    auto display = Ond::OpenGLUtils::HeadlessDisplay::ensure();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setVersion(4, 5);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    Ond::OpenGLUtils::QGLManager manager;
    if (manager.hasFailed()) {
        std::fprintf(stderr, "%s\n", qPrintable(manager.errorText()));
        return 1;
    }

    Ond::SceneLoad::OBJSceneLoader loader;
    std::unique_ptr<Ond::SceneLoad::SceneImporter> importer(loader.createImporter(QString::fromLocal8Bit(argv[1]), "obj"));
    Ond::SceneGraph::SceneSPtr scene(
        importer ? importer->import(Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::AllLoadFlags), nullptr) : nullptr);
    if (!scene) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    // Every part selected, as an empty selection does.
    scene->forAllMeshes([](const Ond::SceneGraph::Mesh::SPtr& mesh) {
        const auto data = mesh->getData();
        for (size_t i = 0; i < data->getSubMeshCount(); ++i)
            data->getSubMesh(i)->renderFlags.set(Ond::SceneGraph::SelectedRenderFlag, true);
        return true;
    });

    manager.runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        BenchContext context;
        const double upload = bestOf(repetitions, [&] {
            Ond::Baking::SceneGLCache::clear();
            Ond::Baking::SceneGLCache::acquire(*scene, 0, 0);
        });
        std::printf("scene upload: %.2f ms\n", upload);
        for (int log2Size : {10, 11, 12}) {
            Ond::Baking::NormalWSMapBaker normal;
            normal.init();
            prepare(normal, log2Size);
            Ond::Baking::PositionMapBaker position;
            position.init();
            prepare(position, log2Size);
            const double n = bestOf(repetitions, [&] { normal.process(context, scene); });
            const double p = bestOf(repetitions, [&] { position.process(context, scene); });
            std::printf("%5d²: normal-world-space %.1f ms, position %.1f ms\n", 1 << log2Size, n, p);
        }
        return 0;
    });
    return 0;
}
