#pragma once
// A camera. No baker reads it; the info report prints it. Setters refuse
// impossible values with a line on the "SceneGraph/Camera" channel and keep
// the old value.

#include "scene/graph/EntityComponent.h"

#include <QString>

#include <Eigen/Core>

#include <cstdint>

namespace Ond::SceneGraph {

class CameraComponent : public EntityComponent
{
    Q_OBJECT

public:
    enum ParameterId {
        All = 0,
        ProjectionType,
        AutomaticClipPlanes,
        NearClipPlane,
        FarClipPlane,
        ClearColor,
        DistToTarget,
        OrthographicZoomFactor,
        FocalDistanceInMm,
        ApertureWidthInMm,
        LensFocusDist,
        LensRadius,
        UseWindowResolution,
        Resolution,
    };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    enum Projection : uint32_t { Perspective = 0, Orthographic = 1 };

    CameraComponent();

    uint32_t getProjectionType() const { return m_projectionType; }
    bool setProjectionType(uint32_t type);
    bool isAutomaticClipPlanes() const { return m_automaticClipPlanes; }
    void setAutomaticClipPlanes(bool automatic);
    float getNearClipPlane() const { return m_nearClipPlane; }
    bool setNearClipPlane(float distance);
    float getFarClipPlane() const { return m_farClipPlane; }
    bool setFarClipPlane(float distance);
    const Eigen::Vector4f& getClearColor() const { return m_clearColor; }
    void setClearColor(const Eigen::Vector4f& color);
    float getDistToTarget() const { return m_distToTarget; }
    bool setDistToTarget(float distance);
    float getOrthographicZoomFactor() const { return m_orthographicZoomFactor; }
    bool setOrthographicZoomFactor(float factor);
    float getFocalDistanceInMm() const { return m_focalDistanceInMm; }
    bool setFocalDistanceInMm(float millimetres);
    float getApertureWidthInMm() const { return m_apertureWidthInMm; }
    bool setApertureWidthInMm(float millimetres);
    float getLensFocusDist() const { return m_lensFocusDist; }
    void setLensFocusDist(float distance);
    float getLensRadius() const { return m_lensRadius; }
    void setLensRadius(float radius);
    bool isUseWindowResolution() const { return m_useWindowResolution; }
    void setUseWindowResolution(bool use);
    const Eigen::Vector2i& getResolution() const { return m_resolution; }
    void setResolution(const Eigen::Vector2i& resolution);

    // Horizontal field of view in degrees from aperture and focal distance.
    float getFieldOfViewDegrees() const;

    void copyFrom(const EntityComponent& other) override;

signals:
    void parameterChanged(Ond::SceneGraph::CameraComponent::ParameterId id);

private:
    uint32_t m_projectionType = Perspective;
    bool m_automaticClipPlanes = true;
    float m_nearClipPlane = 0.01f;
    float m_farClipPlane = 1000.0f;
    Eigen::Vector4f m_clearColor{0.0f, 0.0f, 0.0f, 1.0f};
    float m_distToTarget = 1.0f;
    float m_orthographicZoomFactor = 1.0f;
    float m_focalDistanceInMm = 24.0f;
    float m_apertureWidthInMm = 36.0f;
    float m_lensFocusDist = 1.0f;
    float m_lensRadius = 0.0f;
    bool m_useWindowResolution = true;
    Eigen::Vector2i m_resolution{1920, 1080};
};

} // namespace Ond::SceneGraph
