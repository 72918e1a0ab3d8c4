#include "scene/obj/ObjFileParser.h"

#include "program/ProgressInterface.h"
#include "program/ThreadLimit.h"
#include "scene/obj/ObjBlockParser.h"
#include "scene/obj/ObjReindexer.h"
#include "scene/obj/ObjThreads.h"

#include <malloc.h>

#include <QFileDevice>
#include <QIODevice>
#include <QObject>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <Eigen/Geometry>

#include <algorithm>
#include <new>
#include <chrono>
#include <cstring>
#include <thread>

namespace Ond::SceneLoad {

namespace {

const char* const StageTexts[] = {
    QT_TRANSLATE_NOOP("QObject", "Reading file content"),
    QT_TRANSLATE_NOOP("QObject", "Parsing file content"),
    QT_TRANSLATE_NOOP("QObject", "Computing normals"),
    QT_TRANSLATE_NOOP("QObject", "Reindexing"),
    "",
};

// Block text, the tail that completes its last line, its line feed, and
// slack so that look-ahead past the line feed stays inside the buffer.
constexpr size_t BufferBytes = ObjFileParser::BlockSize + ObjFileParser::LineTail + 16;

constexpr float NormalEpsilon = 1e-7f;

constexpr size_t ReleaseBytes = size_t(1) << 20;

uint32_t nameId(std::unordered_map<std::string, uint32_t>& ids, QStringList& names,
                const std::string& name)
{
    auto found = ids.find(name);
    if (found != ids.end())
        return found->second;
    const uint32_t id = static_cast<uint32_t>(names.size());
    names.append(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    ids.emplace(name, id);
    return id;
}

// The line counts of one block: its lines, and the "v", "vn", "vt" and "f"
// lines among them. A line starts the block or follows a line end inside it.
struct BlockCounts
{
    uint64_t lines = 0, vertices = 0, normals = 0, texcoords = 0, faceLines = 0;
};

BlockCounts countLines(const char* p, const char* end)
{
    BlockCounts counts;
    while (p < end) {
        const char second = p + 1 < end ? p[1] : '\n';
        if (p[0] == 'v') {
            counts.vertices += second == ' ';
            counts.normals += second == 'n';
            counts.texcoords += second == 't';
        } else if (p[0] == 'f') {
            counts.faceLines += second == ' ';
        }
        ++counts.lines;
        const void* lineEnd = std::memchr(p, '\n', size_t(end - p));
        p = lineEnd ? static_cast<const char*>(lineEnd) + 1 : end;
    }
    return counts;
}

// The counts of one block are the bases of the next; a record past the
// last block holds the totals.
ObjChunk firstChunk()
{
    ObjChunk chunk;
    chunk.firstLine = 1;
    return chunk;
}

void addChunk(std::vector<ObjChunk>& chunks, ObjChunk& next, uint64_t size, const BlockCounts& counts)
{
    ObjChunk chunk = next;
    chunk.size = size;
    chunk.faceLines = counts.faceLines;
    chunks.push_back(chunk);
    next.vertexBase += counts.vertices;
    next.normalBase += counts.normals;
    next.texcoordBase += counts.texcoords;
    next.offset += size;
    next.firstLine += counts.lines;
}

void addTotals(std::vector<ObjChunk>& chunks, const ObjChunk& next)
{
    ObjChunk totals = next;
    totals.size = 0;
    chunks.push_back(totals);
}

// pread until `size` bytes or the end of the file; -1 on an error.
int64_t readAt(int fd, char* buffer, uint64_t size, uint64_t offset)
{
    uint64_t total = 0;
    while (total < size) {
        const ssize_t got = ::pread(fd, buffer + total, size - total, off_t(offset + total));
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        if (got == 0)
            break;
        total += uint64_t(got);
    }
    return int64_t(total);
}

} // namespace

ObjFileParser::ObjFileParser(QIODevice* device, bool computeNormals,
                             Ond::Core::ProgressInterface* progress)
    : m_device(device)
    , m_computeNormals(computeNormals)
{
    if (progress && progress->isCancelled()) {
        m_cancelled.store(true);
        m_failed.store(true);
        return;
    }

    std::thread reader([this] {
        try {
            run();
        } catch (const std::bad_alloc&) {
            m_errors.add(ObjError::Open, QStringLiteral("Not enough memory to read the file"));
            fail();
        }
        {
            std::lock_guard<std::mutex> lock(m_stateMutex);
            m_finished = true;
        }
        m_stateChanged.notify_all();
    });

    std::unique_lock<std::mutex> lock(m_stateMutex);
    while (!m_finished) {
        m_stateChanged.wait_for(lock, std::chrono::milliseconds(100));
        if (!progress || m_finished)
            continue;
        lock.unlock();
        progress->setText(QObject::tr(StageTexts[m_stage.load()]));
        progress->setValue(m_progress.load());
        if (progress->isCancelled() && !m_cancelled.exchange(true))
            fail();
        lock.lock();
    }
    lock.unlock();
    reader.join();

    if (progress && !m_failed.load()) {
        progress->setText(QString());
        progress->setValue(1.0);
    }
}

ObjFileParser::~ObjFileParser() = default;

void ObjFileParser::setProgress(Stage stage, double value)
{
    m_stage.store(stage);
    m_progress.store(value);
}

void ObjFileParser::fail()
{
    {
        std::lock_guard<std::mutex> lock(m_queueMutex);
        m_failed.store(true);
    }
    m_workAvailable.notify_all();
    m_jobDone.notify_all();
}

char* ObjFileParser::takeBuffer()
{
    std::lock_guard<std::mutex> lock(m_poolMutex);
    if (!m_freeBuffers.empty()) {
        char* buffer = m_freeBuffers.back();
        m_freeBuffers.pop_back();
        return buffer;
    }
    m_allBuffers.emplace_back(new char[BufferBytes]());
    return m_allBuffers.back().get();
}

void ObjFileParser::releaseBuffer(char* buffer)
{
    std::lock_guard<std::mutex> lock(m_poolMutex);
    m_freeBuffers.push_back(buffer);
}

void ObjFileParser::run()
{
    if (!open() || !scan())
        return;

    const ObjChunk totals = m_chunks.empty() ? ObjChunk{} : m_chunks.back();
    uint64_t vertices = totals.vertexBase, texcoords = totals.texcoordBase, normals = totals.normalBase;
    m_result.positions.assign(vertices + 1, Eigen::Vector3f::Zero());
    m_result.texcoords.assign(texcoords + 1, Eigen::Vector2f::Zero());
    m_result.normals.assign(normals + 1, Eigen::Vector3f::Zero());
    m_result.colors.assign(1, Eigen::Vector4f::Zero());

    ObjAttributeArrays arrays;
    arrays.positions = m_result.positions.data();
    arrays.texcoords = m_result.texcoords.data();
    arrays.normals = m_result.normals.data();
    arrays.positionCount = m_result.positions.size();
    arrays.texcoordCount = m_result.texcoords.size();
    arrays.normalCount = m_result.normals.size();
    m_blockParser = std::make_unique<ObjBlockParser>(arrays, m_errors, m_notExportedBySculptTool);

    parseBlocks();
    if (m_failed.load() || !validate())
        return;

    if (m_computeNormals && !m_result.hasNormals) {
        setProgress(ComputingNormals, 0.8);
        computeNormals();
    }
    if (m_failed.load())
        return;

    reindex();
    if (!m_failed.load())
        setProgress(Done, 1.0);
}

bool ObjFileParser::open()
{
    if (!m_device) {
        m_errors.add(ObjError::Open, QStringLiteral("No device"));
        fail();
        return false;
    }
    if (!m_device->isOpen() && !m_device->open(QIODevice::ReadOnly)) {
        m_errors.add(ObjError::Open, m_device->errorString());
        fail();
        return false;
    }
    return true;
}

bool ObjFileParser::scan()
{
    const qint64 fileSize = m_device->size();
    if (fileSize <= 0) {
        m_errors.add(ObjError::Open, QStringLiteral("File is empty"));
        fail();
        return false;
    }
    const uint64_t blockCount = ((static_cast<uint64_t>(fileSize) - 1) >> 20) + 1;

    // A file read at offsets counts its blocks on every worker; other
    // devices are read once in order.
    if (auto* file = qobject_cast<QFileDevice*>(m_device)) {
        struct stat info{};
        const int fd = file->handle();
        if (fd >= 0 && ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size == fileSize
            && file->pos() == 0)
            return scanFile(fd, static_cast<uint64_t>(fileSize));
    }

    ObjChunk next = firstChunk();
    char* buffer = takeBuffer();
    while (!m_device->atEnd() && !m_failed.load()) {
        qint64 got = m_device->read(buffer, static_cast<qint64>(BlockSize));
        if (got < 0) {
            m_errors.add(ObjError::Open, m_device->errorString());
            fail();
            break;
        }
        if (got == 0)
            break;
        if (got == static_cast<qint64>(BlockSize)) {
            // Complete the last line so that no block splits one.
            const qint64 tail = m_device->readLine(buffer + got, static_cast<qint64>(LineTail) + 1);
            if (tail > 0)
                got += tail;
        }
        addChunk(m_chunks, next, static_cast<uint64_t>(got), countLines(buffer, buffer + got));
        setProgress(Reading, 0.1 * static_cast<double>(m_chunks.size()) / static_cast<double>(blockCount));
    }
    releaseBuffer(buffer);
    if (m_failed.load())
        return false;

    addTotals(m_chunks, next);

    if (!m_device->seek(0)) {
        m_errors.add(ObjError::Open, m_device->errorString());
        fail();
        return false;
    }
    return true;
}

bool ObjFileParser::scanFile(int fd, uint64_t fileSize)
{
    // Blocks end where the reading loop above would end them: BlockSize
    // bytes, then the rest of the line up to LineTail bytes. Finding the
    // ends takes a small read per block; counting their lines is the work.
    std::vector<uint64_t> ends;
    ends.reserve(size_t(fileSize / BlockSize) + 2);
    char tail[LineTail];
    for (uint64_t offset = 0; offset < fileSize;) {
        uint64_t end = std::min(offset + BlockSize, fileSize);
        if (end - offset == BlockSize && end < fileSize) {
            const int64_t got = readAt(fd, tail, LineTail, end);
            if (got < 0) {
                m_errors.add(ObjError::Open, QString::fromLocal8Bit(std::strerror(errno)));
                fail();
                return false;
            }
            const void* lineEnd = std::memchr(tail, '\n', size_t(got));
            end += lineEnd ? uint64_t(static_cast<const char*>(lineEnd) - tail) + 1 : uint64_t(got);
        }
        ends.push_back(end);
        offset = end;
    }

    std::vector<BlockCounts> counts(ends.size());
    std::atomic<size_t> nextBlock{0};
    std::atomic<bool> readFailed{false};
    std::atomic<int> readErrno{0};
    auto count = [&](bool reportsProgress) {
        std::unique_ptr<char[]> buffer(new (std::nothrow) char[BufferBytes]);
        if (!buffer) {
            readFailed.store(true);
            readErrno.store(ENOMEM);
            return;
        }
        for (size_t b = nextBlock++; b < ends.size() && !readFailed.load() && !m_failed.load(); b = nextBlock++) {
            const uint64_t begin = b == 0 ? 0 : ends[b - 1];
            const int64_t got = readAt(fd, buffer.get(), ends[b] - begin, begin);
            if (got != int64_t(ends[b] - begin)) {
                readErrno.store(got < 0 ? errno : EIO);
                readFailed.store(true);
                return;
            }
            counts[b] = countLines(buffer.get(), buffer.get() + got);
            if (reportsProgress)
                setProgress(Reading, 0.1 * static_cast<double>(b + 1) / static_cast<double>(ends.size()));
        }
    };
    runOnThreads(std::min<size_t>(Ond::Core::threadCount(), ends.size()), [&](size_t t) { count(t == 0); });
    if (readFailed.load()) {
        m_errors.add(ObjError::Open, QString::fromLocal8Bit(std::strerror(readErrno.load())));
        fail();
        return false;
    }
    if (m_failed.load())
        return false;

    ObjChunk next = firstChunk();
    for (size_t b = 0; b < ends.size(); ++b)
        addChunk(m_chunks, next, ends[b] - next.offset, counts[b]);
    addTotals(m_chunks, next);
    return true;
}

void ObjFileParser::parseBlocks()
{
    // The scan's totals record is no block.
    const size_t blockCount = m_chunks.size() - 1;
    const unsigned hardware = Ond::Core::threadCount();
    const size_t workerCount = std::min<size_t>({hardware, 99, std::max<size_t>(blockCount, 1)});
    m_backlog = std::min<uint64_t>(99 - workerCount, workerCount);
    m_jobs.resize(blockCount);
    setProgress(Parsing, 0.1);

    std::vector<std::thread> workers;
    workers.reserve(workerCount);
    for (size_t i = 0; i < workerCount; ++i)
        workers.emplace_back([this] { workerLoop(); });

    // The workers must be joined whatever happens here.
    try {
        for (size_t i = 0; i < blockCount && !m_failed.load(); ++i) {
            const ObjChunk& chunk = m_chunks[i];
            char* buffer = takeBuffer();
            uint64_t total = 0;
            while (total < chunk.size) {
                const qint64 got = m_device->read(buffer + total, static_cast<qint64>(chunk.size - total));
                if (got <= 0)
                    break;
                total += static_cast<uint64_t>(got);
            }
            if (total != chunk.size) {
                releaseBuffer(buffer);
                m_errors.add(ObjError::Open, QStringLiteral("Error while reading file"));
                fail();
                break;
            }
            buffer[chunk.size] = '\n';
            buffer[chunk.size + 1] = '\0';

            auto job = std::make_unique<ObjParseJob>();
            job->buffer = buffer;
            job->chunk = chunk;
            {
                std::lock_guard<std::mutex> lock(m_queueMutex);
                m_jobs[i] = std::move(job);
                m_queued = i + 1;
            }
            m_workAvailable.notify_one();

            mergeReadyJobs();
            std::unique_lock<std::mutex> lock(m_queueMutex);
            m_jobDone.wait(lock, [this] {
                const uint64_t taken = std::min(m_nextTicket.load(), m_queued);
                return m_failed.load() || m_queued - taken <= m_backlog;
            });
        }

        {
            std::lock_guard<std::mutex> lock(m_queueMutex);
            m_readingFinished = true;
        }
        m_workAvailable.notify_all();

        for (;;) {
            {
                std::unique_lock<std::mutex> lock(m_queueMutex);
                m_jobDone.wait(lock, [this] {
                    return m_failed.load() || m_merged >= m_queued || m_jobs[m_merged]->done.load();
                });
                if (m_failed.load() || m_merged >= m_queued)
                    break;
            }
            mergeReadyJobs();
        }
    } catch (const std::bad_alloc&) {
        m_errors.add(ObjError::Open, QStringLiteral("Not enough memory to read the file"));
        fail();
        std::lock_guard<std::mutex> lock(m_queueMutex);
        m_readingFinished = true;
    }
    m_workAvailable.notify_all();

    for (std::thread& worker : workers)
        worker.join();
    // The text blocks are read; their memory serves the reindexing.
    m_freeBuffers.clear();
    m_allBuffers.clear();
}

void ObjFileParser::workerLoop()
{
    for (;;) {
        const uint64_t ticket = m_nextTicket.fetch_add(1);
        ObjParseJob* job = nullptr;
        {
            std::unique_lock<std::mutex> lock(m_queueMutex);
            m_workAvailable.wait(lock, [&] {
                return m_failed.load() || ticket < m_queued || m_readingFinished;
            });
            if (m_failed.load() || ticket >= m_queued)
                return;
            job = m_jobs[ticket].get();
        }

        try {
            m_blockParser->parse(*job);
        } catch (const std::bad_alloc&) {
            m_errors.add(ObjError::Open, QStringLiteral("Not enough memory to read the file"));
            fail();
        }
        releaseBuffer(job->buffer);
        job->buffer = nullptr;
        {
            std::lock_guard<std::mutex> lock(m_queueMutex);
            job->done.store(true);
        }
        m_jobDone.notify_all();
    }
}

void ObjFileParser::mergeReadyJobs()
{
    const double blockCount = static_cast<double>(std::max<size_t>(m_jobs.size(), 1));
    for (;;) {
        ObjParseJob* job = nullptr;
        {
            std::lock_guard<std::mutex> lock(m_queueMutex);
            if (m_merged >= m_queued || !m_jobs[m_merged]->done.load())
                return;
            job = m_jobs[m_merged].get();
        }
        mergeJob(*job);
        ++m_merged;
        setProgress(Parsing, 0.1 + 0.7 * static_cast<double>(m_merged) / blockCount);
    }
}

void ObjFileParser::mergeJob(ObjParseJob& job)
{
    m_result.hasNormals = m_result.hasNormals || job.hasNormals;
    m_result.hasTexcoords = m_result.hasTexcoords || job.hasTexcoords;
    m_result.colors.insert(m_result.colors.end(), job.colors.begin(), job.colors.end());
    ObjVector4List().swap(job.colors);

    for (ObjGroupRecord& record : job.groupRecords) {
        if (!record.material.empty())
            record.materialId = static_cast<uint16_t>(nameId(m_materialIds, m_result.materials, record.material));
        if (!record.group.empty())
            record.groupId = static_cast<uint16_t>(nameId(m_groupIds, m_result.groups, record.group));
        if (!record.object.empty())
            record.objectId = nameId(m_objectIds, m_result.objects, record.object);
    }
}

bool ObjFileParser::validate()
{
    const size_t colorCount = m_result.colors.size();
    if (colorCount > 1 && colorCount != m_result.positions.size()) {
        m_errors.add(ObjError::InvalidData, QStringLiteral("number of colors and vertices do not match.\n"));
        return false;
    }

    const uint64_t positionCount = m_result.positions.size();
    const uint64_t texcoordCount = m_result.texcoords.size();
    const uint64_t normalCount = m_result.normals.size();
    auto outOfRange = [](int32_t index, uint64_t count) {
        return index < 0 || static_cast<uint64_t>(index) >= count;
    };
    for (const auto& job : m_jobs) {
        if (job->firstInvalidFace < 0)
            continue;
        const ObjTriangle& triangle = job->faces[static_cast<size_t>(job->firstInvalidFace)];
        ObjFaceVertex bad = triangle.corners[0];
        for (const ObjFaceVertex& corner : triangle.corners) {
            if (outOfRange(corner.position, positionCount) || outOfRange(corner.texcoord, texcoordCount)
                || outOfRange(corner.normal, normalCount)) {
                bad = corner;
                break;
            }
        }
        m_errors.add(ObjError::InvalidData,
                     QStringLiteral("invalid indices (index / first_invalid_index)\n"
                                    "  position: %1 / %2\n"
                                    "  normal: %3 / %4\n"
                                    "  tex coord: %5 / %6")
                         .arg(bad.position).arg(positionCount)
                         .arg(bad.normal).arg(normalCount)
                         .arg(bad.texcoord).arg(texcoordCount));
        return false;
    }
    return true;
}

void ObjFileParser::computeNormals()
{
    // Every face weighs the same, whatever its area; smoothing groups are
    // not looked at here. Each thread owns a range of positions and sums
    // the faces that touch it in file order, so the sums are those of one
    // thread; on meshes stored in spatial order a face touches one range.
    ObjVector3List& normals = m_result.normals;
    const ObjVector3List& positions = m_result.positions;
    normals.assign(positions.size(), Eigen::Vector3f::Zero());
    const size_t count = positions.size();
    const size_t threads = std::max<size_t>(1, std::min<size_t>(Ond::Core::threadCount(), count / 65536 + 1));

    auto sum = [&](size_t first, size_t last) {
        const size_t span = last - first;
        for (const auto& job : m_jobs) {
            for (const ObjTriangle& triangle : job->faces) {
                const size_t i0 = static_cast<size_t>(triangle.corners[0].position);
                const size_t i1 = static_cast<size_t>(triangle.corners[1].position);
                const size_t i2 = static_cast<size_t>(triangle.corners[2].position);
                const bool own0 = i0 - first < span, own1 = i1 - first < span, own2 = i2 - first < span;
                if (!(own0 || own1 || own2))
                    continue;
                Eigen::Vector3f normal = (positions[i1] - positions[i0]).cross(positions[i2] - positions[i0]);
                const float length = normal.norm();
                if (length > NormalEpsilon)
                    normal /= length;
                if (own0)
                    normals[i0] += normal;
                if (own1)
                    normals[i1] += normal;
                if (own2)
                    normals[i2] += normal;
            }
        }
        for (size_t i = first; i < last; ++i) {
            const float length = normals[i].norm();
            if (length > NormalEpsilon)
                normals[i] /= length;
        }
    };
    // Corners take their position's normal; each thread a share of the blocks.
    auto point = [&](size_t part) {
        for (size_t j = part; j < m_jobs.size(); j += threads)
            for (ObjTriangle& triangle : m_jobs[j]->faces)
                for (ObjFaceVertex& corner : triangle.corners)
                    corner.normal = corner.position;
    };

    runOnThreads(threads, [&](size_t t) { sum(count * t / threads, count * (t + 1) / threads); });
    runOnThreads(threads, point);

    m_result.hasNormals = true;
    m_normalsComputed = true;
}

void ObjFileParser::reindex()
{
    setProgress(Reindexing, 0.85);
    size_t triangleCount = 0;
    for (const auto& job : m_jobs)
        triangleCount += job->faces.size();
    // Normals computed here follow the positions; without texture
    // coordinates or smoothing groups a position names its vertex.
    bool positionKeyed = m_normalsComputed && !m_result.hasTexcoords;
    for (const auto& job : m_jobs)
        for (const ObjSmoothingRun& run : job->smoothingRuns)
            positionKeyed = positionKeyed && run.second == 0;
    ObjReindexer reindexer(m_result, triangleCount, positionKeyed);
    size_t released = 0;
    for (auto& job : m_jobs) {
        if (m_failed.load())
            return;
        reindexer.addBlock(*job);
        released += job->faces.capacity() * sizeof(ObjTriangle);
        job.reset(); // its faces are no longer needed: keeps the peak down
        // Face lists of 1 MiB blocks sit in the allocator's arenas, which keep
        // freed memory; hand it back as the mesh buffers grow, or the peak is
        // faces and buffers together.
        if (released >= ReleaseBytes) {
            ::malloc_trim(0);
            released = 0;
        }
    }
    ::malloc_trim(0);
    m_meshes = reindexer.finish(m_result);
    m_result = ObjParseResult();
}

} // namespace Ond::SceneLoad
