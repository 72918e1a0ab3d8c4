#include "scene/fbx/AssimpInputGuard.h"

#include <cstring>

namespace Ond::SceneLoad {

namespace {

// PLY: the header reader loops at the end of the input when no line is
// "end_header" (a cut header, or the keyword run into another line).
bool plyHeaderEnds(const char* data, size_t size)
{
    static const char key[] = "\nend_header";
    const size_t keyLength = sizeof(key) - 1;
    const size_t window = size < (size_t(1) << 20) ? size : (size_t(1) << 20);
    for (size_t i = 0; i + keyLength < window; ++i) {
        if (data[i] == '\n' && std::memcmp(data + i, key, keyLength) == 0) {
            const char next = data[i + keyLength];
            return next == '\n' || next == '\r';
        }
    }
    return false;
}

// COLLADA: the index lists <p>, <v>, <vcount> and <h> are read by a loop
// that stops moving on any character that is neither a digit nor a blank.
bool colladaIndexListsClean(const char* data, size_t size)
{
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

} // namespace

QString knownHangIn(const QByteArray& suffix, const char* data, size_t size)
{
    if (suffix.compare("ply", Qt::CaseInsensitive) == 0 && !plyHeaderEnds(data, size))
        return QStringLiteral("the header has no \"end_header\" line");
    if (suffix.compare("dae", Qt::CaseInsensitive) == 0 && !colladaIndexListsClean(data, size))
        return QStringLiteral("an index list holds something other than numbers");
    return QString();
}

} // namespace Ond::SceneLoad
