#pragma once
// A document of UV tiles into which a bake reports the regions it has
// finished, and the background composition of those regions into one image
// per tile, for a viewer of the bake in progress. The command line writes
// its tiles itself and needs none of this.
//
// Locks: a document's mutex first, then its root tile's; a tile never holds
// its own lock while it takes its parent's. Signals go out after the lock
// is left.

#include "image/CachedSurface.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace Vrn::Baking {

using Ond::Image::Core::CachedSurfaceMgrSPtr;
using Ond::Image::Core::CachedSurfaceSPtr;
using Ond::Image::Core::SurfaceTaskSchedulerSPtr;

struct TileImage
{
    enum Kind : int32_t { Cached = 0, Encoded = 1 };
    int32_t kind = Cached;
    CachedSurfaceSPtr surface;
    QByteArray bytes;
    bool isFinal = false;
};

using TileImageSPtr = std::shared_ptr<TileImage>;

class TiledSurface;

class Tile : public QObject
{
    Q_OBJECT
public:
    using SPtr = std::shared_ptr<Tile>;
    using WPtr = std::weak_ptr<Tile>;
    enum State : int32_t { Baking = 1, Region = 2, Finished = 4 };

    Tile(const QSize& size, const QPoint& position, const QSize& thirdSize, CachedSurfaceMgrSPtr surfaceMgr,
         SurfaceTaskSchedulerSPtr scheduler);
    ~Tile() override;

    QSize size() const;
    QPoint position() const;
    QSize thirdSize() const;
    Tile* parentTile() const;

    // True when every bit of `mask` is set.
    bool hasState(int32_t mask) const;
    // Setting Baking alone climbs to every ancestor; clearing stays here.
    void setState(int32_t mask, bool enabled);

    TileImageSPtr image() const;
    void setImage(const TileImageSPtr& image);

    // Replaces the child at the tile's position, if any.
    void addChild(const SPtr& tile);
    void removeChild(const SPtr& tile);
    SPtr child(const QPoint& position) const;
    int childCount() const;
    // The children, in the map's order.
    QList<SPtr> children() const;
    void clearChildren();

    // Size over the parent's size; (1, 1) unless both are valid.
    QSizeF scale() const;
    // A region's own rectangle, or the union of the children's placed by
    // their cells.
    QRect boundingRect() const;
    // Starts the composition of the children into this tile's image; a tile
    // without children loses its image.
    void compose();

signals:
    void signalCachedSurfaceChanged();
    void signalChildAdded(Vrn::Baking::Tile::WPtr tile);
    void signalChildRemoved(Vrn::Baking::Tile::WPtr tile);
    void signalStateChanged(Vrn::Baking::Tile::State state, bool isEnabled);

public slots:
    void onSurfaceReady(qulonglong userData);

private:
    static quint64 keyOf(const QPoint& position);
    // Sets or clears without passing anything on; true if it changed.
    bool changeState(int32_t mask, bool enabled);

    mutable std::recursive_mutex m_mutex;
    QSize m_size;
    QPoint m_position;
    QSize m_thirdSize;
    TileImageSPtr m_image;
    std::unordered_map<quint64, SPtr> m_children;
    Tile* m_parent = nullptr;
    int32_t m_state = 0;
    std::unique_ptr<TiledSurface> m_job;
    CachedSurfaceMgrSPtr m_surfaceMgr;
    SurfaceTaskSchedulerSPtr m_scheduler;
};

// Draws the entries into one surface on a scheduler thread.
class TiledSurfaceTask : public QObject, public Ond::Image::Core::SurfaceTask
{
    Q_OBJECT
public:
    struct Entry
    {
        TileImageSPtr image;
        int32_t cellX = 0;
        int32_t cellY = 0;
    };

    TiledSurfaceTask(uint32_t width, uint32_t height, Ond::Surfaces::PixelFormat format, std::vector<Entry> entries,
                     quint64 userData);
    void run() override;

signals:
    void finished(Ond::Surfaces::SurfaceSPtr surface, qulonglong userData);

private:
    uint32_t m_width;
    uint32_t m_height;
    Ond::Surfaces::PixelFormat m_format;
    std::vector<Entry> m_entries;
    quint64 m_userData;
};

// The composition of one tile's children.
class TiledSurface : public QObject, public Ond::Image::Core::SurfaceJob
{
    Q_OBJECT
public:
    TiledSurface(CachedSurfaceMgrSPtr surfaceMgr, SurfaceTaskSchedulerSPtr scheduler);
    void start(const Tile& tile, quint64 userData);
    CachedSurfaceSPtr result() const { return m_result; }

signals:
    void signalSurfaceReady(qulonglong userData);

public slots:
    void onTaskFinished(Ond::Surfaces::SurfaceSPtr surface, qulonglong userData);

private:
    CachedSurfaceMgrSPtr m_surfaceMgr;
    CachedSurfaceSPtr m_result;
};

class UDIMTilesDocument : public QObject
{
    Q_OBJECT
public:
    UDIMTilesDocument(CachedSurfaceMgrSPtr surfaceMgr, SurfaceTaskSchedulerSPtr scheduler);

    Tile::SPtr root() const { return m_root; }
    Tile::SPtr tile(const QPoint& position) const;
    void addTile(const Tile::SPtr& tile);
    void clear();
    QString label() const;
    // False for an empty label or the present one.
    bool setLabel(const QString& label);

    const CachedSurfaceMgrSPtr& surfaceMgr() const { return m_surfaceMgr; }
    const SurfaceTaskSchedulerSPtr& scheduler() const { return m_scheduler; }

signals:
    void signalChildAdded(Vrn::Baking::Tile::WPtr tile);

private:
    mutable std::mutex m_mutex;
    Tile::SPtr m_root;
    QString m_label;
    CachedSurfaceMgrSPtr m_surfaceMgr;
    SurfaceTaskSchedulerSPtr m_scheduler;
};

using UDIMTilesDocumentSPtr = std::shared_ptr<UDIMTilesDocument>;

class UDIMTilesDocumentMgr : public QObject
{
    Q_OBJECT
public:
    void add(const UDIMTilesDocumentSPtr& document);
    UDIMTilesDocumentSPtr at(int index) const;
    UDIMTilesDocumentSPtr find(const QString& label) const;
    bool removeAt(int index);
    bool remove(const QString& label);
    void clear();
    bool rename(const QString& previous, const QString& next);
    int count() const;

signals:
    void signalUDIMTilesDocumentAdded(int index);
    void signalUDIMTilesDocumentRemoved(int index, QString label);
    void signalUDIMTilesDocumentCleared();
    void signalUDIMTilesDocumentLabelChanged(int index, QString previousLabel, QString newLabel);

private:
    int indexOf(const QString& label) const; // under the lock

    mutable std::mutex m_mutex;
    QList<UDIMTilesDocumentSPtr> m_documents;
};

using UDIMTilesDocumentMgrSPtr = std::shared_ptr<UDIMTilesDocumentMgr>;

class UDIMTilesProvider
{
public:
    UDIMTilesProvider(CachedSurfaceMgrSPtr surfaceMgr, SurfaceTaskSchedulerSPtr scheduler,
                      UDIMTilesDocumentMgrSPtr documents);
    virtual ~UDIMTilesProvider();

    const UDIMTilesDocumentMgrSPtr& documents() const { return m_documents; }
    UDIMTilesDocumentSPtr currentDocument() const { return m_current; }

protected:
    CachedSurfaceMgrSPtr m_surfaceMgr;
    SurfaceTaskSchedulerSPtr m_scheduler;
    UDIMTilesDocumentMgrSPtr m_documents;
    UDIMTilesDocumentSPtr m_current;
};

// What the baking context hands the regions of a bake to.
class BakingUDIMTilesProvider : public UDIMTilesProvider
{
public:
    struct CurrentTile
    {
        int32_t u = 0x7FFFFFFF;
        int32_t v = 0x7FFFFFFF;
        int32_t width = 0;
        int32_t height = 0;
        bool isAbsent() const { return u == 0x7FFFFFFF && v == 0x7FFFFFFF && width == 0 && height == 0; }
    };

    using UDIMTilesProvider::UDIMTilesProvider;

    // Finds the document of that label, or makes and adds it; it becomes current.
    void setDocument(const QString& label);
    void beginTile(int32_t u, int32_t v, int32_t width, int32_t height);
    void endTile();
    void addRegion(const Ond::Surfaces::SurfaceSPtr& surface, int32_t cellX, int32_t cellY, bool isFinal);
    // A finished image for the current tile, replacing its regions.
    void receive(const TileImageSPtr& image);
    const CurrentTile& currentTile() const { return m_tile; }

private:
    // The tile of the current document to write to: reused while it has the
    // same size and isn't finished, else a new one.
    Tile::SPtr tileFor(const CurrentTile& request);

    CurrentTile m_tile;
};

} // namespace Vrn::Baking

Q_DECLARE_METATYPE(Vrn::Baking::Tile::SPtr)
Q_DECLARE_METATYPE(Vrn::Baking::Tile::WPtr)
Q_DECLARE_METATYPE(Ond::Surfaces::SurfaceSPtr)
