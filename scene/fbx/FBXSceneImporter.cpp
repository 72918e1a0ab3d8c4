#include "scene/fbx/FBXSceneImporter.h"

#include "program/LogChannel.h"
#include "scene/fbx/AssimpInputGuard.h"
#include "scene/fbx/AssimpSceneConverter.h"
#include "scene/load/SubProgress.h"

#include <QFileInfo>

#include <assimp/DefaultLogger.hpp>
#include <assimp/Importer.hpp>
#include <assimp/Logger.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <exception>
#include <utility>
#include <mutex>

namespace Ond::SceneLoad {

namespace {

// Assimp's messages become information lines, shown with -v only.
class LogForwarder : public Assimp::Logger
{
public:
    LogForwarder() : Assimp::Logger(Assimp::Logger::NORMAL) {}

    bool attachStream(Assimp::LogStream*, unsigned int) override { return false; }
    bool detachStream(Assimp::LogStream*, unsigned int) override { return false; }

private:
    void OnDebug(const char*) override {}
    void OnVerboseDebug(const char*) override {}
    void OnInfo(const char* message) override { forward(message); }
    void OnWarn(const char* message) override { forward(message); }
    void OnError(const char* message) override { forward(message); }

    static void forward(const char* message)
    {
        Core::zmfBakerChannel().info(QString::fromUtf8(message).trimmed());
    }
};

void installLogForwarder()
{
    static std::once_flag once;
    std::call_once(once, [] { Assimp::DefaultLogger::set(new LogForwarder); });
}

// Reading is the first half of the import, building the scene the second.
class ReadProgress : public Assimp::ProgressHandler
{
public:
    explicit ReadProgress(Core::ProgressInterface* progress) : m_progress(progress) {}

    bool Update(float percentage) override
    {
        if (percentage >= 0.0f)
            m_progress->setValue(0.5 * std::min(1.0f, percentage));
        return !m_progress->isCancelled();
    }

private:
    Core::ProgressInterface* m_progress;
};

constexpr unsigned ReadFlags = aiProcess_ValidateDataStructure;
constexpr unsigned TriangulateFlags = aiProcess_Triangulate | aiProcess_SortByPType;

// Readers may state primitive kinds their faces don't have, or leave faces
// without indices, and Assimp's triangulation aborts the process on either:
// empty faces go, and the kinds are taken from the faces themselves. A mesh
// left without faces is marked as points, which the sorting step removes.
void restatePrimitiveTypes(aiScene& scene)
{
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        aiMesh* mesh = scene.mMeshes[m];
        if (!mesh || !mesh->mFaces)
            continue;
        unsigned types = 0;
        unsigned kept = 0;
        for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
            aiFace& face = mesh->mFaces[f];
            const unsigned n = face.mIndices ? face.mNumIndices : 0;
            if (n == 0)
                continue;
            types |= n == 1 ? aiPrimitiveType_POINT
                : n == 2    ? aiPrimitiveType_LINE
                : n == 3    ? aiPrimitiveType_TRIANGLE
                            : aiPrimitiveType_POLYGON;
            if (kept != f)
                std::swap(mesh->mFaces[kept], face);
            ++kept;
        }
        // The dropped faces stay behind the count, so the mesh still frees them.
        mesh->mNumFaces = kept;
        mesh->mPrimitiveTypes = types ? types : unsigned(aiPrimitiveType_POINT);
    }
}

void configure(Assimp::Importer& importer, Core::ProgressInterface* progress)
{
    // Pivot helper nodes would add entities the modelling tool never showed.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_READ_ANIMATIONS, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_READ_CAMERAS, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_READ_LIGHTS, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_READ_TEXTURES, false);
    // Points and lines can't be baked; a file of nothing else has no mesh.
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    if (progress)
        importer.SetProgressHandler(new ReadProgress(progress));
}

} // namespace

FBXSceneImporter::FBXSceneImporter(const QString& filePath, const QByteArray& suffix, SceneHandler* handler)
    : SceneImporter(filePath, suffix, handler)
{
}

namespace {

template <typename Read>
SceneGraph::Scene* importWith(const Read& read, const char* bytes, size_t size, const QString& fileName,
                              const QByteArray& suffix, const SceneLoadOptions& options,
                              Core::ProgressInterface* progress)
{
    installLogForwarder();
    try {
        const QString refusal = unsafeInputReason(suffix, bytes, size);
        if (!refusal.isEmpty()) {
            Core::zmfBakerChannel().info(QStringLiteral("%1: %2").arg(fileName, refusal));
            return nullptr;
        }
        Assimp::Importer importer;
        configure(importer, progress);
        const aiScene* scene = read(importer);
        if (scene) {
            restatePrimitiveTypes(*const_cast<aiScene*>(scene));
            scene = importer.ApplyPostProcessing(TriangulateFlags);
        }
        if (progress && progress->isCancelled())
            return nullptr;
        if (!scene) {
            Core::zmfBakerChannel().info(QStringLiteral("%1: %2").arg(fileName, QString::fromUtf8(importer.GetErrorString())));
            return nullptr;
        }
        std::unique_ptr<SubProgress> buildProgress;
        if (progress)
            buildProgress = std::make_unique<SubProgress>(progress, 0.5, 0.5);
        return convertScene(*scene, fileToSceneTransform(*scene, suffix), options,
                            QFileInfo(fileName).baseName(), buildProgress.get());
    } catch (const std::exception& error) {
        Core::zmfBakerChannel().info(QStringLiteral("%1: %2").arg(fileName, QString::fromUtf8(error.what())));
        return nullptr;
    }
}

} // namespace

SceneGraph::Scene* FBXSceneImporter::import(const SceneLoadOptions& options, Core::ProgressInterface* progress)
{
    if (progress) {
        progress->setText(tr("Loading 3D model"));
        progress->setValue(0.0);
    }
    const QString path = file.fileName();
    const QByteArray encoded = QFile::encodeName(path);
    // The guard reads the file through a mapping; Assimp reads it again.
    const char* bytes = nullptr;
    size_t size = 0;
    if (file.open(QIODevice::ReadOnly) && file.size() > 0) {
        bytes = reinterpret_cast<const char*>(file.map(0, file.size()));
        size = bytes ? size_t(file.size()) : 0;
    }
    SceneGraph::Scene* scene = importWith(
        [&](Assimp::Importer& importer) { return importer.ReadFile(encoded.constData(), ReadFlags); }, bytes, size,
        path, suffix, options, progress);
    file.close();
    return scene;
}

SceneGraph::Scene* FBXSceneImporter::importFromMemory(const void* data, size_t size, const SceneLoadOptions& options,
                                                     Core::ProgressInterface* progress)
{
    const QByteArray hint = suffix.toLower();
    return importWith(
        [&](Assimp::Importer& importer) { return importer.ReadFileFromMemory(data, size, ReadFlags, hint.constData()); },
        static_cast<const char*>(data), size, file.fileName(), suffix, options, progress);
}

} // namespace Ond::SceneLoad
