#pragma once
// --version: prints "version M.m.p (build B commit 0xC)" on standard output.

#include "program/OptionHandler.h"

namespace Ond::Program {

class VersionOptionHandler : public OptionHandler
{
public:
    VersionOptionHandler(unsigned major, unsigned minor, unsigned patch, unsigned buildNumber,
                         const QString& commit);

    void handle(const QString& commandName, const QString& key, const QVariant& value, bool& handled) override;
    QList<TypedCommandLineOption> options() const override;

    const QString& versionText() const { return m_versionText; }

private:
    QString m_versionText;
};

} // namespace Ond::Program
