// The input guard's rules on their own: what writers write passes, the
// damaged inputs that hang or overrun Assimp are named, whatever the suffix.

#include "common/TestPaths.h"
#include "scene/fbx/AssimpInputGuard.h"

#include <gtest/gtest.h>

#include <cstring>

using Ond::SceneLoad::unsafeInputReason;

namespace {

QString reason(const char* suffix, const QByteArray& bytes)
{
    return unsafeInputReason(QByteArray(suffix), bytes.constData(), size_t(bytes.size()));
}

QByteArray testFile(const char* name)
{
    return ZmfTest::readFile(ZmfTest::testDataDir() + QLatin1Char('/') + QLatin1String(name));
}

const QByteArray PlyHead = "ply\r\nformat ascii 1.0\ncomment made by hand\nelement vertex 3\nproperty float x\n"
                           "property float32 y\nproperty float z\nelement face 1\n"
                           "property list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";

} // namespace

TEST(AssimpInputGuard, WhatWritersWritePasses)
{
    for (const char* name : {"box_low.ply", "box_low.fbx", "box_high.fbx", "box_low.dae", "box_low.glb"}) {
        const QByteArray bytes = testFile(name);
        ASSERT_FALSE(bytes.isEmpty()) << name;
        const char* suffix = std::strrchr(name, '.') + 1;
        EXPECT_TRUE(reason(suffix, bytes).isEmpty()) << name << ": " << reason(suffix, bytes).toStdString();
    }
    EXPECT_TRUE(reason("ply", PlyHead).isEmpty()) << reason("ply", PlyHead).toStdString();
}

TEST(AssimpInputGuard, PlyHeadersOutsideTheGrammarAreRefusedUnderAnyName)
{
    auto damaged = [](const char* from, const char* to) {
        QByteArray bytes = PlyHead;
        bytes.replace(from, to);
        return bytes;
    };
    const QByteArray cases[] = {
        damaged("end_header\n", "end_headr\n"),                  // never ends
        damaged("element face 1", "element 88face 1"),          // a name read as a count
        damaged("element face 1", "element face 99999999999"),  // more than the file holds
        damaged("format ascii 1.0", "format ascii 2.0"),
        damaged("property float z", "property fl"),
        damaged("property float z", "propertmat ascii 1.0"),
        damaged("property list uchar int", "property list uchar vertex"),
        "ply\nproperty float x\nformat ascii 1.0\nend_header\n", // the format line comes first
    };
    for (const QByteArray& bytes : cases) {
        SCOPED_TRACE(bytes.toStdString());
        EXPECT_FALSE(reason("ply", bytes).isEmpty());
        // Another reader passes a file it refuses on to the PLY reader.
        EXPECT_FALSE(reason("glb", bytes).isEmpty());
        EXPECT_FALSE(reason("fbx", bytes).isEmpty());
    }
}

TEST(AssimpInputGuard, FbxArraysMayNotClaimMoreThanTheirBytesHold)
{
    QByteArray fbx = testFile("box_low.fbx");
    const qsizetype uvIndex = fbx.indexOf("UVIndex") + 7;
    ASSERT_EQ(fbx[uvIndex], 'i');
    QByteArray claims = fbx;
    claims[uvIndex + 4] = char(0x1c); // 470 M elements from under a kilobyte
    EXPECT_FALSE(reason("fbx", claims).isEmpty());
    EXPECT_FALSE(reason("dae", claims).isEmpty()); // the magic decides
    // A cut file is left to Assimp.
    EXPECT_TRUE(reason("fbx", fbx.left(fbx.size() / 2)).isEmpty());
}

TEST(AssimpInputGuard, ColladaContentIsCheckedUnderAnyName)
{
    QByteArray dae = testFile("box_low.dae");
    const qsizetype list = dae.indexOf("<p>");
    ASSERT_GT(list, 0);
    dae[dae.indexOf(' ', list)] = '}';
    EXPECT_FALSE(reason("dae", dae).isEmpty());
    EXPECT_FALSE(reason("obj", dae).isEmpty());
}
