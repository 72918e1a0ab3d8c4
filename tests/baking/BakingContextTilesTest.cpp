// The baking context as the bakers' way into the document of UV tiles: the
// regions they report land in the tile the context has begun.

#include "baking/BakingContext.h"
#include "image/UDIMTiles.h"

#include <gtest/gtest.h>

TEST(BakingContextTiles, RegionsGoToTheBegunTile)
{
    using namespace Vrn::Baking;
    BakingContext context(nullptr);
    const auto surface = Ond::Surfaces::SurfaceSPtr(
        new Ond::Surfaces::Surface(Ond::Surfaces::SurfaceDesc(32, 32, Ond::Surfaces::PixelFormat(5))));
    Ond::Surfaces::fill(*surface, Eigen::Vector4f(1.0f, 0.0f, 0.0f, 1.0f));

    // Without a provider the calls cost nothing and go nowhere.
    context.beginTile(0, 0, 64, 64);
    context.tileOutput(surface, 0, 0, false);
    context.endTile();

    auto documents = std::make_shared<UDIMTilesDocumentMgr>();
    auto provider = std::make_shared<BakingUDIMTilesProvider>(
        std::make_shared<Ond::Image::Core::CachedSurfaceMgr>(),
        std::make_shared<Ond::Image::Core::SurfaceTaskScheduler>(), documents);
    provider->setDocument(QStringLiteral("position"));
    context.setTilesProvider(provider);

    context.beginTile(1, 2, 64, 64);
    context.tileOutput(surface, 1, 0, false);
    context.tileOutput(surface, 0, 1, true);
    const Tile::SPtr tile = documents->find(QStringLiteral("position"))->tile(QPoint(1, 2));
    ASSERT_TRUE(tile);
    EXPECT_TRUE(tile->hasState(Tile::Baking));
    EXPECT_EQ(tile->childCount(), 2);
    EXPECT_EQ(tile->boundingRect(), QRect(0, 0, 64, 64));
    context.endTile();
    EXPECT_TRUE(tile->hasState(Tile::Finished));

    // The region is a copy: later writes to the baker's surface don't reach it.
    Ond::Surfaces::fill(*surface, Eigen::Vector4f(0.0f, 1.0f, 0.0f, 1.0f));
    const auto access = tile->child(QPoint(1, 0))->image()->surface->acquireRead();
    EXPECT_EQ(access.surface->readPixel(0, 0), Eigen::Vector4f(1.0f, 0.0f, 0.0f, 1.0f));

    context.setTilesProvider(nullptr);
    context.beginTile(3, 0, 64, 64);
    EXPECT_FALSE(documents->find(QStringLiteral("position"))->tile(QPoint(3, 0)));
}
