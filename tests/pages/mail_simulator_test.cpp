// The Mail page's pick and restore driven through velto-settings with --json on an iPad: the
// simulator's own part of it (the pick and choose steps, what it shows presented). The page's
// rules for both families are checked on the page itself.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

// The names of the notifications in a show's journal.
std::vector<std::string> posted(const json& show) {
    std::vector<std::string> out;
    for (const auto& e : show.at("journal"))
        if (e.at("kind") == "notification") out.push_back(e.at("name"));
    return out;
}

TEST(MailSimulatorTest, PickingAndRestoringOnAnIPad) {
    apptest::ScratchFolder scratch;
    const std::string root = scratch / "device";
    apptest::initDevice(root, {"--family", "ipad"});
    const auto result = apptest::runProgram(
        {"--device", root, "--json", "toggle VeltoEnabled on", "open Mail", "toggle MailEnabled on",
         "tap ChooseAvatar", "show",
         "pick " + root + "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png",
         "tap RestoreAvatar", "show", "choose Default Avatar", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto shows = result.outLines();
    ASSERT_EQ(shows.size(), 3u);

    EXPECT_EQ(shows[0].at("presented").at("class"), "UIImagePickerController");
    EXPECT_EQ(shows[0].at("presented").at("popover"), true);
    const std::vector<std::string> avatarsChanged{"com.norvale.veltoemailavatarsettingschanged"};
    EXPECT_EQ(posted(shows[1]), avatarsChanged);
    EXPECT_EQ(shows[1].at("presented").at("actions"),
              json::array({{{"title", "Default Avatar"}, {"style", "destructive"}}}));
    EXPECT_EQ(shows[2].at("presented"), nullptr);
    EXPECT_EQ(posted(shows[2]), avatarsChanged);
}

}  // namespace
