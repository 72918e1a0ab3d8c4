#pragma once
// The triangles of the low mesh as a hierarchy of surface elements, discs
// with a position, a normal and an area, and the packing of that hierarchy
// into float textures for the occlusion walks on the GPU.

#include "baking/lowpoly/SeAOGeometry.h"

#include <Eigen/Core>

#include <array>
#include <cstdint>
#include <vector>

namespace Ond::Baking::SeAO {

constexpr int32_t noElement = -1;

struct SurfaceElement
{
    // Centroid of a leaf; area-weighted mean of the children for a node.
    Eigen::Vector3f position = Eigen::Vector3f::Zero();
    Eigen::Vector3f normal = Eigen::Vector3f::Zero();
    float area = 0.0f;
    // Of the sphere round `position` that holds all of the element.
    float radius = 0.0f;
    int32_t left = noElement;
    int32_t right = noElement;
    // Where a walk goes once this subtree is done or skipped.
    int32_t next = noElement;

    bool isLeaf() const { return left == noElement; }
};

// Element i < triangle count is the leaf of triangle i; the nodes follow.
struct SurfaceElementTree
{
    std::vector<SurfaceElement> elements;
    int32_t root = noElement;

    static SurfaceElementTree build(const Geometry& geometry);
};

// Where element or vertex i lies in the packed textures: W texels a row,
// W = 1 << log2Width.
struct PackedLayout
{
    int log2Width = 6;
    int width = 64;
    int height = 4;

    // For the larger of the element and vertex counts.
    static PackedLayout forCount(size_t count);
    // The texel centre of index i; (0, 0) for noElement, where walks end.
    std::array<float, 2> coordinates(int32_t index) const;
};

// The texel arrays of the tree, RGBA, each width * height * 4 floats.
struct PackedTree
{
    PackedLayout layout;
    std::vector<float> vertices;  // position, 0
    std::vector<float> positions; // position, area: positive on a leaf, negative on a node
    std::vector<float> normals;   // normal, radius
    std::vector<float> links;     // coordinates of next, then of left
    std::vector<float> triangles0; // coordinates of corners 0 and 1 of a leaf
    std::vector<float> triangles1; // coordinates of corner 2, 0, 0
    std::array<float, 2> root = {0.0f, 0.0f};

    static PackedTree pack(const Geometry& geometry, const SurfaceElementTree& tree);
};

} // namespace Ond::Baking::SeAO
