#include "baking/detail/DetailNormalSampling.h"

#include "baking/detail/SecondaryRay.h"

#include <algorithm>
#include <cmath>

namespace Ond::Baking {

namespace {

void uvAt(const GrabbedMesh& mesh, unsigned primID, float u, float v, float* uv)
{
    const uint32_t* tri = mesh.indices.data() + size_t(primID) * 3;
    const float w = 1.0f - u - v;
    const float* t0 = mesh.uvs.data() + size_t(tri[0]) * 2;
    const float* t1 = mesh.uvs.data() + size_t(tri[1]) * 2;
    const float* t2 = mesh.uvs.data() + size_t(tri[2]) * 2;
    uv[0] = w * t0[0] + u * t1[0] + v * t2[0];
    uv[1] = w * t0[1] + u * t1[1] + v * t2[1];
}

void decode(const Eigen::Vector4f& c, float* n)
{
    n[0] = 2.0f * c[0] - 1.0f;
    n[1] = 2.0f * c[1] - 1.0f;
    n[2] = 2.0f * c[2] - 1.0f;
    SecondaryRay::normalize(n);
}

void normalizeOrZero(float* a)
{
    const float len = std::sqrt(SecondaryRay::dot(a, a));
    if (len > 1e-5f) {
        a[0] /= len;
        a[1] /= len;
        a[2] /= len;
    } else {
        a[0] = a[1] = a[2] = 0.0f;
    }
}

} // namespace

bool detailNormal(const DetailNormals& detail, const GrabbedMesh& mesh, unsigned primID, float u, float v, float* n)
{
    if (mesh.uvs.empty() || !detail.normals)
        return false;
    float uv[2];
    uvAt(mesh, primID, u, v, uv);
    decode(detail.normals->sample(uv[0], uv[1]), n);
    return true;
}

bool detailNormalAndCrease(const DetailNormals& detail, const GrabbedMesh& mesh, unsigned primID, float u, float v,
                           float* n, float& crease)
{
    crease = 0.0f;
    if (mesh.uvs.empty() || !detail.normals || !detail.positions || detail.width == 0 || detail.height == 0)
        return false;
    const uint32_t* tri = mesh.indices.data() + size_t(primID) * 3;
    const float* p[3];
    const float* t[3];
    for (int k = 0; k < 3; ++k) {
        p[k] = mesh.positions.data() + size_t(tri[k]) * 4;
        t[k] = mesh.uvs.data() + size_t(tri[k]) * 2;
    }
    float e1[3], e2[3];
    for (int c = 0; c < 3; ++c) {
        e1[c] = p[1][c] - p[0][c];
        e2[c] = p[2][c] - p[0][c];
    }
    const float d1[2] = {t[1][0] - t[0][0], t[1][1] - t[0][1]};
    const float d2[2] = {t[2][0] - t[0][0], t[2][1] - t[0][1]};
    float T[3], B[3];
    for (int c = 0; c < 3; ++c) {
        T[c] = e1[c] * d2[1] - e2[c] * d1[1];
        B[c] = e1[c] * d2[0] - e2[c] * d1[0];
    }
    normalizeOrZero(T);
    normalizeOrZero(B);
    const float hand = d1[0] * d2[1] - d1[1] * d2[0] > 0.0f ? 1.0f : -1.0f;

    float uv[2];
    uvAt(mesh, primID, u, v, uv);
    const Surfaces::IGenericSampler& normals = *detail.normals;
    const Surfaces::IGenericSampler& positions = *detail.positions;
    decode(normals.sample(uv[0], uv[1]), n);

    const float dx1 = 1.0f / float(detail.width), dx2 = 2.0f / float(detail.width);
    const float dy1 = 1.0f / float(detail.height), dy2 = 2.0f / float(detail.height);
    auto coverage = [&](float du, float dv) { return positions.sample(uv[0] + du, uv[1] + dv)[3]; };
    auto colour = [&](float du, float dv) { return normals.sample(uv[0] + du, uv[1] + dv); };

    const float wx1 = 0.2f * std::min(coverage(dx1, 0), coverage(-dx1, 0));
    const float wx2 = 0.1f * std::min(coverage(dx2, 0), coverage(-dx2, 0));
    const float wy1 = 0.2f * std::min(coverage(0, -dy1), coverage(0, dy1));
    const float wy2 = 0.1f * std::min(coverage(0, -dy2), coverage(0, dy2));
    const Eigen::Vector4f gx = wx1 * (colour(dx1, 0) - colour(-dx1, 0)) + wx2 * (colour(dx2, 0) - colour(-dx2, 0));
    const Eigen::Vector4f gy = wy1 * (colour(0, -dy1) - colour(0, dy1)) + wy2 * (colour(0, -dy2) - colour(0, dy2));
    const float along = T[0] * gx[0] + T[1] * gx[1] + T[2] * gx[2] + B[0] * gy[0] + B[1] * gy[1] + B[2] * gy[2];
    crease = std::min(0.0f, hand * along);
    return true;
}

} // namespace Ond::Baking
