#pragma once
// Reads a whole OBJ file. The constructor runs the job and returns when it is
// over: a reader thread scans the file once to count vertices, then hands
// 1 MiB blocks to worker threads that parse them into preallocated arrays,
// and merges their results in file order; the calling thread meanwhile
// forwards progress and watches for cancellation.

#include "scene/obj/ObjErrorList.h"
#include "scene/obj/ObjParseJob.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

class QIODevice;

namespace Ond::Core {
class ProgressInterface;
}

namespace Ond::SceneLoad {

class ObjBlockParser;

class ObjFileParser
{
public:
    ObjFileParser(QIODevice* device, bool computeNormals, Ond::Core::ProgressInterface* progress);
    ~ObjFileParser();

    ObjFileParser(const ObjFileParser&) = delete;
    ObjFileParser& operator=(const ObjFileParser&) = delete;

    std::vector<ObjMesh>& meshes() { return m_meshes; }
    const std::vector<ObjMesh>& meshes() const { return m_meshes; }
    std::vector<ObjError> errors() const { return m_errors.list(); }
    // False once a comment of the sculpting tool's exporter was seen.
    bool notExportedBySculptTool() const { return m_notExportedBySculptTool.load(); }
    bool wasCancelled() const { return m_cancelled.load(); }

    static constexpr uint64_t BlockSize = 1u << 20;
    static constexpr uint64_t LineTail = 1024;

private:
    enum Stage : int { Reading, Parsing, ComputingNormals, Reindexing, Done };

    void run();
    bool open();
    bool scan();
    bool scanFile(int fd, uint64_t fileSize);
    void parseBlocks();
    void workerLoop();
    void mergeReadyJobs();
    void mergeJob(ObjParseJob& job);
    bool validate();
    void computeNormals();
    void reindex();

    char* takeBuffer();
    void releaseBuffer(char* buffer);
    void fail();
    void setProgress(Stage stage, double value);

    QIODevice* m_device;
    const bool m_computeNormals;
    bool m_normalsComputed = false;

    ObjErrorList m_errors;
    std::atomic<bool> m_notExportedBySculptTool{true};
    std::atomic<bool> m_failed{false};
    std::atomic<bool> m_cancelled{false};
    std::atomic<int> m_stage{Reading};
    std::atomic<double> m_progress{0.0};

    std::vector<ObjChunk> m_chunks;
    ObjParseResult m_result;
    std::vector<ObjMesh> m_meshes;

    // Job queue: the reader appends, workers take tickets in order.
    std::mutex m_queueMutex;
    std::condition_variable m_workAvailable; // new job, end of reading or failure
    std::condition_variable m_jobDone;       // a worker finished a job
    std::vector<std::unique_ptr<ObjParseJob>> m_jobs;
    uint64_t m_queued = 0;
    uint64_t m_merged = 0;
    uint64_t m_backlog = 1;
    std::atomic<uint64_t> m_nextTicket{0};
    bool m_readingFinished = false;

    std::mutex m_poolMutex;
    std::vector<char*> m_freeBuffers;
    std::vector<std::unique_ptr<char[]>> m_allBuffers;

    std::unordered_map<std::string, uint32_t> m_materialIds;
    std::unordered_map<std::string, uint32_t> m_groupIds;
    std::unordered_map<std::string, uint32_t> m_objectIds;

    std::unique_ptr<ObjBlockParser> m_blockParser;

    // Caller thread wake-up at the end of the reader thread.
    std::mutex m_stateMutex;
    std::condition_variable m_stateChanged;
    bool m_finished = false;
};

} // namespace Ond::SceneLoad
