#include "program/ConsoleProgress.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using Ond::Core::ConsoleProgress;

namespace {

std::string contents(FILE* file)
{
    std::fflush(file);
    std::rewind(file);
    std::string text;
    char buffer[256];
    size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, got);
    return text;
}

} // namespace

TEST(ConsoleProgress, LineShowsStagePercentageAndTimeLeftOnceItCanBeTold)
{
    EXPECT_EQ(ConsoleProgress::lineText("Normal from mesh", "", 0.0, 0.0, 80), "Normal from mesh  0%");
    // Under a second or under 1%, no guess.
    EXPECT_EQ(ConsoleProgress::lineText("Normal from mesh", "", 0.5, 0.9, 80), "Normal from mesh  50%");
    EXPECT_EQ(ConsoleProgress::lineText("Normal from mesh", "", 0.005, 30.0, 80), "Normal from mesh  0%");
    EXPECT_EQ(ConsoleProgress::lineText("Normal from mesh", "", 0.25, 10.0, 80), "Normal from mesh  25%  0:30 left");
    EXPECT_EQ(ConsoleProgress::lineText("Loading high.obj", "Parsing file content", 0.5, 65.0, 80),
              "Loading high.obj: Parsing file content  50%  1:05 left");
    EXPECT_EQ(ConsoleProgress::lineText("Ambient occlusion from mesh", "", 0.1, 400.0, 80),
              "Ambient occlusion from mesh  10%  1:00:00 left");
    EXPECT_EQ(ConsoleProgress::lineText("Post-processing", "", 1.0, 5.0, 80), "Post-processing  100%");
    // Values out of range are held to it; the line never reaches the last column.
    EXPECT_EQ(ConsoleProgress::lineText("Stage", "", 1.7, 0.0, 80), "Stage  100%");
    EXPECT_EQ(ConsoleProgress::lineText("Building ray tracing scene", "", 0.5, 0.0, 12), "Building ra");
}

TEST(ConsoleProgress, DrawsInPlaceAndClearsOnlyOnATerminalWithoutQuiet)
{
    FILE* file = std::tmpfile();
    ASSERT_TRUE(file);
    {
        ConsoleProgress progress(file);
        EXPECT_FALSE(progress.isEnabled()) << "a file is no terminal";
        progress.begin("Loading a.obj");
        progress.setValue(0.5);
        progress.end();
        EXPECT_EQ(contents(file), "");

        progress.setTerminal(true);
        progress.setQuiet(true);
        progress.begin("Loading a.obj");
        progress.end();
        EXPECT_EQ(contents(file), "");

        progress.setQuiet(false);
        progress.begin("Loading a.obj");
        progress.setText("Parsing file content");
        progress.clearLine();
        progress.clearLine(); // nothing left to clear
        progress.setValue(0.25); // drawn again at once after a clear
        progress.end();
        progress.setValue(0.75); // no stage: nothing
        progress.end();
        // A stage inside another hands the line back at its end.
        progress.begin("Post-processing");
        progress.setValue(0.5);
        progress.begin("Tangent space conversion");
        progress.end();
        progress.end();
        EXPECT_EQ(contents(file), "\rLoading a.obj  0%\x1b[K"
                                  "\rLoading a.obj: Parsing file content  0%\x1b[K"
                                  "\r\x1b[K"
                                  "\rLoading a.obj: Parsing file content  25%\x1b[K"
                                  "\r\x1b[K"
                                  "\rPost-processing  0%\x1b[K"
                                  "\rTangent space conversion  0%\x1b[K"
                                  "\rPost-processing  50%\x1b[K"
                                  "\r\x1b[K");
    }
    std::fclose(file);
}
