// Loading of tangent-space plugins: the entry points and the version rule,
// the plugin directory lookup, the selection by option and its messages.

#include "common/TestPaths.h"
#include "common/LogCapture.h"
#include "scene/processing/MeshProcessing.h"
#include "scene/processing/TangentSpaceGenerator.h"
#include "scene/processing/TangentSpacePlugin.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;
using namespace Ond::SceneGraph::MeshProcessing;

namespace {

QString testPlugin(const char* name)
{
    return QStringLiteral(ZMF_TEST_PLUGIN_DIR "/%1.so").arg(QLatin1String(name));
}

QString shippedPlugin(const char* name)
{
    return ZmfTest::buildDir() + QStringLiteral("/plugins/tangentspace/%1.so").arg(QLatin1String(name));
}

} // namespace

TEST(TangentSpacePlugin, VersionMustBeOneDotSomethingAboveZero)
{
    EXPECT_FALSE(TangentSpacePlugin(testPlugin("version_10000")).isValid());
    EXPECT_TRUE(TangentSpacePlugin(testPlugin("version_10001")).isValid());
    EXPECT_FALSE(TangentSpacePlugin(testPlugin("version_20001")).isValid());

    EXPECT_FALSE(TangentSpacePlugin::isSupportedVersion(0));
    EXPECT_TRUE(TangentSpacePlugin::isSupportedVersion(0x1FFFF));
    EXPECT_FALSE(TangentSpacePlugin::isSupportedVersion(0x110001));
}

TEST(TangentSpacePlugin, AllFiveEntryPointsAreRequired)
{
    TangentSpacePlugin incomplete(testPlugin("incomplete"));
    EXPECT_TRUE(incomplete.isLoaded());
    EXPECT_FALSE(incomplete.isValid());
    EXPECT_FALSE(incomplete.generate(nullptr, 180.0f));

    EXPECT_FALSE(TangentSpacePlugin(testPlugin("no_such_plugin")).isValid());
}

TEST(TangentSpacePlugin, ShippedPluginsLoadWithTheirTexts)
{
    for (const char* name : {"mikktspace", "unitytspace", "mikkunrealtspace"}) {
        SCOPED_TRACE(name);
        TangentSpacePlugin plugin(shippedPlugin(name));
        ASSERT_TRUE(plugin.isValid()) << plugin.errorString().toStdString();
        EXPECT_EQ(plugin.getApiVersion(), 0x10001u);
        EXPECT_FALSE(plugin.getLabel().isEmpty());
        EXPECT_FALSE(plugin.getDescription().isEmpty());
        EXPECT_TRUE(plugin.getTangentBasisInterpolation().contains(QLatin1String("bitangent =")));
    }
    // Null texts read as empty.
    TangentSpacePlugin test(testPlugin("version_10001"));
    EXPECT_EQ(test.getLabel(), QStringLiteral("Test plugin"));
    EXPECT_TRUE(test.getDescription().isEmpty());
    EXPECT_TRUE(test.getTangentBasisInterpolation().isEmpty());
}

TEST(TangentSpaceGenerator, DefaultBasisFollowsThePluginName)
{
    EXPECT_TRUE(TangentSpaceGenerator::isDefaultBasisFor(QString()));
    EXPECT_FALSE(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("/a/b/mikktspace.so")));
    EXPECT_FALSE(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("C:/x/UnityTSpace.dll")));
    EXPECT_FALSE(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("my_mikktspace_v2.so")));
    EXPECT_TRUE(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("/a/mikkunrealtspace.so")));
    EXPECT_TRUE(TangentSpaceGenerator::isDefaultBasisFor(QStringLiteral("/a/other.so")));

    EXPECT_FALSE(TangentSpaceGenerator(shippedPlugin("mikktspace")).isDefaultBasis());
    EXPECT_TRUE(TangentSpaceGenerator(shippedPlugin("mikkunrealtspace")).isDefaultBasis());
}

TEST(TangentSpaceGenerator, PluginDirectoryIsFoundAboveTheProgram)
{
    // From the test binary up to the build tree, which holds the plugins.
    EXPECT_EQ(TangentSpaceGenerator::pluginDirectory(),
              QDir::cleanPath(ZmfTest::buildDir() + QStringLiteral("/plugins/tangentspace")));
    EXPECT_EQ(TangentSpaceGenerator::pluginFilePath(QStringLiteral("mikktspace")), shippedPlugin("mikktspace"));

    const QString root = ZmfTest::makeTempDir();
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("plugins/tangentspace")));
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("bin/deep")));
    EXPECT_EQ(TangentSpaceGenerator::pluginDirectoryFrom(root + QStringLiteral("/bin/deep")),
              QDir::cleanPath(root + QStringLiteral("/plugins/tangentspace")));

    // The first "plugins" entry stops the walk, even without tangentspace
    // under it: the fallback under the working directory takes its place.
    QFile marker(root + QStringLiteral("/bin/plugins"));
    ASSERT_TRUE(marker.open(QIODevice::WriteOnly));
    marker.close();
    EXPECT_EQ(TangentSpaceGenerator::pluginDirectoryFrom(root + QStringLiteral("/bin/deep")),
              QDir::cleanPath(QDir::currentPath() + QStringLiteral("/plugins/tangentspace")));
}

TEST(TangentSpaceGenerator, SelectionReportsMissingAndInvalidPlugins)
{
    TangentSpaceGenerator::setDefault(nullptr);
    {
        ZmfTest::LogCapture log;
        const QString missing = ZmfTest::makeTempDir() + QStringLiteral("/nothing.so");
        EXPECT_EQ(TangentSpaceGenerator::selectPlugin(missing), nullptr);
        ASSERT_EQ(log.entries().size(), 1u);
        EXPECT_EQ(log.entries()[0].level, 2);
        EXPECT_EQ(log.entries()[0].channel, QStringLiteral("ZMFBaker"));
        EXPECT_EQ(log.entries()[0].message, QStringLiteral("Tangent space plugin not found: ") + missing);
    }
    {
        ZmfTest::LogCapture log;
        EXPECT_EQ(TangentSpaceGenerator::selectPlugin(testPlugin("version_20001")), nullptr);
        EXPECT_EQ(log.messages(),
                  QStringList{QStringLiteral("Invalid tangent space plugin: ") + testPlugin("version_20001")});
    }
    EXPECT_EQ(TangentSpaceGenerator::getDefault(), nullptr);

    // Empty: "mikktspace" from the plugin directory, now the default.
    const auto chosen = TangentSpaceGenerator::selectPlugin(QString());
    ASSERT_NE(chosen, nullptr);
    EXPECT_EQ(chosen->getPath(), shippedPlugin("mikktspace"));
    EXPECT_EQ(chosen->getPluginName(), QStringLiteral("mikktspace"));
    EXPECT_EQ(chosen->getAngularThreshold(), 180.0f);
    EXPECT_EQ(TangentSpaceGenerator::getDefault(), chosen);

    // A bare name is looked for in the plugin directory.
    const auto byName = TangentSpaceGenerator::selectPlugin(QStringLiteral("unitytspace"));
    ASSERT_NE(byName, nullptr);
    EXPECT_EQ(byName->getPath(), shippedPlugin("unitytspace"));
    TangentSpaceGenerator::setDefault(nullptr);
}

TEST(TangentSpaceGenerator, PluginOutputBecomesTangentAndSignedBinormal)
{
    // One triangle in the xz plane, normal +y. The stand-in plugin writes
    // tangent (0, 0, 1) with sign -1 at each corner.
    std::vector<uint32_t> indices{0, 1, 2};
    std::vector<SubMesh> subMeshes;
    subMeshes.emplace_back(makeBuffer(std::move(indices)), PrimitiveType::Triangles, 3, nullptr);
    std::vector<Vec2BufferUPtr> uvs;
    uvs.push_back(makeBuffer(std::vector<Eigen::Vector2f>{{0, 0}, {1, 0}, {0, 1}}));
    Mesh::Data data(makeBuffer(std::vector<Eigen::Vector3f>{{0, 0, 0}, {1, 0, 0}, {0, 0, -1}}),
                    makeBuffer(std::vector<Eigen::Vector3f>(3, Eigen::Vector3f(0, 1, 0))), nullptr, nullptr,
                    nullptr, std::move(uvs), std::move(subMeshes));

    TangentSpaceGenerator generator(testPlugin("version_10001"));
    ASSERT_TRUE(generator.isValid());
    ASSERT_TRUE(computeTangentSpace(data, &generator));
    ASSERT_NE(data.getTangents(), nullptr);
    ASSERT_NE(data.getBinormals(), nullptr);
    for (size_t v = 0; v < 3; ++v) {
        EXPECT_EQ((*data.getTangents())[v], Eigen::Vector3f(0, 0, 1));
        EXPECT_EQ((*data.getBinormals())[v], Eigen::Vector3f(-1, 0, 0));
    }

    // An invalid generator leaves the mesh alone.
    TangentSpaceGenerator invalid(testPlugin("version_10000"));
    EXPECT_FALSE(computeTangentSpace(data, &invalid));
    EXPECT_FALSE(computeTangentSpace(data, nullptr));
}
