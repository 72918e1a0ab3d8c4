#include "image/UDIMTiles.h"

namespace Vrn::Baking {

namespace {

const int registered = [] {
    qRegisterMetaType<Tile::SPtr>("Vrn::Baking::Tile::SPtr");
    qRegisterMetaType<Tile::WPtr>("Vrn::Baking::Tile::WPtr");
    qRegisterMetaType<Tile::State>("Vrn::Baking::Tile::State");
    qRegisterMetaType<Ond::Surfaces::SurfaceSPtr>("Ond::Surfaces::SurfaceSPtr");
    return 0;
}();

constexpr int32_t Absent = 0x7FFFFFFF;

} // namespace

// ---- Tile

Tile::Tile(const QSize& size, const QPoint& position, const QSize& thirdSize, CachedSurfaceMgrSPtr surfaceMgr,
           SurfaceTaskSchedulerSPtr scheduler)
    : m_size(size)
    , m_position(position)
    , m_thirdSize(thirdSize)
    , m_surfaceMgr(std::move(surfaceMgr))
    , m_scheduler(std::move(scheduler))
{
    m_children.max_load_factor(1.0f);
    m_children.rehash(8);
}

Tile::~Tile()
{
    std::lock_guard lock(m_mutex);
    for (auto& [key, child] : m_children) {
        std::lock_guard childLock(child->m_mutex);
        child->m_parent = nullptr;
    }
    m_job.reset();
}

quint64 Tile::keyOf(const QPoint& position)
{
    return (quint64(quint32(position.x())) << 32) | quint64(quint32(position.y()));
}

QSize Tile::size() const
{
    std::lock_guard lock(m_mutex);
    return m_size;
}

QPoint Tile::position() const
{
    std::lock_guard lock(m_mutex);
    return m_position;
}

QSize Tile::thirdSize() const
{
    std::lock_guard lock(m_mutex);
    return m_thirdSize;
}

Tile* Tile::parentTile() const
{
    std::lock_guard lock(m_mutex);
    return m_parent;
}

bool Tile::hasState(int32_t mask) const
{
    std::lock_guard lock(m_mutex);
    return (m_state & mask) == mask;
}

bool Tile::changeState(int32_t mask, bool enabled)
{
    {
        std::lock_guard lock(m_mutex);
        if (((m_state & mask) == mask) == enabled)
            return false;
        m_state = enabled ? (m_state | mask) : (m_state & ~mask);
    }
    emit signalStateChanged(State(mask), enabled);
    return true;
}

void Tile::setState(int32_t mask, bool enabled)
{
    if (!changeState(mask, enabled))
        return;
    if (mask != Baking || !enabled)
        return;
    // Each ancestor is reached after this tile's lock is left.
    for (Tile* ancestor = parentTile(); ancestor; ancestor = ancestor->parentTile())
        ancestor->changeState(Baking, true);
}

TileImageSPtr Tile::image() const
{
    std::lock_guard lock(m_mutex);
    return m_image;
}

void Tile::setImage(const TileImageSPtr& image)
{
    {
        std::lock_guard lock(m_mutex);
        m_image = image;
    }
    emit signalCachedSurfaceChanged();
}

void Tile::addChild(const SPtr& tile)
{
    if (!tile)
        return;
    const QPoint position = tile->position();
    {
        std::lock_guard lock(m_mutex);
        const quint64 key = keyOf(position);
        const auto existing = m_children.find(key);
        if (existing != m_children.end()) {
            {
                std::lock_guard childLock(existing->second->m_mutex);
                existing->second->m_parent = nullptr;
            }
            m_children.erase(existing);
        }
        m_children.emplace(key, tile);
        std::lock_guard childLock(tile->m_mutex);
        tile->m_parent = this;
    }
    emit signalChildAdded(WPtr(tile));
}

void Tile::removeChild(const SPtr& tile)
{
    if (!tile)
        return;
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_children.find(keyOf(tile->position()));
        if (found == m_children.end() || found->second != tile)
            return;
        m_children.erase(found);
        std::lock_guard childLock(tile->m_mutex);
        tile->m_parent = nullptr;
    }
    emit signalChildRemoved(WPtr(tile));
}

Tile::SPtr Tile::child(const QPoint& position) const
{
    std::lock_guard lock(m_mutex);
    const auto found = m_children.find(keyOf(position));
    return found == m_children.end() ? nullptr : found->second;
}

int Tile::childCount() const
{
    std::lock_guard lock(m_mutex);
    return int(m_children.size());
}

QList<Tile::SPtr> Tile::children() const
{
    std::lock_guard lock(m_mutex);
    QList<SPtr> list;
    list.reserve(int(m_children.size()));
    for (const auto& [key, child] : m_children)
        list.append(child);
    return list;
}

void Tile::clearChildren()
{
    std::unordered_map<quint64, SPtr> copy;
    {
        std::lock_guard lock(m_mutex);
        copy = m_children;
        m_children.clear();
        m_job.reset();
        for (auto& [key, child] : copy) {
            std::lock_guard childLock(child->m_mutex);
            child->m_parent = nullptr;
        }
    }
    for (const auto& [key, child] : copy)
        emit signalChildRemoved(WPtr(child));
}

QSizeF Tile::scale() const
{
    const QSize own = size();
    const Tile* parent = parentTile();
    const QSize parentSize = parent ? parent->size() : QSize();
    if (!own.isValid() || !parentSize.isValid() || parentSize.isEmpty())
        return QSizeF(1.0, 1.0);
    return QSizeF(double(own.width()) / parentSize.width(), double(own.height()) / parentSize.height());
}

QRect Tile::boundingRect() const
{
    if (hasState(Region)) {
        const QSize own = size();
        return QRect(0, 0, own.width(), own.height());
    }
    QRect bounds;
    for (const SPtr& child : children()) {
        const QRect r = child->boundingRect();
        const QPoint cell = child->position();
        bounds |= r.translated(r.width() * cell.x(), r.height() * cell.y());
    }
    return bounds;
}

void Tile::compose()
{
    if (childCount() == 0) {
        {
            std::lock_guard lock(m_mutex);
            m_image.reset();
        }
        emit signalCachedSurfaceChanged();
        return;
    }
    TiledSurface* job = nullptr;
    {
        std::lock_guard lock(m_mutex);
        m_job = std::make_unique<TiledSurface>(m_surfaceMgr, m_scheduler);
        job = m_job.get();
    }
    connect(job, &TiledSurface::signalSurfaceReady, this, &Tile::onSurfaceReady);
    job->start(*this, 0);
}

void Tile::onSurfaceReady(qulonglong userData)
{
    CachedSurfaceSPtr result;
    {
        std::lock_guard lock(m_mutex);
        if (!m_job)
            return;
        result = m_job->result();
    }
    auto image = std::make_shared<TileImage>();
    image->kind = TileImage::Cached;
    image->surface = result;
    image->isFinal = false;
    setImage(image);
}

// ---- TiledSurfaceTask and TiledSurface

TiledSurfaceTask::TiledSurfaceTask(uint32_t width, uint32_t height, Ond::Surfaces::PixelFormat format,
                                   std::vector<Entry> entries, quint64 userData)
    : m_width(width)
    , m_height(height)
    , m_format(format)
    , m_entries(std::move(entries))
    , m_userData(userData)
{
}

void TiledSurfaceTask::run()
{
    if (isCancelled())
        return;
    Ond::Surfaces::SurfaceSPtr result;
    if (m_width > 0 && m_height > 0 && Ond::Surfaces::bytesPerPixel(m_format) > 0) {
        result.reset(new Ond::Surfaces::Surface(Ond::Surfaces::SurfaceDesc(m_width, m_height, m_format), 64));
        Ond::Surfaces::fill(*result, Eigen::Vector4f(0.0f, 0.0f, 0.0f, 1.0f));
        for (const Entry& entry : m_entries) {
            if (!entry.image || entry.image->kind != TileImage::Cached || !entry.image->surface)
                continue;
            const auto access = entry.image->surface->acquireRead();
            if (!access.surface || access.surface->isEmpty() || entry.cellX < 0 || entry.cellY < 0)
                continue;
            Ond::Surfaces::blit(*access.surface, *result, access.surface->width() * uint32_t(entry.cellX),
                                access.surface->height() * uint32_t(entry.cellY));
        }
    }
    emit finished(result, m_userData);
}

TiledSurface::TiledSurface(CachedSurfaceMgrSPtr surfaceMgr, SurfaceTaskSchedulerSPtr scheduler)
    : Ond::Image::Core::SurfaceJob(std::move(scheduler))
    , m_surfaceMgr(std::move(surfaceMgr))
{
}

void TiledSurface::start(const Tile& tile, quint64 userData)
{
    const QList<Tile::SPtr> children = tile.children();
    if (children.isEmpty()) {
        m_result.reset();
        emit signalSurfaceReady(userData);
        return;
    }
    std::vector<TiledSurfaceTask::Entry> entries;
    entries.reserve(size_t(children.size()));
    for (const Tile::SPtr& child : children) {
        const QPoint cell = child->position();
        entries.push_back({child->image(), cell.x(), cell.y()});
    }
    const QRect bounds = tile.boundingRect();
    Ond::Surfaces::PixelFormat format = Ond::Surfaces::PixelFormat::Invalid;
    const TileImageSPtr& first = entries.front().image;
    if (first && first->kind == TileImage::Cached && first->surface)
        format = first->surface->format();
    auto task = std::make_shared<TiledSurfaceTask>(uint32_t(std::max(0, bounds.right() + 1)),
                                                   uint32_t(std::max(0, bounds.bottom() + 1)), format,
                                                   std::move(entries), userData);
    connect(task.get(), &TiledSurfaceTask::finished, this, &TiledSurface::onTaskFinished);
    queue(task);
}

void TiledSurface::onTaskFinished(Ond::Surfaces::SurfaceSPtr surface, qulonglong userData)
{
    m_result = surface ? m_surfaceMgr->cache(surface) : nullptr;
    emit signalSurfaceReady(userData);
}

// ---- UDIMTilesDocument

UDIMTilesDocument::UDIMTilesDocument(CachedSurfaceMgrSPtr surfaceMgr, SurfaceTaskSchedulerSPtr scheduler)
    : m_root(std::make_shared<Tile>(QSize(), QPoint(), QSize(), surfaceMgr, scheduler))
    , m_surfaceMgr(std::move(surfaceMgr))
    , m_scheduler(std::move(scheduler))
{
}

Tile::SPtr UDIMTilesDocument::tile(const QPoint& position) const
{
    std::lock_guard lock(m_mutex);
    return m_root->child(position);
}

void UDIMTilesDocument::addTile(const Tile::SPtr& tile)
{
    if (!tile)
        return;
    {
        std::lock_guard lock(m_mutex);
        m_root->addChild(tile);
    }
    emit signalChildAdded(Tile::WPtr(tile));
}

void UDIMTilesDocument::clear()
{
    Tile::SPtr root;
    {
        std::lock_guard lock(m_mutex);
        root = m_root;
    }
    root->clearChildren();
}

QString UDIMTilesDocument::label() const
{
    std::lock_guard lock(m_mutex);
    return m_label;
}

bool UDIMTilesDocument::setLabel(const QString& label)
{
    std::lock_guard lock(m_mutex);
    if (label.isEmpty() || label == m_label)
        return false;
    m_label = label;
    return true;
}

// ---- UDIMTilesDocumentMgr

namespace {

bool sameLabel(const QString& a, const QString& b)
{
    return a.size() == b.size() && a == b;
}

} // namespace

int UDIMTilesDocumentMgr::indexOf(const QString& label) const
{
    for (int i = 0; i < m_documents.size(); ++i)
        if (sameLabel(m_documents[i]->label(), label))
            return i;
    return -1;
}

void UDIMTilesDocumentMgr::add(const UDIMTilesDocumentSPtr& document)
{
    if (!document)
        return;
    int index = 0;
    {
        std::lock_guard lock(m_mutex);
        m_documents.append(document);
        index = int(m_documents.size()) - 1;
    }
    emit signalUDIMTilesDocumentAdded(index);
}

UDIMTilesDocumentSPtr UDIMTilesDocumentMgr::at(int index) const
{
    std::lock_guard lock(m_mutex);
    return index >= 0 && index < m_documents.size() ? m_documents[index] : nullptr;
}

UDIMTilesDocumentSPtr UDIMTilesDocumentMgr::find(const QString& label) const
{
    std::lock_guard lock(m_mutex);
    const int index = indexOf(label);
    return index < 0 ? nullptr : m_documents[index];
}

int UDIMTilesDocumentMgr::count() const
{
    std::lock_guard lock(m_mutex);
    return int(m_documents.size());
}

bool UDIMTilesDocumentMgr::removeAt(int index)
{
    QString label;
    {
        std::lock_guard lock(m_mutex);
        if (index < 0 || index >= m_documents.size())
            return false;
        label = m_documents[index]->label();
        m_documents.removeAt(index);
    }
    emit signalUDIMTilesDocumentRemoved(index, label);
    return true;
}

bool UDIMTilesDocumentMgr::remove(const QString& label)
{
    int index = -1;
    {
        std::lock_guard lock(m_mutex);
        index = indexOf(label);
    }
    return index >= 0 && removeAt(index);
}

void UDIMTilesDocumentMgr::clear()
{
    {
        std::lock_guard lock(m_mutex);
        if (m_documents.isEmpty())
            return;
        m_documents.clear();
    }
    emit signalUDIMTilesDocumentCleared();
}

bool UDIMTilesDocumentMgr::rename(const QString& previous, const QString& next)
{
    int index = -1;
    {
        std::lock_guard lock(m_mutex);
        index = indexOf(previous);
        if (index < 0 || !m_documents[index]->setLabel(next))
            return false;
    }
    emit signalUDIMTilesDocumentLabelChanged(index, previous, next);
    return true;
}

// ---- Providers

UDIMTilesProvider::UDIMTilesProvider(CachedSurfaceMgrSPtr surfaceMgr, SurfaceTaskSchedulerSPtr scheduler,
                                     UDIMTilesDocumentMgrSPtr documents)
    : m_surfaceMgr(std::move(surfaceMgr))
    , m_scheduler(std::move(scheduler))
    , m_documents(std::move(documents))
{
}

UDIMTilesProvider::~UDIMTilesProvider() = default;

void BakingUDIMTilesProvider::setDocument(const QString& label)
{
    UDIMTilesDocumentSPtr document = m_documents->find(label);
    if (!document) {
        document = std::make_shared<UDIMTilesDocument>(m_surfaceMgr, m_scheduler);
        document->setLabel(label);
        m_documents->add(document);
    }
    m_current = document;
}

Tile::SPtr BakingUDIMTilesProvider::tileFor(const CurrentTile& request)
{
    if (!m_current)
        return nullptr;
    const QPoint position(request.u, request.v);
    const QSize size(request.width, request.height);
    if (Tile::SPtr existing = m_current->tile(position))
        if (existing->size() == size && !existing->hasState(Tile::Finished))
            return existing;
    auto tile = std::make_shared<Tile>(size, position, QSize(), m_surfaceMgr, m_scheduler);
    m_current->addTile(tile);
    return tile;
}

void BakingUDIMTilesProvider::beginTile(int32_t u, int32_t v, int32_t width, int32_t height)
{
    m_tile = CurrentTile{u, v, width, height};
    if (const Tile::SPtr tile = tileFor(m_tile))
        tile->setState(Tile::Baking, true);
}

void BakingUDIMTilesProvider::endTile()
{
    if (m_current)
        if (const Tile::SPtr tile = m_current->tile(QPoint(m_tile.u, m_tile.v))) {
            tile->setState(Tile::Baking, false);
            tile->setState(Tile::Finished, true);
        }
    m_tile = CurrentTile();
}

void BakingUDIMTilesProvider::addRegion(const Ond::Surfaces::SurfaceSPtr& surface, int32_t cellX, int32_t cellY,
                                        bool isFinal)
{
    if (!surface || surface->isEmpty())
        return;
    Ond::Surfaces::SurfaceSPtr copy;
    try {
        copy.reset(new Ond::Surfaces::Surface(surface->clone()));
    } catch (const std::exception&) {
        return;
    }
    if (copy->isEmpty())
        return;
    auto image = std::make_shared<TileImage>();
    image->kind = TileImage::Cached;
    image->surface = m_surfaceMgr->cache(copy);
    image->isFinal = isFinal;
    // Regions outside a begun tile have nowhere to go.
    if (!m_current || m_tile.isAbsent())
        return;
    const Tile::SPtr tile = tileFor(m_tile);
    if (!tile)
        return;
    auto region = std::make_shared<Tile>(QSize(int(copy->width()), int(copy->height())), QPoint(cellX, cellY), QSize(),
                                         m_surfaceMgr, m_scheduler);
    region->setState(Tile::Region, true);
    region->setImage(image);
    tile->addChild(region);
}

void BakingUDIMTilesProvider::receive(const TileImageSPtr& image)
{
    if (!image)
        return;
    const bool usable = (image->kind == TileImage::Cached && image->surface)
                        || (image->kind == TileImage::Encoded && !image->bytes.isEmpty());
    if (!usable || !m_current)
        return;
    const Tile::SPtr tile = m_current->tile(QPoint(m_tile.u, m_tile.v));
    if (!tile)
        return;
    auto copy = std::make_shared<TileImage>(*image);
    copy->isFinal = true;
    tile->clearChildren();
    tile->setImage(copy);
}

} // namespace Vrn::Baking
