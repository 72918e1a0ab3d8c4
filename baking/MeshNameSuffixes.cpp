#include "baking/MeshNameSuffixes.h"

#include <array>
#include <mutex>

namespace Ond::Baking {

namespace {

struct Table
{
    std::mutex mutex;
    std::array<QString, MeshNameSuffixes::Count> suffixes{
        QStringLiteral("_low"), QStringLiteral("_high"), QStringLiteral("_ignorebf")};
};

Table& table()
{
    static Table t;
    return t;
}

} // namespace

QString MeshNameSuffixes::get(int index)
{
    if (index < 0 || index >= Count)
        return QString();
    std::lock_guard<std::mutex> lock(table().mutex);
    return table().suffixes[size_t(index)];
}

void MeshNameSuffixes::set(int index, const QString& suffix)
{
    if (index != Low && index != High)
        return;
    std::lock_guard<std::mutex> lock(table().mutex);
    table().suffixes[size_t(index)] = suffix;
}

void MeshNameSuffixes::reset()
{
    set(Low, QStringLiteral("_low"));
    set(High, QStringLiteral("_high"));
}

} // namespace Ond::Baking
