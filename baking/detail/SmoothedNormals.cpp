#include "baking/detail/SmoothedNormals.h"

#include <Eigen/Geometry>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Ond::Baking {

namespace {

bool lessXyz(const Eigen::Vector3f& a, const Eigen::Vector3f& b)
{
    if (a.x() != b.x())
        return a.x() < b.x();
    if (a.y() != b.y())
        return a.y() < b.y();
    return a.z() < b.z();
}

bool sameDirection(const Eigen::Vector3f& a, const Eigen::Vector3f& b)
{
    return std::abs(a.x() - b.x()) <= 1e-4f && std::abs(a.y() - b.y()) <= 1e-4f && std::abs(a.z() - b.z()) <= 1e-4f;
}

} // namespace

void computeSmoothedNormals(const Eigen::Vector3f* positions, const Eigen::Vector3f* normals, size_t count,
                            Eigen::Vector3f* out)
{
    std::vector<uint32_t> order(count);
    for (size_t i = 0; i < count; ++i)
        order[i] = uint32_t(i);
    std::sort(order.begin(), order.end(), [positions](uint32_t a, uint32_t b) {
        if (lessXyz(positions[a], positions[b]))
            return true;
        if (lessXyz(positions[b], positions[a]))
            return false;
        return a < b; // the first vertex of a group is the lowest index
    });

    std::vector<Eigen::Vector3f> directions;
    size_t begin = 0;
    while (begin < count) {
        size_t end = begin + 1;
        while (end < count && positions[order[end]] == positions[order[begin]])
            ++end;

        directions.clear();
        for (size_t k = begin; k < end; ++k)
            directions.push_back(normals[order[k]]);
        std::sort(directions.begin(), directions.end(), lessXyz);
        Eigen::Vector3f sum = directions.front();
        Eigen::Vector3f kept = directions.front();
        for (size_t k = 1; k < directions.size(); ++k) {
            if (sameDirection(directions[k], kept))
                continue;
            kept = directions[k];
            sum += kept;
        }
        const float length = sum.norm();
        for (size_t k = begin; k < end; ++k)
            out[order[k]] = length > 1e-4f ? Eigen::Vector3f(sum / length) : normals[order[begin]];
        begin = end;
    }
}

} // namespace Ond::Baking
