#include "baking/BlueNoiseTile.h"

#include <cstdlib>
#include <string_view>

std::string_view bakingDataFile(std::string_view name);

namespace Ond::Baking {

const uint8_t* BlueNoiseTile::data()
{
    static const uint8_t* const bytes = [] {
        const std::string_view file = bakingDataFile("blue_noise_256.bin");
        // A build without the tile is broken, not a case to recover from.
        if (file.size() != size_t(ByteCount))
            std::abort();
        return reinterpret_cast<const uint8_t*>(file.data());
    }();
    return bytes;
}

} // namespace Ond::Baking
