#include "ImageTestSupport.h"

#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"
#include "image/SurfaceCodecManager.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace ImageTest {

using namespace Ond::Surfaces;

const std::vector<PixelFormat>& bakerFormats()
{
    static const std::vector<PixelFormat> formats{PixelFormat::L8,    PixelFormat::L16,    PixelFormat::L16F,
                                                  PixelFormat::L32F,  PixelFormat::RGBA8,  PixelFormat::RGBA16,
                                                  PixelFormat::RGBA16F, PixelFormat::RGBA32F};
    return formats;
}

SurfaceSPtr makePattern(PixelFormat format, uint32_t width, uint32_t height, bool transparent)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(width, height, format));
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const float fx = (x + 0.5f) / width, fy = (y + 0.5f) / height;
            const float r = fx;
            const float g = fy;
            const float b = std::fmod(0.37f * x + 0.61f * y + 0.13f, 1.0f);
            const float a = transparent ? 0.25f + 0.75f * std::fmod(0.29f * x + 0.17f * y, 1.0f) : 1.0f;
            s->writePixel(x, y, Eigen::Vector4f(r, g, b, a));
        }
    }
    return s;
}

float tolerance(ComponentType type, float v)
{
    switch (type) {
    case ComponentType::UInt8: return 0.5f / 255.0f + 1e-6f;
    case ComponentType::UInt16: return 0.5f / 65535.0f + 1e-7f;
    case ComponentType::Half: return std::max(std::fabs(v) * (1.0f / 2048.0f), 1.0f / (1 << 24));
    case ComponentType::Float: return 1e-7f;
    default: return 0.0f;
    }
}

QString compareSurfaces(const Surface& expected, const Surface& actual, bool compareAlpha, float extraTolerance)
{
    if (expected.width() != actual.width() || expected.height() != actual.height())
        return QStringLiteral("size %1x%2, expected %3x%4")
            .arg(actual.width()).arg(actual.height()).arg(expected.width()).arg(expected.height());
    const ComponentType te = componentType(expected.format());
    const ComponentType ta = componentType(actual.format());
    const int channels = compareAlpha ? 4 : 3;
    for (uint32_t y = 0; y < expected.height(); ++y) {
        for (uint32_t x = 0; x < expected.width(); ++x) {
            const Eigen::Vector4f e = expected.readPixel(x, y);
            const Eigen::Vector4f a = actual.readPixel(x, y);
            for (int c = 0; c < channels; ++c) {
                const float tol = std::max(tolerance(te, e[c]), tolerance(ta, e[c])) + extraTolerance;
                if (!(std::fabs(e[c] - a[c]) <= tol))
                    return QStringLiteral("pixel (%1, %2) channel %3: %4, expected %5 (format %6 read as %7)")
                        .arg(x).arg(y).arg(c).arg(double(a[c]), 0, 'g', 9).arg(double(e[c]), 0, 'g', 9)
                        .arg(QString::fromLatin1(pixelFormatName(expected.format())),
                             QString::fromLatin1(pixelFormatName(actual.format())));
            }
        }
    }
    return QString();
}

bool writeFile(const SurfaceSPtr& surface, const QString& path, const CodecOptions& options)
{
    registerDefaultCodecs();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const auto codec = SurfaceCodecManager::instance().findCodec(&file, QFileInfo(path).suffix().toUtf8(),
                                                                 CapabilityWrite);
    if (!codec)
        return false;
    codec->setOptions(options);
    return codec->write(surface);
}

SurfaceSPtr readFile(const QString& path)
{
    registerDefaultCodecs();
    return FileTextureLoader::load(path);
}

struct LogCapture::Delegate : Ond::Core::ILogDelegate
{
    mutable std::mutex mutex;
    QStringList lines;
    void log(int level, const QString& channel, const QString& message) override
    {
        std::lock_guard lock(mutex);
        lines << QStringLiteral("%1|%2|%3").arg(level).arg(channel, message);
    }
};

LogCapture::LogCapture()
    : m_delegate(std::make_shared<Delegate>())
{
    Ond::Core::LogManager::instance().addDelegate(m_delegate);
}

LogCapture::~LogCapture()
{
    Ond::Core::LogManager::instance().removeDelegate(m_delegate);
}

QStringList LogCapture::lines() const
{
    std::lock_guard lock(m_delegate->mutex);
    return m_delegate->lines;
}

} // namespace ImageTest
