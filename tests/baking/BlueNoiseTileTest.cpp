// The shipped blue-noise tile: an exact histogram, and a spectrum with
// little energy at low frequencies, where white noise has as much as
// anywhere.

#include "baking/BlueNoiseTile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numeric>
#include <random>
#include <vector>

using namespace Ond::Baking;

namespace {

constexpr int N = BlueNoiseTile::Size;

// Mean power of the DFT over the frequencies 0 < |k| <= maxK (in cycles per
// tile), by a separable transform restricted to those frequencies.
double lowFrequencyPower(const std::vector<double>& tile, int maxK)
{
    const double pi = 3.14159265358979323846;
    const double mean = std::accumulate(tile.begin(), tile.end(), 0.0) / tile.size();
    const int span = 2 * maxK + 1;
    std::vector<std::complex<double>> twiddle(N);
    for (int i = 0; i < N; ++i)
        twiddle[i] = std::polar(1.0, -2.0 * pi * i / N);

    // Rows first: for every row, the frequencies -maxK..maxK along x.
    std::vector<std::complex<double>> rows(size_t(N) * span);
    for (int y = 0; y < N; ++y)
        for (int kx = -maxK; kx <= maxK; ++kx) {
            std::complex<double> sum = 0.0;
            for (int x = 0; x < N; ++x)
                sum += (tile[y * N + x] - mean) * twiddle[((kx * x) % N + N) % N];
            rows[size_t(y) * span + kx + maxK] = sum;
        }
    double power = 0.0;
    int count = 0;
    for (int ky = -maxK; ky <= maxK; ++ky)
        for (int kx = -maxK; kx <= maxK; ++kx) {
            const int r2 = kx * kx + ky * ky;
            if (r2 == 0 || r2 > maxK * maxK)
                continue;
            std::complex<double> sum = 0.0;
            for (int y = 0; y < N; ++y)
                sum += rows[size_t(y) * span + kx + maxK] * twiddle[((ky * y) % N + N) % N];
            power += std::norm(sum);
            ++count;
        }
    return power / count;
}

std::vector<double> tileValues()
{
    const uint8_t* data = BlueNoiseTile::data();
    return std::vector<double>(data, data + BlueNoiseTile::ByteCount);
}

} // namespace

TEST(BlueNoiseTile, EveryValueAppearsEquallyOften)
{
    std::vector<int> histogram(256, 0);
    const uint8_t* data = BlueNoiseTile::data();
    for (int i = 0; i < BlueNoiseTile::ByteCount; ++i)
        ++histogram[data[i]];
    for (int v = 0; v < 256; ++v)
        EXPECT_EQ(histogram[v], 256) << "value " << v;
    const std::vector<double> values = tileValues();
    EXPECT_EQ(std::accumulate(values.begin(), values.end(), 0.0) / values.size(), 127.5);
}

TEST(BlueNoiseTile, LowFrequenciesAreWellBelowWhiteNoise)
{
    const std::vector<double> tile = tileValues();
    std::vector<double> shuffled = tile;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(7));
    // Up to an eighth of the sampling rate.
    const double blue = lowFrequencyPower(tile, 32);
    const double white = lowFrequencyPower(shuffled, 32);
    EXPECT_LT(blue, 0.01 * white) << "blue " << blue << ", white " << white;
}

TEST(BlueNoiseTile, SamplesRepeatEvery256AndMapToAFullTurn)
{
    EXPECT_EQ(BlueNoiseTile::value(3, 5), BlueNoiseTile::data()[3 + 5 * 256]);
    EXPECT_EQ(BlueNoiseTile::value(256 + 3, 512 + 5), BlueNoiseTile::value(3, 5));
    EXPECT_EQ(BlueNoiseTile::value(-1, -1), BlueNoiseTile::value(255, 255));
    EXPECT_FLOAT_EQ(BlueNoiseTile::angle(7, 9), BlueNoiseTile::value(7, 9) * 0.00390625f * 6.2831855f);
    // The largest value stays below a full turn.
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            ASSERT_LT(BlueNoiseTile::angle(x, y), 6.2831855f);
}
