#pragma once
// Receives the progress of a bake and may ask it to stop. The tool installs
// none; a host application does.

#include <QString>

namespace Vrn::Baking {

class TaskHandler
{
public:
    virtual ~TaskHandler() = default;

    virtual void begin(const QString& name) = 0;
    virtual void setValue(double fraction) = 0;
    virtual void end() = 0;
    virtual void setText(const QString& text) = 0;
    // May be called from worker threads.
    virtual bool isCancelled() const = 0;
};

} // namespace Vrn::Baking
