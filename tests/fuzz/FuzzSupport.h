#pragma once
// What every fuzz target needs: a quiet process and scratch files for the
// readers that only take a path.

#include <QBuffer>
#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

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

// One codec's reader on the input; whatever it accepts must write and
// read back at the same size, or the target aborts.
template <typename Codec, typename SurfacePtr> int roundTrip(const uint8_t* data, size_t size, const char* suffix)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    SurfacePtr surface;
    if (!Codec(&buffer, suffix).read(surface) || !surface || surface->isEmpty())
        return 0;
    touchRows(surface);
    QBuffer out;
    if (!Codec(&out, suffix).write(surface))
        return 0;
    QByteArray written = out.data();
    QBuffer again(&written);
    SurfacePtr back;
    if (!Codec(&again, suffix).read(back) || !back || back->width() != surface->width()
        || back->height() != surface->height())
        std::abort();
    return 0;
}

} // namespace Fuzz
