#pragma once
// Failure of a bake backend. Thrown as a plain value inside the backends and
// carried back to the baker in BakeResult, which turns it into a run-time
// error with the fixed message.

#include <QString>

#include <cstdint>

namespace Ond::Baking {

enum class ErrorCode : int32_t {
    NoError = 0,
    OutOfMemory = 1,
    OutOfGpuMemory = 2,
    MissingInputData = 3,
    InternalError = 4
};

QString errorMessage(ErrorCode code);

} // namespace Ond::Baking
