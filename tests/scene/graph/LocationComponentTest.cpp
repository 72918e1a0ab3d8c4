#include "scene/graph/LocationComponent.h"

#include "../SceneTestUtil.h"


#include "../SignalRecorder.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;
using SceneTest::scaling;
using SceneTest::translation;

TEST(LocationComponent, ChildComposesParentLocalAndOwnGeometric)
{
    LocationComponent parent(translation(10, 0, 0));
    parent.setGeometricTransform(scaling(100)); // never reaches the child
    LocationComponent child(translation(0, 2, 0));
    child.setGeometricTransform(scaling(3));
    child.setParent(&parent);

    const Eigen::Vector3f p = SceneTest::apply(child.getGlobalTransform(true), {1, 0, 0});
    EXPECT_TRUE(p.isApprox(Eigen::Vector3f(13, 2, 0))) << p.transpose();
    const Eigen::Vector3f q = SceneTest::apply(child.getGlobalTransform(false), {1, 0, 0});
    EXPECT_TRUE(q.isApprox(Eigen::Vector3f(11, 2, 0))) << q.transpose();
    // The parent's own geometry does get its geometric transform.
    EXPECT_TRUE(SceneTest::apply(parent.getGlobalTransform(true), {1, 0, 0}).isApprox(Eigen::Vector3f(110, 0, 0)));
}

TEST(LocationComponent, InstanceListsMultiply)
{
    LocationComponent parent;
    parent.setInstanceTransforms({translation(100, 0, 0), translation(200, 0, 0)});
    LocationComponent child(scaling(2));
    child.setInstanceTransforms({translation(1, 0, 0), translation(0, 1, 0), translation(0, 0, 1)});
    child.setParent(&parent);

    const TransformList& list = child.getGlobalTransforms(true);
    ASSERT_EQ(list.size(), 6u);
    // For each instance of the child, then for each of the parent's matrices:
    // P · (L · I).
    const Eigen::Vector3f origin(0, 0, 0);
    EXPECT_TRUE(SceneTest::apply(list[0], origin).isApprox(Eigen::Vector3f(102, 0, 0)));
    EXPECT_TRUE(SceneTest::apply(list[1], origin).isApprox(Eigen::Vector3f(202, 0, 0)));
    EXPECT_TRUE(SceneTest::apply(list[2], origin).isApprox(Eigen::Vector3f(100, 2, 0)));
    EXPECT_TRUE(SceneTest::apply(list[5], origin).isApprox(Eigen::Vector3f(200, 0, 2)));
    EXPECT_TRUE(list.front().isApprox(child.getGlobalTransform(true)));
}

TEST(LocationComponent, UnchangedTransformKeepsCacheAndRaisesNothing)
{
    LocationComponent parent(translation(1, 0, 0));
    LocationComponent child(translation(0, 1, 0));
    child.setParent(&parent);
    child.getGlobalTransforms(true);
    child.getGlobalTransforms(false);
    SceneTest::SignalRecorder spy(&parent, &LocationComponent::parameterChanged);

    parent.setLocalTransform(translation(1, 0, 0));
    parent.setGeometricTransform(Eigen::Matrix4f::Identity());
    EXPECT_EQ(spy.count(), 0);
    EXPECT_TRUE(child.isGlobalTransformCached(true));
    EXPECT_TRUE(child.isGlobalTransformCached(false));

    parent.setLocalTransform(translation(5, 0, 0));
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.arg<0>(0), LocationComponent::LocalTransform);
    EXPECT_FALSE(child.isGlobalTransformCached(true));
    EXPECT_TRUE(SceneTest::apply(child.getGlobalTransform(), {0, 0, 0}).isApprox(Eigen::Vector3f(5, 1, 0)));
}

TEST(LocationComponent, ReparentingInvalidatesSubtreeAndPutsChildFirst)
{
    LocationComponent a(translation(1, 0, 0));
    LocationComponent b(translation(2, 0, 0));
    LocationComponent existing;
    existing.setParent(&b);
    LocationComponent child;
    LocationComponent grandChild(translation(0, 0, 7));
    grandChild.setParent(&child);
    child.setParent(&a);
    EXPECT_TRUE(SceneTest::apply(grandChild.getGlobalTransform(), {0, 0, 0}).isApprox(Eigen::Vector3f(1, 0, 7)));

    ASSERT_TRUE(child.setParent(&b));
    EXPECT_FALSE(grandChild.isGlobalTransformCached(true));
    EXPECT_EQ(b.getFirstChild(), &child);
    EXPECT_EQ(child.getNextSibling(), &existing);
    EXPECT_EQ(existing.getPreviousSibling(), &child);
    EXPECT_EQ(a.getFirstChild(), nullptr);
    EXPECT_EQ(b.getChildren(), (std::vector<LocationComponent*>{&child, &existing}));
    EXPECT_TRUE(SceneTest::apply(grandChild.getGlobalTransform(), {0, 0, 0}).isApprox(Eigen::Vector3f(2, 0, 7)));
}

TEST(LocationComponent, CyclesAreRefused)
{
    LocationComponent root;
    LocationComponent child;
    child.setParent(&root);
    EXPECT_FALSE(root.setParent(&child));
    EXPECT_FALSE(root.setParent(&root));
    EXPECT_EQ(root.getParent(), nullptr);
}

TEST(LocationComponent, DestroyedParentReleasesChildren)
{
    LocationComponent child(translation(0, 3, 0));
    LocationComponent sibling;
    {
        LocationComponent parent(translation(9, 0, 0));
        child.setParent(&parent);
        sibling.setParent(&parent);
        child.getGlobalTransforms(true);
    }
    EXPECT_EQ(child.getParent(), nullptr);
    EXPECT_EQ(child.getNextSibling(), nullptr);
    EXPECT_EQ(sibling.getPreviousSibling(), nullptr);
    EXPECT_TRUE(SceneTest::apply(child.getGlobalTransform(), {0, 0, 0}).isApprox(Eigen::Vector3f(0, 3, 0)));

    // A destroyed child leaves its siblings linked.
    LocationComponent parent;
    LocationComponent first;
    first.setParent(&parent);
    {
        LocationComponent middle;
        middle.setParent(&parent);
        LocationComponent last;
        last.setParent(&parent);
    }
    EXPECT_EQ(parent.getChildren(), (std::vector<LocationComponent*>{&first}));
}

TEST(LocationComponent, ParameterNames)
{
    EXPECT_EQ(LocationComponent::parameterName(0), "all");
    EXPECT_EQ(LocationComponent::parameterName(1), "parent");
    EXPECT_EQ(LocationComponent::parameterName(3), "geometric_transform");
    EXPECT_EQ(LocationComponent::parameterName(4), "");
}
