#pragma once
// One image format a codec factory reads or writes.

#include <QString>

namespace Ond::Surfaces {

struct SurfaceFormat
{
    QString label;     // "Raw surface", "PNG", ...
    QString extension; // suffix without dot: "surface", "png", ...
    QString mimeType;  // kept for completeness; nothing reads it

    bool operator==(const SurfaceFormat& o) const
    {
        return label == o.label && extension == o.extension && mimeType == o.mimeType;
    }
};

using SurfaceFormatList = QList<SurfaceFormat>;

} // namespace Ond::Surfaces
