// The UV-to-SVG baker in the process: the document it writes, its colours,
// the tile, the padding, and a scene without the UV set.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/ColorMapBaker.h"
#include "baking/lowpoly/UV2SvgBaker.h"
#include "common/LogCapture.h"

#include <QColor>
#include <QDomDocument>
#include <QRegularExpression>

using namespace LowPolyTest;
using Ond::Baking::UV2SvgBaker;

namespace {

// Separate unit-less cells along u, each of side 0.1, starting at u0.
SceneSPtr makeCells(int count, float u0 = 0.0f)
{
    std::vector<Vertex> v;
    std::vector<uint32_t> indices;
    const Eigen::Vector3f n(0, 0, 1), t(1, 0, 0), b(0, 1, 0);
    for (int i = 0; i < count; ++i) {
        const float x = u0 + 0.05f + 0.2f * float(i);
        const uint32_t base = uint32_t(v.size());
        for (int k = 0; k < 4; ++k) {
            const Eigen::Vector2f uv(x + 0.1f * float(k & 1), 0.05f + 0.1f * float(k >> 1));
            v.push_back({Eigen::Vector3f(uv.x(), uv.y(), 0), uv, n, t, b});
        }
        for (uint32_t k : {0u, 1u, 3u, 0u, 3u, 2u})
            indices.push_back(base + k);
    }
    return makeScene(v, indices);
}

struct Svg
{
    QDomElement root;
    std::vector<QDomElement> paths;
};

Svg parse(const QByteArray& text, QDomDocument& document)
{
    Svg svg;
    QString error;
    EXPECT_TRUE(document.setContent(text, &error)) << error.toStdString();
    svg.root = document.documentElement();
    const QDomNodeList list = document.elementsByTagName(QStringLiteral("path"));
    for (int i = 0; i < list.size(); ++i)
        svg.paths.push_back(list.at(i).toElement());
    return svg;
}

struct UV2SvgBakerTest : ::testing::Test
{
    void SetUp() override
    {
        baker.init();
        setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(7, 7)));
    }
    UV2SvgBaker baker;
    RecordingContext context;
    QDomDocument document;
};

} // namespace

TEST_F(UV2SvgBakerTest, APageOfTheMapSizeWithOnePathPerIslandFlippedSoThatVRunsUp)
{
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(8, 6)));
    ASSERT_TRUE(baker.process(context, makeCells(3)));
    const Svg svg = parse(baker.data(), document);
    EXPECT_EQ(svg.root.tagName(), "svg");
    EXPECT_EQ(svg.root.attribute("width"), "256");
    EXPECT_EQ(svg.root.attribute("height"), "64");
    EXPECT_EQ(svg.root.attribute("viewBox"), "0 0 256 64");
    ASSERT_EQ(svg.paths.size(), 3u);
    for (const QDomElement& path : svg.paths) {
        EXPECT_EQ(path.attribute("transform"), "matrix(256 0 0 -64 0 64)");
        EXPECT_EQ(path.attribute("fill-rule"), "nonzero");
        EXPECT_EQ(path.attribute("stroke"), "none");
        EXPECT_TRUE(path.attribute("d").startsWith('M'));
        EXPECT_TRUE(path.attribute("d").endsWith('Z'));
    }
}

TEST_F(UV2SvgBakerTest, GrayscaleGivesEachIslandTheMiddleOfItsBand)
{
    setProperty(baker.properties(), "UV2Svg.ColorMode", 2);
    ASSERT_TRUE(baker.process(context, makeCells(3)));
    const Svg svg = parse(baker.data(), document);
    ASSERT_EQ(svg.paths.size(), 3u);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(svg.paths[size_t(i)].attribute("fill"), QColor::fromHslF(0.0f, 0.0f, (2.0f * i + 1.0f) / 6.0f).name())
            << i;
}

TEST_F(UV2SvgBakerTest, EveryModeGivesEachIslandAnOpaqueColourOfItsOwn)
{
    for (int mode : {0, 1, 3, 4}) {
        setProperty(baker.properties(), "UV2Svg.ColorMode", mode);
        ASSERT_TRUE(baker.process(context, makeCells(4)));
        const Svg svg = parse(baker.data(), document);
        ASSERT_EQ(svg.paths.size(), 4u);
        QStringList fills;
        for (const QDomElement& path : svg.paths) {
            EXPECT_FALSE(path.hasAttribute("fill-opacity"));
            fills << path.attribute("fill");
        }
        fills.removeDuplicates();
        // Random colours may meet, but not all four.
        EXPECT_GE(fills.size(), mode == 0 ? 2 : 4) << mode;
    }
}

TEST_F(UV2SvgBakerTest, TheTileMovesItsSquareOntoThePage)
{
    // The first point of a path's data.
    const auto start = [](const QDomElement& path) {
        const QStringList numbers = path.attribute("d").mid(1).split(QRegularExpression("[ L]"));
        return QPointF(numbers.value(0).toDouble(), numbers.value(1).toDouble());
    };
    baker.setTile(1, 0);
    ASSERT_TRUE(baker.process(context, makeCells(1, 1.0f)));
    Svg svg = parse(baker.data(), document);
    ASSERT_EQ(svg.paths.size(), 1u);
    EXPECT_NEAR(start(svg.paths[0]).x(), 0.05, 1e-6);
    EXPECT_NEAR(start(svg.paths[0]).y(), 0.05, 1e-6);
    // A shape of another square is written all the same, off the page.
    ASSERT_TRUE(baker.process(context, makeCells(1)));
    svg = parse(baker.data(), document);
    ASSERT_EQ(svg.paths.size(), 1u);
    EXPECT_NEAR(start(svg.paths[0]).x(), -0.95, 1e-6);
}

TEST_F(UV2SvgBakerTest, PaddingIsAMiteredStrokeOfTwiceThePaddingOverTheLargerSide)
{
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(7, 6)));
    setProperty(baker.properties(), "UV2Svg.Padding", 4);
    ASSERT_TRUE(baker.process(context, makeCells(2)));
    const Svg svg = parse(baker.data(), document);
    ASSERT_EQ(svg.paths.size(), 2u);
    for (const QDomElement& path : svg.paths) {
        EXPECT_EQ(path.attribute("stroke"), path.attribute("fill"));
        EXPECT_EQ(path.attribute("stroke-width"), "0.0625");
        EXPECT_EQ(path.attribute("stroke-linejoin"), "miter");
        EXPECT_EQ(path.attribute("stroke-miterlimit"), "2");
    }
}

TEST_F(UV2SvgBakerTest, ASceneWithoutTheUvSetWritesNothing)
{
    setProperty(baker.properties(), "Common.UVSet", 2);
    ZmfTest::LogCapture log;
    EXPECT_FALSE(baker.process(context, makeCells(1)));
    EXPECT_TRUE(baker.data().isEmpty());
    EXPECT_EQ(log.messages(), QStringList{"The scene doesn't have UVs. Cancelling bake."});
}

TEST_F(UV2SvgBakerTest, TheRasterBakerRendersTheShapesAtTheMapSize)
{
    Ond::Baking::ColorMapBaker raster;
    raster.init();
    setProperty(raster.properties(), "Common.OutputSize", QVariant::fromValue(QSize(6, 6)));
    setProperty(raster.properties(), "Common.UVTile", QVariant::fromValue(QPoint(1, 0)));
    Ond::Surfaces::SurfaceSPtr surface;
    inGL([&] { surface = raster.process(context, makeCells(2, 1.0f)); });
    ASSERT_TRUE(surface);
    ASSERT_EQ(surface->width(), 64u);
    ASSERT_EQ(surface->height(), 64u);
    EXPECT_EQ(raster.svgBaker().tileU(), 1);
    // Cell 0 spans u 0.05..0.15, v 0.05..0.15: texels 3..9 across, rows 54..60.
    EXPECT_GT(texel(*surface, 6, 57).w(), 0.99f);
    EXPECT_GT(texel(*surface, 19, 57).w(), 0.99f);
    EXPECT_EQ(texel(*surface, 13, 57).w(), 0.0f);
    EXPECT_EQ(texel(*surface, 6, 30).w(), 0.0f);
}
