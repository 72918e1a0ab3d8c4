#pragma once
// Sends Qt's own messages (qWarning and friends) through the log manager, so
// that they reach the console in the same format and under the same filter.

namespace Ond::Core {

// Idempotent. Debug and info messages log as information, warnings as
// warnings, critical and fatal messages as errors, on channel "Qt" or the
// message's category.
void installQtMessageRouting();
// Puts back the handler that was there before.
void removeQtMessageRouting();

} // namespace Ond::Core
