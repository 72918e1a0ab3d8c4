#include "baking/detail/Curvature1Kernel.h"

#include "baking/detail/DetailNormalSampling.h"
#include "baking/detail/StripJob.h"
#include "baking/detail/SurfaceFrame.h"

#include <algorithm>
#include <cmath>

namespace Ond::Baking {

namespace {

double dot3(const double* a, const double* b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

float fitSphereCurvature(double W, const double* SP, const double* SN, double SPP, double SPN)
{
    if (W == 1.0)
        return 0.0f;
    const double i = 1.0 / W;
    const double pb[3] = {i * SP[0], i * SP[1], i * SP[2]};
    const double nb[3] = {i * SN[0], i * SN[1], i * SN[2]};
    const double ppb = i * SPP;
    const double u4 = 0.5 * (SPN - dot3(nb, SP)) / (SPP - dot3(pb, SP));
    const double u[3] = {nb[0] - 2.0 * u4 * pb[0], nb[1] - 2.0 * u4 * pb[1], nb[2] - 2.0 * u4 * pb[2]};
    const double u0 = -dot3(pb, u) - u4 * ppb;
    const float curv = float(2.0 * u4 / std::sqrt(dot3(u, u) - 4.0 * u0 * u4));
    if (std::isinf(curv) || std::isnan(curv))
        return 0.0f;
    return curv;
}

Curvature1Traits::Curvature1Traits(const DetailBakeJob& job, const EmbreeScene&)
    : params(SecondaryRay::paramsOf<Curvature1Params>(job)),
      table(SecondaryRay::sampleTableOf(params)),
      filterById((job.flags & BakeJobFlags::FilterSecondaryById) != 0)
{
}

void Curvature1Traits::hit(const PrimaryHit& h, float* acc) const
{
    const GrabbedMesh& mesh = h.scene->mesh();
    const DetailNormals* detail = params.detailNormals;
    float p[3];
    SecondaryRay::interpolate(mesh, mesh.positions.data(), 4, h.primID, h.u, h.v, p);
    float g[3];
    {
        const uint32_t* tri = mesh.indices.data() + size_t(h.primID) * 3;
        const float* p0 = mesh.positions.data() + size_t(tri[0]) * 4;
        const float* p1 = mesh.positions.data() + size_t(tri[1]) * 4;
        const float* p2 = mesh.positions.data() + size_t(tri[2]) * 4;
        const float e1[3] = {p1[0] - p0[0], p1[1] - p0[1], p1[2] - p0[2]};
        const float e2[3] = {p2[0] - p0[0], p2[1] - p0[1], p2[2] - p0[2]};
        g[0] = e1[1] * e2[2] - e1[2] * e2[1];
        g[1] = e1[2] * e2[0] - e1[0] * e2[2];
        g[2] = e1[0] * e2[1] - e1[1] * e2[0];
        SecondaryRay::normalize(g);
    }
    const SurfaceFrame frame(g, h.sampleX, h.sampleY);
    float ns[3];
    if (!detail || !detailNormal(*detail, mesh, h.primID, h.u, h.v, ns))
        SecondaryRay::shadingNormal(mesh, h.primID, h.u, h.v, ns);

    const float R = params.radius;
    const double invR2 = 1.0 / (double(R) * double(R));
    double W = 1.0, SPP = 0.0, SPN = 0.0;
    double SP[3] = {0.0, 0.0, 0.0};
    double SN[3] = {ns[0], ns[1], ns[2]};
    const float cp[3] = {p[0] + R * g[0], p[1] + R * g[1], p[2] + R * g[2]};
    const float cm[3] = {p[0] - R * g[0], p[1] - R * g[1], p[2] - R * g[2]};

    // Rays from the centre of the touching sphere above the surface, then,
    // where that finds nothing, from the one below; the reversed ray is not
    // worth tracing near the rim, where both chords are short.
    const uint32_t id = SecondaryRay::rayId(h, filterById);
    HitContext context(0, filterById);
    RTCRayHit rh;
    const unsigned count = table.count();
    const unsigned skipReversed = count / 4;
    for (unsigned i = 0; i < count; ++i) {
        const float* s = table.sample(i);
        const float length = s[2] * 2.0f * R;
        float side[3], d[3];
        for (int c = 0; c < 3; ++c)
            side[c] = s[0] * frame.t[c] + s[1] * frame.b[c];
        for (int c = 0; c < 3; ++c)
            d[c] = side[c] - s[2] * g[c];
        float t = SecondaryRay::trace(*h.scene, context, rh, cp, d, 0.0f, length, id);
        if (!(t < length)) {
            if (i < skipReversed)
                continue;
            for (int c = 0; c < 3; ++c)
                d[c] = side[c] + s[2] * g[c];
            t = SecondaryRay::trace(*h.scene, context, rh, cm, d, 0.0f, length, id);
            if (!(t < length))
                continue;
        }
        float q[3], m[3];
        SecondaryRay::interpolate(mesh, mesh.positions.data(), 4, rh.hit.primID, rh.hit.u, rh.hit.v, q);
        q[0] -= p[0];
        q[1] -= p[1];
        q[2] -= p[2];
        if (!detail || !detailNormal(*detail, mesh, rh.hit.primID, rh.hit.u, rh.hit.v, m))
            SecondaryRay::shadingNormal(mesh, rh.hit.primID, rh.hit.u, rh.hit.v, m);
        const double d2sq = SecondaryRay::dot(q, q);
        const double a = d2sq * invR2 - 1.0;
        const double weight = a * a;
        W += weight;
        for (int c = 0; c < 3; ++c) {
            SP[c] += weight * q[c];
            SN[c] += weight * m[c];
        }
        SPP += weight * d2sq;
        SPN += weight * SecondaryRay::dot(m, q);
    }
    const float value = fitSphereCurvature(W, SP, SN, SPP, SPN);
    acc[0] += value;
    acc[1] += value;
    acc[2] += value;
}

void registerCurvature1Kernel()
{
    registerStripKernel(BakeJobKind::Curvature1, &makeStripJob<Curvature1Traits>);
}

} // namespace Ond::Baking
