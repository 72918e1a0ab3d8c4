#include "image/UDIMNumbering.h"

namespace Vrn::Baking {

std::optional<uint16_t> udimOfTile(int u, int v)
{
    if (u < 0 || u > 9 || v < 0)
        return std::nullopt;
    const long long udim = 1001LL + u + 10LL * v;
    if (udim > 0xFFFF)
        return std::nullopt;
    return uint16_t(udim);
}

std::optional<QPoint> tileOfUdim(int udim)
{
    if (udim < 1001)
        return std::nullopt;
    return QPoint((udim - 1) % 10, (udim - 1001) / 10);
}

} // namespace Vrn::Baking
