#include "baking/lowpoly/SurfaceElementTree.h"

#include <Eigen/Geometry>

#include <algorithm>
#include <cmath>

namespace Ond::Baking::SeAO {

namespace {

struct Builder
{
    const Geometry& geometry;
    std::vector<SurfaceElement>& elements;
    // Triangle numbers with their centroids, partitioned in place.
    std::vector<std::pair<int32_t, Eigen::Vector3f>> items;

    Eigen::Vector3f corner(size_t triangle, int k) const
    {
        return geometry.vertices[geometry.triangles[triangle * 3 + size_t(k)]].position;
    }

    void makeLeaf(int32_t triangle)
    {
        SurfaceElement& e = elements[size_t(triangle)];
        const Eigen::Vector3f v0 = corner(size_t(triangle), 0), v1 = corner(size_t(triangle), 1),
                              v2 = corner(size_t(triangle), 2);
        const Eigen::Vector3f cross = (v1 - v0).cross(v2 - v0);
        const float length = cross.norm();
        e.normal = length > 0.0f ? Eigen::Vector3f(cross / length) : Eigen::Vector3f::Zero();
        e.area = 0.5f * length;
        e.position = (v0 + v1 + v2) * 0.33333334f;
        e.radius = std::max({(v0 - e.position).norm(), (v1 - e.position).norm(), (v2 - e.position).norm()});
    }

    int32_t build(size_t begin, size_t end)
    {
        if (end - begin == 1) {
            makeLeaf(items[begin].first);
            return items[begin].first;
        }
        Eigen::Vector3f lo = items[begin].second, hi = lo;
        for (size_t i = begin + 1; i < end; ++i) {
            lo = lo.cwiseMin(items[i].second);
            hi = hi.cwiseMax(items[i].second);
        }
        const Eigen::Vector3f extent = hi - lo;
        const int axis = extent.x() >= extent.y() && extent.x() >= extent.z() ? 0 : (extent.y() >= extent.z() ? 1 : 2);
        const size_t middle = begin + (end - begin) / 2;
        std::nth_element(items.begin() + ptrdiff_t(begin), items.begin() + ptrdiff_t(middle),
                         items.begin() + ptrdiff_t(end),
                         [axis](const auto& a, const auto& b) { return a.second[axis] < b.second[axis]; });

        const int32_t index = int32_t(elements.size());
        elements.emplace_back();
        const int32_t left = build(begin, middle);
        const int32_t right = build(middle, end);

        const SurfaceElement& l = elements[size_t(left)];
        const SurfaceElement& r = elements[size_t(right)];
        SurfaceElement node;
        node.left = left;
        node.right = right;
        node.area = l.area + r.area;
        // 5.0 for two empty children is kept: their mean then leaves the hull
        // of the two, which is what the maps were always baked with.
        const float w = node.area != 0.0f ? l.area / node.area : 5.0f;
        node.position = w * l.position + (1.0f - w) * r.position;
        node.normal = w * l.normal + (1.0f - w) * r.normal;
        if (node.normal.norm() == 0.0f)
            node.normal = node.position;
        const float squared = node.normal.squaredNorm();
        if (squared > 0.0f)
            node.normal /= std::sqrt(squared);
        node.radius = std::max((r.position - node.position).norm() + r.radius,
                               (l.position - node.position).norm() + l.radius);
        elements[size_t(index)] = node;
        return index;
    }
};

} // namespace

SurfaceElementTree SurfaceElementTree::build(const Geometry& geometry)
{
    SurfaceElementTree tree;
    const size_t n = geometry.triangleCount();
    if (n == 0)
        return tree;
    tree.elements.reserve(n + n / 2);
    tree.elements.resize(n);
    Builder builder{geometry, tree.elements, {}};
    builder.items.reserve(n);
    for (size_t t = 0; t < n; ++t)
        builder.items.emplace_back(int32_t(t),
                                   (builder.corner(t, 0) + builder.corner(t, 1) + builder.corner(t, 2)) / 3.0f);
    tree.root = builder.build(0, n);

    // The walk of a subtree ends where its parent's continues.
    std::vector<int32_t> stack{tree.root};
    tree.elements[size_t(tree.root)].next = noElement;
    while (!stack.empty()) {
        const SurfaceElement& e = tree.elements[size_t(stack.back())];
        stack.pop_back();
        if (e.isLeaf())
            continue;
        tree.elements[size_t(e.left)].next = e.right;
        tree.elements[size_t(e.right)].next = e.next;
        stack.push_back(e.left);
        stack.push_back(e.right);
    }
    return tree;
}

PackedLayout PackedLayout::forCount(size_t count)
{
    PackedLayout layout;
    int ceilLog2 = 0;
    while (ceilLog2 < 63 && (size_t(1) << ceilLog2) < count)
        ++ceilLog2;
    layout.log2Width = std::clamp(ceilLog2 / 2, 6, 13);
    layout.width = 1 << layout.log2Width;
    const size_t rows = (std::max<size_t>(count, 1) - 1 + size_t(layout.width)) >> layout.log2Width;
    layout.height = int((rows + 3) / 4 * 4);
    return layout;
}

std::array<float, 2> PackedLayout::coordinates(int32_t index) const
{
    if (index == noElement)
        return {0.0f, 0.0f};
    const uint32_t i = uint32_t(index);
    return {(float(i & uint32_t(width - 1)) + 0.5f) / float(width), (float(i >> log2Width) + 0.5f) / float(height)};
}

PackedTree PackedTree::pack(const Geometry& geometry, const SurfaceElementTree& tree)
{
    PackedTree packed;
    packed.layout = PackedLayout::forCount(std::max(tree.elements.size(), geometry.vertices.size()));
    const size_t texels = size_t(packed.layout.width) * size_t(packed.layout.height) * 4;
    for (std::vector<float>* array : {&packed.vertices, &packed.positions, &packed.normals, &packed.links,
                                      &packed.triangles0, &packed.triangles1})
        array->assign(texels, 0.0f);

    for (size_t i = 0; i < geometry.vertices.size(); ++i) {
        const Eigen::Vector3f& p = geometry.vertices[i].position;
        std::copy_n(p.data(), 3, &packed.vertices[i * 4]);
    }
    const PackedLayout& layout = packed.layout;
    const size_t leaves = geometry.triangleCount();
    for (size_t i = 0; i < tree.elements.size(); ++i) {
        const SurfaceElement& e = tree.elements[i];
        float* pos = &packed.positions[i * 4];
        std::copy_n(e.position.data(), 3, pos);
        pos[3] = e.isLeaf() ? e.area : -e.area;
        float* nrm = &packed.normals[i * 4];
        std::copy_n(e.normal.data(), 3, nrm);
        nrm[3] = e.radius;
        const auto next = layout.coordinates(e.next);
        const auto left = layout.coordinates(e.left);
        float* link = &packed.links[i * 4];
        link[0] = next[0];
        link[1] = next[1];
        link[2] = left[0];
        link[3] = left[1];
        if (i < leaves) {
            const auto c0 = layout.coordinates(int32_t(geometry.triangles[i * 3]));
            const auto c1 = layout.coordinates(int32_t(geometry.triangles[i * 3 + 1]));
            const auto c2 = layout.coordinates(int32_t(geometry.triangles[i * 3 + 2]));
            float* t0 = &packed.triangles0[i * 4];
            t0[0] = c0[0];
            t0[1] = c0[1];
            t0[2] = c1[0];
            t0[3] = c1[1];
            packed.triangles1[i * 4] = c2[0];
            packed.triangles1[i * 4 + 1] = c2[1];
        }
    }
    packed.root = layout.coordinates(tree.root);
    return packed;
}

} // namespace Ond::Baking::SeAO
