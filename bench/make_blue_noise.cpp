// Writes the 256 by 256 blue-noise tile that the ray kernels rotate their
// sample sets by, as 65536 bytes, row after row.
//
//   make_blue_noise <output file>
//
// Void and cluster on a torus: a Gaussian energy (sigma 1.5) marks where
// points crowd; the initial pattern is relaxed until its tightest cluster
// is its largest void, then ranks are given by taking points out of the
// tightest clusters and putting points into the largest voids. A rank r
// becomes the value r / 256, so every value 0..255 occurs 256 times and the
// mean is exactly 127.5. The seed is fixed: the output is reproducible.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr int Size = 256;
constexpr int Count = Size * Size;
constexpr int Radius = 8; // exp(-64 / 4.5) is far below what decides a rank
constexpr double Sigma = 1.5;

class Energy
{
public:
    Energy() : m_field(Count, 0.0), m_kernel((2 * Radius + 1) * (2 * Radius + 1))
    {
        for (int dy = -Radius; dy <= Radius; ++dy)
            for (int dx = -Radius; dx <= Radius; ++dx)
                m_kernel[(dy + Radius) * (2 * Radius + 1) + dx + Radius] =
                    std::exp(-(dx * dx + dy * dy) / (2.0 * Sigma * Sigma));
    }

    void splat(int index, double sign)
    {
        const int x = index % Size, y = index / Size;
        for (int dy = -Radius; dy <= Radius; ++dy) {
            const int yy = (y + dy + Size) & (Size - 1);
            for (int dx = -Radius; dx <= Radius; ++dx) {
                const int xx = (x + dx + Size) & (Size - 1);
                m_field[yy * Size + xx] += sign * m_kernel[(dy + Radius) * (2 * Radius + 1) + dx + Radius];
            }
        }
    }

    // Tightest cluster: the set point of highest energy; largest void: the
    // free point of lowest. Ties go to the first index.
    int tightestCluster(const std::vector<uint8_t>& set) const { return extreme(set, 1, true); }
    int largestVoid(const std::vector<uint8_t>& set) const { return extreme(set, 0, false); }

private:
    int extreme(const std::vector<uint8_t>& set, uint8_t state, bool highest) const
    {
        int best = -1;
        double bestValue = 0.0;
        for (int i = 0; i < Count; ++i) {
            if (set[i] != state)
                continue;
            const double e = m_field[i];
            if (best < 0 || (highest ? e > bestValue : e < bestValue)) {
                best = i;
                bestValue = e;
            }
        }
        return best;
    }

    std::vector<double> m_field;
    std::vector<double> m_kernel;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_blue_noise <output file>\n");
        return 1;
    }

    // Initial pattern: a tenth of the points, at random.
    std::mt19937 random(20251122u);
    std::vector<uint8_t> pattern(Count, 0);
    Energy energy;
    int ones = 0;
    while (ones < Count / 10) {
        const int i = int(random() % Count);
        if (pattern[i])
            continue;
        pattern[i] = 1;
        energy.splat(i, 1.0);
        ++ones;
    }

    // Relax: move the tightest cluster's point to the largest void until the
    // move would put it back where it came from.
    for (int step = 0; step < 4 * Count; ++step) {
        const int cluster = energy.tightestCluster(pattern);
        pattern[cluster] = 0;
        energy.splat(cluster, -1.0);
        const int hole = energy.largestVoid(pattern);
        pattern[hole] = 1;
        energy.splat(hole, 1.0);
        if (hole == cluster)
            break;
    }

    std::vector<int> rank(Count, -1);

    // Ranks below the initial count: empty the pattern cluster by cluster,
    // on a copy, so the relaxed pattern is kept for the upward phase.
    {
        std::vector<uint8_t> shrinking = pattern;
        Energy down = energy;
        for (int r = ones - 1; r >= 0; --r) {
            const int cluster = down.tightestCluster(shrinking);
            shrinking[cluster] = 0;
            down.splat(cluster, -1.0);
            rank[cluster] = r;
        }
    }

    // Ranks above: fill the largest void each time. Past half full this is
    // the tightest cluster of the free points, so one rule serves to the end.
    for (int r = ones; r < Count; ++r) {
        const int hole = energy.largestVoid(pattern);
        pattern[hole] = 1;
        energy.splat(hole, 1.0);
        rank[hole] = r;
    }

    std::vector<uint8_t> tile(Count);
    for (int i = 0; i < Count; ++i)
        tile[i] = uint8_t(rank[i] >> 8);

    std::FILE* out = std::fopen(argv[1], "wb");
    if (!out || std::fwrite(tile.data(), 1, tile.size(), out) != tile.size() || std::fclose(out) != 0) {
        std::fprintf(stderr, "make_blue_noise: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
