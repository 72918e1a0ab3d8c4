#pragma once
// A kernel bound to one bake: it owns the kernel's state (sample tables and
// the like) and starts the strips of one raster tile on the thread pool.
// Kernels are registered per job kind; the Embree backend picks one in init.

#include "baking/detail/RaytraceStrip.h"

#include <QFuture>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

#include <memory>
#include <vector>

namespace Ond::Baking {

class StripJobBase
{
public:
    virtual ~StripJobBase() = default;
    virtual bool reduces() const = 0;
    // The rows must outlive the returned futures.
    virtual QFuture<MinMaxPair> startReduced(const StripInput& input, const std::vector<unsigned>& rows) = 0;
    virtual QFuture<void> startPlain(const StripInput& input, const std::vector<unsigned>& rows) = 0;
};

template <typename Traits>
class StripJob final : public StripJobBase
{
public:
    StripJob(const DetailBakeJob& job, const EmbreeScene& scene) : m_traits(job, scene) {}

    bool reduces() const override { return Traits::reduces; }

    QFuture<MinMaxPair> startReduced(const StripInput& input, const std::vector<unsigned>& rows) override
    {
        return QtConcurrent::mappedReduced<MinMaxPair>(QThreadPool::globalInstance(), rows.cbegin(), rows.cend(),
                                                       RaytraceStrip<Traits>{&m_traits, input}, &MinMaxPair::reduce,
                                                       MinMaxPair(), QtConcurrent::UnorderedReduce);
    }

    QFuture<void> startPlain(const StripInput& input, const std::vector<unsigned>& rows) override
    {
        const RaytraceStrip<Traits> strip{&m_traits, input};
        return QtConcurrent::map(QThreadPool::globalInstance(), rows.cbegin(), rows.cend(),
                                 [strip](const unsigned& row) { strip(row); });
    }

private:
    Traits m_traits;
};

using StripJobFactory = std::unique_ptr<StripJobBase> (*)(const DetailBakeJob&, const EmbreeScene&);

template <typename Traits>
std::unique_ptr<StripJobBase> makeStripJob(const DetailBakeJob& job, const EmbreeScene& scene)
{
    return std::make_unique<StripJob<Traits>>(job, scene);
}

// The kernel table of the Embree backend, by job kind. A kind without a
// kernel fails its bake with an internal error.
void registerStripKernel(BakeJobKind kind, StripJobFactory factory);
StripJobFactory stripKernel(BakeJobKind kind);

} // namespace Ond::Baking
