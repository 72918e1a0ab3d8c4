#include "commands/SaveBaker.h"

#include "commands/AtomicFileWriter.h"
#include "commands/ConsoleStages.h"
#include "commands/MemoryBudget.h"
#include "commands/OutputNaming.h"

#include "baking/AbstractMapBaker.h"
#include "baking/BakingContext.h"
#include "baking/GLMapBakerManager.h"
#include "baking/MeshNameSuffixes.h"
#include "baking/detail/DetailMapBaker.h"
#include "baking/lowpoly/ColorMapBaker.h"
#include "baking/lowpoly/LowPolyMapBaker.h"
#include "image/SurfaceCodecManager.h"
#include "program/LogChannel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace ProgramCommand {

using Ond::Core::zmfBakerChannel;

namespace {

// The cage is only its positions.
constexpr uint32_t CageLoadFlags = 16;

const QString SvgFormat = QStringLiteral("svg");

// The text goes to a temporary file renamed over the target once complete:
// a reader never sees half a document, and a failure leaves no file. A
// bake that drew nothing has no document to write.
bool writeSvg(const QString& filePath, const QByteArray& svg)
{
    if (svg.isEmpty())
        return false;
    return writeFileAtomically(
        filePath, [&svg](QFile& file) { return file.write(svg) == svg.size(); }, QIODevice::Text);
}

} // namespace

bool isKnownOutputFormat(const QString& format)
{
    const auto formats = Ond::Surfaces::SurfaceCodecManager::instance().getFormats(Ond::Surfaces::CapabilityWrite);
    for (const Ond::Surfaces::SurfaceFormat& f : formats)
        if (f.extension.compare(format, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

bool writeSurface(const QString& filePath, const Ond::Surfaces::SurfaceSPtr& surface, const QString& compression)
{
    if (!surface)
        return false;
    return writeFileAtomically(filePath, [&](QFile& file) {
        const auto codec = Ond::Surfaces::SurfaceCodecManager::instance().findCodec(
            &file, QFileInfo(filePath).suffix().toUtf8(), Ond::Surfaces::CapabilityWrite);
        if (!codec)
            return false;
        Ond::Surfaces::CodecOptions options;
        options.insert(QStringLiteral("compression"), compression);
        options.insert(QStringLiteral("png_compression"), QStringLiteral("best_speed"));
        codec->setOptions(options);
        return codec->write(surface);
    });
}

QString saveBaker(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context,
                  const Ond::SceneGraph::SceneSPtr& low, const Ond::SceneGraph::SceneSPtr& high,
                  const QString& cagePath)
{
    const QString outputPath = settings.getString(QStringLiteral("output-path"), OutputNaming::defaultPath);
    const QString outputName = settings.getString(QStringLiteral("output-name"), OutputNaming::defaultName);
    const QString format = settings.getString(QStringLiteral("output-format"), OutputNaming::defaultFormat);

    const bool isSvg = format == SvgFormat;
    if (!isKnownOutputFormat(format) && !isSvg) {
        zmfBakerChannel().error(QStringLiteral("unknown output format \"%1\"").arg(format));
        return QString();
    }

    using Ond::Baking::MeshNameSuffixes;
    MeshNameSuffixes::set(MeshNameSuffixes::Low, settings.getString(QStringLiteral("name-suffix-low"),
                                                                    QStringLiteral("_low")));
    MeshNameSuffixes::set(MeshNameSuffixes::High, settings.getString(QStringLiteral("name-suffix-high"),
                                                                     QStringLiteral("_high")));

    // Refused before any surface exists, rather than ended by the kernel.
    if (baker.properties().contains("Common.OutputSize")) {
        const auto exponents = baker.properties()["Common.OutputSize"].valueAs<Ond::Baking::ComparableInt2>();
        // The bakers take the exponents modulo 32.
        const QString memoryError = checkBakeMemory(int(unsigned(exponents.x) % 32u), int(unsigned(exponents.y) % 32u),
                                                    availableMemory());
        if (!memoryError.isEmpty()) {
            zmfBakerChannel().error(memoryError);
            return QString();
        }
    }

    Ond::Baking::GLMapBakerManager& manager = Ond::Baking::GLMapBakerManager::instance();
    bool applied = false;
    if (auto* detail = dynamic_cast<Ond::Baking::DetailMapBaker*>(&baker)) {
        Ond::SceneGraph::SceneSPtr cage;
        const Ond::Baking::PropertyBag& bag = baker.properties();
        if (bag.contains("Detail.UseCage") && bag["Detail.UseCage"].valueAs<bool>()) {
            const LoadStage stage(cagePath);
            cage = context.loadSceneFile(cagePath, CageLoadFlags, stage.progress());
            if (!cage) {
                zmfBakerChannel().error(QStringLiteral("Error: Cage scene \"%1\" couldn't be loaded.").arg(cagePath));
                return QString();
            }
        }
        applied = manager.apply(context, *detail, low, high, cage);
    } else if (auto* lowPoly = dynamic_cast<Ond::Baking::LowPolyMapBaker*>(&baker)) {
        applied = manager.apply(context, *lowPoly, low);
    }
    if (!applied)
        return QString();

    const Ond::Baking::ComparableInt2 tile = baker.properties()["Common.UVTile"].valueAs<Ond::Baking::ComparableInt2>();
    const QString name =
        OutputNaming::expandName(outputName, inputPath, bakerName, OutputNaming::udimOf(tile.x, tile.y));
    const QString path = OutputNaming::expandPath(outputPath, inputPath);
    const QString filePath = QDir(path).absoluteFilePath(QStringLiteral("%1.%2").arg(name, format));
    const QString compression = settings.getString(QStringLiteral("output-format-compression"), QString());

    bool written = false;
    if (!isSvg) {
        const Ond::Core::ConsoleProgressScope stage(QStringLiteral("Writing %1").arg(QFileInfo(filePath).fileName()));
        written = writeSurface(filePath, baker.result(), compression);
    } else if (auto* colorMap = dynamic_cast<Ond::Baking::ColorMapBaker*>(&baker)) {
        written = writeSvg(filePath, colorMap->svgData());
    } else {
        zmfBakerChannel().error(QStringLiteral("Cannot save file \"%1\" in format \"%2\" with baker \"%3\".")
                                    .arg(filePath, SvgFormat, baker.label()));
        return QString();
    }
    if (!written) {
        zmfBakerChannel().error(QStringLiteral("Writing file \"%1\" failed.").arg(filePath));
        return QString();
    }
    return filePath;
}

} // namespace ProgramCommand
