#include "scene/fbx/AssimpInputGuard.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace Ond::SceneLoad {

namespace {

// PLY: the header reader loops at the end of the input when no line is
// "end_header" (a cut header, or the keyword run into another line), the
// body reader loops over whatever count an "element" line states, and on
// headers of mixed-up lines it writes past its own arrays. So the header
// must be what writers write: the magic, one format line of version 1.0,
// then comments, "element <name> <count>" with a name not starting with a
// digit and a count the file can hold, "property <type> <name>",
// "property list <type> <type> <name>", and "end_header".
namespace ply {

struct Words
{
    const char* c;
    const char* end;

    // The next blank-separated word, empty at the end of the line.
    std::pair<const char*, size_t> next()
    {
        while (c < end && (*c == ' ' || *c == '\t'))
            ++c;
        const char* first = c;
        while (c < end && *c != ' ' && *c != '\t')
            ++c;
        return {first, size_t(c - first)};
    }
    bool done()
    {
        return next().second == 0;
    }
};

bool is(const std::pair<const char*, size_t>& word, const char* text)
{
    return word.second == std::strlen(text) && std::memcmp(word.first, text, word.second) == 0;
}

bool isType(const std::pair<const char*, size_t>& word)
{
    for (const char* type : {"char", "uchar", "short", "ushort", "int", "uint", "float", "double", "int8", "uint8",
                             "int16", "uint16", "int32", "uint32", "float32", "float64"})
        if (is(word, type))
            return true;
    return false;
}

bool headerSound(const char* data, size_t size)
{
    const size_t window = size < (size_t(1) << 20) ? size : (size_t(1) << 20);
    size_t line = 0;
    int index = 0;
    bool element = false;
    while (line < window) {
        const char* start = data + line;
        const char* feed = static_cast<const char*>(std::memchr(start, '\n', window - line));
        if (!feed)
            return false;
        size_t length = size_t(feed - start);
        if (length > 0 && start[length - 1] == '\r')
            --length;
        Words words{start, start + length};
        const auto keyword = words.next();
        if (index == 0) {
            if (!(is(keyword, "ply") || is(keyword, "PLY")) || !words.done())
                return false;
        } else if (index == 1) {
            const auto format = words.next();
            if (!is(keyword, "format")
                || !(is(format, "ascii") || is(format, "binary_little_endian") || is(format, "binary_big_endian"))
                || !is(words.next(), "1.0") || !words.done())
                return false;
        } else if (is(keyword, "end_header")) {
            return words.done();
        } else if (is(keyword, "comment") || is(keyword, "obj_info")) {
        } else if (is(keyword, "element")) {
            const auto name = words.next();
            const auto count = words.next();
            // A name that begins with a digit is taken for the count.
            if (name.second == 0 || (name.first[0] >= '0' && name.first[0] <= '9') || count.second == 0
                || count.second > 19 || !words.done())
                return false;
            uint64_t n = 0;
            for (size_t k = 0; k < count.second; ++k) {
                if (count.first[k] < '0' || count.first[k] > '9')
                    return false;
                n = n * 10 + uint64_t(count.first[k] - '0');
            }
            if (n > size)
                return false;
            element = true;
        } else if (is(keyword, "property")) {
            auto type = words.next();
            if (!element)
                return false;
            if (is(type, "list")) {
                if (!isType(words.next()))
                    return false;
                type = words.next();
            }
            if (!isType(type) || words.next().second == 0 || !words.done())
                return false;
        } else {
            return false;
        }
        ++index;
        line += size_t(feed - start) + 1;
    }
    return false;
}

} // namespace ply

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

// Binary FBX: the reader allocates the element count an array property
// states before it inflates the array, so a damaged count of a 900-byte
// array asks for gigabytes. Deflate packs at most 1032 to 1; a raw array
// holds its bytes. The walk stops where the records stop making sense and
// leaves the rest to Assimp.
namespace fbx {

struct Reader
{
    const unsigned char* data;
    size_t size;
    bool wide; // 64-bit record fields from version 7500 on
    int depth = 0;

    uint64_t read(size_t at, int bytes) const
    {
        uint64_t value = 0;
        for (int k = bytes - 1; k >= 0; --k)
            value = (value << 8) | data[at + size_t(k)];
        return value;
    }

    // False once an array claims more than its bytes can hold.
    bool records(size_t at, size_t end)
    {
        if (++depth > 64)
            return true;
        const size_t field = wide ? 8 : 4;
        const size_t head = 3 * field + 1;
        while (at + head <= end) {
            const uint64_t next = read(at, int(field));
            const uint64_t count = read(at + field, int(field));
            const uint64_t length = read(at + 2 * field, int(field));
            const size_t name = data[at + 3 * field];
            if (next == 0)
                break;
            if (next <= at || next > end)
                return true;
            size_t p = at + head + name;
            const uint64_t listEnd = uint64_t(p) + length;
            if (listEnd > next)
                return true;
            for (uint64_t i = 0; i < count && p < listEnd; ++i) {
                const char type = char(data[p++]);
                int element = 0;
                switch (type) {
                case 'C': p += 1; continue;
                case 'Y': p += 2; continue;
                case 'I': case 'F': p += 4; continue;
                case 'D': case 'L': p += 8; continue;
                case 'S': case 'R':
                    if (p + 4 > listEnd)
                        return true;
                    p += 4 + size_t(read(p, 4));
                    continue;
                case 'b': element = 1; break;
                case 'i': case 'f': element = 4; break;
                case 'd': case 'l': element = 8; break;
                default: return true;
                }
                if (p + 12 > listEnd)
                    return true;
                const uint64_t elements = read(p, 4), encoding = read(p + 4, 4), stored = read(p + 8, 4);
                const uint64_t claimed = elements * uint64_t(element);
                if (claimed > (encoding == 0 ? stored : stored * 1032 + 64))
                    return false;
                p += 12 + size_t(stored);
            }
            if (listEnd < next && !records(size_t(listEnd), size_t(next)))
                return false;
            at = size_t(next);
        }
        --depth;
        return true;
    }
};

bool arraysFit(const char* data, size_t size)
{
    static const char magic[] = "Kaydara FBX Binary  ";
    if (size < 27 || std::memcmp(data, magic, sizeof(magic) - 1) != 0)
        return true;
    Reader reader{reinterpret_cast<const unsigned char*>(data), size, false};
    reader.wide = reader.read(23, 4) >= 7500;
    return reader.records(27, size);
}

} // namespace fbx

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
    if (ply && !ply::headerSound(data, size))
        return QStringLiteral("the header does not end, or holds a line a PLY writer does not write");
    if (dae && !colladaIndexListsClean(data, size))
        return QStringLiteral("an index list holds something other than numbers");
    if (!fbx::arraysFit(data, size)) // its magic decides
        return QStringLiteral("an array claims more elements than its bytes can hold");
    if (!glbChunkFits(data, size)) // its magic decides
        return QStringLiteral("the header claims more bytes than the file holds");
    return QString();
}

} // namespace Ond::SceneLoad
