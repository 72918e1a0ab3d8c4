#include "opengl/QGLManager.h"

#include "opengl/OffscreenContext.h"
#include "opengl/OglContextData.h"
#include "opengl/OglUtils.h"

#include <QHash>
#include <QMutex>
#include <QThread>

#include <atomic>
#include <vector>

namespace Ond::OpenGLUtils {

namespace {

struct ContextRecord
{
    std::unique_ptr<OffscreenContext> context;
    std::unique_ptr<Ond::OglUtils::OglContextData> data;
};

thread_local ContextRecord* currentThreadRecord = nullptr;
std::atomic<QGLManager*> processManager{nullptr};

} // namespace

struct QGLManager::Private
{
    QString errorText;
    std::atomic<bool> failed{false};
    mutable QMutex mutex;
    QHash<QThread*, ContextRecord*> table;
    std::vector<std::unique_ptr<ContextRecord>> records; // owns every record
    std::atomic<int> running{0};
    // The compatibility context, for the thread that asked first.
    std::unique_ptr<OffscreenContext> compatibility;
    QThread* compatibilityThread = nullptr;

    // A worker's context lives in the worker's thread and must die there.
    void releaseCurrentThread()
    {
        ContextRecord* record = recordForCurrentThread();
        currentThreadRecord = nullptr;
        if (!record)
            return;
        std::unique_ptr<ContextRecord> owned;
        {
            QMutexLocker lock(&mutex);
            for (auto it = records.begin(); it != records.end(); ++it) {
                if (it->get() == record) {
                    owned = std::move(*it);
                    records.erase(it);
                    break;
                }
            }
        }
        if (!owned)
            return;
        if (owned->context->makeCurrent()) {
            owned->data.reset();
            owned->context->doneCurrent();
        }
        owned->context->destroy();
    }

    ContextRecord* recordForCurrentThread()
    {
        if (currentThreadRecord)
            return currentThreadRecord;
        QMutexLocker lock(&mutex);
        ContextRecord* record = table.take(QThread::currentThread());
        currentThreadRecord = record;
        return record;
    }

    ContextRecord* makeRecord(std::unique_ptr<OffscreenContext> context)
    {
        auto record = std::make_unique<ContextRecord>();
        record->context = std::move(context);
        record->context->savePrevious();
        record->context->makeCurrent();
        record->data = std::make_unique<Ond::OglUtils::OglContextData>();
        record->context->restorePrevious();
        records.push_back(std::move(record));
        return records.back().get();
    }
};

QGLManager::QGLManager(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    processManager = this;
    auto context = std::make_unique<OffscreenContext>(true);
    if (!context->isValid()) {
        d->errorText = QStringLiteral("Failed to instantiate OffscreenContext.");
        d->failed = true;
        return;
    }
    context->savePrevious();
    context->makeCurrent();
    if (!Ond::OglUtils::initialize()) {
        d->errorText = QStringLiteral("Failed to init OglUtils.");
        d->failed = true;
    } else if (Ond::OglUtils::glVersionNumber() < 330) {
        d->errorText = QStringLiteral("OpenGL version is lower than 3.3.");
        d->failed = true;
    }
    context->restorePrevious();
    if (d->failed) {
        context->destroy();
        return;
    }
    QMutexLocker lock(&d->mutex);
    d->table.insert(QThread::currentThread(), d->makeRecord(std::move(context)));
}

QGLManager::~QGLManager()
{
    if (d->compatibility && d->compatibilityThread == QThread::currentThread())
        d->compatibility->destroy();
    else
        (void)d->compatibility.release(); // its thread is gone, as is the process soon
    for (auto& record : d->records) {
        // A worker that never ran keeps its context: it belongs to a thread
        // that cannot be entered any more, and the process is ending.
        if (record.get() != currentThreadRecord && d->table.key(record.get()) != QThread::currentThread()) {
            (void)record.release();
            continue;
        }
        // GL objects die in their own context.
        if (record->context->makeCurrent()) {
            record->data.reset();
            record->context->doneCurrent();
        }
        record->context->destroy();
    }
    currentThreadRecord = nullptr;
    QGLManager* self = this;
    processManager.compare_exchange_strong(self, nullptr);
}

int QGLManager::runInContext(bool noFramebuffer, const ContextFunction& function)
{
    if (d->failed)
        return d->failed ? 1 : 0;
    ContextRecord* record = d->recordForCurrentThread();
    if (!record)
        return 1;
    record->context->savePrevious();
    record->context->makeCurrent();
    ++d->running;
    if (!noFramebuffer)
        record->data->bindFramebuffer();
    const int result = function(*record->data);
    --d->running;
    record->context->restorePrevious();
    return result;
}

std::pair<OffscreenContext*, Ond::OglUtils::OglContextData*> QGLManager::contextData() const
{
    if (d->failed)
        return {nullptr, nullptr};
    ContextRecord* record = d->recordForCurrentThread();
    if (!record)
        return {nullptr, nullptr};
    return {record->context.get(), record->data.get()};
}

int QGLManager::runInCompatibilityContext(const std::function<int()>& function)
{
    if (d->failed)
        return 1;
    if (!d->compatibility) {
        if (d->compatibilityThread)
            return 1; // tried before and failed
        d->compatibilityThread = QThread::currentThread();
        auto context = std::make_unique<OffscreenContext>(true, OffscreenContext::Profile::Compatibility);
        if (!context->isValid())
            return 1;
        d->compatibility = std::move(context);
    }
    if (d->compatibilityThread != QThread::currentThread())
        return 1;
    // The core context is put back by hand as well: the two may come from
    // different window-system layers (GLX and EGL), which do not see each
    // other's current context.
    ContextRecord* core = d->recordForCurrentThread();
    d->compatibility->savePrevious();
    if (!d->compatibility->makeCurrent()) {
        d->compatibility->restorePrevious();
        if (core && d->running > 0)
            core->context->makeCurrent();
        return 1;
    }
    const bool coreWasCurrent = core && d->running > 0;
    ++d->running;
    const int result = function();
    --d->running;
    d->compatibility->restorePrevious();
    if (coreWasCurrent)
        core->context->makeCurrent();
    return result;
}

void QGLManager::addWorkerThread(QThread* thread, bool share)
{
    if (d->failed)
        return;
    QMutexLocker lock(&d->mutex);
    if (d->table.contains(thread))
        return;
    auto context = std::make_unique<OffscreenContext>(share);
    if (!context->isValid())
        return;
    ContextRecord* record = d->makeRecord(std::move(context));
    record->context->doneCurrent();
    record->context->moveToThread(thread);
    d->table.insert(thread, record);
    connect(thread, &QThread::finished, this, [this] { d->releaseCurrentThread(); }, Qt::DirectConnection);
}

bool QGLManager::hasFailed() const { return d->failed; }

QString QGLManager::errorText() const
{
    QMutexLocker lock(&d->mutex);
    return d->errorText;
}

QGLManager* QGLManager::instance() { return processManager; }

} // namespace Ond::OpenGLUtils
