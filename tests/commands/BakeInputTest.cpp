// The bake of one input through its own functions, with a baker that always
// succeeds: loading and selection, the output name and path patterns, the
// format check, the writing of the file and every failure on the way.

#include "commands/BakeInput.h"
#include "commands/OptionMapSettingMap.h"
#include "commands/SaveBaker.h"

#include "ConstantColorBaker.h"

#include "baking/BakingContext.h"
#include "baking/GLMapBakerManager.h"
#include "baking/MeshNameSuffixes.h"
#include "baking/detail/DetailMapBaker.h"
#include "common/LogCapture.h"
#include "common/TestPaths.h"
#include "image/DefaultCodecs.h"
#include "image/SurfaceCodecManager.h"
#include "program/LogChannel.h"
#include "scene/load/SceneMgr.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QUrl>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace ProgramCommand;
using Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator;
using ZmfTest::ConstantColorBaker;
using ZmfTest::LogCapture;

namespace {

QString boxLow()
{
    return ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
}

// Writes whatever it is given and keeps the options it was written with;
// fails on request, after writing a few bytes.
struct RecordingCodec : Ond::Surfaces::SurfaceCodec
{
    RecordingCodec(QIODevice* device, const QByteArray& suffix, bool fail, Ond::Surfaces::CodecOptions* seen)
        : SurfaceCodec(device, suffix), fail(fail), seen(seen)
    {
    }
    bool read(QSharedPointer<Ond::Surfaces::Surface>&) override { return false; }
    bool write(const QSharedPointer<Ond::Surfaces::Surface>&) override
    {
        *seen = options();
        m_device->write("partial");
        return !fail;
    }
    bool fail;
    Ond::Surfaces::CodecOptions* seen;
};

struct RecordingCodecFactory : Ond::Surfaces::SurfaceCodecFactory
{
    RecordingCodecFactory()
        : SurfaceCodecFactory({}, {{QStringLiteral("Recorded"), QStringLiteral("rec"), QString()},
                                   {QStringLiteral("Failing"), QStringLiteral("failrec"), QString()}})
    {
    }
    int canHandle(QIODevice*, const QByteArray& suffix) const override
    {
        return suffix == "rec" || suffix == "failrec" ? Ond::Surfaces::CapabilityWrite : 0;
    }
    QSharedPointer<Ond::Surfaces::SurfaceCodec> createCodec(QIODevice* device, const QByteArray& suffix) const override
    {
        return QSharedPointer<RecordingCodec>::create(device, suffix, suffix == "failrec", &seen);
    }
    static Ond::Surfaces::CodecOptions seen;
};
Ond::Surfaces::CodecOptions RecordingCodecFactory::seen;

class BakeInputTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        Ond::Core::zmfBakerChannel().setName(QStringLiteral("ZMFBaker"));
        Ond::Core::bakersChannel().setName(QStringLiteral("Bakers"));
        Ond::Surfaces::registerDefaultCodecs();
        Ond::Surfaces::SurfaceCodecManager::instance().registerFactory(
            QSharedPointer<RecordingCodecFactory>::create());
        // What bakeInput does before it loads; save() loads by itself.
        TangentSpaceGenerator::selectPlugin(QString());
    }

    void SetUp() override
    {
        baker.init();
        outDir = ZmfTest::makeTempDir();
        values.insert(QStringLiteral("output-path"), outDir);
    }

    QString save(const QString& inputPath = QStringLiteral("/data/a.b.obj"))
    {
        if (!low)
            low = loadScene(context, boxLow(), {}, false);
        return saveBaker(OptionMapSettingMap(values), baker, QStringLiteral("constant"), inputPath, context, low,
                         nullptr, QString());
    }

    QStringList written() const { return QDir(outDir).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot); }

    Vrn::Baking::BakingContext context{std::make_shared<Ond::SceneLoad::SceneMgr>(
        Ond::SceneLoad::createSceneLoaderMgr(), Ond::SceneLoad::createSceneExporterMgr())};
    ConstantColorBaker baker;
    Ond::SceneGraph::SceneSPtr low;
    QHash<QString, QVariant> values;
    QString outDir;
};

} // namespace

TEST_F(BakeInputTest, DefaultNameFormatAndPixels)
{
    LogCapture log;
    const QString file = save(boxLow());
    EXPECT_EQ(file, outDir + QStringLiteral("/box_low_constant.png"));
    EXPECT_EQ(log.lines(), QStringList());
    const QImage image(file);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(8, 8));
    EXPECT_EQ(image.pixel(3, 5), qRgba(200, 100, 50, 255));
}

TEST_F(BakeInputTest, NamePatterns)
{
    Ond::Baking::setPropertyValue(baker.properties(), "Common.UVTile", QPoint(1, 2));
    values.insert(QStringLiteral("output-name"), QStringLiteral("{mesh}_{udim}"));
    EXPECT_EQ(save(), outDir + QStringLiteral("/a.b_1022.png"));

    // Both spellings of a pattern, and either case of its inner capital.
    values.insert(QStringLiteral("output-name"), QStringLiteral("$(inputName)-{inputname}-$(bakerName)-{bakername}"));
    EXPECT_EQ(save(), outDir + QStringLiteral("/a-a-constant-constant.png"));

    // A tile right of the tenth column has no UDIM: the pattern vanishes.
    Ond::Baking::setPropertyValue(baker.properties(), "Common.UVTile", QPoint(10, 0));
    values.insert(QStringLiteral("output-name"), QStringLiteral("t{udim}"));
    EXPECT_EQ(save(), outDir + QStringLiteral("/t.png"));
}

TEST_F(BakeInputTest, FormatCheck)
{
    {
        // Case is ignored against the codecs, and the file keeps the user's suffix.
        values.insert(QStringLiteral("output-format"), QStringLiteral("PNG"));
        const QString file = save();
        EXPECT_EQ(file, outDir + QStringLiteral("/a_constant.PNG"));
        EXPECT_FALSE(QImage(file, "png").isNull());
    }
    const int runs = baker.runs;
    for (const QString& format : {QStringLiteral("foo"), QStringLiteral("SVG")}) {
        values.insert(QStringLiteral("output-format"), format);
        LogCapture log;
        EXPECT_EQ(save(), QString());
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]unknown output format \"%1\"").arg(format)});
    }
    // Refused before the bake.
    EXPECT_EQ(baker.runs, runs);

    // "svg" passes the check, but only the UV map baker has SVG to give.
    values.insert(QStringLiteral("output-format"), QStringLiteral("svg"));
    LogCapture log;
    EXPECT_EQ(save(), QString());
    EXPECT_EQ(baker.runs, runs + 1);
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Cannot save file \"%1/a_constant.svg\" in format "
                                                      "\"svg\" with baker \"Constant\".")
                                           .arg(outDir)});
    EXPECT_EQ(written(), QStringList{QStringLiteral("a_constant.PNG")});
}

TEST_F(BakeInputTest, CodecOptionsAndFailedWrites)
{
    values.insert(QStringLiteral("output-format"), QStringLiteral("rec"));
    values.insert(QStringLiteral("output-format-compression"), QStringLiteral("bc3"));
    EXPECT_EQ(save(), outDir + QStringLiteral("/a_constant.rec"));
    EXPECT_EQ(RecordingCodecFactory::seen.value(QStringLiteral("compression")).toString(), QStringLiteral("bc3"));
    EXPECT_EQ(RecordingCodecFactory::seen.value(QStringLiteral("png_compression")).toString(),
              QStringLiteral("best_speed"));

    // A codec that fails leaves no partial file behind.
    values.insert(QStringLiteral("output-format"), QStringLiteral("failrec"));
    {
        LogCapture log;
        EXPECT_EQ(save(), QString());
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Writing file \"%1/a_constant.failrec\" failed.")
                                               .arg(outDir)});
        EXPECT_EQ(written(), QStringList{QStringLiteral("a_constant.rec")});
    }

    // The output directory is not created.
    values.insert(QStringLiteral("output-format"), QStringLiteral("png"));
    values.insert(QStringLiteral("output-path"), outDir + QStringLiteral("/missing"));
    LogCapture log;
    EXPECT_EQ(save(), QString());
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Writing file \"%1/missing/a_constant.png\" failed.")
                                           .arg(outDir)});
    EXPECT_FALSE(QDir(outDir + QStringLiteral("/missing")).exists());
}

TEST_F(BakeInputTest, NameSuffixTable)
{
    values.insert(QStringLiteral("name-suffix-low"), QStringLiteral("_lo"));
    save();
    EXPECT_EQ(Ond::Baking::MeshNameSuffixes::get(0), QStringLiteral("_lo"));
    EXPECT_EQ(Ond::Baking::MeshNameSuffixes::get(1), QStringLiteral("_high"));
    EXPECT_EQ(Ond::Baking::MeshNameSuffixes::get(2), QStringLiteral("_ignorebf"));
    values.remove(QStringLiteral("name-suffix-low"));
    save();
    EXPECT_EQ(Ond::Baking::MeshNameSuffixes::get(0), QStringLiteral("_low"));
}

TEST_F(BakeInputTest, SceneWithoutMeshesWritesNothing)
{
    low = std::make_shared<Ond::SceneGraph::Scene>();
    LogCapture log;
    EXPECT_EQ(save(), QString());
    EXPECT_EQ(log.lines(), QStringList());
    EXPECT_EQ(written(), QStringList());
}

TEST_F(BakeInputTest, BakeInputLoadsAndWrites)
{
    const OptionMapSettingMap settings(values);
    EXPECT_EQ(bakeInput(settings, baker, QStringLiteral("constant"), boxLow(), context, {}, QString()),
              outDir + QStringLiteral("/box_low_constant.png"));

    LogCapture log;
    EXPECT_EQ(bakeInput(settings, baker, QStringLiteral("constant"), QStringLiteral("missing.obj"), context, {},
                        QString()),
              QString());
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Error: Scene \"missing.obj\" couldn't be loaded .")});
}

TEST_F(BakeInputTest, TangentPluginAndPerFragmentBinormal)
{
    {
        values.insert(QStringLiteral("tangent-space-plugin"), QStringLiteral("nope"));
        LogCapture log;
        EXPECT_EQ(bakeInput(OptionMapSettingMap(values), baker, QStringLiteral("constant"), boxLow(), context, {},
                            QString()),
                  QString());
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Tangent space plugin not found: nope")});
        EXPECT_EQ(baker.runs, 0);
    }
    // Without the option the binormal is rebuilt per fragment; any explicit
    // plugin counts as "mikktspace", which keeps the vertex binormal.
    values.remove(QStringLiteral("tangent-space-plugin"));
    bakeInput(OptionMapSettingMap(values), baker, QStringLiteral("constant"), boxLow(), context, {}, QString());
    EXPECT_TRUE(context.perFragmentBinormal());
    values.insert(QStringLiteral("tangent-space-plugin"), QStringLiteral("mikkunrealtspace"));
    bakeInput(OptionMapSettingMap(values), baker, QStringLiteral("constant"), boxLow(), context, {}, QString());
    EXPECT_FALSE(context.perFragmentBinormal());
    EXPECT_EQ(context.tangentPluginName(), "mikkunrealtspace");
    values.insert(QStringLiteral("per-fragment-binormal"), true);
    bakeInput(OptionMapSettingMap(values), baker, QStringLiteral("constant"), boxLow(), context, {}, QString());
    EXPECT_TRUE(context.perFragmentBinormal());
    EXPECT_EQ(baker.runs, 3);
    TangentSpaceGenerator::selectPlugin(QString());
}

TEST_F(BakeInputTest, DetailBakerNeedsItsHighMeshes)
{
    auto detail = Ond::Baking::GLMapBakerManager::instance().create("GLMapBakerManager.HeightFromDetail");
    const OptionMapSettingMap settings(values);
    {
        LogCapture log;
        EXPECT_EQ(bakeInput(settings, *detail, QStringLiteral("height-from-mesh"), boxLow(), context, {}, QString()),
                  QString());
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][ZMFBaker]Error: No high poly scene given.")});
    }

    // A high mesh that can't be loaded stops the whole run.
    const QString missing = QUrl::fromLocalFile(outDir + QStringLiteral("/high.obj")).toString();
    try {
        bakeInput(settings, *detail, QStringLiteral("height-from-mesh"), boxLow(), context, {missing}, QString());
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(QString::fromUtf8(e.what()), QStringLiteral("Unable to load high poly scene from Url '%1'").arg(missing));
    }
    EXPECT_EQ(written(), QStringList());

    // With a cage asked for, a cage that can't be loaded ends this input.
    Ond::Baking::setPropertyValue(detail->properties(), "Detail.UseCage", true);
    const QString high = QUrl::fromLocalFile(boxLow()).toString();
    LogCapture log;
    EXPECT_EQ(bakeInput(settings, *detail, QStringLiteral("height-from-mesh"), boxLow(), context, {high}, missing),
              QString());
    EXPECT_EQ(log.lines(),
              QStringList{QStringLiteral("[2][ZMFBaker]Error: Cage scene \"%1\" couldn't be loaded.").arg(missing)});
}

TEST_F(BakeInputTest, HighScenesAreCombined)
{
    const QString high = QUrl::fromLocalFile(boxLow()).toString();
    const auto scene = loadHighScenes(context, {high, high}, "heightfrommesh");
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->getSubScenes().size(), 2u);
    const auto converted = context.convertedMeshes(scene);
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted->size(), 2u);
    // The curvature baker's high meshes keep only positions and normals.
    const auto curvature = loadHighScenes(context, {high}, "curvaturefrommesh");
    ASSERT_TRUE(curvature);
    const auto meshes = curvature->getMeshes();
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0]->getData()->getUvSetCount(), 0u);
    EXPECT_EQ(scene->getMeshes()[0]->getData()->getUvSetCount(), 1u);
}

TEST_F(BakeInputTest, HighMeshesGetTangentFramesOnlyForTheTextureBaker)
{
    // A plan reloads its high meshes when the next baker's flags differ.
    EXPECT_EQ(highLoadFlags("normalfrommesh"), 243u);
    EXPECT_EQ(highLoadFlags("aofrommesh"), 243u);
    EXPECT_EQ(highLoadFlags("texturefrommesh"), 255u);
    EXPECT_EQ(highLoadFlags("curvaturefrommesh"), 3u);

    const QString high = QUrl::fromLocalFile(boxLow()).toString();
    for (const char* baker : {"normalfrommesh", "aofrommesh", "heightfrommesh", "texturefrommesh"}) {
        const auto scene = loadHighScenes(context, {high}, baker);
        ASSERT_TRUE(scene) << baker;
        const auto data = scene->getMeshes().at(0)->getData();
        const bool texture = std::string(baker) == "texturefrommesh";
        EXPECT_EQ(data->getTangents() != nullptr, texture) << baker;
        EXPECT_EQ(data->getUvSetCount(), 1u) << baker;
        EXPECT_TRUE(data->getNormals()) << baker;
    }
}

TEST_F(BakeInputTest, SelectionMessagesWhileLoading)
{
    LogCapture log;
    const auto scene = loadScene(context, boxLow(),
                                 {QStringLiteral("a@b@c"), QStringLiteral("nothing"), QStringLiteral("box_low@3"),
                                  QStringLiteral("box_low@steel"), QStringLiteral("root")},
                                 false);
    ASSERT_TRUE(scene);
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("[2][ZMFBaker]selection token a@b@c isn't formated properly."),
                                        QStringLiteral("[2][ZMFBaker]selection node nothing doesn't exist."),
                                        QStringLiteral("[2][ZMFBaker]material id 3 not found in \"box_low\"."),
                                        QStringLiteral("[2][ZMFBaker]material \"steel\" not found in \"box_low\".")}));
    // "root" holds the one part: it is selected.
    const auto converted = context.convertedMeshes(scene);
    ASSERT_TRUE(converted);
    ASSERT_EQ(converted->size(), 1u);
    EXPECT_EQ((*converted)[0].selectionBits, 3u);
}
