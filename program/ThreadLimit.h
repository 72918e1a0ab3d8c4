#pragma once
// How many threads a run may use: the Embree device, Qt's global pool (ray
// strips, mesh processing, curvature) and the OBJ reader's workers all ask
// here. No limit means all cores.

#include <QByteArray>

namespace Ond::Core {

// The variable read when the command line sets no limit.
constexpr const char* ThreadLimitVariable = "OND_THREADS";

// 0 lifts the limit. Also caps Qt's global thread pool at once.
void setThreadLimit(unsigned limit);
// 0 when none is set.
unsigned threadLimit();
// The limit, or the number of cores when there is none; at least 1.
unsigned threadCount();

// A limit written as a decimal count; false for anything else.
bool parseThreadLimit(const QByteArray& text, unsigned& limit);

} // namespace Ond::Core
