#pragma once
// One block of the file on its way through a parse worker. The worker owns
// it until `done` is set; the reader merges it afterwards.

#include "scene/obj/ObjTypes.h"

#include <atomic>
#include <vector>

namespace Ond::SceneLoad {

struct ObjParseJob
{
    char* buffer = nullptr; // block text with a line feed after it; back to the pool when parsed
    ObjChunk chunk;
    std::vector<ObjTriangle> faces;
    ObjVector4List colors;
    std::vector<ObjSmoothingRun> smoothingRuns;
    std::vector<ObjGroupRecord> groupRecords;
    bool hasNormals = false;
    bool hasTexcoords = false;
    // Index in `faces` of the first triangle with an index out of range, or -1.
    int64_t firstInvalidFace = -1;
    std::atomic<bool> done{false};
};

} // namespace Ond::SceneLoad
