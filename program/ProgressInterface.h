#pragma once
// What importers and long operations report progress to. The commands install
// no handler, so the default does nothing and never cancels.

#include <QString>

namespace Ond::Core {

class ProgressInterface
{
public:
    virtual ~ProgressInterface() = default;
    virtual void setText(const QString& text) { (void)text; }
    virtual void setValue(double fraction) { (void)fraction; }
    virtual bool isCancelled() const { return false; }
};

} // namespace Ond::Core
