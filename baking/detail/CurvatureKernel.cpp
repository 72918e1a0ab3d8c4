#include "baking/detail/CurvatureKernel.h"

#include "baking/detail/CurvatureMesh.h"

namespace Ond::Baking {

CurvatureKernel::CurvatureKernel(const DetailBakeJob& job, const EmbreeScene& scene)
    : indices(scene.mesh().indices.data())
{
    std::vector<float>& values = scene.vertexCurvature();
    if (values.size() != scene.mesh().vertexCount)
        values = vertexCurvatureOf(scene.mesh());
    curvature = values.data();
    if (job.params)
        params = *static_cast<const CurvatureParams*>(job.params);
}

void registerCurvatureKernel()
{
    registerStripKernel(BakeJobKind::Curvature, &makeStripJob<CurvatureKernel>);
}

} // namespace Ond::Baking
