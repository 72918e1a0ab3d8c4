#include "commands/MemoryBudget.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sys/resource.h>

namespace ProgramCommand {

namespace {

// Measured peak per texel: about 60 bytes for the low-poly and 66 for the
// detail bakers; rounded up for the codecs' own copies.
constexpr double BytesPerTexel = 80.0;
// What the process holds before the map: GL, Embree, the meshes' share.
constexpr double BaseBytes = 256.0 * 1024 * 1024;

constexpr uint64_t Unlimited = std::numeric_limits<uint64_t>::max();

uint64_t meminfoField(const QByteArray& meminfo, const char* name)
{
    const QRegularExpression field(QStringLiteral("^%1:\\s+(\\d+) kB").arg(QLatin1String(name)),
                                   QRegularExpression::MultilineOption);
    const auto match = field.match(QString::fromLatin1(meminfo));
    return match.hasMatch() ? match.captured(1).toULongLong() * 1024 : 0;
}

QByteArray readSmallFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(1 << 16) : QByteArray();
}

uint64_t numberIn(const QByteArray& text)
{
    bool ok = false;
    const uint64_t value = text.trimmed().toULongLong(&ok);
    return ok ? value : Unlimited;
}

// What the memory control group still allows, v2 or v1.
uint64_t cgroupRoom()
{
    const QList<QByteArray> lines = readSmallFile(QStringLiteral("/proc/self/cgroup")).split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> parts = line.split(':');
        if (parts.size() < 3)
            continue;
        const QString group = QString::fromLocal8Bit(parts.at(2));
        QString limitPath;
        QString usagePath;
        if (parts.at(0) == "0" && parts.at(1).isEmpty()) {
            limitPath = QStringLiteral("/sys/fs/cgroup%1/memory.max").arg(group);
            usagePath = QStringLiteral("/sys/fs/cgroup%1/memory.current").arg(group);
        } else if (parts.at(1).split(',').contains("memory")) {
            limitPath = QStringLiteral("/sys/fs/cgroup/memory%1/memory.limit_in_bytes").arg(group);
            usagePath = QStringLiteral("/sys/fs/cgroup/memory%1/memory.usage_in_bytes").arg(group);
        } else {
            continue;
        }
        const uint64_t limit = numberIn(readSmallFile(limitPath));
        if (limit == Unlimited || limit >= (uint64_t(1) << 62))
            continue;
        const uint64_t usage = numberIn(readSmallFile(usagePath));
        return usage == Unlimited || usage >= limit ? 0 : limit - usage;
    }
    return Unlimited;
}

uint64_t rlimitRoom(int resource, uint64_t inUse)
{
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return Unlimited;
    return uint64_t(limit.rlim_cur) > inUse ? uint64_t(limit.rlim_cur) - inUse : 0;
}

QString sizeText(int exponent)
{
    return exponent < 63 ? QString::number(uint64_t(1) << exponent) : QStringLiteral("2^%1").arg(exponent);
}

} // namespace

double bakeMemoryEstimate(int widthExponent, int heightExponent)
{
    const double texels = std::ldexp(1.0, std::clamp(widthExponent, 0, 200) + std::clamp(heightExponent, 0, 200));
    return BaseBytes + texels * BytesPerTexel;
}

uint64_t availableMemory()
{
    const QByteArray meminfo = readSmallFile(QStringLiteral("/proc/meminfo"));
    uint64_t room = meminfoField(meminfo, "MemAvailable") + meminfoField(meminfo, "SwapFree");
    if (room == 0)
        room = Unlimited;

    const QByteArray status = readSmallFile(QStringLiteral("/proc/self/status"));
    room = std::min(room, rlimitRoom(RLIMIT_AS, meminfoField(status, "VmSize")));
    room = std::min(room, rlimitRoom(RLIMIT_DATA, meminfoField(status, "VmData")));
    room = std::min(room, cgroupRoom());
    return room == Unlimited ? 0 : room;
}

QString checkBakeMemory(int widthExponent, int heightExponent, uint64_t available)
{
    const double needed = bakeMemoryEstimate(widthExponent, heightExponent);
    // Nothing readable about the machine: only the absurd is refused.
    const double room = available ? double(available) : std::ldexp(1.0, 62);
    if (needed <= room)
        return QString();
    constexpr double MiB = 1024.0 * 1024.0;
    return QStringLiteral("Error: Not enough memory to bake a %1x%2 map: it needs about %3 MiB, %4 MiB are available.")
        .arg(sizeText(widthExponent), sizeText(heightExponent), QString::number(needed / MiB, needed < 1e15 ? 'f' : 'g', needed < 1e15 ? 0 : 3),
             QString::number(room / MiB, 'f', 0));
}

} // namespace ProgramCommand
