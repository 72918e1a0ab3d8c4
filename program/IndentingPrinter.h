#pragma once
// Writes lines with a running indentation: two blanks per level. Used for
// documents and reports printed to standard output.

#include <QString>

#include <cstdio>

namespace Ond::Program {

class IndentingPrinter
{
public:
    // Writes to `out` (standard output by default) as UTF-8.
    explicit IndentingPrinter(FILE* out = stdout);
    // Appends to `buffer` instead; for callers that want the text.
    explicit IndentingPrinter(QString* buffer);

    // Each line of `text` goes out on its own, indented, with a line end.
    void print(const QString& text);
    void indent() { ++m_indentation; }
    void unindent();

    int indentation() const { return m_indentation; }
    static QString indentationText() { return QStringLiteral("  "); }

private:
    FILE* m_out = nullptr;
    QString* m_buffer = nullptr;
    int m_indentation = 0;
};

} // namespace Ond::Program
