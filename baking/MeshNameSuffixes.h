#pragma once
// The process-wide table of mesh name suffixes that pairs low and high parts
// by name: 0 the low suffix, 1 the high suffix (both set by each bake), 2 the
// fixed "_ignorebf" marker of parts whose back faces are culled.

#include <QString>

namespace Ond::Baking {

class MeshNameSuffixes
{
public:
    enum Index { Low = 0, High = 1, IgnoreBackface = 2, Count = 3 };

    static QString get(int index);
    // Entry 2 is fixed: setting it is ignored.
    static void set(int index, const QString& suffix);
    static void reset();
};

} // namespace Ond::Baking
