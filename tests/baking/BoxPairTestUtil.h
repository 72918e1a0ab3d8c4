#pragma once
// Shared by the tests that bake the reference box pair through the real
// binary: the run and the read-back of its one map, the reference maps, and
// the texels safely inside the UV islands.

#include "image/Surface.h"

#include <QString>
#include <QStringList>

#include <cmath>
#include <vector>

namespace BoxPair {

using Ond::Surfaces::SurfaceSPtr;

SurfaceSPtr toRgbaFloat(const SurfaceSPtr& surface);

// Any file the codecs read, as RGBA float; null when it does not load.
SurfaceSPtr loadRgbaFloat(const QString& path);

// A file of the reference data.
QString testFile(const QString& name);

// Runs `baker` on box_low.obj with `options` into a fresh folder and loads
// the one map it wrote. A failed run or another number of files fails the
// test. `log` gets what the run printed.
SurfaceSPtr bakeBoxLow(const QString& baker, const QStringList& options, QString* log = nullptr);

// The reference's set-up, the high mesh left out: 1024 by 1024, rays from
// 0.1 in front of the low surface reaching 0.1 behind it along the mesh's
// own normals, first hit whatever its facing, no dilation, TIFF output.
QStringList referenceOptions();

// Texels the reference mask covers (1024 by 1024), row by row.
std::vector<char> referenceIslands();

// The set texels of a w by h grid whose (2r + 1)^2 neighbourhood is set
// too: island borders are where two rasterisers may disagree by a texel.
std::vector<char> erode(const std::vector<char>& inside, int w, int h, int radius);

// Pearson correlation of paired values, added one pair at a time.
struct Correlation
{
    double n = 0, sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;

    void add(double a, double b)
    {
        n += 1;
        sa += a;
        sb += b;
        saa += a * a;
        sbb += b * b;
        sab += a * b;
    }
    double meanA() const { return sa / n; }
    double meanB() const { return sb / n; }
    double pearson() const;
};

} // namespace BoxPair
