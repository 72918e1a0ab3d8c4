#include "baking/detail/DetailKernels.h"

#include <mutex>

namespace Ond::Baking {

// One declaration and one call per kernel file, each kernel file defining its
// own register function (kinds: 1 height, 2 normal, 3/4 vertex/triangle
// colour, 5 ambient occlusion, 6 bent normals, 7 mask, 8 thickness,
// 9/10 texture and normal-texture transfer, 11 position, 12 per-vertex
// curvature, 13 curvature).
void registerHeightKernel();
void registerNormalKernel();
void registerMaskKernel();
void registerPositionKernel();
void registerVertexColorKernel();
void registerTriangleColorKernel();
void registerTextureKernel();
void registerTextureNormalKernel();
void registerCurvatureKernel();
void registerAmbientOcclusionKernel();
void registerBentNormalsKernel();
void registerThicknessKernel();
void registerCurvature1Kernel();

void registerDetailKernels()
{
    static std::once_flag once;
    std::call_once(once, [] {
        registerHeightKernel();
        registerNormalKernel();
        registerMaskKernel();
        registerPositionKernel();
        registerVertexColorKernel();
        registerTriangleColorKernel();
        registerTextureKernel();
        registerTextureNormalKernel();
        registerCurvatureKernel();
        registerAmbientOcclusionKernel();
        registerBentNormalsKernel();
        registerThicknessKernel();
        registerCurvature1Kernel();
    });
}

} // namespace Ond::Baking
