#include "program/IndentingPrinter.h"

#include <QStringList>

namespace Ond::Program {

IndentingPrinter::IndentingPrinter(FILE* out)
    : m_out(out)
{
}

IndentingPrinter::IndentingPrinter(QString* buffer)
    : m_buffer(buffer)
{
}

void IndentingPrinter::unindent()
{
    if (m_indentation > 0)
        --m_indentation;
}

void IndentingPrinter::print(const QString& text)
{
    const QString prefix = indentationText().repeated(m_indentation);
    QString out;
    for (const QString& line : text.split(QLatin1Char('\n')))
        out += prefix + line + QLatin1Char('\n');
    if (m_buffer) {
        m_buffer->append(out);
    } else if (m_out) {
        const QByteArray bytes = out.toUtf8();
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_out);
        std::fflush(m_out);
    }
}

} // namespace Ond::Program
