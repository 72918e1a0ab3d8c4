#include "baking/detail/StripJob.h"

#include <array>

namespace Ond::Baking {

namespace {

std::array<StripJobFactory, BakeJobKindCount>& kernelTable()
{
    static std::array<StripJobFactory, BakeJobKindCount> table{};
    return table;
}

} // namespace

void registerStripKernel(BakeJobKind kind, StripJobFactory factory)
{
    const int index = int(kind);
    if (index > 0 && index < BakeJobKindCount)
        kernelTable()[size_t(index)] = factory;
}

StripJobFactory stripKernel(BakeJobKind kind)
{
    const int index = int(kind);
    if (index <= 0 || index >= BakeJobKindCount)
        return nullptr;
    return kernelTable()[size_t(index)];
}

} // namespace Ond::Baking
