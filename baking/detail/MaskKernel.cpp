#include "baking/detail/StripJob.h"

namespace Ond::Baking {

namespace {

// Coverage only: the texel close counts the hits.
struct MaskKernel
{
    static constexpr TexelClose close = TexelClose::Mask;
    static constexpr bool reduces = false;

    MaskKernel(const DetailBakeJob&, const EmbreeScene&) {}

    void hit(const PrimaryHit&, float*) const {}
};

} // namespace

void registerMaskKernel()
{
    registerStripKernel(BakeJobKind::Mask, &makeStripJob<MaskKernel>);
}

} // namespace Ond::Baking
