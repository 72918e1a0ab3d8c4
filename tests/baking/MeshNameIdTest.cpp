#include "baking/MeshNameSuffixes.h"
#include "baking/detail/MeshNameId.h"
#include "scene/graph/MurmurHash3.h"

#include <gtest/gtest.h>

using namespace Ond::Baking;

namespace {

uint32_t hashOf(const char* text)
{
    return Ond::SceneGraph::murmurHash3_x86_32(text, strlen(text), 0);
}

class MeshNameIdTest : public ::testing::Test
{
protected:
    void TearDown() override { MeshNameSuffixes::reset(); }
};

} // namespace

TEST_F(MeshNameIdTest, StemIsCutAtTheFirstSuffixAndIgnoreMarkerRemoved)
{
    EXPECT_EQ(meshNameStem("head_low"), "head");
    EXPECT_EQ(meshNameStem("head_high_ignorebf"), "head");
    EXPECT_EQ(meshNameStem("head_ignorebf_high"), "head");
    EXPECT_EQ(meshNameStem("plain"), "plain");
    // Whichever suffix stands first wins.
    EXPECT_EQ(meshNameStem("a_high_b_low"), "a");
    EXPECT_EQ(meshNameStem("a_low_b_high"), "a");
    // Case-sensitive.
    EXPECT_EQ(meshNameStem("head_LOW"), "head_LOW");
    EXPECT_EQ(meshNameStem("x_ignorebfy_ignorebf"), "xy");
}

TEST_F(MeshNameIdTest, LowAndHighPartsShareTheHashOfTheStem)
{
    EXPECT_EQ(meshNameId("head_low"), meshNameId("head_high_ignorebf"));
    EXPECT_EQ(meshNameId("head_low"), hashOf("head"));
    EXPECT_NE(meshNameId("head_low"), meshNameId("hand_high"));
    EXPECT_EQ(meshNameId(""), hashOf(""));
    // The stem's UTF-8 bytes are hashed.
    EXPECT_EQ(meshNameId(QString::fromUtf8("t\xc3\xaate_high")), hashOf("t\xc3\xaate"));
}

TEST_F(MeshNameIdTest, SuffixTableChangesTheStem)
{
    MeshNameSuffixes::set(MeshNameSuffixes::Low, "_lp");
    MeshNameSuffixes::set(MeshNameSuffixes::High, "_hp");
    EXPECT_EQ(meshNameStem("body_lp"), "body");
    EXPECT_EQ(meshNameStem("body_hp_ignorebf"), "body");
    EXPECT_EQ(meshNameStem("body_low"), "body_low");
}

TEST_F(MeshNameIdTest, IgnoreMarkerMarksCulling)
{
    EXPECT_TRUE(meshIgnoresBackfaces("head_high_ignorebf"));
    EXPECT_FALSE(meshIgnoresBackfaces("head_high"));
    EXPECT_FALSE(meshIgnoresBackfaces("head_IGNOREBF"));
}
