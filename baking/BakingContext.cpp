#include "baking/BakingContext.h"

#include "image/FileTextureLoader.h"
#include "scene/processing/TangentSpaceGenerator.h"

namespace Vrn::Baking {

using Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator;

BakingContext::BakingContext(std::shared_ptr<Ond::SceneLoad::SceneMgr> sceneMgr)
    : m_sceneMgr(std::move(sceneMgr))
{
}

BakingContext::~BakingContext() = default;

std::string BakingContext::tangentPluginName() const
{
    const TangentSpaceGenerator::SPtr generator = TangentSpaceGenerator::getDefault();
    return generator ? generator->getPluginName().toStdString() : std::string();
}

bool BakingContext::isCancelled() const
{
    // The commands install no task handler and run no cancellable job yet.
    return false;
}

bool BakingContext::perFragmentBinormal() const
{
    return TangentSpaceGenerator::isPerFragmentBinormal();
}

bool BakingContext::loadSurface(const QString& path, Ond::Surfaces::SurfaceSPtr& result)
{
    result = Ond::Surfaces::FileTextureLoader::load(path);
    return !result.isNull();
}

// Tile output and progress go to handlers the commands don't install.
void BakingContext::tileOutput(const Ond::Surfaces::SurfaceSPtr&, int, int, bool) {}
void BakingContext::progressBegin(const QString&) {}
void BakingContext::progressValue(double) {}
void BakingContext::progressEnd() {}
void BakingContext::progressText(const QString&) {}

} // namespace Vrn::Baking
