#pragma once
// Parses the statements of one block into the shared attribute arrays and the
// block's own face, colour, smoothing and name lists. Runs on many threads at
// once: each block writes only to the index ranges the scan gave it.

#include "scene/obj/ObjErrorList.h"
#include "scene/obj/ObjParseJob.h"

#include <atomic>

namespace Ond::SceneLoad {

// The preallocated arrays, slot 0 included in the counts.
struct ObjAttributeArrays
{
    Eigen::Vector3f* positions = nullptr;
    Eigen::Vector2f* texcoords = nullptr;
    Eigen::Vector3f* normals = nullptr;
    uint64_t positionCount = 0;
    uint64_t texcoordCount = 0;
    uint64_t normalCount = 0;
};

class ObjBlockParser
{
public:
    ObjBlockParser(const ObjAttributeArrays& arrays, ObjErrorList& errors,
                   std::atomic<bool>& notExportedBySculptTool);

    // `job.buffer` holds `job.chunk.size` bytes followed by a line feed.
    void parse(ObjParseJob& job) const;

private:
    void logLine(const char* message, const char* line, const char* lineEnd,
                 uint64_t lineNumber) const;

    ObjAttributeArrays m_arrays;
    ObjErrorList& m_errors;
    std::atomic<bool>& m_notExportedBySculptTool;
};

} // namespace Ond::SceneLoad
