// The transfer of settings into a baker's bag: tile forms, exponents, the
// older normal-invert name, and what is left alone.

#include "commands/BakerSettingsTransfer.h"

#include "baking/GLMapBakerManager.h"
#include "baking/AbstractMapBaker.h"
#include "common/LogCapture.h"
#include "program/LogChannel.h"

#include <QHash>
#include <QVariant>

#include <gtest/gtest.h>

using namespace Ond::Baking;
using ProgramCommand::BakerSettingsMap;

namespace {

// A settings source with values of any type, as a plan would give them.
class FakeSettings : public BakerSettingsMap
{
public:
    FakeSettings& set(const QString& name, const QVariant& value)
    {
        values.insert(name, value);
        return *this;
    }
    bool has(const QString& name) const override { return values.contains(name); }
    bool getBool(const QString& name, bool d) const override { return has(name) ? values[name].toBool() : d; }
    QString getString(const QString& name, const QString& d) const override
    {
        return has(name) ? values[name].toString() : d;
    }
    QSize getSize(const QString& name, const QSize& d) const override { return has(name) ? values[name].toSize() : d; }
    QStringList getStringList(const QString& name, const QStringList& d) const override
    {
        return has(name) ? values[name].toStringList() : d;
    }
    QPoint getPoint(const QString& name, const QPoint& d) const override
    {
        return has(name) ? values[name].toPoint() : d;
    }

    QHash<QString, QVariant> values;
};

class Transfer : public ::testing::Test
{
protected:
    void SetUp() override { Ond::Core::zmfBakerChannel().setName(QStringLiteral("ZMFBaker")); }

    std::unique_ptr<AbstractMapBaker> make(const char* key) { return GLMapBakerManager::instance().create(key); }

    static ComparableInt2 tileOf(const AbstractMapBaker& baker)
    {
        return baker.properties()["Common.UVTile"].valueAs<ComparableInt2>();
    }
};

} // namespace

TEST_F(Transfer, TileFromUvTileUdimOrDefault)
{
    auto baker = make("GLMapBakerManager.NormalFromDetail");
    ZmfTest::LogCapture log;

    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings()));
    EXPECT_EQ(tileOf(*baker), (ComparableInt2{0, 0}));

    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings().set("uv-tile", QPoint(9, 0))));
    EXPECT_EQ(tileOf(*baker), (ComparableInt2{9, 0}));

    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings().set("udim", QStringLiteral("1022"))));
    EXPECT_EQ(tileOf(*baker), (ComparableInt2{1, 2}));
    EXPECT_TRUE(log.lines().isEmpty());

    ASSERT_TRUE(ProgramCommand::transferSettings(
        *baker, FakeSettings().set("uv-tile", QPoint(1, 2)).set("udim", QStringLiteral("1001"))));
    EXPECT_EQ(tileOf(*baker), (ComparableInt2{1, 2}));
    EXPECT_EQ(log.lines(),
              QStringList{QStringLiteral("[1][ZMFBaker]Passed both --uv-tile and --udim, only --uv-tile will be used.")});
}

TEST_F(Transfer, WrongTilesFailAndLeaveLaterPropertiesAlone)
{
    auto baker = make("GLMapBakerManager.NormalFromDetail");
    const QString wrong = QStringLiteral("[2][ZMFBaker]Wrong uv tile coordinates");
    for (const FakeSettings& settings :
         {FakeSettings().set("uv-tile", QPoint(10, 0)), FakeSettings().set("uv-tile", QPoint(0, -1)),
          FakeSettings().set("udim", QStringLiteral("1000")), FakeSettings().set("udim", QStringLiteral("abc"))}) {
        ZmfTest::LogCapture log;
        EXPECT_FALSE(ProgramCommand::transferSettings(*baker, settings));
        EXPECT_EQ(log.lines(), QStringList{wrong});
    }
    // The tile comes after the output size in the bag's list, before the detail settings.
    FakeSettings settings;
    settings.set("uv-tile", QPoint(10, 0)).set("output-size", QSize(11, 11)).set("max-rear", QStringLiteral("0.5"));
    ZmfTest::LogCapture log;
    EXPECT_FALSE(ProgramCommand::transferSettings(*baker, settings));
    EXPECT_EQ(baker->outputSize(), QSize(2048, 2048));
    EXPECT_FLOAT_EQ(baker->properties()["Detail.MaxDepth"].valueAs<float>(), 0.01f);
}

TEST_F(Transfer, SmallExponentsAreRaisedWithAWarningEach)
{
    auto baker = make("GLMapBakerManager.Position");
    {
        ZmfTest::LogCapture log;
        ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings().set("output-size", QSize(4, 11))));
        EXPECT_EQ(baker->outputSize(), QSize(32, 2048));
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral(
                                   "[1][ZMFBaker]Exponent width for --output-size is smaller than 5 and will be raised to 5.")});
    }
    ZmfTest::LogCapture log;
    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings().set("output-size", QSize(2, 3))));
    EXPECT_EQ(baker->outputSize(), QSize(32, 32));
    EXPECT_EQ(log.lines().size(), 2);
    EXPECT_TRUE(log.lines().at(1).contains(QStringLiteral("Exponent height for --output-size")));
}

TEST_F(Transfer, ValuesConvertFromTextAndUnsetPropertiesKeepTheirValue)
{
    auto baker = make("GLMapBakerManager.AOFromDetail");
    PropertyBag& bag = baker->properties();
    FakeSettings settings;
    settings.set("max-rear", QStringLiteral("0.5"))
        .set("use-cage", QVariant(true))
        .set("nb-second-rays", 128)
        .set("attenuation", QStringLiteral("0"));
    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, settings));
    EXPECT_FLOAT_EQ(bag["Detail.MaxDepth"].valueAs<float>(), 0.5f);
    EXPECT_TRUE(bag["Detail.UseCage"].valueAs<bool>());
    EXPECT_FALSE(bag["Detail.MaxHeight"].isVisible());
    EXPECT_EQ(bag["Detail.SecondaryCommon.NbSecondary"].valueAs<int>(), 128);
    EXPECT_EQ(bag["Detail.AO.Attenuation"].valueAs<int>(), 0);

    // A later transfer that names none of them changes nothing.
    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings()));
    EXPECT_EQ(bag["Detail.SecondaryCommon.NbSecondary"].valueAs<int>(), 128);
}

// A plan hands real values over as text: what is not a finite float fails
// the transfer in the parser's words, and the property keeps its value.
TEST_F(Transfer, NonFiniteRealsFailInTheParsersWords)
{
    auto baker = make("GLMapBakerManager.AOFromDetail");
    PropertyBag& bag = baker->properties();
    const float before = bag["Detail.MaxDepth"].valueAs<float>();
    for (const char* text : {"nan", "inf", "-inf", "1e39", "abc", ""}) {
        SCOPED_TRACE(text);
        ZmfTest::LogCapture log;
        FakeSettings settings;
        settings.set("max-rear", QString::fromLatin1(text));
        EXPECT_FALSE(ProgramCommand::transferSettings(*baker, settings));
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines().first(),
                  QStringLiteral("[2][ZMFBaker]Option max-rear expected a value of type double, but received "
                                 "non-convertible \"%1\".")
                      .arg(QString::fromLatin1(text)));
        EXPECT_FLOAT_EQ(bag["Detail.MaxDepth"].valueAs<float>(), before);
    }
    FakeSettings largest;
    largest.set("max-rear", QStringLiteral("3.4e38"));
    EXPECT_TRUE(ProgramCommand::transferSettings(*baker, largest));
}

TEST_F(Transfer, PathsBecomeFileUrls)
{
    auto baker = make("GLMapBakerManager.TextureFromDetail");
    ASSERT_TRUE(ProgramCommand::transferSettings(
        *baker, FakeSettings().set("texture-file", QStringLiteral("/tmp/some dir/t.png"))));
    EXPECT_EQ(baker->properties()["Detail.Texture.TextureFileName"].valueAs<std::string>(),
              "file:///tmp/some dir/t.png");
}

TEST_F(Transfer, OlderNormalInvertNameWinsOverNormalFormat)
{
    auto baker = make("GLMapBakerManager.NormalFromDetail");
    PropertyBag& bag = baker->properties();
    ASSERT_TRUE(ProgramCommand::transferSettings(*baker, FakeSettings().set("normal-format", 0)));
    EXPECT_EQ(bag["Detail.NormalCommon.InvertGreen"].valueAs<int>(), 0);
    ASSERT_TRUE(ProgramCommand::transferSettings(
        *baker, FakeSettings().set("normal-format", 0).set("normal-invert", QStringLiteral("1"))));
    EXPECT_EQ(bag["Detail.NormalCommon.InvertGreen"].valueAs<int>(), 1);
}
