// Pictures through the program: the `screenshot` step and `--screenshots`, at the size of the
// device's model, with the written files named in the JSON output.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

// Width and height from a PNG's header.
std::pair<int, int> pngSize(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    unsigned char header[24] = {};
    in.read(reinterpret_cast<char*>(header), sizeof header);
    auto word = [&](int at) {
        return (header[at] << 24) | (header[at + 1] << 16) | (header[at + 2] << 8) | header[at + 3];
    };
    return {word(16), word(20)};
}

// Each model's size is the screen tests'; here, that --family and --scale reach the picture.
TEST(ScreenshotCli, StepAndFolderWritePicturesOfTheDevicesSize) {
    for (const auto& [options, pixels] :
         std::vector<std::pair<std::vector<std::string>, std::pair<int, int>>>{
             {{"--family", "iphone", "--scale", "2", "--system-version", "14.4"}, {750, 1334}},
             {{"--family", "ipad", "--system-version", "14.4"}, {1668, 2388}}}) {
        ScratchDevice scratch(options);
        const std::string file = scratch / "root.png";
        const auto result = scratch.run(
            {"--json", "--screenshots", scratch / "shots", "screenshot " + file, "show"});
        ASSERT_TRUE(ended(result, 0));
        const auto lines = result.outLines();
        ASSERT_EQ(lines.size(), 3u);
        EXPECT_EQ(lines[0].at("screenshot").at("path"), file);
        EXPECT_EQ(lines[0].at("screenshot").at("size"), std::filesystem::file_size(file));
        EXPECT_TRUE(lines[1].contains("rows"));
        const std::string numbered = lines[2].at("screenshot").at("path");
        EXPECT_EQ(std::filesystem::path(numbered).filename(), "001.png");
        EXPECT_EQ(pngSize(file), pixels) << options[1];
        EXPECT_EQ(pngSize(numbered), pixels) << options[1];
    }
}

TEST(ScreenshotCli, FullDrawsTheWholePageAndScrollBringsARowOnScreen) {
    ScratchDevice scratch({"--user-apps", "40"});
    ASSERT_TRUE(ended(scratch.run({"toggle VeltoEnabled on", "open Excluded Applications",
                                   "screenshot " + scratch / "screen.png",
                                   "screenshot " + scratch / "full.png --full", "scroll #40",
                                   "screenshot " + scratch / "scrolled.png"}),
                      0));
    const auto screen = pngSize(scratch / "screen.png");
    const auto full = pngSize(scratch / "full.png");
    EXPECT_EQ(full.first, screen.first);
    // 40 rows of 44 points do not fit one screen: the whole page is taller than the screen.
    EXPECT_GT(full.second, screen.second + 40 * 3);
    EXPECT_EQ(pngSize(scratch / "scrolled.png"), screen);
    EXPECT_NE(fileText(scratch / "scrolled.png"), fileText(scratch / "screen.png"));
}

}  // namespace
}  // namespace apptest
