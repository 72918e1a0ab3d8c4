#include "program/VersionOptionHandler.h"

#include <cstdio>

namespace Ond::Program {

VersionOptionHandler::VersionOptionHandler(unsigned major, unsigned minor, unsigned patch,
                                           unsigned buildNumber, const QString& commit)
    : m_versionText(QStringLiteral("version %1.%2.%3 (build %4 commit 0x%5)")
                        .arg(major)
                        .arg(minor)
                        .arg(patch)
                        .arg(buildNumber)
                        .arg(commit))
{
}

void VersionOptionHandler::handle(const QString&, const QString&, const QVariant& value, bool& handled)
{
    if (!value.toBool())
        return;
    const QByteArray bytes = QStringLiteral("%1\n").arg(m_versionText).toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
    handled = true;
}

QList<TypedCommandLineOption> VersionOptionHandler::options() const
{
    return {TypedCommandLineOption(QStringList{QStringLiteral("version"), QStringLiteral("V")},
                                   QStringLiteral("Display version of the program."))};
}

} // namespace Ond::Program
