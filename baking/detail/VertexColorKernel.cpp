#include "baking/detail/VertexColorKernel.h"

namespace Ond::Baking {

void registerVertexColorKernel()
{
    registerStripKernel(BakeJobKind::VertexColor, &makeStripJob<VertexColorKernel>);
}

} // namespace Ond::Baking
