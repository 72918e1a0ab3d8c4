// Spot checks of the baker vocabulary against the documented tables: a
// transcription fault here changes an option name or default for users.

#include "baking/BakerCatalogue.h"
#include "baking/PropertyBag.h"
#include "baking/PropertyCatalogue.h"
#include "baking/PropertyEnum.h"
#include "baking/PropertyNumerical.h"

#include <gtest/gtest.h>

#include <map>

using namespace Ond::Baking;

namespace {

PropertyBag makeBag(const std::string& identifier)
{
    std::vector<std::string> ids = commonPropertyIdentifiers();
    const std::vector<std::string> own = ownPropertyIdentifiers(identifier);
    ids.insert(ids.end(), own.begin(), own.end());
    return PropertyBag(identifier, ids, "", "");
}

bool hasOption(const std::string& identifier, const std::string& option)
{
    PropertyBag bag = makeBag(identifier);
    for (const std::string& id : bag.identifiers())
        if (bag.contains(id) && optionName(id) == option)
            return true;
    return false;
}

} // namespace

TEST(BakerCatalogue, KeysIdentifiersAndSubcommandsInKeyOrder)
{
    const std::vector<std::vector<std::string>> expected = {
        {"GLMapBakerManager.AOFromDetail", "aofrommesh", "ambient-occlusion-from-mesh"},
        {"GLMapBakerManager.BentNormalsFromDetail", "bentnormalsfrommesh", "bent-normal-from-mesh"},
        {"GLMapBakerManager.ColorFromDetail", "colorfrommesh", "color-from-mesh"},
        {"GLMapBakerManager.ColorMap", "uvmap", "uv-map"},
        {"GLMapBakerManager.Curvature", "curvature", "curvature"},
        {"GLMapBakerManager.Curvature1FromDetail", "curvature1frommesh", "curvature-from-mesh-v2"},
        {"GLMapBakerManager.CurvatureFromDetail", "curvaturefrommesh", "curvature-from-mesh"},
        {"GLMapBakerManager.HeightFromDetail", "heightfrommesh", "height-from-mesh"},
        {"GLMapBakerManager.MaskFromDetail", "maskfrommesh", "opacity-mask-from-mesh"},
        {"GLMapBakerManager.NormalFromDetail", "normalfrommesh", "normal-from-mesh"},
        {"GLMapBakerManager.NormalWS", "normalworldspace", "normal-world-space"},
        {"GLMapBakerManager.Position", "position", "position"},
        {"GLMapBakerManager.PositionFromDetail", "positionfrommesh", "position-from-mesh"},
        {"GLMapBakerManager.SeAO", "ambientocclusion", "ambient-occlusion"},
        {"GLMapBakerManager.TextureFromDetail", "texturefrommesh", "texture-from-mesh"},
        {"GLMapBakerManager.ThicknessFromDetail", "thicknessfrommesh", "thickness-from-mesh"},
        {"GLMapBakerManager.WorldDirection", "worldspacedirection", "world-space-direction"},
    };
    const auto& bakers = registeredBakers();
    ASSERT_EQ(bakers.size(), expected.size());
    for (size_t i = 0; i < bakers.size(); ++i) {
        EXPECT_EQ(bakers[i].key, expected[i][0]);
        EXPECT_EQ(bakers[i].identifier, expected[i][1]);
        EXPECT_EQ(bakers[i].subcommand, expected[i][2]);
        EXPECT_EQ(subcommandName(expected[i][1]), expected[i][2]);
    }
    EXPECT_EQ(subcommandName("uvmask"), "");
}

TEST(BakerCatalogue, PropertyCountsPerBaker)
{
    const std::map<std::string, size_t> counts = {
        {"heightfrommesh", 19},    {"normalfrommesh", 19},      {"colorfrommesh", 19},
        {"aofrommesh", 31},        {"bentnormalsfrommesh", 27}, {"maskfrommesh", 17},
        {"thicknessfrommesh", 25}, {"texturefrommesh", 23},     {"positionfrommesh", 21},
        {"curvaturefrommesh", 20}, {"curvature1frommesh", 27},  {"curvature", 12},
        {"normalworldspace", 8},   {"position", 9},             {"ambientocclusion", 13},
        {"worldspacedirection", 11}, {"uvmap", 7},              {"uvmask", 7},
    };
    for (const auto& [identifier, count] : counts) {
        PropertyBag bag = makeBag(identifier);
        EXPECT_EQ(bag.identifiers().size(), count) << identifier;
        for (const std::string& id : bag.identifiers())
            EXPECT_TRUE(bag.contains(id)) << identifier << " lacks a builder for " << id;
    }
}

TEST(BakerCatalogue, OptionsThatOnlySomeBakersHave)
{
    EXPECT_TRUE(hasOption("ambientocclusion", "spread"));
    EXPECT_FALSE(hasOption("ambientocclusion", "spread-angle"));
    EXPECT_TRUE(hasOption("aofrommesh", "spread-angle"));
    EXPECT_FALSE(hasOption("aofrommesh", "spread"));
    EXPECT_FALSE(hasOption("thicknessfrommesh", "ignore-backface-secondary"));
    EXPECT_TRUE(hasOption("bentnormalsfrommesh", "ignore-backface-secondary"));
    EXPECT_TRUE(hasOption("ambientocclusion", "normal-invert"));
    EXPECT_FALSE(hasOption("normalfrommesh", "normal-invert"));
}

TEST(BakerCatalogue, DefaultsBoundsAndEntries)
{
    PropertyBag uv = makeBag("uvmap");
    const auto& mode = dynamic_cast<const PropertyEnum&>(uv["UV2Svg.ColorMode"]);
    EXPECT_EQ(mode.valueAs<int>(), 1);
    EXPECT_EQ(mode.entries(),
              (std::vector<std::string>{"Random", "Hue Shift", "Grayscale", "Uniform", "Material ID Color"}));

    PropertyBag height = makeBag("heightfrommesh");
    EXPECT_EQ(height["Common.OutputSize"].defaultAs<ComparableInt2>(), (ComparableInt2{9, 9}));
    const auto& normalization = dynamic_cast<const PropertyEnum&>(height["Detail.Distance.MaximizeRange"]);
    EXPECT_EQ(normalization.entries().size(), 4u);
    EXPECT_EQ(normalization.entries()[3], "Manual");
    const auto& maxDepth = dynamic_cast<const PropertyNumerical<float>&>(height["Detail.MaxDepth"]);
    EXPECT_FLOAT_EQ(maxDepth.valueAs<float>(), 0.01f);
    EXPECT_FLOAT_EQ(maxDepth.maximum(), 0.1f);
    EXPECT_FLOAT_EQ(maxDepth.step(), 0.001f);
    EXPECT_FALSE(height["Detail.SkewMap"].isVisible());
    EXPECT_FALSE(height["Detail.InvertSkewCorrection"].isVisible());

    PropertyBag thickness = makeBag("thicknessfrommesh");
    const auto& thicknessRange = dynamic_cast<const PropertyEnum&>(thickness["Detail.Distance.MaximizeRange"]);
    EXPECT_EQ(thicknessRange.entries(),
              (std::vector<std::string>{"Relative to Ray Distances", "Relative to Min/Max (per UV Tile)", "None"}));
    const auto& maxDist = dynamic_cast<const PropertyNumerical<float>&>(thickness["Detail.SecondaryCommon.MaxDistance"]);
    EXPECT_FLOAT_EQ(maxDist.valueAs<float>(), 0.1f);
    EXPECT_FLOAT_EQ(maxDist.step(), 0.005f);

    PropertyBag curvature1 = makeBag("curvature1frommesh");
    EXPECT_EQ(curvature1["Detail.SecondaryCommon.NbSecondary"].valueAs<int>(), 32);
    EXPECT_EQ(curvature1["Detail.SecondaryCommon.FilterMethodSecondary"].label(), "Self Intersection");
    PropertyBag ao = makeBag("aofrommesh");
    EXPECT_EQ(ao["Detail.SecondaryCommon.NbSecondary"].valueAs<int>(), 64);
    EXPECT_EQ(ao["Detail.SecondaryCommon.FilterMethodSecondary"].label(), "Self Occlusion");
    EXPECT_EQ(ao["Detail.AO.Attenuation"].valueAs<int>(), 2);

    PropertyBag direction = makeBag("worldspacedirection");
    EXPECT_FLOAT_EQ(direction["WorldDirection.Y"].valueAs<float>(), -1.0f);
}

TEST(BakerCatalogue, OptionNamesAndOlderIdentifiers)
{
    EXPECT_EQ(optionName("Detail.LowAsHigh"), "use-lowdef-as-highdef");
    EXPECT_EQ(optionName("Detail.MaxDepth"), "max-rear");
    EXPECT_EQ(optionName("Additional.InvertGreen"), "normal-format");
    EXPECT_EQ(optionName("Detail.NormalCommon.InvertGreen"), "normal-format");
    EXPECT_EQ(optionName("SeAO.ErrorBias"), "details");
    EXPECT_EQ(optionName("Mask.FGColor"), "");
    EXPECT_EQ(optionName("Nothing"), "");

    EXPECT_EQ(currentPropertyIdentifier("UseLowPolyAsHighPoly"), "Detail.LowAsHigh");
    EXPECT_EQ(currentPropertyIdentifier("AbstractMapBaker.OutputSize"), "Common.OutputSize");
    EXPECT_EQ(currentPropertyIdentifier("VectorialMeshConverter.Padding"), "UV2Svg.Padding");
    EXPECT_EQ(currentPropertyIdentifier("WorldDirectionZ"), "WorldDirection.Z");
    EXPECT_EQ(currentPropertyIdentifier("Common.UVSet"), "Common.UVSet");
}
