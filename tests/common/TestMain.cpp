// Test main for suites that need Qt's GUI layer but no GL context.
#include <QGuiApplication>

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
