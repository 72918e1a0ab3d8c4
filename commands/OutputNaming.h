#pragma once
// Output file names: the patterns a user may put in --output-name and
// --output-path, and what replaces them.

#include <QRegularExpression>
#include <QString>

#include <optional>

namespace ProgramCommand {

struct OutputNaming
{
    // Plain texts as the help shows them.
    static const QString inputNamePattern;  // "{inputName}"
    static const QString bakerNamePattern;  // "{bakerName}"
    static const QString udimPattern;       // "{udim}"
    static const QString inputPathPattern;  // "{inputPath}"
    // "{inputName}_{bakerName}"
    static const QString defaultName;
    static const QString defaultPath;   // "./"
    static const QString defaultFormat; // "png"

    // Both spellings, "{inputName}" and "$(inputName)", either case of the
    // inner capital.
    static const QRegularExpression& inputNameExpression();
    static const QRegularExpression& bakerNameExpression();
    static const QRegularExpression& udimExpression();
    static const QRegularExpression& meshExpression();
    // Exists for symmetry; the path recognises only the plain text.
    static const QRegularExpression& inputPathExpression();

    // 1001 + u + 10 v; none right of the ten columns, below row 0, or
    // outside 16 bits.
    static std::optional<int> udimOf(int u, int v);

    // The name with every pattern replaced; `udim` empty leaves nothing.
    static QString expandName(const QString& pattern, const QString& inputPath, const QString& bakerName,
                              std::optional<int> udim);
    static QString expandPath(const QString& pattern, const QString& inputPath);

    // A file: URL as a local path, anything else as it is.
    static QString localPath(const QString& input);
};

} // namespace ProgramCommand
