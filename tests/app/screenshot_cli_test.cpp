// Pictures through the program: the `screenshot` step and `--screenshots`, on iPhones, an iPod
// and an iPad at the sizes of their models, with the written files named in the JSON output.

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

struct DeviceCase {
    const char* family;
    const char* version;
    const char* scale;
    std::pair<int, int> pixels;
};

// Printed by its name, where GoogleTest would dump the bytes.
void PrintTo(const DeviceCase& device, std::ostream* out) {
    *out << device.family << " " << device.version;
    if (*device.scale) *out << " @" << device.scale << "x";
}

class ScreenshotCliTest : public ::testing::TestWithParam<DeviceCase> {};

TEST_P(ScreenshotCliTest, StepAndFolderWritePicturesOfTheDevicesSize) {
    ScratchFolder scratch;
    const std::string device = scratch / "device";
    std::vector<std::string> options{"--family", GetParam().family, "--system-version",
                                     GetParam().version};
    if (*GetParam().scale) options.insert(options.end(), {"--scale", GetParam().scale});
    initDevice(device, options);
    const std::string file = scratch / "root.png";
    const auto result = runProgram({"--device", device, "--json", "--screenshots",
                                    scratch / "shots", "screenshot " + file, "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto lines = result.outLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].at("screenshot").at("path"), file);
    EXPECT_EQ(lines[0].at("screenshot").at("size"), std::filesystem::file_size(file));
    EXPECT_TRUE(lines[1].contains("rows"));
    const std::string numbered = lines[2].at("screenshot").at("path");
    EXPECT_EQ(std::filesystem::path(numbered).filename(), "001.png");
    EXPECT_EQ(pngSize(file), GetParam().pixels);
    EXPECT_EQ(pngSize(numbered), GetParam().pixels);
}

INSTANTIATE_TEST_SUITE_P(Devices, ScreenshotCliTest,
                         ::testing::Values(DeviceCase{"iphone", "12.4", "3", {1170, 2532}},
                                           DeviceCase{"iphone", "14.4", "2", {750, 1334}},
                                           DeviceCase{"ipod", "14.4", "", {640, 1136}},
                                           DeviceCase{"ipad", "14.4", "", {1668, 2388}}),
                         [](const auto& info) {
                             return std::string(info.param.family) + info.param.scale;
                         });

TEST(ScreenshotCli, FullDrawsTheWholePageAndScrollBringsARowOnScreen) {
    ScratchFolder scratch;
    const std::string device = scratch / "device";
    initDevice(device, {"--user-apps", "40"});
    const auto result = runProgram(
        {"--device", device, "toggle VeltoEnabled on", "open Excluded Applications",
         "screenshot " + scratch / "screen.png", "screenshot " + scratch / "full.png --full",
         "scroll #40", "screenshot " + scratch / "scrolled.png"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto screen = pngSize(scratch / "screen.png");
    const auto full = pngSize(scratch / "full.png");
    EXPECT_EQ(full.first, screen.first);
    // 40 rows of 44 points do not fit one screen: the whole page is taller than the screen.
    EXPECT_GT(full.second, screen.second + 40 * 3);
    EXPECT_EQ(pngSize(scratch / "scrolled.png"), screen);
    EXPECT_NE(fileText(scratch / "scrolled.png"), fileText(scratch / "screen.png"));
}

TEST(ScreenshotCli, AScaleTheFamilyNeverHadMakesNoDevice) {
    ScratchFolder scratch;
    const auto result =
        runProgram({"device", "init", scratch / "device", "--family", "ipad", "--scale", "3"});
    EXPECT_EQ(result.status, 2);  // a usage error, like any option value out of its range
    EXPECT_NE(result.err.find("no iPad has a 3x screen"), std::string::npos) << result.err;
    EXPECT_FALSE(std::filesystem::exists(scratch.path() / "device/DeviceProfile.plist"));
}

TEST(ScreenshotCli, UnwritableFileFailsTheStep) {
    ScratchFolder scratch;
    const std::string device = scratch / "device";
    initDevice(device);
    const auto result =
        runProgram({"--device", device, "--json", "screenshot " + scratch / "no/such/x.png"});
    EXPECT_EQ(result.status, 4);
    ASSERT_EQ(result.errLines().size(), 1u);
    EXPECT_NE(result.errLines()[0].at("error").get<std::string>().find("cannot write"),
              std::string::npos);
}

}  // namespace
}  // namespace apptest
