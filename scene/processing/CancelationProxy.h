#pragma once
// Asked between the steps of mesh processing whether to go on.

#include "program/ProgressInterface.h"

#include <atomic>

namespace Ond::SceneGraph::MeshProcessing {

class CancelationProxy
{
public:
    virtual ~CancelationProxy() = default;
    virtual bool isCanceled() const = 0;
};

// Asks the progress sink of the operation; none never cancels.
class ProgressManagerCancelationProxy : public CancelationProxy
{
public:
    explicit ProgressManagerCancelationProxy(const Core::ProgressInterface* progress) : progress(progress) {}
    bool isCanceled() const override { return progress && progress->isCancelled(); }

private:
    const Core::ProgressInterface* progress;
};

// The scene path: the progress sink, or an explicit cancel() of the
// processing of one scene.
class SceneCancelationProxy : public CancelationProxy
{
public:
    explicit SceneCancelationProxy(const Core::ProgressInterface* progress = nullptr) : progress(progress) {}
    bool isCanceled() const override { return canceled.load() || progress.isCanceled(); }
    void cancel() { canceled.store(true); }

private:
    ProgressManagerCancelationProxy progress;
    std::atomic<bool> canceled{false};
};

} // namespace Ond::SceneGraph::MeshProcessing
