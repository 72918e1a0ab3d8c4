// The document of UV tiles: which tile a bake writes to, regions, states,
// composition on the scheduler, and the document manager's signals.

#include "image/UDIMTiles.h"

#include "scene/SignalRecorder.h"

#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Vrn::Baking;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::Surface;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

struct Fixture
{
    Ond::Image::Core::CachedSurfaceMgrSPtr surfaces = std::make_shared<Ond::Image::Core::CachedSurfaceMgr>();
    Ond::Image::Core::SurfaceTaskSchedulerSPtr scheduler = std::make_shared<Ond::Image::Core::SurfaceTaskScheduler>();
    UDIMTilesDocumentMgrSPtr documents = std::make_shared<UDIMTilesDocumentMgr>();
    BakingUDIMTilesProvider provider{surfaces, scheduler, documents};
};

SurfaceSPtr filled(uint32_t w, uint32_t h, float value)
{
    SurfaceSPtr s(new Surface(SurfaceDesc(w, h, PixelFormat(17))));
    Ond::Surfaces::fill(*s, Eigen::Vector4f(value, value, value, 1.0f));
    return s;
}

// Runs the event loop until the tile's image changes; false after 5 s.
bool composeAndWait(Tile& tile)
{
    QEventLoop loop;
    bool changed = false;
    QObject::connect(&tile, &Tile::signalCachedSurfaceChanged, &loop, [&] {
        changed = true;
        loop.quit();
    });
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    tile.compose();
    if (!changed)
        loop.exec();
    return changed;
}

} // namespace

TEST(UDIMTiles, WhichTileABakeWritesTo)
{
    Fixture f;
    f.provider.beginTile(1, 0, 64, 64); // no document yet: nothing
    EXPECT_EQ(f.documents->count(), 0);

    f.provider.setDocument("bake");
    f.provider.setDocument("bake");
    ASSERT_EQ(f.documents->count(), 1);
    const UDIMTilesDocumentSPtr doc = f.provider.currentDocument();

    f.provider.beginTile(1, 0, 64, 64);
    const Tile::SPtr first = doc->tile(QPoint(1, 0));
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->hasState(Tile::Baking));
    EXPECT_TRUE(doc->root()->hasState(Tile::Baking)); // climbs to the root
    f.provider.beginTile(1, 0, 64, 64);
    EXPECT_EQ(doc->tile(QPoint(1, 0)), first);

    f.provider.beginTile(1, 0, 128, 64); // another size replaces the tile at once
    const Tile::SPtr second = doc->tile(QPoint(1, 0));
    EXPECT_NE(second, first);
    EXPECT_EQ(first->parentTile(), nullptr);

    f.provider.endTile();
    EXPECT_FALSE(second->hasState(Tile::Baking));
    EXPECT_TRUE(second->hasState(Tile::Finished));
    EXPECT_TRUE(doc->root()->hasState(Tile::Baking)); // clearing isn't passed on
    EXPECT_TRUE(f.provider.currentTile().isAbsent());
    f.provider.beginTile(1, 0, 128, 64); // finished: a new one
    EXPECT_NE(doc->tile(QPoint(1, 0)), second);
}

TEST(UDIMTiles, RegionsAndComposition)
{
    Fixture f;
    f.provider.setDocument("bake");
    f.provider.addRegion(filled(64, 64, 0.5f), 0, 0, false); // outside a tile: dropped
    f.provider.beginTile(0, 0, 128, 128);
    const Tile::SPtr tile = f.provider.currentDocument()->tile(QPoint(0, 0));
    ASSERT_TRUE(tile);
    EXPECT_EQ(tile->childCount(), 0);

    f.provider.addRegion(nullptr, 0, 0, false);
    f.provider.addRegion(filled(64, 64, 0.25f), 0, 0, false);
    f.provider.addRegion(filled(64, 64, 0.5f), 0, 0, false); // same cell: replaces
    f.provider.addRegion(filled(64, 64, 0.75f), 1, 1, true);
    ASSERT_EQ(tile->childCount(), 2);
    const Tile::SPtr region = tile->child(QPoint(0, 0));
    EXPECT_TRUE(region->hasState(Tile::Region));
    EXPECT_EQ(region->scale(), QSizeF(0.5, 0.5));
    EXPECT_EQ(tile->boundingRect(), QRect(0, 0, 128, 128));

    ASSERT_TRUE(composeAndWait(*tile));
    const TileImageSPtr image = tile->image();
    ASSERT_TRUE(image && image->surface);
    const auto access = image->surface->acquireRead();
    ASSERT_TRUE(access.surface);
    EXPECT_EQ(access.surface->width(), 128u);
    EXPECT_EQ(access.surface->height(), 128u);
    EXPECT_EQ(access.surface->readPixel(10, 10), Eigen::Vector4f(0.5f, 0.5f, 0.5f, 1.0f));
    EXPECT_EQ(access.surface->readPixel(100, 100), Eigen::Vector4f(0.75f, 0.75f, 0.75f, 1.0f));
    EXPECT_EQ(access.surface->readPixel(100, 10), Eigen::Vector4f(0.0f, 0.0f, 0.0f, 1.0f)); // no region there

    // A finished image replaces the regions; without children compose clears it.
    auto final = std::make_shared<TileImage>();
    final->kind = TileImage::Encoded;
    final->bytes = "png";
    f.provider.receive(final);
    EXPECT_EQ(tile->childCount(), 0);
    ASSERT_TRUE(tile->image());
    EXPECT_TRUE(tile->image()->isFinal);
    tile->compose();
    EXPECT_FALSE(tile->image());
}

TEST(UDIMTiles, TwoRegionsSideBySide)
{
    Fixture f;
    auto tile = std::make_shared<Tile>(QSize(128, 64), QPoint(0, 0), QSize(), f.surfaces, f.scheduler);
    for (int x = 0; x < 2; ++x) {
        auto region = std::make_shared<Tile>(QSize(64, 64), QPoint(x, 0), QSize(), f.surfaces, f.scheduler);
        region->setState(Tile::Region, true);
        auto image = std::make_shared<TileImage>();
        image->surface = f.surfaces->cache(filled(64, 64, 0.5f));
        region->setImage(image);
        tile->addChild(region);
    }
    ASSERT_TRUE(composeAndWait(*tile));
    ASSERT_TRUE(tile->image() && tile->image()->surface);
    EXPECT_EQ(tile->image()->surface->width(), 128u);
    EXPECT_EQ(tile->image()->surface->height(), 64u);
}

TEST(UDIMTiles, DocumentManager)
{
    Fixture f;
    SceneTest::SignalRecorder cleared(f.documents.get(), &UDIMTilesDocumentMgr::signalUDIMTilesDocumentCleared);
    SceneTest::SignalRecorder added(f.documents.get(), &UDIMTilesDocumentMgr::signalUDIMTilesDocumentAdded);
    SceneTest::SignalRecorder removed(f.documents.get(), &UDIMTilesDocumentMgr::signalUDIMTilesDocumentRemoved);
    SceneTest::SignalRecorder renamed(f.documents.get(),
                                      &UDIMTilesDocumentMgr::signalUDIMTilesDocumentLabelChanged);

    f.documents->clear();
    EXPECT_EQ(cleared.count(), 0);
    f.documents->add(nullptr);
    EXPECT_EQ(added.count(), 0);

    f.provider.setDocument("a");
    f.provider.setDocument("b");
    ASSERT_EQ(added.count(), 2);
    EXPECT_EQ(added.arg<0>(1), 1);
    EXPECT_EQ(f.documents->at(1)->label(), "b");
    EXPECT_EQ(f.documents->at(2), nullptr);

    EXPECT_FALSE(f.documents->rename("a", "a"));
    EXPECT_FALSE(f.documents->rename("a", ""));
    EXPECT_FALSE(f.documents->rename("zz", "c"));
    EXPECT_EQ(renamed.count(), 0);
    EXPECT_TRUE(f.documents->rename("a", "c"));
    ASSERT_EQ(renamed.count(), 1);
    EXPECT_EQ(renamed.arg<2>(0), "c");
    EXPECT_EQ(f.documents->find("a"), nullptr);

    EXPECT_FALSE(f.documents->removeAt(5));
    EXPECT_FALSE(f.documents->remove("a"));
    EXPECT_TRUE(f.documents->remove("b"));
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.arg<1>(0), "b");
    f.documents->clear();
    EXPECT_EQ(cleared.count(), 1);
    EXPECT_EQ(f.documents->count(), 0);
}
