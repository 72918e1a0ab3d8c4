// The property model: bounds tests, conversions on set, and the rules by
// which settings show, hide and re-bound one another.

#include "baking/BakerCatalogue.h"
#include "baking/PropertyBag.h"
#include "baking/PropertyEnum.h"
#include "baking/PropertyNumerical.h"

#include <QColor>
#include <QPoint>
#include <QSize>

#include <gtest/gtest.h>

#include <limits>

using namespace Ond::Baking;

namespace {

std::vector<std::string> bakerIds(const std::string& identifier)
{
    std::vector<std::string> ids = commonPropertyIdentifiers();
    const std::vector<std::string> own = ownPropertyIdentifiers(identifier);
    ids.insert(ids.end(), own.begin(), own.end());
    return ids;
}

PropertyBag makeBag(const std::string& identifier)
{
    return PropertyBag(identifier, bakerIds(identifier), "filter", "");
}

float maximumOf(PropertyBag& bag, const std::string& id)
{
    return dynamic_cast<PropertyNumerical<float>&>(bag[id]).maximum();
}

} // namespace

TEST(PropertyRange, EnumAcceptsIndexEqualToCountButNotAbove)
{
    PropertyEnum choice(0, {"a", "b", "c"}, "label", "help");
    choice.setValue(3);
    EXPECT_TRUE(choice.isInRange());
    choice.setValue(4);
    EXPECT_FALSE(choice.isInRange());
    choice.setValue(-1);
    EXPECT_FALSE(choice.isInRange());
}

TEST(PropertyRange, NumbersAreInclusiveAndPairsComponentWise)
{
    PropertyNumerical<int> number(1, 0, 8, 1, 4, "l", "h");
    number.setValue(8);
    EXPECT_TRUE(number.isInRange());
    number.setValue(9);
    EXPECT_FALSE(number.isInRange());

    PropertyNumerical<ComparableInt2> pair({9, 9}, {5, 5}, {13, 13}, {1, 1}, 4, "l", "h");
    pair.setValue(ComparableInt2{13, 5});
    EXPECT_TRUE(pair.isInRange());
    pair.setValue(ComparableInt2{4, 11});
    EXPECT_FALSE(pair.isInRange());
}

TEST(PropertyBagAccess, UnknownIdentifierThrowsAndUnknownListEntryIsSkipped)
{
    PropertyBag bag("position", {"Common.UVSet", "No.Such.Property"}, "", "");
    EXPECT_TRUE(bag.contains("Common.UVSet"));
    EXPECT_FALSE(bag.contains("No.Such.Property"));
    EXPECT_EQ(bag.identifiers().size(), 2u);
    try {
        bag["No.Such.Property"];
        FAIL() << "expected std::out_of_range";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "invalid map<K, T> key");
    }
}

TEST(PropertySetter, ConvertsByTypeAndStoresOutOfRangeValues)
{
    PropertyBag bag = makeBag("heightfrommesh");
    // Integers from text, with the boolean fallback for words.
    setPropertyValue(bag, "Common.UVSet", QVariant(QStringLiteral("3")));
    EXPECT_EQ(bag["Common.UVSet"].valueAs<int>(), 3);
    setPropertyValue(bag, "Common.DilationWidth", QVariant(QStringLiteral("true")));
    EXPECT_EQ(bag["Common.DilationWidth"].valueAs<int>(), 1);
    // Floats with a point, whatever the locale.
    setPropertyValue(bag, "Detail.MaxDepth", QVariant(QStringLiteral("5")));
    EXPECT_FLOAT_EQ(bag["Detail.MaxDepth"].valueAs<float>(), 5.0f);
    EXPECT_FALSE(bag["Detail.MaxDepth"].isInRange());
    setPropertyValue(bag, "Detail.UseCage", QVariant(QStringLiteral("true")));
    EXPECT_TRUE(bag["Detail.UseCage"].valueAs<bool>());
    // Sizes for the output size, points for the tile.
    setPropertyValue(bag, "Common.OutputSize", QVariant(QSize(10, 11)));
    EXPECT_EQ(bag["Common.OutputSize"].valueAs<ComparableInt2>(), (ComparableInt2{10, 11}));
    setPropertyValue(bag, "Common.UVTile", QVariant(QPoint(1, 2)));
    EXPECT_EQ(bag["Common.UVTile"].valueAs<ComparableInt2>(), (ComparableInt2{1, 2}));
    setPropertyValue(bag, "Detail.SkewMap", QVariant(QStringLiteral("file:///tmp/skew.png")));
    EXPECT_EQ(bag["Detail.SkewMap"].valueAs<std::string>(), "file:///tmp/skew.png");
}

TEST(PropertySetter, InvalidColourIsIgnored)
{
    PropertyBag bag("uvmask", bakerIds("uvmask"), "", "");
    setPropertyValue(bag, "Mask.FGColor", QVariant(QStringLiteral("not a colour")));
    EXPECT_EQ(bag["Mask.FGColor"].valueAs<ComparableColorInt4>(), (ComparableColorInt4{255, 0, 0, 255}));
    setPropertyValue(bag, "Mask.FGColor", QVariant(QColor(1, 2, 3, 4)));
    EXPECT_EQ(bag["Mask.FGColor"].valueAs<ComparableColorInt4>(), (ComparableColorInt4{1, 2, 3, 4}));
}

TEST(PropertyRules, RelativeScaleSetsTheDistanceMaximaButNeverClampsValues)
{
    PropertyBag bag = makeBag("normalfrommesh");
    setPropertyValue(bag, "Detail.MaxDepth", QVariant(QStringLiteral("5")));
    const auto touched = setPropertyValue(bag, "Detail.RelativeScale", QVariant(false));
    EXPECT_EQ(touched, (std::vector<std::string>{"Detail.MaxHeight", "Detail.MaxDepth", "Detail.RelativeScale"}));
    EXPECT_EQ(maximumOf(bag, "Detail.MaxDepth"), std::numeric_limits<float>::max());
    EXPECT_TRUE(bag["Detail.MaxDepth"].isInRange());

    setPropertyValue(bag, "Detail.RelativeScale", QVariant(true));
    EXPECT_FLOAT_EQ(maximumOf(bag, "Detail.MaxHeight"), 1.0f);
    EXPECT_FALSE(bag["Detail.MaxDepth"].isInRange());
    EXPECT_FLOAT_EQ(bag["Detail.MaxDepth"].valueAs<float>(), 5.0f);
}

TEST(PropertyRules, DivisorShowsOnlyForManualHeightNormalization)
{
    PropertyBag height = makeBag("heightfrommesh");
    setPropertyValue(height, "Detail.Distance.MaximizeRange", QVariant(3));
    EXPECT_TRUE(height["Detail.Distance.Divisor"].isVisible());
    setPropertyValue(height, "Detail.Distance.MaximizeRange", QVariant(2));
    EXPECT_FALSE(height["Detail.Distance.Divisor"].isVisible());

    PropertyBag thickness = makeBag("thicknessfrommesh");
    EXPECT_EQ(thickness.update("Detail.Distance.MaximizeRange"), std::vector<std::string>{});
}

TEST(PropertyRules, CageHidesDistancesAndSkewFollowsItsSwitch)
{
    PropertyBag bag = makeBag("heightfrommesh");
    setPropertyValue(bag, "Detail.SkewCorrection", QVariant(true));
    EXPECT_TRUE(bag["Detail.SkewMap"].isVisible());

    const auto touched = setPropertyValue(bag, "Detail.UseCage", QVariant(true));
    const std::vector<std::string> expected = {
        "Detail.RelativeScale", "Detail.SmoothNormals", "Detail.MaxHeight", "Detail.MaxDepth",
        "Detail.SkewCorrection", "Detail.InvertSkewCorrection", "Detail.SkewMap", "Detail.Distance.MaximizeRange",
        "Detail.Distance.Divisor", "Detail.UseCage"};
    EXPECT_EQ(touched, expected);
    EXPECT_FALSE(bag["Detail.MaxHeight"].isVisible());
    EXPECT_FALSE(bag["Detail.SkewMap"].isVisible());
    EXPECT_TRUE(bag["Detail.Distance.MaximizeRange"].isVisible());
    EXPECT_FALSE(bag["Detail.Distance.Divisor"].isVisible());

    setPropertyValue(bag, "Detail.UseCage", QVariant(false));
    EXPECT_TRUE(bag["Detail.MaxHeight"].isVisible());
    EXPECT_TRUE(bag["Detail.InvertSkewCorrection"].isVisible());
}

TEST(PropertyRules, NormalMapShowsWorldSpaceAndGreenInversion)
{
    PropertyBag ao = makeBag("aofrommesh");
    EXPECT_FALSE(ao["Additional.InvertGreen"].isVisible());
    auto touched = setPropertyValue(ao, "Additional.NormalMap", QVariant(QStringLiteral("n.png")));
    EXPECT_EQ(touched, (std::vector<std::string>{"Additional.NormalWorldSpace", "Additional.InvertGreen",
                                                 "Additional.NormalMap"}));
    EXPECT_TRUE(ao["Additional.NormalWorldSpace"].isVisible());
    EXPECT_TRUE(ao["Additional.InvertGreen"].isVisible());
    // A world-space map has no green convention.
    setPropertyValue(ao, "Additional.NormalWorldSpace", QVariant(true));
    EXPECT_FALSE(ao["Additional.InvertGreen"].isVisible());
    setPropertyValue(ao, "Additional.NormalMap", QVariant(QString()));
    EXPECT_FALSE(ao["Additional.NormalWorldSpace"].isVisible());

    // The world-space normal baker has no world-space flag, but its bake type decides.
    PropertyBag nws = makeBag("normalworldspace");
    setPropertyValue(nws, "NWS.BakeType", QVariant(1));
    EXPECT_FALSE(nws["Additional.NormalMap"].isVisible());
    touched = setPropertyValue(nws, "Additional.NormalMap", QVariant(QStringLiteral("n.png")));
    EXPECT_EQ(touched, (std::vector<std::string>{"Additional.InvertGreen", "Additional.NormalMap"}));
    EXPECT_FALSE(nws["Additional.InvertGreen"].isVisible());
    setPropertyValue(nws, "NWS.BakeType", QVariant(0));
    EXPECT_TRUE(nws["Additional.InvertGreen"].isVisible());
    EXPECT_TRUE(nws["Additional.NormalMap"].isVisible());
}

TEST(PropertyRules, LowAsHighTouchesNormalInputsOnlyForAmbientOcclusion)
{
    PropertyBag ao = makeBag("aofrommesh");
    setPropertyValue(ao, "Detail.LowAsHigh", QVariant(false));
    EXPECT_FALSE(ao["Additional.NormalMap"].isVisible());
    setPropertyValue(ao, "Detail.LowAsHigh", QVariant(true));
    EXPECT_TRUE(ao["Additional.NormalMap"].isVisible());
    EXPECT_TRUE(ao["Additional.InvertGreen"].isVisible());

    PropertyBag curvature = makeBag("curvature1frommesh");
    EXPECT_EQ(curvature.update("Detail.LowAsHigh"), std::vector<std::string>{});
}

TEST(PropertyRules, SingleSwitchRules)
{
    PropertyBag position = makeBag("position");
    EXPECT_FALSE(position["Position.Axis"].isVisible());
    setPropertyValue(position, "Position.Mode", QVariant(1));
    EXPECT_TRUE(position["Position.Axis"].isVisible());
    setPropertyValue(position, "Position.Normalization", QVariant(2));
    EXPECT_FALSE(position["Position.NormalizationScale"].isVisible());

    PropertyBag direction = makeBag("worldspacedirection");
    setPropertyValue(direction, "WorldDirection.ConstDirection", QVariant(0));
    EXPECT_TRUE(direction["WorldDirection.DirectionMap"].isVisible());
    EXPECT_FALSE(direction["WorldDirection.Y"].isVisible());

    PropertyBag color = makeBag("colorfrommesh");
    setPropertyValue(color, "Detail.Color.ColorSource", QVariant(1));
    EXPECT_FALSE(color["Detail.Color.ColorGenerator"].isVisible());
    setPropertyValue(color, "Detail.Color.ColorSource", QVariant(3));
    EXPECT_TRUE(color["Detail.Color.ColorGenerator"].isVisible());

    PropertyBag curvature1 = makeBag("curvature1frommesh");
    setPropertyValue(curvature1, "Detail.SecondaryCommon.MaxDistanceRelativeScale", QVariant(true));
    const auto& radius = dynamic_cast<PropertyNumerical<float>&>(curvature1["Detail.Curvature1.SamplingRadius"]);
    EXPECT_FLOAT_EQ(radius.maximum(), 0.01f);
    setPropertyValue(curvature1, "Detail.Curvature1.AutoMinMax", QVariant(false));
    EXPECT_TRUE(curvature1["Detail.Curvature1.TonemappingMax"].isVisible());
}

TEST(PropertyRules, PerVertexCurvatureHidesTheNormalMapAndItsCompanions)
{
    PropertyBag bag = makeBag("curvature");
    setPropertyValue(bag, "Additional.NormalMap", QVariant(QStringLiteral("n.png")));
    EXPECT_TRUE(bag["Additional.InvertGreen"].isVisible());
    setPropertyValue(bag, "Curvature.PerVertex", QVariant(1));
    EXPECT_FALSE(bag["Additional.NormalMap"].isVisible());
    EXPECT_FALSE(bag["Additional.InvertGreen"].isVisible());
    EXPECT_FALSE(bag["Additional.NormalWorldSpace"].isVisible());
    setPropertyValue(bag, "Curvature.PerVertex", QVariant(0));
    EXPECT_TRUE(bag["Additional.InvertGreen"].isVisible());
    EXPECT_TRUE(bag["Additional.NormalWorldSpace"].isVisible());
}
