#pragma once
// What every fuzz target needs: a quiet process and scratch files for the
// readers that only take a path.

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace Fuzz {

// Silences Qt's own messages; the program's log has no console delegate
// here, so its lines go nowhere. Call once; answers true.
bool init();

// Writes the input to one scratch file per process with the given suffix
// and answers its path.
QString writeScratchFile(const uint8_t* data, size_t size, const char* suffix);

// Reads every byte of every row, so that ASan sees a surface that claims
// more than it holds.
template <typename SurfacePtr> void touchRows(const SurfacePtr& surface)
{
    if (!surface || surface->isEmpty())
        return;
    volatile uint8_t sink = 0;
    for (uint32_t y = 0; y < surface->height(); ++y) {
        const uint8_t* row = surface->row(y);
        sink = sink + row[0] + row[surface->rowBytes() - 1];
    }
}

} // namespace Fuzz
