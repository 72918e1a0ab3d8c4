// The generated subcommands: their option groups as help and the parser see
// them, and the run of a command line without a bake behind it.

#include "commands/BakerCommand.h"

#include "baking/GLMapBakerManager.h"
#include "baking/lowpoly/ColorMapBaker.h"
#include "common/LogCapture.h"
#include "program/LogChannel.h"

#include <gtest/gtest.h>

using Ond::Program::TypedCommandLineOption;
using ProgramCommand::BakerCommand;

namespace {

QStringList keysOf(const Ond::Program::OptionGroup& group)
{
    QStringList keys;
    for (const TypedCommandLineOption& option : group.options())
        keys.append(option.key());
    return keys;
}

class BakerCommandTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Ond::Core::zmfBakerChannel().setName(QStringLiteral("ZMFBaker"));
        Ond::Baking::GLMapBakerManager::instance().registerFactory(
            "GLMapBakerManager.ColorMap", std::make_shared<Ond::Baking::ColorMapBakerFactory>());
    }
};

} // namespace

TEST_F(BakerCommandTest, DetailBakerGroupsAndOptionOrder)
{
    BakerCommand command("GLMapBakerManager.NormalFromDetail");
    EXPECT_EQ(command.name(), QStringLiteral("normal-from-mesh"));
    EXPECT_EQ(command.implicitOptionName(), QStringLiteral("inputs"));
    ASSERT_EQ(command.optionGroups().size(), 2);
    const auto& common = command.optionGroups()[0];
    const auto& own = command.optionGroups()[1];
    EXPECT_EQ(common.name(), QStringLiteral("Input and output options"));
    EXPECT_EQ(own.name(), QStringLiteral("normal-from-mesh options"));

    // No DDS compression in this build, so no compression option.
    EXPECT_EQ(keysOf(common),
              (QStringList{"inputs", "input-selection", "output-name", "output-path", "output-format",
                           "tangent-space-plugin", "recompute-tangents", "nodxr", "nooptix", "disable-gpu",
                           "force-optix", "force-dxr", "per-fragment-binormal", "name-suffix-low",
                           "name-suffix-high"}));
    EXPECT_EQ(keysOf(own),
              (QStringList{"cage-mesh", "highdef-mesh", "apply-diffusion", "dilation-width", "output-size", "uv-set",
                           "uv-tile", "udim", "match", "ignore-backface", "invert-skew-correction",
                           "use-lowdef-as-highdef", "max-rear", "max-frontal", "normal-format", "map-type",
                           "relative-to-bbox", "skew-correction", "skew-map", "average-normals", "antialiasing",
                           "use-cage"}));
}

TEST_F(BakerCommandTest, PropertyOptionsTypesValueNamesDefaultsAndHelp)
{
    BakerCommand command("GLMapBakerManager.NormalFromDetail");
    const auto& own = command.optionGroups()[1];

    const TypedCommandLineOption* size = own.findOption("output-size");
    ASSERT_TRUE(size);
    EXPECT_EQ(size->type(), int(QMetaType::QSize));
    EXPECT_EQ(size->valueName(), QStringLiteral("w>,<h"));
    EXPECT_TRUE(size->defaultTexts().isEmpty());

    const TypedCommandLineOption* tile = own.findOption("uv-tile");
    ASSERT_TRUE(tile);
    EXPECT_EQ(tile->type(), int(QMetaType::QPoint));
    EXPECT_EQ(tile->valueName(), QStringLiteral("u>,<v"));
    EXPECT_TRUE(tile->defaultTexts().isEmpty());
    EXPECT_EQ(own.findOption("udim")->type(), int(QMetaType::QString));

    const TypedCommandLineOption* rear = own.findOption("max-rear");
    EXPECT_EQ(rear->type(), int(QMetaType::Double));
    EXPECT_EQ(rear->valueName(), QStringLiteral("float"));
    EXPECT_EQ(rear->defaultTexts(), QStringList{"0.01"});
    EXPECT_EQ(rear->description(), QStringLiteral("Max rear distance for raytracing.\n"));

    const TypedCommandLineOption* cage = own.findOption("use-cage");
    EXPECT_EQ(cage->type(), int(QMetaType::Bool));
    EXPECT_EQ(cage->valueName(), QStringLiteral("bool"));
    EXPECT_EQ(cage->defaultTexts(), QStringList{"false"});

    const TypedCommandLineOption* antialiasing = own.findOption("antialiasing");
    EXPECT_EQ(antialiasing->type(), int(QMetaType::Int));
    EXPECT_EQ(antialiasing->valueName(), QStringLiteral("int"));
    EXPECT_EQ(antialiasing->defaultTexts(), QStringList{"0"});
    EXPECT_EQ(antialiasing->description(),
              QStringLiteral("Antialiasing method. \n(0='None', 1='Supersampling 4x', 2='Supersampling 16x', "
                             "3='Supersampling 64x')\n"));

    const TypedCommandLineOption* skewMap = own.findOption("skew-map");
    EXPECT_EQ(skewMap->type(), int(QMetaType::QString));
    EXPECT_EQ(skewMap->valueName(), QStringLiteral("string"));
    EXPECT_TRUE(skewMap->defaultTexts().isEmpty());

    EXPECT_EQ(own.findOption("highdef-mesh")->type(), int(QMetaType::QStringList));
    EXPECT_EQ(own.findOption("cage-mesh")->description(), QStringLiteral("Cage file..\n"));
}

TEST_F(BakerCommandTest, CommonOptionTexts)
{
    BakerCommand command("GLMapBakerManager.Position");
    const auto& common = command.optionGroups()[0];
    EXPECT_EQ(common.findOption("output-name")->defaultTexts(), QStringList{"{inputName}_{bakerName}"});
    EXPECT_TRUE(common.findOption("output-name")
                    ->description()
                    .startsWith(QStringLiteral("Set the output name of the generated files, without the extension.\""
                                               "The name is \"{inputName}_{bakerName}\" by default.\n")));
    EXPECT_TRUE(common.findOption("output-format")
                    ->description()
                    .startsWith(QStringLiteral("Format to use for output image file.\nDefault='png'.\nFormats Supported: ")));
    EXPECT_TRUE(common.findOption("tangent-space-plugin")->defaultTexts().value(0).contains(QStringLiteral("mikktspace")));
    EXPECT_TRUE(common.findOption("per-fragment-binormal")
                    ->description()
                    .contains(QStringLiteral("'false' for unitytspace tangent space plugin.\n- Set by default to "
                                             "'false' for mikktspace tangent space plugin.\n- Set by default to "
                                             "'true' otherwise.\n")));
    EXPECT_EQ(common.findOption("recompute-tangents")->type(), int(QMetaType::Bool));
}

TEST_F(BakerCommandTest, LowPolyBakersHaveNoMeshOptionsAndUvMapModeListsItsEntries)
{
    BakerCommand position("GLMapBakerManager.Position");
    EXPECT_FALSE(position.findOption("cage-mesh"));
    EXPECT_FALSE(position.findOption("highdef-mesh"));
    EXPECT_TRUE(position.findOption("axis"));

    BakerCommand uvMap("GLMapBakerManager.ColorMap");
    EXPECT_EQ(uvMap.name(), QStringLiteral("uv-map"));
    const TypedCommandLineOption* mode = uvMap.findOption("mode");
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->defaultTexts(), QStringList{"1"});
    EXPECT_TRUE(mode->description().contains(QStringLiteral("(0='Random', 1='Hue Shift', 2='Grayscale'")));
}

TEST_F(BakerCommandTest, ProcessNeedsInputsAndNeverClaimsAWrittenFile)
{
    BakerCommand command("GLMapBakerManager.HeightFromDetail");
    {
        ZmfTest::LogCapture log;
        EXPECT_EQ(command.process(Ond::Program::ParsedValues()), 1);
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Error: No input(s) specified.")});
    }
    {
        Ond::Program::ParsedValues values;
        values.options.insert("inputs", QStringList{"a.obj"});
        values.options.insert("udim", QStringLiteral("1000"));
        ZmfTest::LogCapture log;
        EXPECT_EQ(command.process(values), 1);
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Wrong uv tile coordinates")});
    }
    Ond::Program::ParsedValues values;
    values.options.insert("inputs", QStringList{"a.obj", "b.obj"});
    ZmfTest::LogCapture log;
    EXPECT_EQ(command.process(values), 0);
    // Each input is told about, with an empty path for a file not written.
    EXPECT_EQ(log.lines().count(QStringLiteral("[0][ZMFBaker]Writing file ''...")), 2);
    EXPECT_EQ(log.lines().filter(QStringLiteral("Writing file")).size(), 2);
    EXPECT_EQ(log.lines().filter(QStringLiteral("[2][ZMFBaker]")).filter(QStringLiteral("a.obj")).size(), 1);
    EXPECT_EQ(log.lines().filter(QStringLiteral("[2][ZMFBaker]")).filter(QStringLiteral("b.obj")).size(), 1);
}
