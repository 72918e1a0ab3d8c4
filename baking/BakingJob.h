#pragma once
// A running job a context watches for cancellation. The context holds it
// weakly: a finished job simply drops out.

#include <atomic>

namespace Vrn::Baking {

struct BakingJob
{
    std::atomic<bool> cancelled{false};

    void cancel() { cancelled.store(true); }
    bool isCancelled() const { return cancelled.load(); }
};

} // namespace Vrn::Baking
