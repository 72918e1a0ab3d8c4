// Inputs the fuzzers once stopped on, replayed through the same readers:
// each must now be read or refused quickly, within ASan's view of memory.

#include "../fuzz/CodecSuffixes.h"

#include "common/TestPaths.h"
#include "image/DDSSurfaceCodec.h"
#include "image/DefaultCodecs.h"
#include "image/LYDSurfaceCodec.h"
#include "image/SurfaceCodecManager.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

using namespace Ond::Surfaces;

namespace {

// A kept input whose name ends in "-refused" must fail to read.
struct Regression
{
    QString name;
    QByteArray bytes;
    bool refused() const { return name.endsWith(QLatin1String("-refused")); }
};

QList<Regression> regressions(const char* target)
{
    QList<Regression> inputs;
    const QDir dir(ZmfTest::sourceDir() + QStringLiteral("/tests/fuzz/regressions/") + QLatin1String(target));
    for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) {
        QFile f(dir.filePath(name));
        if (f.open(QIODevice::ReadOnly))
            inputs << Regression{name, f.readAll()};
    }
    return inputs;
}

template <typename Codec> void replay(const char* target, const QByteArray& suffix)
{
    for (Regression input : regressions(target)) {
        SCOPED_TRACE(input.name.toStdString());
        QElapsedTimer clock;
        clock.start();
        QBuffer buffer(&input.bytes);
        SurfaceSPtr surface;
        const bool read = Codec(&buffer, suffix).read(surface);
        EXPECT_FALSE(read && input.refused());
        EXPECT_LT(clock.elapsed(), 10000);
    }
}

} // namespace

TEST(FuzzRegression, CodecManagerInputs)
{
    registerDefaultCodecs();
    const QList<Regression> inputs = regressions("codec");
    EXPECT_FALSE(inputs.isEmpty());
    for (const Regression& input : inputs) {
        SCOPED_TRACE(input.name.toStdString());
        QByteArray bytes = input.bytes.mid(1);
        QBuffer buffer(&bytes);
        const QByteArray suffix(Fuzz::codecSuffix(uint8_t(input.bytes.at(0))));
        const auto codec = SurfaceCodecManager::instance().findCodec(&buffer, suffix, CapabilityRead);
        if (!codec)
            continue;
        QElapsedTimer clock;
        clock.start();
        SurfaceSPtr surface;
        const bool read = codec->read(surface);
        EXPECT_FALSE(read && input.refused());
        if (read && surface && !surface->isEmpty()) {
            // Accepted: every row must be there.
            volatile uint8_t sink = 0;
            for (uint32_t y = 0; y < surface->height(); ++y)
                sink = sink + surface->row(y)[surface->rowBytes() - 1];
        }
        EXPECT_LT(clock.elapsed(), 10000);
    }
}

TEST(FuzzRegression, OwnCodecInputs)
{
    replay<Ond::Image::Plugins::DDSSurfaceCodec>("dds", "dds");
    replay<Ond::Image::Plugins::LYDSurfaceCodec>("lyd", "lyd");
}
