#include "program/ThreadLimit.h"

#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <thread>

namespace Ond::Core {

namespace {

std::atomic<unsigned> g_limit{0};

} // namespace

void setThreadLimit(unsigned limit)
{
    g_limit.store(limit);
    QThreadPool::globalInstance()->setMaxThreadCount(int(std::min(threadCount(), 1u << 16)));
}

unsigned threadLimit() { return g_limit.load(); }

unsigned threadCount()
{
    const unsigned limit = g_limit.load();
    return limit > 0 ? limit : std::max(1u, std::thread::hardware_concurrency());
}

bool parseThreadLimit(const QByteArray& text, unsigned& limit)
{
    bool ok = false;
    const QByteArray trimmed = text.trimmed();
    // toUInt would take a sign; a count has none.
    if (trimmed.isEmpty() || trimmed.front() == '+' || trimmed.front() == '-')
        return false;
    const unsigned value = trimmed.toUInt(&ok, 10);
    if (ok)
        limit = value;
    return ok;
}

} // namespace Ond::Core
