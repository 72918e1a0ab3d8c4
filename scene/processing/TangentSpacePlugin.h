#pragma once
// A tangent-space plugin library. It is valid when all five entry points
// resolve and its interface version is one this program speaks.

#include "plugins/tangentspace/TangentSpaceApi.h"

#include <QLibrary>
#include <QString>

#include <cstdint>

namespace Ond::SceneGraph::MeshProcessing {

class TangentSpacePlugin : public QLibrary
{
public:
    // Loads the library at once; check isValid() afterwards.
    explicit TangentSpacePlugin(const QString& fileName);
    ~TangentSpacePlugin() override;

    bool isValid() const { return valid; }
    uint32_t getApiVersion() const { return apiVersion; }
    const QString& getLabel() const { return label; }
    const QString& getDescription() const { return description; }
    // GLSL body of interpolateTangent; empty when the plugin gives none.
    const QString& getTangentBasisInterpolation() const { return tangentBasisInterpolation; }

    // Runs the plugin on one triangle list. False if the plugin is invalid
    // or reports a failure.
    bool generate(const TangentSpaceContext* context, float angularThreshold) const;

    // Version rule: high 16 bits equal to 1, low 16 bits not 0.
    static bool isSupportedVersion(uint32_t version);

private:
    bool valid = false;
    GenerateTangentSpaceFunction generateFunction = nullptr;
    uint32_t apiVersion = 0;
    QString label;
    QString description;
    QString tangentBasisInterpolation;
};

} // namespace Ond::SceneGraph::MeshProcessing
