// The Messages page's default contact picture driven through velto-settings with --json on
// both device families: a phone's photo picked (cropped, or only as the original), stored
// upright in both folders, and restored.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/ui/image.h"
#include "tests/support/oriented_jpeg.h"
#include "tests/support/program_run.h"

using nlohmann::json;
namespace fs = std::filesystem;

namespace {

const std::string kChanged = "com.norvale.veltomessagesavatarsettingschanged";
const std::vector<std::string> kFiles = {"DefaultContactImage@3x.png",
                                         "DefaultContactImageThumb@3x.png"};

std::vector<std::string> posted(const json& show) {
    std::vector<std::string> out;
    for (const auto& e : show.at("journal"))
        if (e.at("kind") == "notification") out.push_back(e.at("name"));
    return out;
}

plat::Bytes readBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return plat::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

struct Family {
    std::string name;
    int orientation;  // how the picked photo was held
};

class MessagesSimulatorTest : public ::testing::TestWithParam<Family> {
  protected:
    // The picture folder, and the one in the Messages data container.
    fs::path cache() const { return fs::path(root) / "var/mobile/Library/Preferences/Velto"; }
    fs::path container() const {
        for (const auto& entry :
             fs::directory_iterator(fs::path(root) / "var/mobile/Containers/Data/Application"))
            if (fs::exists(entry.path() / "Library/Preferences/Velto"))
                return entry.path() / "Library/Preferences/Velto";
        return {};
    }

    apptest::ScratchFolder scratch;
    std::string root = scratch / "device";
};

TEST_P(MessagesSimulatorTest, PickingAPhotoAndRestoringTheStockPicture) {
    const Family family = GetParam();
    apptest::initDevice(root, {"--family", family.name});
    const std::string photo = scratch / "photo.jpg";
    const auto jpeg = testsupport::orientedJpeg(family.orientation);
    std::ofstream(photo, std::ios::binary)
        .write(reinterpret_cast<const char*>(jpeg.data()),
               static_cast<std::streamsize>(jpeg.size()));

    const auto result = apptest::runProgram(
        {"--device", root, "--json", "toggle VeltoEnabled on", "open Messages",
         "toggle MessagesEnabled on", "tap ChooseAvatar", "pick " + photo + " --original-only",
         "show", "tap ChooseAvatar", "show", "pick " + photo, "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto shows = result.outLines();
    ASSERT_EQ(shows.size(), 3u);
    const bool pad = family.name == "ipad";

    // Only the original came back: nothing written, nobody told, the picker gone.
    const auto first = posted(shows[0]);
    EXPECT_EQ(std::count(first.begin(), first.end(), kChanged), 0);
    for (const auto& e : shows[0].at("journal"))
        EXPECT_NE(e.at("kind"), "log") << e;
    EXPECT_EQ(shows[0].at("presented"), nullptr);

    // The picker: a popover at the button on an iPad, though the button's cell was made only
    // when it was tapped.
    EXPECT_EQ(shows[1].at("presented").at("class"), "UIImagePickerController");
    EXPECT_EQ(shows[1].at("presented").at("popover"), pad);
    EXPECT_EQ(shows[1].at("presented").at("anchor"), pad ? json("ChooseAvatar") : json());

    // Picked: both files in both folders, alike, RGBA, the photo upright.
    EXPECT_EQ(posted(shows[2]), std::vector<std::string>{kChanged});
    ASSERT_FALSE(container().empty());
    for (const std::string& name : kFiles) {
        const plat::Bytes bytes = readBytes(cache() / name);
        ASSERT_GT(bytes.size(), 25u) << name;
        EXPECT_EQ(readBytes(container() / name), bytes) << name;
        EXPECT_EQ(bytes[25], 6) << name;
        const auto stored = plat::Image::imageWithData(bytes);
        ASSERT_TRUE(stored);
        const int w = stored->pixelWidth(), h = stored->pixelHeight();
        for (auto [fx, fy] : {std::pair{0.25, 0.25}, {0.75, 0.25}, {0.5, 0.75}})
            EXPECT_TRUE(testsupport::shows(stored->pixel(fx * w, fy * h),
                                           testsupport::uprightColour(fx * 32, fy * 16)))
                << name << " at " << fx << ", " << fy;
    }

    const auto restore =
        apptest::runProgram({"--device", root, "--json", "open Messages", "tap RestoreAvatar",
                             "show", "choose Default Avatar", "show"});
    ASSERT_EQ(restore.status, 0) << restore.err;
    const auto restored = restore.outLines();
    ASSERT_EQ(restored.size(), 2u);
    // The sheet: on an iPad a popover at the button with no Cancel.
    const json& sheet = restored[0].at("presented");
    EXPECT_EQ(sheet.at("actions").size(), pad ? 1u : 2u);
    EXPECT_EQ(sheet.at("anchor"), pad ? json("RestoreAvatar") : json());
    // Restored: both files gone from both folders; the extension falls back on its own.
    EXPECT_EQ(posted(restored[1]), std::vector<std::string>{kChanged});
    EXPECT_EQ(restored[1].at("presented"), nullptr);
    for (const std::string& name : kFiles)
        EXPECT_FALSE(fs::exists(cache() / name) || fs::exists(container() / name)) << name;
}

INSTANTIATE_TEST_SUITE_P(Families, MessagesSimulatorTest,
                         ::testing::Values(Family{"iphone", 6}, Family{"ipad", 8}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
