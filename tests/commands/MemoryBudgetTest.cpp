// The memory check before a bake: the estimate grows with the texels and
// never overflows, and the refusal names the map and both figures.

#include "commands/MemoryBudget.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace ProgramCommand;

TEST(MemoryBudget, EstimateFollowsTheTexelsAndSaturates)
{
    const double small = bakeMemoryEstimate(5, 5);
    const double big = bakeMemoryEstimate(13, 13);
    EXPECT_GT(big - small, 80.0 * 8192 * 8192 * 0.99);
    EXPECT_DOUBLE_EQ(bakeMemoryEstimate(10, 12), bakeMemoryEstimate(12, 10));
    EXPECT_TRUE(std::isfinite(bakeMemoryEstimate(1000, 1000)));
    EXPECT_DOUBLE_EQ(bakeMemoryEstimate(-3, -3), bakeMemoryEstimate(0, 0));
}

TEST(MemoryBudget, RefusalNamesTheMapAndBothFigures)
{
    constexpr uint64_t GiB = uint64_t(1) << 30;
    EXPECT_EQ(checkBakeMemory(11, 11, GiB), QString());
    EXPECT_EQ(checkBakeMemory(13, 13, 2 * GiB),
              QStringLiteral("Error: Not enough memory to bake a 8192x8192 map: it needs about 5376 MiB, 2048 MiB "
                             "are available."));
    EXPECT_TRUE(checkBakeMemory(31, 31, 1024 * GiB).startsWith(
        QStringLiteral("Error: Not enough memory to bake a 2147483648x2147483648 map")));
    // Nothing known about the machine: only the absurd is refused.
    EXPECT_EQ(checkBakeMemory(14, 14, 0), QString());
    EXPECT_FALSE(checkBakeMemory(31, 31, 0).isEmpty());
}

TEST(MemoryBudget, ThisMachineHasSomeRoom)
{
    const uint64_t room = availableMemory();
    EXPECT_GT(room, uint64_t(64) << 20);
}
