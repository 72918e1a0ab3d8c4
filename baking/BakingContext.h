#pragma once
// The baking context the commands hand to bakers: the GPU switches from the
// command line, the tangent layer and image loading. Scene loading through
// the scene manager arrives with the bake of inputs.

#include "baking/AbstractBakingContext.h"

#include <memory>

namespace Ond::SceneLoad {
class SceneMgr;
}

namespace Vrn::Baking {

class BakingContext : public Ond::Baking::AbstractBakingContext
{
public:
    explicit BakingContext(std::shared_ptr<Ond::SceneLoad::SceneMgr> sceneMgr);
    ~BakingContext() override;

    std::string tangentPluginName() const override;
    bool isCancelled() const override;
    bool perFragmentBinormal() const override;
    bool loadSurface(const QString& path, Ond::Surfaces::SurfaceSPtr& result) override;
    void tileOutput(const Ond::Surfaces::SurfaceSPtr& surface, int cellX, int cellY, bool isFinal) override;
    void progressBegin(const QString& name) override;
    void progressValue(double fraction) override;
    void progressEnd() override;
    void progressText(const QString& text = QString()) override;
    bool gpuAllowed() const override { return m_gpuAllowed; }
    bool forceDxr() const override { return m_forceDxr; }
    bool forceOptix() const override { return m_forceOptix; }

    void setGpuAllowed(bool allowed) { m_gpuAllowed = allowed; }
    void setForceOptix(bool force) { m_forceOptix = force; }
    void setForceDxr(bool force) { m_forceDxr = force; }

    const std::shared_ptr<Ond::SceneLoad::SceneMgr>& sceneMgr() const { return m_sceneMgr; }

private:
    std::shared_ptr<Ond::SceneLoad::SceneMgr> m_sceneMgr;
    bool m_gpuAllowed = true;
    bool m_forceDxr = false;
    bool m_forceOptix = false;
};

} // namespace Vrn::Baking
