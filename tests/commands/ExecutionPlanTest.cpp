// Plan reading without baking: the order of the nodes, references, the
// settings a node sees, and the tile lists.

#include "commands/ExecutionPlan.h"
#include "commands/JsonSettingsMap.h"
#include "commands/UvTileList.h"

#include "common/LogCapture.h"

#include <gtest/gtest.h>

using namespace ProgramCommand;

namespace {

Json::Value parsed(const char* text)
{
    Json::Value root;
    EXPECT_TRUE(ExecutionPlan::parse(QByteArray(text), root)) << text;
    return root;
}

} // namespace

TEST(ExecutionPlan, ProducersFirstLowerIndexOnTies)
{
    // a reads c, c reads b; d stands alone; "e" points at no node.
    const Json::Value root = parsed(R"({"inputs": "x",
        "a": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://c"}},
        "b": {"baker": "position"},
        "c": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://b"}},
        "d": {"baker": "position", "parameters": {"uv-set": "baker://e"}},
        "f": {"baker": "position", "parameters": 2}})");
    const std::vector<PlanNode> nodes = ExecutionPlan::buildNodes(root);
    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(nodes[0].references.size(), 1u);
    EXPECT_EQ(nodes[0].references[0].target, 2u);
    EXPECT_EQ(nodes[0].references[0].propertyId, "Detail.Texture.TextureFileName");
    EXPECT_TRUE(nodes[3].references.empty());
    EXPECT_FALSE(ExecutionPlan::hasCycle(nodes));
    EXPECT_EQ(ExecutionPlan::executionOrder(nodes), (std::vector<size_t>{1, 2, 0, 3}));
}

TEST(ExecutionPlan, Cycles)
{
    const Json::Value self = parsed(
        R"({"inputs": "x", "a": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://a"}}})");
    EXPECT_TRUE(ExecutionPlan::hasCycle(ExecutionPlan::buildNodes(self)));
    const Json::Value chain = parsed(R"({"inputs": "x",
        "a": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://b"}},
        "b": {"baker": "texture-from-mesh", "parameters": {"normal": "baker://c"}},
        "c": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://a"}}})");
    EXPECT_TRUE(ExecutionPlan::hasCycle(ExecutionPlan::buildNodes(chain)));
}

TEST(ExecutionPlan, ValidationOfOddDocuments)
{
    // No object at all reads as a plan without inputs.
    for (const char* text : {"[1, 2]", "3", "\"inputs\"", "null"}) {
        const auto v = ExecutionPlan::validate(parsed(text));
        EXPECT_EQ(v.errors, QStringList{"inputs not found at top level."}) << text;
    }
    const auto ok = ExecutionPlan::validate(parsed(R"({"inputs": 1, "n": {"baker": "ambient-occlusion-from-mesh",
        "parameters": {"nb-second-rays": 8, "normal": "baker://m", "uvTiles": "auto", "use-cage": true}}})"));
    EXPECT_TRUE(ok.errors.isEmpty()) << ok.errors.join('|').toStdString();
    EXPECT_FALSE(ExecutionPlan::parse("{\"inputs\": }", *std::make_unique<Json::Value>()));
}

TEST(JsonSettingsMap, NodeOverridesSharedAndConverts)
{
    const Json::Value root = parsed(R"({"inputs": ["a.obj", 2], "output-name": "shared", "dilation-width": 4,
        "min": 0.25, "flag": "true", "uv-tile": {"u": 1, "v": 2}, "size": [3, 4], "xy": {"x": 5, "y": 6},
        "n": {"baker": "position", "parameters": {"output-name": "own", "flag": false}}})");
    const std::vector<PlanNode> nodes = ExecutionPlan::buildNodes(root);
    JsonSettingsMap settings(root, nodes);
    EXPECT_EQ(settings.getString("output-name", "d"), "shared");
    EXPECT_EQ(settings.getStringList("inputs", {}), (QStringList{"a.obj", "2"}));
    EXPECT_EQ(settings.getString("dilation-width", "d"), "4");
    EXPECT_EQ(settings.getString("min", "d"), "0.25");
    EXPECT_TRUE(settings.getBool("flag", false));
    EXPECT_EQ(settings.getPoint("uv-tile", {}), QPoint(1, 2));
    EXPECT_EQ(settings.getSize("size", {}), QSize(3, 4));
    EXPECT_EQ(settings.getPoint("xy", {}), QPoint(5, 6));
    EXPECT_EQ(settings.getSize("output-name", QSize(7, 7)), QSize(7, 7));
    EXPECT_FALSE(settings.has("missing"));
    EXPECT_EQ(settings.getString("inputs", "d"), "d"); // a list of two has no single text

    settings.setCurrentNode(0);
    EXPECT_TRUE(settings.nodeHas("output-name"));
    EXPECT_FALSE(settings.nodeHas("min"));
    EXPECT_EQ(settings.getString("output-name", "d"), "own");
    EXPECT_FALSE(settings.getBool("flag", true));
    EXPECT_EQ(settings.getString("min", "d"), "0.25");
}

TEST(JsonSettingsMap, ReferencesReadTheProducersFile)
{
    const Json::Value root = parsed(R"({"inputs": "a.obj",
        "consumer": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://producer",
                                                                   "normal": "baker://ghost"}},
        "producer": {"baker": "position"}})");
    std::vector<PlanNode> nodes = ExecutionPlan::buildNodes(root);
    JsonSettingsMap settings(root, nodes);
    settings.setCurrentNode(0);
    EXPECT_EQ(settings.getString("texture-file", "d"), ""); // nothing written yet
    nodes[1].writtenPath = "/maps/last.png";
    nodes[1].writtenPerTile[1001] = "/maps/1001.png";
    EXPECT_EQ(settings.getString("texture-file", "d"), "/maps/last.png");
    settings.setCurrentTile(1001);
    EXPECT_EQ(settings.getString("texture-file", "d"), "/maps/1001.png");
    settings.setCurrentTile(1002);
    EXPECT_EQ(settings.getString("texture-file", "d"), "/maps/last.png");
    EXPECT_TRUE(settings.has("normal"));
    EXPECT_EQ(settings.getString("normal", "d"), "d");
}

TEST(UvTileList, ParseForms)
{
    ZmfTest::LogCapture log;
    EXPECT_EQ(UvTileList::parse({"1001 1002 0x1"}), (std::vector<uint16_t>{1001, 1002, 1011}));
    EXPECT_EQ(UvTileList::parse({"1022", "9x0", "0x0", "1001"}), (std::vector<uint16_t>{1022, 1010, 1001, 1001}));
    EXPECT_TRUE(UvTileList::parse({"12x0"}).empty());
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_TRUE(UvTileList::parse({"1001 1002", "abc", "10011"}).empty());
    EXPECT_EQ(log.lines().size(), 3);
    EXPECT_TRUE(UvTileList::isAuto(QStringList{"auto"}));
    EXPECT_FALSE(UvTileList::isAuto(QStringList{"auto", "1001"}));
    EXPECT_EQ(UvTileList::namePerTile("{inputName}_{bakerName}"), "{inputName}_{bakerName}_{udim}");
    EXPECT_EQ(UvTileList::namePerTile("$(udim)/{mesh}"), "$(udim)/{mesh}");
}
