#include "baking/detail/ErrorCode.h"

namespace Ond::Baking {

QString errorMessage(ErrorCode code)
{
    switch (code) {
    case ErrorCode::NoError:
        return QStringLiteral("No error");
    case ErrorCode::OutOfMemory:
        return QStringLiteral("Out of RAM. High poly mesh may be too large to be baked.");
    case ErrorCode::OutOfGpuMemory:
        return QStringLiteral(
            "High poly mesh didn't fit in GPU memory. To try again, disable the GPU raytracing option.");
    case ErrorCode::MissingInputData:
        return QStringLiteral("Missing input data. Check the logs for more information.");
    case ErrorCode::InternalError:
        return QStringLiteral("Internal error. Please send a bug report to the zmfbaker maintainers.");
    }
    return QStringLiteral("Unknown error");
}

} // namespace Ond::Baking
