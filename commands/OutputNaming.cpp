#include "commands/OutputNaming.h"

#include <QFileInfo>
#include <QUrl>

namespace ProgramCommand {

const QString OutputNaming::inputNamePattern = QStringLiteral("{inputName}");
const QString OutputNaming::bakerNamePattern = QStringLiteral("{bakerName}");
const QString OutputNaming::udimPattern = QStringLiteral("{udim}");
const QString OutputNaming::inputPathPattern = QStringLiteral("{inputPath}");
const QString OutputNaming::defaultName =
    QStringLiteral("%1_%2").arg(OutputNaming::inputNamePattern, OutputNaming::bakerNamePattern);
const QString OutputNaming::defaultPath = QStringLiteral("./");
const QString OutputNaming::defaultFormat = QStringLiteral("png");

const QRegularExpression& OutputNaming::inputNameExpression()
{
    static const QRegularExpression e(QStringLiteral("\\{input[nN]ame\\}|\\$\\(input[nN]ame\\)"));
    return e;
}

const QRegularExpression& OutputNaming::bakerNameExpression()
{
    static const QRegularExpression e(QStringLiteral("\\{baker[nN]ame\\}|\\$\\(baker[nN]ame\\)"));
    return e;
}

const QRegularExpression& OutputNaming::udimExpression()
{
    static const QRegularExpression e(QStringLiteral("\\{udim\\}|\\$\\(udim\\)"));
    return e;
}

const QRegularExpression& OutputNaming::meshExpression()
{
    static const QRegularExpression e(QStringLiteral("\\{mesh\\}|\\$\\(mesh\\)"));
    return e;
}

const QRegularExpression& OutputNaming::inputPathExpression()
{
    static const QRegularExpression e(QStringLiteral("\\{input[pP]ath\\}|\\$\\(input[pP]ath\\)"));
    return e;
}

std::optional<int> OutputNaming::udimOf(int u, int v)
{
    if (u > 9 || v < 0)
        return std::nullopt;
    const long long udim = 1001LL + u + 10LL * v;
    if (udim < 0 || udim > 0xFFFF)
        return std::nullopt;
    return int(udim);
}

QString OutputNaming::localPath(const QString& input)
{
    if (input.startsWith(QLatin1String("file:")))
        return QUrl(input).toLocalFile();
    return input;
}

QString OutputNaming::expandName(const QString& pattern, const QString& inputPath, const QString& bakerName,
                                 std::optional<int> udim)
{
    const QFileInfo input(localPath(inputPath));
    QString name = pattern;
    name.replace(inputNameExpression(), input.baseName());
    name.replace(bakerNameExpression(), bakerName);
    name.replace(udimExpression(), udim ? QString::number(*udim) : QString());
    name.replace(meshExpression(), input.completeBaseName());
    return name;
}

QString OutputNaming::expandPath(const QString& pattern, const QString& inputPath)
{
    QString path = pattern;
    path.replace(inputPathPattern, QFileInfo(localPath(inputPath)).absolutePath());
    return path;
}

} // namespace ProgramCommand
