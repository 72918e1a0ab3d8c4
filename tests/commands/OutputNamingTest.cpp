// The arithmetic of output names: UDIM numbers and pattern replacement.

#include "commands/OutputNaming.h"

#include <QDir>

#include <gtest/gtest.h>

using ProgramCommand::OutputNaming;

TEST(OutputNaming, UdimOfTile)
{
    EXPECT_EQ(OutputNaming::udimOf(0, 0), 1001);
    EXPECT_EQ(OutputNaming::udimOf(9, 0), 1010);
    EXPECT_EQ(OutputNaming::udimOf(1, 2), 1022);
    EXPECT_FALSE(OutputNaming::udimOf(10, 0));
    EXPECT_FALSE(OutputNaming::udimOf(0, -1));
    EXPECT_EQ(OutputNaming::udimOf(9, 6452), 65530);
    EXPECT_FALSE(OutputNaming::udimOf(5, 6453));
}

TEST(OutputNaming, NamePatterns)
{
    const QString input = QStringLiteral("/x/y/a.b.obj");
    EXPECT_EQ(OutputNaming::defaultName, QStringLiteral("{inputName}_{bakerName}"));
    EXPECT_EQ(OutputNaming::expandName(OutputNaming::defaultName, input, QStringLiteral("uv-map"), 1001),
              QStringLiteral("a_uv-map"));
    EXPECT_EQ(OutputNaming::expandName(QStringLiteral("{mesh}_{udim}"), input, QString(), 1022),
              QStringLiteral("a.b_1022"));
    EXPECT_EQ(OutputNaming::expandName(QStringLiteral("$(mesh)$(udim){udim}"), input, QString(), std::nullopt),
              QStringLiteral("a.b"));
    EXPECT_EQ(OutputNaming::expandName(QStringLiteral("{inputName}{InputName}$(inputname)"), input, QString(), 1001),
              QStringLiteral("a{InputName}a"));
    // A file: URL names the same file as its path.
    EXPECT_EQ(OutputNaming::expandName(QStringLiteral("{mesh}"), QStringLiteral("file:///x/y/a.b.obj"), QString(), 1001),
              QStringLiteral("a.b"));
}

TEST(OutputNaming, PathKnowsOnlyThePlainInputPath)
{
    const QString input = QStringLiteral("/x/y/a.obj");
    EXPECT_EQ(OutputNaming::expandPath(QStringLiteral("{inputPath}/maps"), input), QStringLiteral("/x/y/maps"));
    EXPECT_EQ(OutputNaming::expandPath(QStringLiteral("$(inputPath)/{inputpath}"), input),
              QStringLiteral("$(inputPath)/{inputpath}"));
    EXPECT_EQ(OutputNaming::expandPath(QStringLiteral("{inputPath}"), QStringLiteral("rel.obj")), QDir::currentPath());
}
