#include "scene/obj/ObjBlockParser.h"

#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>

namespace Ond::SceneLoad {

namespace {

// Every line of a block ends with '\n', so the readers below may look one
// character ahead without a bounds test.

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
inline bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10u; }
inline bool startsWith(const char* p, const char* lineEnd, const char* text, size_t length)
{
    return static_cast<size_t>(lineEnd - p) >= length && std::memcmp(p, text, length) == 0;
}

// Plain decimals such as "-0.123456" with at most 7 significant digits are
// m / 10^k with m and 10^k exact in float, so one division rounds exactly as
// strtof does. Anything else (exponents, long mantissas) goes the long way.
inline bool readPlainDecimal(const char*& p, float& out)
{
    static const float powers[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
    const char* s = p;
    const bool negative = *s == '-';
    s += negative;
    uint32_t mantissa = 0;
    int digits = 0;
    while (isDigit(*s)) {
        mantissa = mantissa * 10u + static_cast<uint32_t>(*s++ - '0');
        if (++digits > 7)
            return false;
    }
    int decimals = 0;
    if (*s == '.') {
        ++s;
        while (isDigit(*s)) {
            mantissa = mantissa * 10u + static_cast<uint32_t>(*s++ - '0');
            ++decimals;
            if (++digits > 7 || decimals > 10)
                return false;
        }
    }
    if (digits == 0 || *s == 'e' || *s == 'E')
        return false;
    const float value = static_cast<float>(mantissa) / powers[decimals];
    out = negative ? -value : value;
    p = s;
    return true;
}

// One float in the syntax of strtof, but independent of the locale.
inline bool readFloat(const char*& p, const char* lineEnd, float& out)
{
    if (readPlainDecimal(p, out))
        return true;
    const char* s = p;
    if (*s == '+') {
        ++s; // from_chars refuses the plus sign that strtof takes
        if (*s == '-' || *s == '+')
            return false;
    }
    const auto result = std::from_chars(s, lineEnd, out, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        // Rare: let the C library choose between infinity and zero.
        out = std::strtof(std::string(s, result.ptr).c_str(), nullptr);
    } else if (result.ec != std::errc()) {
        return false;
    }
    p = result.ptr;
    return true;
}

// `count` floats: leading white space, then numbers separated by spaces only.
// What follows the last one is ignored.
template <int count>
inline bool readFloats(const char* p, const char* lineEnd, float* out)
{
    while (p < lineEnd && isBlank(*p))
        ++p;
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            if (*p != ' ')
                return false;
            while (*p == ' ')
                ++p;
        }
        if (!readFloat(p, lineEnd, out[i]))
            return false;
    }
    return true;
}

// Optional minus and decimal digits; wraps like the unchecked original.
inline bool readInt(const char*& p, int32_t& out)
{
    const char* s = p;
    const bool negative = *s == '-';
    s += negative;
    if (!isDigit(*s))
        return false;
    uint32_t value = 0;
    while (isDigit(*s)) {
        value = value * 10u + static_cast<uint32_t>(*s - '0');
        ++s;
    }
    out = static_cast<int32_t>(negative ? 0u - value : value);
    p = s;
    return true;
}

enum CornerKind : int {
    InvalidCorner = 0,
    PositionOnly = 4,
    PositionNormal = 5,
    PositionTexcoord = 6,
    AllThree = 7,
};
constexpr int TexcoordBit = 2;
constexpr int NormalBit = 1;

inline int readCorner(const char*& p, ObjFaceVertex& corner)
{
    if (!readInt(p, corner.position))
        return InvalidCorner;
    if (*p != '/')
        return PositionOnly;
    ++p;
    if (*p == '/') {
        ++p;
        return readInt(p, corner.normal) ? PositionNormal : InvalidCorner;
    }
    if (!readInt(p, corner.texcoord))
        return InvalidCorner;
    if (*p != '/')
        return PositionTexcoord;
    ++p;
    return readInt(p, corner.normal) ? AllThree : InvalidCorner;
}

// Negative indices count back from the latest element; `count` is the number
// of elements so far, which is also the 1-based index of the latest one.
inline int32_t resolveIndex(int32_t index, uint64_t count)
{
    if (index >= 0)
        return index;
    return static_cast<int32_t>(static_cast<int64_t>(count) + 1 + index);
}

inline bool inRange(int32_t index, uint64_t size)
{
    return index >= 0 && static_cast<uint64_t>(index) < size;
}

inline int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

inline bool readHexByte(const char* p, float& out)
{
    const int high = hexDigit(p[0]);
    const int low = hexDigit(p[1]);
    if (high < 0 || low < 0)
        return false;
    out = static_cast<float>(high * 16 + low) / 255.0f;
    return true;
}

std::string trimmedName(const char* p, const char* lineEnd)
{
    while (p < lineEnd && std::isspace(static_cast<unsigned char>(*p)))
        ++p;
    while (lineEnd > p && std::isspace(static_cast<unsigned char>(lineEnd[-1])))
        --lineEnd;
    return std::string(p, lineEnd);
}

ObjGroupRecord& currentRecord(ObjParseJob& job)
{
    const uint64_t faceCount = job.faces.size();
    if (job.groupRecords.empty() || job.groupRecords.back().firstFace != faceCount) {
        job.groupRecords.emplace_back();
        job.groupRecords.back().firstFace = faceCount;
    }
    return job.groupRecords.back();
}

const char ZBrushHeader[] = "# File exported by ZBrush";
const char ZBrushAddress[] = "# www.zbrush.com";

} // namespace

ObjBlockParser::ObjBlockParser(const ObjAttributeArrays& arrays, ObjErrorList& errors,
                               std::atomic<bool>& notExportedBySculptTool)
    : m_arrays(arrays)
    , m_errors(errors)
    , m_notExportedBySculptTool(notExportedBySculptTool)
{
}

void ObjBlockParser::logLine(const char* message, const char* line, const char* lineEnd,
                             uint64_t lineNumber) const
{
    const QString text = QString::fromUtf8(line, static_cast<int>(lineEnd - line)).trimmed();
    m_errors.add(ObjError::Parsing,
                 QStringLiteral("%1\nline %3 => %2")
                     .arg(QString::fromLatin1(message), text, QString::number(lineNumber)));
}

void ObjBlockParser::parse(ObjParseJob& job) const
{
    const ObjChunk& chunk = job.chunk;
    job.faces.reserve(chunk.faceLines);

    // Counts so far, i.e. the 1-based index of the latest element.
    uint64_t vertexCount = chunk.vertexBase;
    uint64_t texcoordCount = chunk.texcoordBase;
    uint64_t normalCount = chunk.normalBase;

    const char* p = job.buffer;
    const char* const end = job.buffer + chunk.size; // *end == '\n'
    uint64_t lineNumber = 0;

    while (p < end) {
        const char* const lineEnd = static_cast<const char*>(std::memchr(p, '\n', end - p + 1));
        ++lineNumber;

        switch (p[0]) {
        case 's':
            if (p[1] == ' ') {
                const char* q = p + 2;
                while (isBlank(*q))
                    ++q;
                const bool negative = *q == '-';
                q += negative;
                uint32_t value = 0;
                while (isDigit(*q)) {
                    value = value * 10u + static_cast<uint32_t>(*q - '0');
                    ++q;
                }
                job.smoothingRuns.emplace_back(job.faces.size(),
                                               static_cast<int32_t>(negative ? 0u - value : value));
            }
            break;

        case 'o':
            if (p[1] == ' ')
                currentRecord(job).object = trimmedName(p + 2, lineEnd);
            break;

        case 'g':
            if (p[1] == ' ')
                currentRecord(job).group = trimmedName(p + 2, lineEnd);
            break;

        case 'u':
            if (startsWith(p, lineEnd, "usemtl ", 7))
                currentRecord(job).material = trimmedName(p + 7, lineEnd);
            break;

        case 'v':
            if (p[1] == ' ') {
                const uint64_t index = ++vertexCount;
                if (index >= m_arrays.positionCount)
                    break; // cannot happen: the scan counted this line
                float xyz[3];
                Eigen::Vector3f& out = m_arrays.positions[index];
                if (readFloats<3>(p + 2, lineEnd, xyz)) {
                    out = Eigen::Vector3f(xyz[0], xyz[1], xyz[2]);
                } else {
                    out.setZero();
                    logLine("Invalid vertex", p, lineEnd, lineNumber);
                }
            } else if (p[1] == 't') {
                const uint64_t index = ++texcoordCount;
                if (index >= m_arrays.texcoordCount)
                    break;
                float uv[2];
                Eigen::Vector2f& out = m_arrays.texcoords[index];
                if (p + 2 < lineEnd && readFloats<2>(p + 3, lineEnd, uv)) {
                    out = Eigen::Vector2f(uv[0], uv[1]);
                } else {
                    out.setZero();
                    logLine("Invalid texture coordinate", p, lineEnd, lineNumber);
                }
            } else if (p[1] == 'n') {
                const uint64_t index = ++normalCount;
                if (index >= m_arrays.normalCount)
                    break;
                float xyz[3];
                Eigen::Vector3f& out = m_arrays.normals[index];
                if (p + 2 < lineEnd && readFloats<3>(p + 3, lineEnd, xyz)) {
                    out = Eigen::Vector3f(xyz[0], xyz[1], xyz[2]);
                } else {
                    out.setZero();
                    logLine("Invalid normal", p, lineEnd, lineNumber);
                }
            }
            break;

        case '#':
            if (startsWith(p, lineEnd, "#MRGB ", 6)) {
                // MMRRGGBB groups after the keyword; the length rule only
                // holds with the carriage return of a CRLF line.
                const uint64_t length = static_cast<uint64_t>(lineEnd - p);
                if ((length + 1) % 8 != 0) {
                    logLine("Invalid colors", p, lineEnd, lineNumber);
                    break;
                }
                const uint64_t count = (length - 7) / 8;
                const size_t before = job.colors.size();
                job.colors.resize(before + count);
                bool ok = true;
                for (uint64_t i = 0; i < count && ok; ++i) {
                    const char* hex = p + 6 + 8 * i;
                    Eigen::Vector4f& color = job.colors[before + i];
                    ok = readHexByte(hex, color[3]) && readHexByte(hex + 2, color[0])
                        && readHexByte(hex + 4, color[1]) && readHexByte(hex + 6, color[2]);
                }
                if (!ok) {
                    job.colors.resize(before);
                    logLine("Invalid colors", p, lineEnd, lineNumber);
                }
            } else if (m_notExportedBySculptTool.load(std::memory_order_relaxed)
                       && (startsWith(p, lineEnd, ZBrushHeader, sizeof(ZBrushHeader) - 1)
                           || startsWith(p, lineEnd, ZBrushAddress, sizeof(ZBrushAddress) - 1))) {
                m_notExportedBySculptTool.store(false, std::memory_order_relaxed);
            }
            break;

        case 'f':
            if (p[1] == ' ') {
                const char* q = p + 2;
                while (isBlank(*q))
                    ++q;
                ObjFaceVertex corners[4];
                int kinds[4] = {};
                int count = 0;
                for (;;) {
                    const char c = *q;
                    const bool looksLikeCorner = isDigit(c) || c == '-' || c == '+';
                    if (count == 4) {
                        count += looksLikeCorner;
                        break;
                    }
                    // Trailing blanks are no corner; something that starts like
                    // one but is malformed is an invalid corner.
                    if (!looksLikeCorner)
                        break;
                    kinds[count] = readCorner(q, corners[count]);
                    if (kinds[count++] == InvalidCorner || !isBlank(*q))
                        break;
                    while (isBlank(*q))
                        ++q;
                }

                if (count != 3 && count != 4) {
                    logLine("N-Gone face not supported", p, lineEnd, lineNumber);
                    break;
                }
                const int kind = kinds[0];
                bool valid = kind != InvalidCorner;
                for (int i = 1; i < count; ++i)
                    valid = valid && kinds[i] == kind;
                if (!valid) {
                    // A degenerate triangle keeps the face numbering aligned.
                    job.faces.emplace_back();
                    logLine("Invalid face", p, lineEnd, lineNumber);
                    break;
                }

                const bool withTexcoord = (kind & TexcoordBit) != 0;
                const bool withNormal = (kind & NormalBit) != 0;
                job.hasTexcoords = job.hasTexcoords || withTexcoord;
                job.hasNormals = job.hasNormals || withNormal;
                for (int i = 0; i < count; ++i) {
                    ObjFaceVertex& corner = corners[i];
                    corner.position = resolveIndex(corner.position, vertexCount);
                    corner.texcoord = withTexcoord ? resolveIndex(corner.texcoord, texcoordCount) : 0;
                    corner.normal = withNormal ? resolveIndex(corner.normal, normalCount) : 0;
                    if (job.firstInvalidFace < 0
                        && !(inRange(corner.position, m_arrays.positionCount)
                             && inRange(corner.texcoord, m_arrays.texcoordCount)
                             && inRange(corner.normal, m_arrays.normalCount))) {
                        // Index of the triangle that holds this corner.
                        job.firstInvalidFace = static_cast<int64_t>(job.faces.size())
                            + (count == 4 && i == 3 ? 1 : 0);
                    }
                }
                job.faces.push_back({{corners[0], corners[1], corners[2]}});
                if (count == 4)
                    job.faces.push_back({{corners[2], corners[3], corners[0]}});
            }
            break;

        default:
            break;
        }
        p = lineEnd + 1;
    }
}

} // namespace Ond::SceneLoad
