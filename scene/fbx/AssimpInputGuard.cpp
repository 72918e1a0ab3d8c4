#include "scene/fbx/AssimpInputGuard.h"

#include <cstdint>
#include <cstring>

namespace Ond::SceneLoad {

namespace {

// PLY: the header reader loops at the end of the input when no line is
// "end_header" (a cut header, or the keyword run into another line), and
// the body reader loops over whatever count an "element" line states. So
// the header must end, and each element line must be "element <name>
// <count>", the name not starting with a digit, the count one the file can
// hold.
bool plyHeaderSound(const char* data, size_t size)
{
    const size_t window = size < (size_t(1) << 20) ? size : (size_t(1) << 20);
    size_t line = 0;
    while (line < window) {
        const char* start = data + line;
        const char* feed = static_cast<const char*>(std::memchr(start, '\n', window - line));
        if (!feed)
            return false;
        size_t length = size_t(feed - start);
        if (length > 0 && start[length - 1] == '\r')
            --length;
        if (length == 10 && std::memcmp(start, "end_header", 10) == 0)
            return true;
        if (length > 8 && std::memcmp(start, "element ", 8) == 0) {
            const char* c = start + 8;
            const char* end = start + length;
            while (c < end && *c == ' ')
                ++c;
            // A name that begins with a digit is taken for the count.
            if (c == end || (*c >= '0' && *c <= '9'))
                return false;
            while (c < end && *c != ' ')
                ++c;
            while (c < end && *c == ' ')
                ++c;
            uint64_t count = 0;
            const char* digits = c;
            while (c < end && *c >= '0' && *c <= '9' && count <= size)
                count = count * 10 + uint64_t(*c++ - '0');
            while (c < end && *c == ' ')
                ++c;
            if (c == digits || c != end || count > size)
                return false;
        }
        line += size_t(feed - start) + 1;
    }
    return false;
}

// COLLADA: the index lists <p>, <v>, <vcount> and <h> are read by a loop
// that stops moving on any character that is neither a digit nor a blank.
bool colladaIndexListsClean(const char* data, size_t size)
{
    if (size == 0)
        return true; // nothing to misread; the reader refuses it itself
    const char* end = data + size;
    for (const char* at = static_cast<const char*>(std::memchr(data, '<', size)); at;
         at = static_cast<const char*>(std::memchr(at + 1, '<', size_t(end - at - 1)))) {
        const char* name = at + 1;
        size_t nameLength = 0;
        while (name + nameLength < end && name[nameLength] >= 'a' && name[nameLength] <= 'z')
            ++nameLength;
        if (name + nameLength >= end || name[nameLength] != '>')
            continue;
        const bool indexList = (nameLength == 1 && (name[0] == 'p' || name[0] == 'v' || name[0] == 'h'))
            || (nameLength == 6 && std::memcmp(name, "vcount", 6) == 0);
        if (!indexList)
            continue;
        const char* c = name + nameLength + 1;
        for (; c < end && *c != '<'; ++c) {
            const unsigned char ch = static_cast<unsigned char>(*c);
            if (!(ch >= '0' && ch <= '9') && ch != ' ' && ch != '\t' && ch != '\n' && ch != '\r' && ch != '-'
                && ch != '+')
                return false;
        }
        if (end - at <= 1)
            break;
    }
    return true;
}

// GLB: the reader allocates what the header's chunk length claims before
// it looks at the file's size, so a flipped byte asks for gigabytes.
bool glbChunkFits(const char* data, size_t size)
{
    if (size < 20 || std::memcmp(data, "glTF", 4) != 0)
        return true; // not a GLB header: Assimp refuses it by itself
    uint32_t total = 0, chunk = 0;
    std::memcpy(&total, data + 8, 4);
    std::memcpy(&chunk, data + 12, 4);
    return total <= size && uint64_t(chunk) + 20 <= size;
}

// Whether the first bytes hold `token`, in any case: how Assimp recognises
// a file by its content once the reader its suffix names has refused it.
bool headerHolds(const char* data, size_t size, const char* token, size_t searched)
{
    const size_t tokenLength = std::strlen(token);
    const size_t window = size < searched ? size : searched;
    for (size_t at = 0; at + tokenLength <= window; ++at) {
        size_t k = 0;
        while (k < tokenLength && (data[at + k] | 0x20) == token[k])
            ++k;
        if (k == tokenLength)
            return true;
    }
    return false;
}

} // namespace

QString unsafeInputReason(const QByteArray& suffix, const char* data, size_t size)
{
    // A rule holds for its suffix and for content another reader may pass
    // on: the PLY reader reads any file that starts with its magic.
    const bool ply = suffix.compare("ply", Qt::CaseInsensitive) == 0 || headerHolds(data, size, "ply", 3);
    const bool dae = suffix.compare("dae", Qt::CaseInsensitive) == 0 || headerHolds(data, size, "<collada", 1024);
    if (ply && !plyHeaderSound(data, size))
        return QStringLiteral("the header does not end, or an element line would be misread");
    if (dae && !colladaIndexListsClean(data, size))
        return QStringLiteral("an index list holds something other than numbers");
    if (!glbChunkFits(data, size)) // its magic decides
        return QStringLiteral("the header claims more bytes than the file holds");
    return QString();
}

} // namespace Ond::SceneLoad
