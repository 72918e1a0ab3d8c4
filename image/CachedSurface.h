#pragma once
// Surfaces shared between a producer and the background work that reads
// them, and the scheduler that runs that work.

#include "image/Surface.h"

#include <QThreadPool>

#include <atomic>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

namespace Ond::Image::Core {

using Ond::Surfaces::SurfaceSPtr;

// A surface whose pixels readers take under a shared lock; replace() waits
// for them.
class CachedSurface
{
public:
    explicit CachedSurface(SurfaceSPtr surface);

    // The surface, held for reading until the returned lock goes.
    struct ReadAccess
    {
        std::shared_lock<std::shared_mutex> lock;
        SurfaceSPtr surface;
    };
    ReadAccess acquireRead() const;
    void replace(SurfaceSPtr surface);

    uint32_t width() const;
    uint32_t height() const;
    Ond::Surfaces::PixelFormat format() const;

private:
    mutable std::shared_mutex m_mutex;
    SurfaceSPtr m_surface;
};

using CachedSurfaceSPtr = std::shared_ptr<CachedSurface>;

// Where cached surfaces come from; counts what it made.
class CachedSurfaceMgr
{
public:
    CachedSurfaceSPtr cache(SurfaceSPtr surface);
    size_t createdCount() const { return m_created; }

private:
    std::atomic<size_t> m_created{0};
};

using CachedSurfaceMgrSPtr = std::shared_ptr<CachedSurfaceMgr>;

// One piece of background surface work; a cancelled task doesn't run.
class SurfaceTask
{
public:
    virtual ~SurfaceTask() = default;
    virtual void run() = 0;
    void cancel() { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled; }

private:
    std::atomic<bool> m_cancelled{false};
};

using SurfaceTaskSPtr = std::shared_ptr<SurfaceTask>;

// Runs tasks on a pool of its own, so that surface work never waits behind
// the bake's strips.
class SurfaceTaskScheduler
{
public:
    explicit SurfaceTaskScheduler(int threads = 1);
    ~SurfaceTaskScheduler();
    void schedule(const SurfaceTaskSPtr& task);
    // Blocks until every scheduled task has run or been skipped.
    void waitForDone();

private:
    QThreadPool m_pool;
};

using SurfaceTaskSchedulerSPtr = std::shared_ptr<SurfaceTaskScheduler>;

// The tasks of one job: queued on the scheduler, cancelled with the job.
class SurfaceJob
{
public:
    explicit SurfaceJob(SurfaceTaskSchedulerSPtr scheduler);
    virtual ~SurfaceJob();
    void queue(const SurfaceTaskSPtr& task);
    void cancel();

private:
    SurfaceTaskSchedulerSPtr m_scheduler;
    std::mutex m_mutex;
    std::vector<std::weak_ptr<SurfaceTask>> m_tasks;
};

} // namespace Ond::Image::Core
