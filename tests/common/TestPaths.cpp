#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace ZmfTest {

QString binaryPath() { return QStringLiteral(ZMF_BINARY_PATH); }
QString sourceDir() { return QStringLiteral(ZMF_SOURCE_DIR); }
QString buildDir() { return QStringLiteral(ZMF_BUILD_DIR); }
QString testDataDir() { return QDir::cleanPath(sourceDir() + QStringLiteral("/../shared/testdata")); }
QString examplesDir() { return sourceDir() + QStringLiteral("/examples"); }

QString makeTempDir()
{
    static std::vector<std::unique_ptr<QTemporaryDir>> dirs;
    dirs.push_back(std::make_unique<QTemporaryDir>());
    return dirs.back()->path();
}

QString writeFile(const QString& dir, const QString& name, const QByteArray& content)
{
    const QString path = QDir(dir).filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return QString();
    return path;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace ZmfTest
