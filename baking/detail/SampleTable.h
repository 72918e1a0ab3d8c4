#pragma once
// Directions shared by every texel of a bake: a spherical cap around +z,
// spread by the golden ratio in azimuth and stratified in height. Each
// primary hit rotates the whole table by its blue-noise angle instead of
// drawing its own directions.

#include "baking/detail/GrabbedMesh.h"
#include "baking/detail/SecondaryRayParams.h"

namespace Ond::Baking {

class SampleTable
{
public:
    // `spreadAngle` is the full opening of the cap in degrees (180 is the
    // hemisphere). Samples run from the rim (smallest z) to the pole.
    SampleTable(SampleDistribution distribution, float spreadAngle, unsigned count);

    unsigned count() const { return m_count; }
    // (x, y, z, 0) of sample i, z along the normal.
    const float* sample(unsigned i) const { return m_samples.data() + size_t(i) * 4; }
    const float* data() const { return m_samples.data(); }

    // The azimuth of sample i in radians, from the golden-ratio sequence.
    static float azimuth(unsigned i);

private:
    unsigned m_count = 0;
    AlignedArray<float> m_samples;
};

} // namespace Ond::Baking
