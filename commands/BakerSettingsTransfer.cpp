#include "commands/BakerSettingsTransfer.h"

#include "commands/PathNormalization.h"
#include "commands/UvTileList.h"

#include "baking/AbstractBaker.h"
#include "baking/PropertyCatalogue.h"
#include "program/LogChannel.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace ProgramCommand {

namespace {

using Ond::Core::zmfBakerChannel;

const QString kUvTile = QStringLiteral("uv-tile");
const QString kUdim = QStringLiteral("udim");
const QString kOutputSize = QStringLiteral("output-size");

// The UDIM number the settings ask for; below 1001 means no valid tile.
uint16_t requestedUdim(const BakerSettingsMap& settings)
{
    const bool hasTile = settings.has(kUvTile);
    if (hasTile && settings.has(kUdim))
        zmfBakerChannel().warning(QStringLiteral("Passed both --%1 and --%2, only --%1 will be used.").arg(kUvTile, kUdim));
    if (hasTile) {
        const QPoint tile = settings.getPoint(kUvTile, QPoint(0, 0));
        if (tile.x() >= 0 && tile.x() <= 9 && tile.y() >= 0)
            return static_cast<uint16_t>(1001 + tile.x() + 10 * tile.y()); // wraps like the tile numbers on disk
        return 0;
    }
    if (settings.has(kUdim)) {
        // Every covered tile: the caller loops over them, the first one stands for now.
        if (UvTileList::isAuto(settings.getString(kUdim, QString())))
            return 1001;
        bool ok = false;
        const uint16_t udim = settings.getString(kUdim, QString()).toUShort(&ok);
        return ok && udim >= 1001 ? udim : 0;
    }
    return 1001;
}

// Exponents below 5 make maps too small to dilate; they are raised.
QSize outputSizeExponents(const BakerSettingsMap& settings)
{
    QSize size = settings.getSize(kOutputSize, QSize(5, 5));
    if (size.width() < 5) {
        zmfBakerChannel().warning(
            QStringLiteral("Exponent width for --%1 is smaller than 5 and will be raised to 5.").arg(kOutputSize));
        size.setWidth(5);
    }
    if (size.height() < 5) {
        zmfBakerChannel().warning(
            QStringLiteral("Exponent height for --%1 is smaller than 5 and will be raised to 5.").arg(kOutputSize));
        size.setHeight(5);
    }
    return size;
}

// A real value must be a finite number that a float can hold, whatever the
// source of the settings: a plan hands its values over as text unchecked.
bool isConvertibleReal(const QVariant& value)
{
    bool ok = false;
    const double number = value.toString().toDouble(&ok);
    return ok && std::isfinite(number) && std::abs(number) <= double(std::numeric_limits<float>::max());
}

} // namespace

bool transferSettings(Ond::Baking::AbstractBaker& baker, const BakerSettingsMap& settings)
{
    using namespace Ond::Baking;
    PropertyBag& bag = baker.properties();
    const QString tileOption = QString::fromStdString(optionName("Common.UVTile"));

    for (const std::string& id : bag.identifiers()) {
        if (!bag.contains(id))
            continue;
        const QString name = QString::fromStdString(optionName(id));
        QVariant value;

        if (name == tileOption || name == kUdim) {
            const uint16_t udim = requestedUdim(settings);
            if (udim < 1001) {
                zmfBakerChannel().error(QStringLiteral("Wrong uv tile coordinates"));
                return false;
            }
            value = QPoint((udim - 1) % 10, (udim - 1001) / 10);
        } else if (id == "Detail.NormalCommon.InvertGreen" && settings.has(QStringLiteral("normal-invert"))) {
            // The older name wins over --normal-format; only a plan can give it here.
            value = settings.getString(QStringLiteral("normal-invert"), QString());
        } else if (!settings.has(name)) {
            continue;
        } else if (name == QLatin1String("highdef-mesh")) {
            value = settings.getStringList(name, QStringList());
        } else if (name == kOutputSize) {
            value = outputSizeExponents(settings);
        } else {
            value = settings.getString(name, QString());
        }

        if (!value.isValid())
            continue;
        if (bag[id].type() == PropertyType::Float && !isConvertibleReal(value)) {
            zmfBakerChannel().error(
                QStringLiteral("Option %1 expected a value of type %2, but received non-convertible \"%3\".")
                    .arg(name, QStringLiteral("double"), value.toString()));
            return false;
        }
        if (bag[id].type() == PropertyType::Path) {
            const QStringList paths = normalizePaths(QStringList{value.toString()});
            value = paths.isEmpty() ? QString() : paths.first();
        }
        setPropertyValue(bag, id, value);
    }
    return true;
}

} // namespace ProgramCommand
