#include "image/CachedSurface.h"

namespace Ond::Image::Core {

CachedSurface::CachedSurface(SurfaceSPtr surface)
    : m_surface(std::move(surface))
{
}

CachedSurface::ReadAccess CachedSurface::acquireRead() const
{
    ReadAccess access{std::shared_lock<std::shared_mutex>(m_mutex), SurfaceSPtr()};
    access.surface = m_surface;
    return access;
}

void CachedSurface::replace(SurfaceSPtr surface)
{
    std::unique_lock lock(m_mutex);
    m_surface = std::move(surface);
}

uint32_t CachedSurface::width() const
{
    std::shared_lock lock(m_mutex);
    return m_surface ? m_surface->width() : 0;
}

uint32_t CachedSurface::height() const
{
    std::shared_lock lock(m_mutex);
    return m_surface ? m_surface->height() : 0;
}

Ond::Surfaces::PixelFormat CachedSurface::format() const
{
    std::shared_lock lock(m_mutex);
    return m_surface ? m_surface->format() : Ond::Surfaces::PixelFormat::Invalid;
}

CachedSurfaceSPtr CachedSurfaceMgr::cache(SurfaceSPtr surface)
{
    ++m_created;
    return std::make_shared<CachedSurface>(std::move(surface));
}

SurfaceTaskScheduler::SurfaceTaskScheduler(int threads)
{
    m_pool.setMaxThreadCount(std::max(1, threads));
}

SurfaceTaskScheduler::~SurfaceTaskScheduler()
{
    m_pool.waitForDone();
}

void SurfaceTaskScheduler::schedule(const SurfaceTaskSPtr& task)
{
    if (!task)
        return;
    m_pool.start([task] {
        if (!task->isCancelled())
            task->run();
    });
}

void SurfaceTaskScheduler::waitForDone()
{
    m_pool.waitForDone();
}

SurfaceJob::SurfaceJob(SurfaceTaskSchedulerSPtr scheduler)
    : m_scheduler(std::move(scheduler))
{
}

SurfaceJob::~SurfaceJob()
{
    cancel();
}

void SurfaceJob::queue(const SurfaceTaskSPtr& task)
{
    if (!task || !m_scheduler)
        return;
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(task);
    }
    m_scheduler->schedule(task);
}

void SurfaceJob::cancel()
{
    std::lock_guard lock(m_mutex);
    for (const auto& weak : m_tasks)
        if (const auto task = weak.lock())
            task->cancel();
    m_tasks.clear();
}

} // namespace Ond::Image::Core
