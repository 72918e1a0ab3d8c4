#pragma once
// Per-vertex normals averaged over the distinct directions met at one
// position, so that a split vertex gets one direction on both sides of a
// hard edge. Used to draw seeds that ignore hard edges.

#include <Eigen/Core>

#include <cstddef>

namespace Ond::Baking {

// Object space, one mesh part. `out` receives `count` normals. Positions
// are equal only when they match exactly; two normals are the same
// direction when every component is within 0.0001 of the kept one.
void computeSmoothedNormals(const Eigen::Vector3f* positions, const Eigen::Vector3f* normals, size_t count,
                            Eigen::Vector3f* out);

} // namespace Ond::Baking
