// The Messages page's default contact picture driven through velto-settings with --json: a
// picture picked (cropped, or only as the original), stored in both folders, and restored.
// The picker's and the sheet's presentation are the shared picture sheets' rules, checked on
// the Mail page; how a photo is turned upright is the decoder's (ExifOrientation).

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/foundation/value.h"
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

class MessagesSimulatorTest : public ::testing::Test {
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

TEST_F(MessagesSimulatorTest, PickingAPhotoAndRestoringTheStockPicture) {
    apptest::initDevice(root, {"--family", "ipad"});
    const std::string photo =
        root + "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png";

    const auto result =
        apptest::runProgram({"--device", root, "--json", "toggle VeltoEnabled on", "open Messages",
                             "toggle MessagesEnabled on", "tap ChooseAvatar", "show",
                             "pick " + photo + " --original-only", "show", "tap ChooseAvatar",
                             "pick " + photo, "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    auto shows = result.outLines();
    ASSERT_EQ(shows.size(), 3u);
    // On the iPad the picker is a popover at its button.
    EXPECT_EQ(shows[0].at("presented").at("popover"), true);
    EXPECT_EQ(shows[0].at("presented").at("anchor"), "ChooseAvatar");
    shows.erase(shows.begin());

    // Only the original came back: nothing written, nobody told, the picker gone.
    EXPECT_EQ(std::ranges::count(posted(shows[0]), kChanged), 0);
    for (const auto& e : shows[0].at("journal"))
        EXPECT_NE(e.at("kind"), "log") << e;
    EXPECT_EQ(shows[0].at("presented"), nullptr);

    // Picked: both files in both folders, alike, and the extension told so.
    EXPECT_EQ(posted(shows[1]), std::vector<std::string>{kChanged});
    EXPECT_TRUE(std::any_of(
        shows[1].at("journal").begin(), shows[1].at("journal").end(),
        [](const json& e) { return e.value("text", "") == "Posting notification...."; }));
    ASSERT_FALSE(container().empty());
    for (const std::string& name : kFiles) {
        const plat::Bytes bytes = readBytes(cache() / name);
        EXPECT_FALSE(bytes.empty()) << name;
        EXPECT_EQ(readBytes(container() / name), bytes) << name;
    }

    const auto restore =
        apptest::runProgram({"--device", root, "--json", "open Messages", "tap RestoreAvatar",
                             "show", "choose Default Avatar", "show"});
    ASSERT_EQ(restore.status, 0) << restore.err;
    const auto restored = restore.outLines();
    ASSERT_EQ(restored.size(), 2u);
    // The sheet is up at its button.
    EXPECT_EQ(restored[0].at("presented").at("anchor"), "RestoreAvatar");
    // Restored: both files gone from both folders, before the extension is told, so that it
    // falls back on its own picture.
    EXPECT_EQ(posted(restored[1]), std::vector<std::string>{kChanged});
    bool told = false;
    int removals = 0;
    for (const auto& e : restored[1].at("journal")) {
        told |= e.at("kind") == "notification";
        if (e.at("kind") == "log" && e.at("text").get<std::string>().starts_with("Removed")) {
            EXPECT_FALSE(told) << e;
            ++removals;
        }
    }
    EXPECT_EQ(removals, 4);
    EXPECT_EQ(restored[1].at("presented"), nullptr);
    for (const std::string& name : kFiles)
        EXPECT_FALSE(fs::exists(cache() / name) || fs::exists(container() / name)) << name;
}

}  // namespace
