#include "scene/graph/CameraComponent.h"

#include "program/LogChannel.h"

#include <cmath>

namespace Ond::SceneGraph {

namespace {

Core::LogChannel& cameraChannel()
{
    static Core::LogChannel channel(QStringLiteral("SceneGraph/Camera"));
    return channel;
}

void refuse(const QString& message)
{
    cameraChannel().warning(message);
}

} // namespace

QString CameraComponent::parameterName(int id)
{
    static const char* const names[] = {
        "all",
        "projection_type",
        "automatic_clip_planes",
        "near_clip_plane",
        "far_clip_plane",
        "clear_color",
        "dist_to_target",
        "orthographic_zoom_factor",
        "focal_distance_in_mm",
        "aperture_width_in_mm",
        "lens_focus_dist",
        "lens_radius",
        "use_window_resolution",
        "resolution",
    };
    if (id < 0 || id >= int(sizeof(names) / sizeof(names[0])))
        return QString();
    return QString::fromLatin1(names[id]);
}

CameraComponent::CameraComponent() = default;

bool CameraComponent::setProjectionType(uint32_t type)
{
    if (type > Orthographic) {
        refuse(QStringLiteral("Invalid projection type (%1)").arg(type));
        return false;
    }
    if (m_projectionType != type) {
        m_projectionType = type;
        emit parameterChanged(ProjectionType);
    }
    return true;
}

void CameraComponent::setAutomaticClipPlanes(bool automatic)
{
    if (m_automaticClipPlanes == automatic)
        return;
    m_automaticClipPlanes = automatic;
    emit parameterChanged(AutomaticClipPlanes);
}

bool CameraComponent::setNearClipPlane(float distance)
{
    if (!(distance < m_farClipPlane)) {
        refuse(QStringLiteral("Can't set a Near Clip distance higher than Far Clip distance (Far=%1)")
                   .arg(double(m_farClipPlane)));
        return false;
    }
    if (m_nearClipPlane != distance) {
        m_nearClipPlane = distance;
        emit parameterChanged(NearClipPlane);
    }
    return true;
}

bool CameraComponent::setFarClipPlane(float distance)
{
    if (!(distance > m_nearClipPlane)) {
        refuse(QStringLiteral("Can't set a Far Clip distance lower than Near Clip distance (Near=%1)")
                   .arg(double(m_nearClipPlane)));
        return false;
    }
    if (m_farClipPlane != distance) {
        m_farClipPlane = distance;
        emit parameterChanged(FarClipPlane);
    }
    return true;
}

void CameraComponent::setClearColor(const Eigen::Vector4f& color)
{
    if (m_clearColor == color)
        return;
    m_clearColor = color;
    emit parameterChanged(ClearColor);
}

bool CameraComponent::setDistToTarget(float distance)
{
    if (distance < 0.0f) {
        refuse(QStringLiteral("Can't set a negative dist to target (%1)").arg(double(distance)));
        return false;
    }
    if (m_distToTarget != distance) {
        m_distToTarget = distance;
        emit parameterChanged(DistToTarget);
    }
    return true;
}

bool CameraComponent::setOrthographicZoomFactor(float factor)
{
    if (!(factor > 0.0f)) {
        refuse(QStringLiteral("Can't set a negative or null zoom factor (%1)").arg(double(factor)));
        return false;
    }
    if (m_orthographicZoomFactor != factor) {
        m_orthographicZoomFactor = factor;
        emit parameterChanged(OrthographicZoomFactor);
    }
    return true;
}

bool CameraComponent::setFocalDistanceInMm(float millimetres)
{
    if (millimetres < 0.0f) {
        refuse(QStringLiteral("Can't set a negative focale dist (%1)").arg(double(millimetres)));
        return false;
    }
    if (m_focalDistanceInMm != millimetres) {
        m_focalDistanceInMm = millimetres;
        emit parameterChanged(FocalDistanceInMm);
    }
    return true;
}

bool CameraComponent::setApertureWidthInMm(float millimetres)
{
    if (millimetres < 0.0f) {
        refuse(QStringLiteral("Can't set a negative aperture width (%1)").arg(double(millimetres)));
        return false;
    }
    if (m_apertureWidthInMm != millimetres) {
        m_apertureWidthInMm = millimetres;
        emit parameterChanged(ApertureWidthInMm);
    }
    return true;
}

void CameraComponent::setLensFocusDist(float distance)
{
    if (m_lensFocusDist == distance)
        return;
    m_lensFocusDist = distance;
    emit parameterChanged(LensFocusDist);
}

void CameraComponent::setLensRadius(float radius)
{
    if (m_lensRadius == radius)
        return;
    m_lensRadius = radius;
    emit parameterChanged(LensRadius);
}

void CameraComponent::setUseWindowResolution(bool use)
{
    if (m_useWindowResolution == use)
        return;
    m_useWindowResolution = use;
    emit parameterChanged(UseWindowResolution);
}

void CameraComponent::setResolution(const Eigen::Vector2i& resolution)
{
    if (m_resolution == resolution)
        return;
    m_resolution = resolution;
    emit parameterChanged(Resolution);
}

float CameraComponent::getFieldOfViewDegrees() const
{
    if (m_focalDistanceInMm <= 0.0f)
        return 180.0f;
    const double radians = 2.0 * std::atan(double(m_apertureWidthInMm) / (2.0 * double(m_focalDistanceInMm)));
    return float(radians * 180.0 / M_PI);
}

void CameraComponent::copyFrom(const EntityComponent& other)
{
    const auto* camera = dynamic_cast<const CameraComponent*>(&other);
    if (!camera || camera == this)
        return;
    setProjectionType(camera->m_projectionType);
    setAutomaticClipPlanes(camera->m_automaticClipPlanes);
    // Widen the clip range first so that neither plane is refused on the way.
    if (camera->m_farClipPlane > m_farClipPlane) {
        setFarClipPlane(camera->m_farClipPlane);
        setNearClipPlane(camera->m_nearClipPlane);
    } else {
        setNearClipPlane(camera->m_nearClipPlane);
        setFarClipPlane(camera->m_farClipPlane);
    }
    setClearColor(camera->m_clearColor);
    setDistToTarget(camera->m_distToTarget);
    setOrthographicZoomFactor(camera->m_orthographicZoomFactor);
    setFocalDistanceInMm(camera->m_focalDistanceInMm);
    setApertureWidthInMm(camera->m_apertureWidthInMm);
    setLensFocusDist(camera->m_lensFocusDist);
    setLensRadius(camera->m_lensRadius);
    setUseWindowResolution(camera->m_useWindowResolution);
    setResolution(camera->m_resolution);
}

} // namespace Ond::SceneGraph
