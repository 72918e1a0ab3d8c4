// The system's own readers face damaged files: flipped header bytes and
// truncations must fail or succeed cleanly, never crash or over-read.

#include "ImageTestSupport.h"

#include "image/DDSSurfaceCodec.h"
#include "image/LYDSurfaceCodec.h"
#include "image/RawSurfaceCodec.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <random>

using namespace Ond::Surfaces;
using namespace ImageTest;
using Ond::Image::Plugins::DDSSurfaceCodec;
using Ond::Image::Plugins::LYDSurfaceCodec;

namespace {

template <typename Codec> QByteArray encode(const SurfaceSPtr& s)
{
    QBuffer b;
    EXPECT_TRUE(Codec(&b, "x").write(s));
    return b.data();
}

template <typename Codec> void decodeMutations(const QByteArray& good, int headerBytes)
{
    std::mt19937 rng(1234);
    for (int i = 0; i < 400; ++i) {
        QByteArray bad = good;
        const int flips = 1 + int(rng() % 3);
        for (int f = 0; f < flips; ++f)
            bad[int(rng() % uint32_t(headerBytes))] = char(rng() & 0xFF);
        if (i % 4 == 0)
            bad.truncate(int(rng() % uint32_t(bad.size())));
        QBuffer b(&bad);
        SurfaceSPtr s;
        if (Codec(&b, "x").read(s) && s && !s->isEmpty()) {
            // Whatever was accepted must be addressable in full.
            volatile uint8_t sink = 0;
            for (uint32_t y = 0; y < s->height(); ++y)
                sink = sink + s->row(y)[s->rowBytes() - 1];
        }
    }
}

} // namespace

TEST(MalformedInput, OwnReadersSurviveDamagedHeaders)
{
    LogCapture quiet;
    for (PixelFormat f : {PixelFormat::L8, PixelFormat::RGBA16F, PixelFormat::RGB32F}) {
        SCOPED_TRACE(pixelFormatName(f));
        const auto s = makePattern(f, 7, 5);
        decodeMutations<RawSurfaceCodec>(encode<RawSurfaceCodec>(s), 40);
        decodeMutations<DDSSurfaceCodec>(encode<DDSSurfaceCodec>(s), 148);
        decodeMutations<LYDSurfaceCodec>(encode<LYDSurfaceCodec>(s), 80);
    }
}
