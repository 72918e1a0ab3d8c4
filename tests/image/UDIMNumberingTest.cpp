// UDIM numbers both ways, at the edges of the ten columns and of 16 bits.

#include "image/UDIMNumbering.h"

#include <gtest/gtest.h>

using Vrn::Baking::tileOfUdim;
using Vrn::Baking::udimOfTile;

TEST(UDIMNumbering, TilesToNumbers)
{
    EXPECT_EQ(udimOfTile(0, 0), 1001);
    EXPECT_EQ(udimOfTile(9, 0), 1010);
    EXPECT_EQ(udimOfTile(0, 1), 1011);
    EXPECT_EQ(udimOfTile(1, 2), 1022);
    EXPECT_EQ(udimOfTile(10, 0), std::nullopt);
    EXPECT_EQ(udimOfTile(0, -1), std::nullopt);
    EXPECT_EQ(udimOfTile(-1, 0), std::nullopt);
    EXPECT_EQ(udimOfTile(4, 6453), 65535);
    EXPECT_EQ(udimOfTile(5, 6453), std::nullopt);
}

TEST(UDIMNumbering, NumbersToTiles)
{
    EXPECT_EQ(tileOfUdim(1010), QPoint(9, 0));
    EXPECT_EQ(tileOfUdim(1011), QPoint(0, 1));
    EXPECT_EQ(tileOfUdim(1022), QPoint(1, 2));
    EXPECT_EQ(tileOfUdim(1000), std::nullopt);
    EXPECT_EQ(tileOfUdim(0), std::nullopt);
    for (int udim = 1001; udim < 1200; ++udim) {
        const QPoint tile = *tileOfUdim(udim);
        EXPECT_EQ(udimOfTile(tile.x(), tile.y()), udim);
    }
}
