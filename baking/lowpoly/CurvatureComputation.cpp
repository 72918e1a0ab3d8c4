#include "baking/lowpoly/CurvatureComputation.h"

#include "baking/lowpoly/WeldedMesh.h"

#include <QtConcurrent/QtConcurrentMap>

#include <Eigen/Geometry>

#include <algorithm>
#include <cmath>

namespace Ond::Baking {

namespace {

// The neighbours of the vertex of startEdge, in the order of the walk around
// it: forward over the faces, then, if the fan is open, backward from the
// start to the other border.
void collectRing(const DirectedEdgeStructure& s, uint32_t startEdge, std::vector<uint32_t>& ring)
{
    ring.clear();
    const size_t limit = s.getEdges().size();
    uint32_t e = startEdge;
    bool open = false;
    for (size_t guard = 0; guard <= limit; ++guard) {
        ring.push_back(s.toVertex(e));
        const uint32_t in = DirectedEdgeStructure::previousEdge(e);
        const uint32_t o = s.opposite(in);
        if (o == InvalidIndex) {
            ring.push_back(s.fromVertex(in));
            open = true;
            break;
        }
        if (o == startEdge)
            break;
        e = o;
    }
    if (!open)
        return;
    e = startEdge;
    for (size_t guard = 0; guard <= limit; ++guard) {
        const uint32_t o = s.opposite(e);
        if (o == InvalidIndex)
            break;
        e = DirectedEdgeStructure::nextEdge(o);
        if (e == startEdge)
            break;
        ring.push_back(s.toVertex(e));
    }
}

} // namespace

CurvatureComputation::CurvatureComputation(const std::vector<Eigen::Vector4f>& positions,
                                           const std::vector<Eigen::Vector3f>& normals,
                                           const DirectedEdgeStructure& structure, float positionScale)
    : positions(positions), normals(normals), structure(structure), scale(positionScale)
{
}

void CurvatureComputation::computeRange(uint32_t begin, uint32_t end, float* out) const
{
    const auto& vertices = structure.getVertices();
    std::vector<uint32_t> ring;
    ring.reserve(64);
    std::vector<Eigen::Vector3f> tangents;
    std::vector<float> curvatures;
    tangents.reserve(64);
    curvatures.reserve(64);

    for (uint32_t entry = begin; entry < end; ++entry) {
        const DirectedEdgeStructure::Vertex& vertex = vertices[entry];
        float value = 0.0f;
        if (vertex.edge != InvalidIndex) {
            collectRing(structure, vertex.edge, ring);
            const Eigen::Vector3f p = positions[vertex.index].head<3>() * scale;
            const Eigen::Vector3f n = normals[vertex.index];

            // Normal curvature towards each neighbour and its direction in
            // the tangent plane; the largest curvature sets the first axis,
            // the first of equals winning.
            tangents.clear();
            curvatures.clear();
            float km = -10000.0f;
            Eigen::Vector3f tm = Eigen::Vector3f::Zero();
            for (uint32_t q : ring) {
                const Eigen::Vector3f d = positions[q].head<3>() * scale - p;
                const float dd = d.dot(d);
                if (dd == 0.0f)
                    continue; // a copy at the same place says nothing
                const float k = -d.dot(normals[q] - n) / dd;
                const Eigen::Vector3f t = (d - n * d.dot(n)).normalized();
                tangents.push_back(t);
                curvatures.push_back(k);
                if (k > km) {
                    km = k;
                    tm = t;
                }
            }

            if (!curvatures.empty()) {
                // Least squares for the rest of the quadratic form, with
                // c, s the cosine and sine of each direction against tm.
                float a11 = 0, a12 = 0, a22 = 0, a13 = 0, a23 = 0;
                for (size_t i = 0; i < curvatures.size(); ++i) {
                    const float c = tm.dot(tangents[i]);
                    const float s = tangents[i].cross(tm).norm();
                    const float t0 = curvatures[i] - km * c * c;
                    a11 += c * c * s * s;
                    a12 += c * s * s * s;
                    a22 += s * s * s * s;
                    a13 += t0 * c * s;
                    a23 += t0 * s * s;
                }
                const float det = a11 * a22 - a12 * a12;
                float res = km;
                if (!(det < 1e-4f)) {
                    const float b = (a13 * a22 - a23 * a12) / det;
                    const float cc = (a11 * a23 - a12 * a13) / det;
                    const float kg = km * cc - b * b * 0.25f;
                    const float h = (km + cc) * 0.5f;
                    // Never below 0 but for rounding.
                    const float h2kg = std::sqrt(std::max(0.0f, h * h - kg));
                    res = std::min(0.0f, h - h2kg) + std::max(0.0f, h + h2kg);
                }
                value = -res;
            }
        }
        out[vertex.index] = value;
    }
}

std::vector<float> CurvatureComputation::compute(uint32_t chunkSize) const
{
    std::vector<float> result(positions.size(), 0.0f);
    const uint32_t count = uint32_t(structure.getVertices().size());
    chunkSize = std::max(chunkSize, 1u);
    std::vector<uint32_t> starts;
    for (uint32_t b = 0; b < count; b += chunkSize)
        starts.push_back(b);
    float* out = result.data();
    QtConcurrent::blockingMap(starts, [this, out, count, chunkSize](uint32_t b) {
        computeRange(b, std::min(count, b + chunkSize), out);
    });
    return result;
}

std::vector<float> CurvatureComputation::ofWeldedMesh(const WeldedMesh& mesh, float positionScale,
                                                      uint32_t chunkSize)
{
    std::vector<Eigen::Vector4f> positions = mesh.positions;
    std::vector<Eigen::Vector3f> normals = mesh.normals;
    std::vector<uint32_t> indices = mesh.indices;
    uint32_t vertexCount = uint32_t(positions.size());
    uint32_t faceCount = uint32_t(indices.size() / 3);
    DirectedEdgeStructure structure;
    structure.create({&positions, &vertexCount, &indices, &faceCount, &normals, nullptr, nullptr});

    std::vector<float> result(mesh.positions.size(), 0.0f);
    if (structure.isEmpty())
        return result;
    std::vector<float> all = CurvatureComputation(positions, normals, structure, positionScale).compute(chunkSize);
    std::copy(all.begin(), all.begin() + std::min(all.size(), result.size()), result.begin());
    return result;
}

float CurvatureComputation::normalizingScale(const std::vector<Eigen::Vector4f>& positions)
{
    if (positions.empty())
        return 1.0f;
    Eigen::Vector3f lo = positions.front().head<3>(), hi = lo;
    for (const auto& p : positions) {
        lo = lo.cwiseMin(p.head<3>());
        hi = hi.cwiseMax(p.head<3>());
    }
    const Eigen::Vector3f e = hi - lo;
    float extent = e.x();
    if (e.y() > extent)
        extent = e.y();
    if (e.z() > extent)
        extent = e.z();
    return extent > 0.0f ? 200.0f / extent : 1.0f;
}

} // namespace Ond::Baking
