#include "scene/processing/TangentSpaceGenerator.h"

#include "program/LogChannel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <atomic>
#include <mutex>

namespace Ond::SceneGraph::MeshProcessing {

namespace {

const char* const defaultPluginName = "mikktspace";
const char* const pluginSubPath = "/plugins/tangentspace";
const char* const fallbackPluginDirectory = "plugins/tangentspace";

std::mutex& defaultMutex()
{
    static std::mutex m;
    return m;
}

TangentSpaceGenerator::SPtr& defaultGenerator()
{
    static TangentSpaceGenerator::SPtr generator;
    return generator;
}

std::atomic<bool>& perFragmentBinormalFlag()
{
    static std::atomic<bool> flag{false};
    return flag;
}

QString sharedLibrarySuffix()
{
#if defined(Q_OS_WIN)
    return QStringLiteral("dll");
#elif defined(Q_OS_MACOS)
    return QStringLiteral("dylib");
#else
    return QStringLiteral("so");
#endif
}

} // namespace

TangentSpaceGenerator::TangentSpaceGenerator(const QString& pluginPath)
    : path(pluginPath), defaultBasis(isDefaultBasisFor(pluginPath))
{
    if (!path.isEmpty() && QFileInfo(path).isFile())
        library = std::make_unique<TangentSpacePlugin>(QFileInfo(path).absoluteFilePath());
}

QString TangentSpaceGenerator::getPluginName() const
{
    return QFileInfo(path).completeBaseName();
}

bool TangentSpaceGenerator::generate(const TangentSpaceContext* context) const
{
    return isValid() && library->generate(context, angularThreshold);
}

QString TangentSpaceGenerator::pluginDirectory()
{
    const QString start = QCoreApplication::instance() ? QCoreApplication::applicationDirPath()
                                                       : QDir::currentPath();
    return pluginDirectoryFrom(start);
}

QString TangentSpaceGenerator::pluginDirectoryFrom(const QString& startDirectory)
{
    QDir dir(startDirectory);
    bool found = false;
    while (true) {
        if (QFileInfo::exists(dir.filePath(QStringLiteral("plugins")))) {
            found = true;
            break;
        }
        if (dir.isRoot() || !dir.cdUp())
            break;
    }
    if (found) {
        const QString candidate = QDir::cleanPath(dir.absolutePath() + QLatin1String(pluginSubPath));
        if (QFileInfo(candidate).isDir())
            return candidate;
    }
    return QDir::cleanPath(QDir(QLatin1String(fallbackPluginDirectory)).absolutePath());
}

QString TangentSpaceGenerator::pluginFilePath(const QString& baseName)
{
    return QStringLiteral("%1/%2%3.%4").arg(pluginDirectory(), QString(), baseName, sharedLibrarySuffix());
}

bool TangentSpaceGenerator::isDefaultBasisFor(const QString& pluginPath)
{
    if (pluginPath.isEmpty())
        return true;
    const QString name = QFileInfo(pluginPath).completeBaseName().toLower();
    return !(name.contains(QLatin1String("unitytspace")) || name.contains(QLatin1String("mikktspace")));
}

TangentSpaceGenerator::SPtr TangentSpaceGenerator::selectPlugin(const QString& option)
{
    QString file = option.isEmpty() ? pluginFilePath(QLatin1String(defaultPluginName)) : option;
    // A bare name such as "unitytspace" is looked for in the plugin directory.
    if (!option.isEmpty() && !QFileInfo(file).isFile() && !option.contains(QLatin1Char('/'))
        && QFileInfo(option).suffix().isEmpty() && QFileInfo(pluginFilePath(option)).isFile())
        file = pluginFilePath(option);

    if (!QFileInfo(file).isFile()) {
        Core::zmfBakerChannel().error(QStringLiteral("Tangent space plugin not found: %1").arg(file));
        return nullptr;
    }
    auto generator = std::make_shared<TangentSpaceGenerator>(file);
    if (!generator->isValid()) {
        Core::zmfBakerChannel().error(QStringLiteral("Invalid tangent space plugin: %1").arg(file));
        return nullptr;
    }
    setDefault(generator);
    return generator;
}

TangentSpaceGenerator::SPtr TangentSpaceGenerator::getDefault()
{
    std::lock_guard<std::mutex> lock(defaultMutex());
    return defaultGenerator();
}

void TangentSpaceGenerator::setDefault(SPtr generator)
{
    std::lock_guard<std::mutex> lock(defaultMutex());
    defaultGenerator() = std::move(generator);
}

bool TangentSpaceGenerator::isPerFragmentBinormal()
{
    return perFragmentBinormalFlag().load();
}

void TangentSpaceGenerator::setPerFragmentBinormal(bool enabled)
{
    perFragmentBinormalFlag().store(enabled);
}

} // namespace Ond::SceneGraph::MeshProcessing
