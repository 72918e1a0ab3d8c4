#include "commands/BakerCommandOptions.h"

#include "baking/AbstractBaker.h"
#include "baking/PropertyCatalogue.h"
#include "baking/PropertyEnum.h"
#include "image/SurfaceCodecManager.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <QCoreApplication>

#include <set>
#include <stdexcept>

namespace ProgramCommand {

using Ond::Program::OptionGroup;
using Ond::Program::TypedCommandLineOption;

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("ProgramCommand::BakerCommand", text);
}

TypedCommandLineOption makeOption(const QString& name, int type, const QString& valueName, const QString& help,
                                  const QString& defaultText = QString())
{
    TypedCommandLineOption option(name, type, help, valueName);
    if (!defaultText.isEmpty())
        option.setDefaultValue(defaultText);
    return option;
}

TypedCommandLineOption makeBoolOption(const QString& name, const QString& help)
{
    return makeOption(name, QMetaType::Bool, QStringLiteral("bool"), help, QStringLiteral("false"));
}

const char* boolText(bool value)
{
    return value ? "true" : "false";
}

} // namespace

OptionGroup inputOutputOptionGroup()
{
    using Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator;
    OptionGroup group(tr("Input and output options"));

    group.addOption(makeOption(
        QStringLiteral("inputs"), QMetaType::QStringList, QStringLiteral("path"),
        tr("Mesh files to process.\nThis option is implicit, so you can just provide a list of files at the end of "
           "your arguments, they will be interpreted as inputs.")));
    group.addOption(makeOption(
        QStringLiteral("input-selection"), QMetaType::QStringList, QStringLiteral("arg"),
        tr("Select a submesh/subgroup of a mesh.\nMesh subpart selection can be specified using this syntax for "
           "<arg>: <nodeName>@<materialId> where the additional @<materialId> is optional. If no material id is "
           "specified, all the ids will be used for the process.\n<nodeName> can either be the name of a mesh part "
           "or of a transform group. In this case, all the mesh parts parented directly or inderectly to this node "
           "will be used for the process.")));

    const QString defaultName = QStringLiteral("{inputName}_{bakerName}");
    group.addOption(makeOption(
        QStringLiteral("output-name"), QMetaType::QString, QStringLiteral("name"),
        tr("Set the output name of the generated files, without the extension.\"The name is \"%1\" by default.\nYou "
           "can use the following patterns that will be replaced by the program when saving the result of the "
           "process:\n- %2. Replaced by the input name.\n- %3. Replaced by the baker name.\n- %4. Replaced by the "
           "UDIM id of the baked tile (MARI convention).")
            .arg(defaultName, QStringLiteral("{inputName}"), QStringLiteral("{bakerName}"), QStringLiteral("{udim}")),
        defaultName));
    group.addOption(makeOption(
        QStringLiteral("output-path"), QMetaType::QString, QStringLiteral("name"),
        tr("Set the output path for the generated files.\nBy default the output path is the current directory.You "
           "can use the following patterns that will be replaced by the program when saving the result of the "
           "process:\n- %1. Replaced by the path of the first processed zmf.\n")
            .arg(QStringLiteral("{inputPath}")),
        QStringLiteral("./")));

    auto& codecs = Ond::Surfaces::SurfaceCodecManager::instance();
    const QString defaultFormat = QStringLiteral("png");
    group.addOption(makeOption(QStringLiteral("output-format"), QMetaType::QString, QStringLiteral("format"),
                               tr("Format to use for output image file.\nDefault='%1'.\nFormats Supported: %2.")
                                   .arg(defaultFormat, codecs.formatsText()),
                               defaultFormat));
    if (codecs.supportsCompression("dds")) {
        const QString defaultCompression = QStringLiteral("raw");
        group.addOption(makeOption(
            QStringLiteral("output-format-compression"), QMetaType::QString, QStringLiteral("format"),
            tr("Dds compression to use for output image.\nDefault='%1'.\nCompressions Supported: %2.")
                .arg(defaultCompression, QStringLiteral("raw, dxt1, dxt2, dxt3, dxt4, dxt5, ati1, ati2")),
            defaultCompression));
    }

    group.addOption(makeOption(QStringLiteral("tangent-space-plugin"), QMetaType::QString, QStringLiteral("path"),
                               tr("Set the plugin file used to compute the meshes tangent space frames."),
                               TangentSpaceGenerator::pluginFilePath(QStringLiteral("mikktspace"))));
    group.addOption(makeBoolOption(
        QStringLiteral("recompute-tangents"),
        tr("Force to recompute tangents; do not load tangents from the mesh if available.")));
    group.addOption(makeBoolOption(QStringLiteral("nodxr"), tr("[Deprecated] Disable DirectX Raytracing.")));
    group.addOption(makeBoolOption(QStringLiteral("nooptix"), tr("[Deprecated] Disable Optix raytracing.")));
    group.addOption(makeBoolOption(QStringLiteral("disable-gpu"), tr("Disable GPU Raytracing.")));
    group.addOption(makeBoolOption(QStringLiteral("force-optix"), tr("Force Optix Raytracing.")));
    group.addOption(makeBoolOption(QStringLiteral("force-dxr"),
                                   tr("Force DXR Raytracing on video cards that support it partially.")));
    group.addOption(makeBoolOption(
        QStringLiteral("per-fragment-binormal"),
        tr("Controls whether the binormal of the tangent frame has to be computed in the fragment shader (true) or "
           "in the vertex shader (false).\n- Set by default to '%1' for unitytspace tangent space plugin.\n- Set by "
           "default to '%2' for mikktspace tangent space plugin.\n- Set by default to '%3' otherwise.\n")
            .arg(QLatin1String(boolText(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("unitytspace")))),
                 QLatin1String(boolText(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("mikktspace")))),
                 QLatin1String(boolText(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("other")))))));
    group.addOption(makeOption(QStringLiteral("name-suffix-low"), QMetaType::QString, QStringLiteral("name"),
                               tr("Low Poly name suffix."), QStringLiteral("_low")));
    group.addOption(makeOption(QStringLiteral("name-suffix-high"), QMetaType::QString, QStringLiteral("name"),
                               tr("High Poly name suffix."), QStringLiteral("_high")));
    return group;
}

namespace {

QString defaultText(const Ond::Baking::Property& property)
{
    using namespace Ond::Baking;
    const PropertyValue& v = property.defaultValue();
    switch (property.type()) {
    case PropertyType::Int:
    case PropertyType::Enum:
        return QString::number(std::get<int>(v));
    case PropertyType::Int2: {
        const auto& pair = std::get<ComparableInt2>(v);
        return QStringLiteral("%1,%2").arg(pair.x).arg(pair.y);
    }
    case PropertyType::Float:
        return QString::number(double(std::get<float>(v)));
    case PropertyType::Bool:
        return QLatin1String(boolText(std::get<bool>(v)));
    case PropertyType::Path:
        return QString::fromStdString(std::get<std::string>(v));
    case PropertyType::ColorInt4:
        break;
    }
    return QString();
}

QString helpText(const Ond::Baking::Property& property)
{
    const QString description = QString::fromStdString(property.description());
    const auto* choice = dynamic_cast<const Ond::Baking::PropertyEnum*>(&property);
    if (!choice)
        return description + QLatin1Char('\n');
    QString entries;
    int index = 0;
    for (const std::string& entry : choice->entries())
        entries += QStringLiteral("%1='%2', ").arg(index++).arg(QString::fromStdString(entry));
    entries.chop(2);
    return QStringLiteral("%1 %2\n").arg(description, QStringLiteral("\n(") + entries + QStringLiteral(")"));
}

TypedCommandLineOption propertyOption(const QString& name, const Ond::Baking::Property& property)
{
    using Ond::Baking::PropertyType;
    int type = QMetaType::UnknownType;
    QString valueName;
    switch (property.type()) {
    case PropertyType::Int:
    case PropertyType::Enum:
        type = QMetaType::Int;
        valueName = QStringLiteral("int");
        break;
    case PropertyType::Int2:
        type = QMetaType::QSize;
        valueName = QStringLiteral("w>,<h");
        break;
    case PropertyType::Float:
        type = QMetaType::Double;
        valueName = QStringLiteral("float");
        break;
    case PropertyType::Bool:
        type = QMetaType::Bool;
        valueName = QStringLiteral("bool");
        break;
    case PropertyType::Path:
        type = QMetaType::QString;
        valueName = QStringLiteral("string");
        break;
    case PropertyType::ColorInt4:
        throw std::runtime_error("Unsupported property type");
    }
    return makeOption(name, type, valueName, helpText(property), defaultText(property));
}

} // namespace

OptionGroup bakerOptionGroup(const Ond::Baking::AbstractBaker& baker, const QString& commandName)
{
    OptionGroup group(tr("%1 options").arg(commandName));

    if (QString::fromStdString(baker.identifier()).contains(QLatin1String("frommesh"))) {
        group.addOption(makeOption(QStringLiteral("cage-mesh"), QMetaType::QString, QStringLiteral("path"),
                                   QStringLiteral("%1.\n").arg(tr("Cage file."))));
        group.addOption(makeOption(QStringLiteral("highdef-mesh"), QMetaType::QStringList, QStringLiteral("path"),
                                   QStringLiteral("%1.\n").arg(tr("High definition meshes."))));
    }

    const Ond::Baking::PropertyBag& bag = baker.properties();
    const std::set<std::string> ids(bag.identifiers().begin(), bag.identifiers().end());
    for (const std::string& id : ids) {
        if (!bag.contains(id))
            continue;
        const QString name = QString::fromStdString(Ond::Baking::optionName(id));
        if (id == "Common.OutputSize") {
            group.addOption(makeOption(
                name, QMetaType::QSize, QStringLiteral("w>,<h"),
                tr("Output size of the generated map.<w> and <h> are the exponents of powers of 2 that give the actual "
                   "width and height.\nIn other words, you must provide the logarithm in base 2 of the actual width "
                   "and height.\nFor example '--output-size 10,11' means a 1024x2048 map.")));
        } else if (id == "Common.UVTile") {
            group.addOption(makeOption(name, QMetaType::QPoint, QStringLiteral("u>,<v"),
                                       tr("Coordinates of the uv tile to compute, given as two zero-based indices, "
                                          "e.g. \"1,2\".\n[default: \"0,0\"]")));
            group.addOption(makeOption(QStringLiteral("udim"), QMetaType::QString, QStringLiteral("udim"),
                                       tr("Coordinates of the uv tile to compute, given as a UDIM id (MARI "
                                          "convention) (e.g \"1022\").\n[default: \"1001\"]\n\"auto\" bakes every tile that the "
                                          "mesh's UVs cover, one file per tile; \"{udim}\" is added to the output "
                                          "name when it lacks it.")));
        } else {
            group.addOption(propertyOption(name, bag[id]));
        }
    }
    return group;
}

std::string imageFileFilter()
{
    QStringList patterns;
    for (const QString& extension : Ond::Surfaces::SurfaceCodecManager::instance().getExtensions())
        patterns.append(QStringLiteral("*.") + extension);
    return QStringLiteral("Images (%1)").arg(patterns.join(QLatin1Char(' '))).toStdString();
}

} // namespace ProgramCommand
