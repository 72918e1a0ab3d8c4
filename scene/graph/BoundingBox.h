#pragma once
// Axis-aligned box, minimum then maximum. The empty box has its minima at the
// largest float and its maxima at the negative of it, so merging into it
// needs no special case.

#include <Eigen/Core>

namespace Ond::SceneGraph {

class BoundingBox
{
public:
    BoundingBox();
    BoundingBox(const Eigen::Vector3f& minimum, const Eigen::Vector3f& maximum);

    // The shared empty box, handed out by reference where no box exists.
    static const BoundingBox& emptyBox();

    const Eigen::Vector3f& getMin() const { return m_min; }
    const Eigen::Vector3f& getMax() const { return m_max; }

    // Empty if any minimum lies above its maximum.
    bool isEmpty() const;
    void reset();

    // Merging an empty box changes nothing.
    void merge(const BoundingBox& other);
    void merge(const Eigen::Vector3f& point);

    Eigen::Vector3f getCenter() const;
    Eigen::Vector3f getSize() const;

    // The box of the eight transformed corners; an empty box stays empty.
    BoundingBox transformed(const Eigen::Matrix4f& matrix) const;

    // Equal if both are empty, or neither is and all six values differ by
    // less than float epsilon.
    bool fuzzyEquals(const BoundingBox& other) const;
    bool operator==(const BoundingBox& other) const { return fuzzyEquals(other); }
    bool operator!=(const BoundingBox& other) const { return !fuzzyEquals(other); }

private:
    Eigen::Vector3f m_min;
    Eigen::Vector3f m_max;
};

} // namespace Ond::SceneGraph
