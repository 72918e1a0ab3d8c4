#pragma once
// The tangent frame generator: a plugin library with the angular threshold
// it is run with. Also the process-wide "tangent layer": the default
// generator chosen by the commands and the per-fragment binormal setting
// that the GL bakers read.

#include "scene/processing/TangentSpacePlugin.h"

#include <QString>

#include <memory>

namespace Ond::SceneGraph::MeshProcessing {

class TangentSpaceGenerator
{
public:
    using SPtr = std::shared_ptr<TangentSpaceGenerator>;

    // Loads the plugin file at path (which need not exist: the generator is
    // then invalid).
    explicit TangentSpaceGenerator(const QString& path);

    bool isValid() const { return library && library->isValid(); }
    const TangentSpacePlugin* getLibrary() const { return library.get(); }
    const QString& getPath() const { return path; }
    // File name without directory and suffix: "mikktspace".
    QString getPluginName() const;

    float getAngularThreshold() const { return angularThreshold; }
    void setAngularThreshold(float degrees) { angularThreshold = degrees; }
    // False for the frames that keep the binormal of the vertex
    // ("mikktspace", "unitytspace"); true for any other plugin.
    bool isDefaultBasis() const { return defaultBasis; }

    bool generate(const TangentSpaceContext* context) const;

    // --- Plugin files
    // Walks up from the program's directory to the first one with a
    // "plugins" entry and adds "/plugins/tangentspace"; falls back to
    // "plugins/tangentspace" under the working directory.
    static QString pluginDirectory();
    static QString pluginDirectoryFrom(const QString& startDirectory);
    // "<dir>/<baseName>.<shared library suffix>".
    static QString pluginFilePath(const QString& baseName);
    // The rule of isDefaultBasis on a path; an empty path gives true.
    static bool isDefaultBasisFor(const QString& path);

    // --- The process-wide default
    // Resolves the tangent-space-plugin option (empty: "mikktspace" in the
    // plugin directory) and loads it. On failure logs "Tangent space plugin
    // not found: %1" or "Invalid tangent space plugin: %1" on the
    // "ZMFBaker" channel and returns null. On success the generator becomes
    // the default.
    static SPtr selectPlugin(const QString& option);
    static SPtr getDefault();
    static void setDefault(SPtr generator);

    // Whether the bakers rebuild the binormal per fragment.
    static bool isPerFragmentBinormal();
    static void setPerFragmentBinormal(bool enabled);

private:
    std::unique_ptr<TangentSpacePlugin> library;
    QString path;
    float angularThreshold = 180.0f;
    bool defaultBasis = true;
};

} // namespace Ond::SceneGraph::MeshProcessing
