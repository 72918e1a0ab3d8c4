#pragma once
// Clocks, resident memory and the whole-program bake options the benches
// share.

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>

namespace ZmfBench {

using Clock = std::chrono::steady_clock;

inline double seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

inline double millisSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// A figure of /proc/self/status ("VmRSS", "VmHWM"), in bytes; -1 when absent.
inline long procStatusBytes(const char* key)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t keyLength = std::char_traits<char>::length(key);
    while (std::getline(status, line))
        if (line.compare(0, keyLength, key) == 0)
            return std::atol(line.c_str() + keyLength + 1) * 1024L;
    return -1;
}

// Lets the next VmHWM reading start from the present resident size.
inline void resetPeakRss()
{
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
}

// The zmfbaker built beside the benches.
inline QString programPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/../zmfbaker");
}

// The options every detail bake of a bench shares: meshes, a square map of
// 2^log2Side, absolute cage distances of 0.1, output into outputDir.
inline QStringList detailBakeOptions(const QString& low, const QString& high, const QString& log2Side,
                                     const QString& outputDir)
{
    return {low,
            QStringLiteral("--highdef-mesh"),
            high,
            QStringLiteral("--output-size"),
            log2Side + ',' + log2Side,
            QStringLiteral("--relative-to-bbox"),
            QStringLiteral("false"),
            QStringLiteral("--max-frontal"),
            QStringLiteral("0.1"),
            QStringLiteral("--max-rear"),
            QStringLiteral("0.1"),
            QStringLiteral("--output-path"),
            outputDir};
}

} // namespace ZmfBench
