#include "scene/graph/CameraComponent.h"

#include "common/LogCapture.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;

TEST(CameraComponent, RefusalsAreLoggedAndKeepTheValue)
{
    CameraComponent camera;
    ZmfTest::LogCapture log;
    EXPECT_FALSE(camera.setProjectionType(2));
    EXPECT_FALSE(camera.setNearClipPlane(1000.0f));
    EXPECT_FALSE(camera.setFarClipPlane(0.005f));
    EXPECT_FALSE(camera.setDistToTarget(-1.0f));
    EXPECT_FALSE(camera.setOrthographicZoomFactor(0.0f));
    EXPECT_FALSE(camera.setFocalDistanceInMm(-2.0f));
    EXPECT_FALSE(camera.setApertureWidthInMm(-3.0f));
    EXPECT_EQ(log.lines(), QStringList({
                               "[1][SceneGraph/Camera]Invalid projection type (2)",
                               "[1][SceneGraph/Camera]Can't set a Near Clip distance higher than Far Clip distance (Far=1000)",
                               "[1][SceneGraph/Camera]Can't set a Far Clip distance lower than Near Clip distance (Near=0.01)",
                               "[1][SceneGraph/Camera]Can't set a negative dist to target (-1)",
                               "[1][SceneGraph/Camera]Can't set a negative or null zoom factor (0)",
                               "[1][SceneGraph/Camera]Can't set a negative focale dist (-2)",
                               "[1][SceneGraph/Camera]Can't set a negative aperture width (-3)",
                           }));
    EXPECT_EQ(camera.getProjectionType(), 0u);
    EXPECT_FLOAT_EQ(camera.getNearClipPlane(), 0.01f);
    EXPECT_FLOAT_EQ(camera.getFarClipPlane(), 1000.0f);
    EXPECT_EQ(camera.getResolution(), Eigen::Vector2i(1920, 1080));
}

TEST(CameraComponent, CopyMovesClipPlanesPastEachOther)
{
    CameraComponent far;
    ASSERT_TRUE(far.setFarClipPlane(5000.0f));
    ASSERT_TRUE(far.setNearClipPlane(2000.0f));
    CameraComponent camera;
    ZmfTest::LogCapture log;
    camera.copyFrom(far);
    EXPECT_TRUE(log.lines().isEmpty()) << log.lines().join("\n").toStdString();
    EXPECT_FLOAT_EQ(camera.getNearClipPlane(), 2000.0f);
    EXPECT_FLOAT_EQ(camera.getFarClipPlane(), 5000.0f);
    EXPECT_EQ(CameraComponent::parameterName(13), "resolution");
    EXPECT_EQ(CameraComponent::parameterName(14), "");
}
