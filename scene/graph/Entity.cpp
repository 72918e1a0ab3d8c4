#include "scene/graph/Entity.h"

#include "scene/graph/EnvironmentDisplayComponent.h"
#include "scene/graph/ISceneVisitor.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <QCoreApplication>

#include <cmath>

namespace Ond::SceneGraph {

namespace {

// Identity within 1e-5, relative on the diagonal, absolute elsewhere.
bool isNearlyIdentity(const Eigen::Matrix4f& m)
{
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            const float value = m(r, c);
            if (r == c) {
                if (std::abs(value - 1.0f) > 1e-5f * std::max(1.0f, std::abs(value)))
                    return false;
            } else if (std::abs(value) > 1e-5f) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

QString Entity::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case IsEnabled: return QStringLiteral("is_enabled");
    case MetersPerUnit: return QStringLiteral("meters_per_unit");
    default: return QString();
    }
}

Entity::Entity(const QString& name, std::unique_ptr<LocationComponent> location,
               std::unique_ptr<DisplayComponent> display, std::unique_ptr<LightComponent> light,
               std::unique_ptr<CameraComponent> camera, std::unique_ptr<MetadataDict> metadata)
    : m_location(std::move(location)),
      m_display(std::move(display)),
      m_light(std::move(light)),
      m_camera(std::move(camera)),
      m_metadata(metadata ? std::move(metadata) : std::make_unique<MetadataDict>()),
      m_name(name)
{
    adopt(m_location.get());
    adopt(m_display.get());
    adopt(m_light.get());
    adopt(m_camera.get());
    connect(m_metadata.get(), &MetadataDict::changed, this, &Entity::metaDataChanged);
    if (m_display)
        m_boundingBox = m_display->getBoundingBox();
}

Entity::~Entity() = default;

void Entity::adopt(EntityComponent* component)
{
    if (component)
        component->setEntity(this);
}

MeshDisplayComponent* Entity::getMeshDisplay() const
{
    return dynamic_cast<MeshDisplayComponent*>(m_display.get());
}

EnvironmentDisplayComponent* Entity::getEnvironmentDisplay() const
{
    return dynamic_cast<EnvironmentDisplayComponent*>(m_display.get());
}

void Entity::setLocation(std::unique_ptr<LocationComponent> location)
{
    m_location = std::move(location);
    adopt(m_location.get());
}

void Entity::setDisplay(std::unique_ptr<DisplayComponent> display)
{
    m_display = std::move(display);
    adopt(m_display.get());
    m_cachedLocalBox.reset();
    m_boundingBox = m_display ? m_display->getBoundingBox() : BoundingBox();
}

QString Entity::getLabel() const
{
    QString text = m_label;
    if (text.isEmpty()) {
        const bool bare = !m_camera && !m_light && !m_location && !getMeshDisplay() && !getEnvironmentDisplay();
        if (!bare)
            text = m_name;
    }
    if (text.isEmpty())
        text = QStringLiteral("Entity");
    const QByteArray utf8 = text.toUtf8();
    return QCoreApplication::translate("Ond::Gui3D::Widget", utf8.constData());
}

void Entity::setEnabled(bool enabled)
{
    if (m_isEnabled == enabled)
        return;
    m_isEnabled = enabled;
    emit parameterChanged(IsEnabled);
}

bool Entity::setMetersPerUnit(double metersPerUnit)
{
    if (!(metersPerUnit > 0.0))
        return false;
    if (m_metersPerUnit == metersPerUnit)
        return true;
    m_metersPerUnit = metersPerUnit;
    emit parameterChanged(MetersPerUnit);
    return true;
}

const BoundingBox& Entity::getGlobalBoundingBox()
{
    if (!m_display)
        return BoundingBox::emptyBox();
    if (!m_location)
        return m_display->getBoundingBox();

    const BoundingBox local = m_display->getBoundingBox();
    const TransformList& transforms = m_location->getGlobalTransforms(true);
    const Eigen::Matrix4f first = transforms.empty() ? Eigen::Matrix4f::Identity() : transforms.front();
    if (local == m_cachedLocalBox && first == m_cachedGlobalTransform)
        return m_boundingBox;

    m_boundingBox.reset();
    for (const auto& matrix : transforms) {
        if (isNearlyIdentity(matrix))
            m_boundingBox.merge(local);
        else
            m_boundingBox.merge(local.transformed(matrix));
    }
    m_cachedLocalBox = local;
    m_cachedGlobalTransform = first;
    return m_boundingBox;
}

void Entity::accept(ISceneVisitor& visitor)
{
    if (m_display)
        m_display->accept(visitor);
}

} // namespace Ond::SceneGraph
