// The colour sequences for ids: the arithmetic of each generator and the
// ready-made modes.

#include "baking/lowpoly/ColorGenerator.h"
#include "baking/lowpoly/HSLColorGenerator.h"
#include "baking/lowpoly/RandomColorGenerator.h"
#include "baking/lowpoly/UniformColorGenerator.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace Ond::Baking;

TEST(ColorGenerator, HueShiftWalksTheHueCircleInCountSteps)
{
    auto generator = createColorGenerator(1, 4);
    ASSERT_TRUE(generator);
    const float hues[] = {0.0f, 0.25f, 0.5f, 0.75f};
    for (float hue : hues) {
        const QColor c = generator->next();
        ASSERT_TRUE(c.isValid());
        EXPECT_NEAR(c.hslHueF(), hue, 1e-4) << hue;
        EXPECT_NEAR(c.hslSaturationF(), 1.0, 1e-4);
        EXPECT_NEAR(c.lightnessF(), 0.5, 1e-4);
        EXPECT_EQ(c.alpha(), 255);
    }
    // The first colour is pure red.
    EXPECT_EQ(createColorGenerator(1, 4)->next().rgb(), qRgb(255, 0, 0));
}

TEST(ColorGenerator, HueShiftPastItsCountGivesInvalidColours)
{
    // After count calls the hue reaches 1; beyond that Qt refuses the hue.
    HSLColorGenerator generator(4, 0.0f, 1.0f, 0.5f, HSLColorGenerator::Hue);
    for (int i = 0; i < 5; ++i)
        generator.next();
    EXPECT_FALSE(generator.next().isValid());
}

TEST(ColorGenerator, LongSequencesStayValidToTheirLastId)
{
    // A hundred thousand ids: repeated float sums of the step would leave
    // 0..1 some hundreds of ids early.
    for (int mode : {1, 2}) {
        const uint32_t count = 100003;
        auto generator = createColorGenerator(mode, count);
        QColor last;
        for (uint32_t i = 0; i < count; ++i) {
            last = generator->next();
            ASSERT_TRUE(last.isValid()) << mode << " id " << i;
        }
        // The last hue is a hair below a full turn, which QColor keeps as 0.
        const double expected = mode == 1 ? 0.0 : (2.0 * count - 1) / (2.0 * count);
        EXPECT_NEAR(mode == 1 ? last.hslHueF() : last.lightnessF(), expected, 1e-5) << mode;
    }
}

TEST(ColorGenerator, GrayscaleGreysSitInTheMiddlesOfEqualBands)
{
    auto generator = createColorGenerator(2, 4);
    ASSERT_TRUE(generator);
    const float lightness[] = {0.125f, 0.375f, 0.625f, 0.875f};
    for (float l : lightness) {
        const QColor c = generator->next();
        ASSERT_TRUE(c.isValid());
        EXPECT_EQ(c.red(), c.green());
        EXPECT_EQ(c.green(), c.blue());
        EXPECT_NEAR(c.lightnessF(), l, 1e-4) << l;
        EXPECT_NEAR(c.redF(), l, 1.0 / 255.0);
    }
}

TEST(ColorGenerator, MaskBitsChooseTheAxesThatAdvance)
{
    HSLColorGenerator generator(10, 0.1f, 0.2f, 0.3f,
                                HSLColorGenerator::Saturation | HSLColorGenerator::Lightness);
    EXPECT_FLOAT_EQ(generator.getStep(), 0.1f);
    generator.next();
    const QColor c = generator.next();
    EXPECT_NEAR(c.hslHueF(), 0.1, 1e-3);
    EXPECT_NEAR(c.hslSaturationF(), 0.3, 1e-3);
    EXPECT_NEAR(c.lightnessF(), 0.4, 1e-3);
}

TEST(ColorGenerator, RandomScalesDrawsToBytesBlueFirst)
{
    EXPECT_EQ(RandomColorGenerator::channel(0u), 0);
    EXPECT_EQ(RandomColorGenerator::channel(0x80000000u), 127);
    EXPECT_EQ(RandomColorGenerator::channel(0xFFFFFFFFu), 254);
    EXPECT_EQ(RandomColorGenerator::channel(0x01010102u), 1);

    RandomColorGenerator generator(1234);
    QRandomGenerator draws(1234);
    for (int i = 0; i < 20; ++i) {
        const quint64 blue = draws.generate(), green = draws.generate(), red = draws.generate();
        const QColor c = generator.next();
        EXPECT_EQ(c.blue(), int((blue * 255) >> 32));
        EXPECT_EQ(c.green(), int((green * 255) >> 32));
        EXPECT_EQ(c.red(), int((red * 255) >> 32));
        EXPECT_EQ(c.alpha(), 255);
    }
}

TEST(ColorGenerator, UniformAndUnknownModes)
{
    UniformColorGenerator uniform(QColor(10, 20, 30));
    EXPECT_EQ(uniform.next(), QColor(10, 20, 30));
    EXPECT_EQ(uniform.next(), QColor(10, 20, 30));

    auto random = createColorGenerator(0, 3);
    ASSERT_TRUE(random);
    EXPECT_EQ(random->next().alpha(), 255);
    EXPECT_FALSE(createColorGenerator(3, 3));
    EXPECT_FALSE(createColorGenerator(-1, 3));
}
