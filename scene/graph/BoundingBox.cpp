#include "scene/graph/BoundingBox.h"

#include <Eigen/Geometry>

#include <cmath>
#include <limits>

namespace Ond::SceneGraph {

namespace {
constexpr float Largest = std::numeric_limits<float>::max();
}

BoundingBox::BoundingBox()
    : m_min(Largest, Largest, Largest), m_max(-Largest, -Largest, -Largest)
{
}

BoundingBox::BoundingBox(const Eigen::Vector3f& minimum, const Eigen::Vector3f& maximum)
    : m_min(minimum), m_max(maximum)
{
}

const BoundingBox& BoundingBox::emptyBox()
{
    static const BoundingBox empty;
    return empty;
}

bool BoundingBox::isEmpty() const
{
    return m_min.x() > m_max.x() || m_min.y() > m_max.y() || m_min.z() > m_max.z();
}

void BoundingBox::reset()
{
    *this = BoundingBox();
}

void BoundingBox::merge(const BoundingBox& other)
{
    if (other.isEmpty())
        return;
    m_min = m_min.cwiseMin(other.m_min);
    m_max = m_max.cwiseMax(other.m_max);
}

void BoundingBox::merge(const Eigen::Vector3f& point)
{
    m_min = m_min.cwiseMin(point);
    m_max = m_max.cwiseMax(point);
}

Eigen::Vector3f BoundingBox::getCenter() const
{
    return isEmpty() ? Eigen::Vector3f::Zero() : Eigen::Vector3f((m_min + m_max) * 0.5f);
}

Eigen::Vector3f BoundingBox::getSize() const
{
    return isEmpty() ? Eigen::Vector3f::Zero() : Eigen::Vector3f(m_max - m_min);
}

BoundingBox BoundingBox::transformed(const Eigen::Matrix4f& matrix) const
{
    BoundingBox result;
    if (isEmpty())
        return result;
    for (int corner = 0; corner < 8; ++corner) {
        const Eigen::Vector4f p((corner & 1) ? m_max.x() : m_min.x(), (corner & 2) ? m_max.y() : m_min.y(),
                                (corner & 4) ? m_max.z() : m_min.z(), 1.0f);
        const Eigen::Vector4f q = matrix * p;
        result.merge(Eigen::Vector3f(q.head<3>()));
    }
    return result;
}

bool BoundingBox::fuzzyEquals(const BoundingBox& other) const
{
    const bool empty = isEmpty();
    const bool otherEmpty = other.isEmpty();
    if (empty || otherEmpty)
        return empty == otherEmpty;
    constexpr float eps = std::numeric_limits<float>::epsilon();
    for (int i = 0; i < 3; ++i) {
        if (std::abs(m_min[i] - other.m_min[i]) >= eps || std::abs(m_max[i] - other.m_max[i]) >= eps)
            return false;
    }
    return true;
}

} // namespace Ond::SceneGraph
