// The Mail page's pick and restore flows driven as a user drives them, through velto-settings
// with --json, on an iPhone and on an iPad device root.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

using Lines = std::vector<std::string>;

// What a show's journal logged and posted, in order.
Lines said(const json& show) {
    Lines out;
    for (const auto& e : show.at("journal")) {
        if (e.at("kind") == "log") out.push_back(e.at("text"));
        if (e.at("kind") == "notification") out.push_back(e.at("name"));
    }
    return out;
}

TEST(MailSimulatorTest, PickingAndRestoringOnBothFamilies) {
    const std::string image = "/var/mobile/Library/Mail/Velto/default_avatar_mail@3x.png";
    const std::string thumbnail = "/var/mobile/Library/Mail/Velto/default_avatar_thumb_mail@3x.png";
    const std::string posted = "com.norvale.veltoemailavatarsettingschanged";
    for (const bool iPad : {false, true}) {
        SCOPED_TRACE(iPad ? "iPad" : "iPhone");
        apptest::ScratchFolder scratch;
        const std::string root = scratch / "device";
        apptest::initDevice(root, {"--family", iPad ? "ipad" : "iphone"});
        const auto result = apptest::runProgram(
            {"--device", root, "--json", "toggle VeltoEnabled on", "open Mail",
             "toggle MailEnabled on", "tap ChooseAvatar", "show",
             "pick " + root +
                 "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png",
             "tap RestoreAvatar", "show", "choose Default Avatar", "show"});
        ASSERT_EQ(result.status, 0) << result.err;
        const auto shows = result.outLines();
        ASSERT_EQ(shows.size(), 3u);

        EXPECT_EQ(shows[0].at("presented").at("class"), "UIImagePickerController");
        EXPECT_EQ(shows[0].at("presented").at("popover"), iPad);
        EXPECT_EQ(said(shows[1]), (Lines{"Saved contact image at: " + image,
                                         "Saved contact thumb nail image at: " + thumbnail,
                                         "Posting notification....", posted}));
        const json& sheet = shows[1].at("presented");
        EXPECT_EQ(sheet.at("popover"), iPad);
        json actions = json::array({{{"title", "Default Avatar"}, {"style", "destructive"}}});
        if (!iPad) actions.push_back({{"title", "Cancel"}, {"style", "cancel"}});
        EXPECT_EQ(sheet.at("actions"), actions);

        const Lines restored = said(shows[2]);
        ASSERT_EQ(restored.size(), 6u);
        EXPECT_EQ(restored.back(), posted);
        EXPECT_FALSE(std::filesystem::exists(root + image));
        EXPECT_TRUE(std::filesystem::exists(root + thumbnail));
    }
}

}  // namespace
