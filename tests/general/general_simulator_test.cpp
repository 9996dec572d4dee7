// The General page's sheet and the pages the root lists lead to, driven through velto-settings
// with --json on device roots it made, as a user drives them.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

std::vector<std::string> kinds(const json& show) {
    std::vector<std::string> out;
    for (const auto& e : show.at("journal"))
        if (e.at("kind") != "dismiss" && e.at("kind") != "present") out.push_back(e.at("kind"));
    return out;
}

json rowWithId(const json& show, const std::string& id) {
    for (const auto& row : show.at("rows"))
        if (row.at("id") == id) return row;
    return nullptr;
}

class SimpleSimulatorTest : public ::testing::TestWithParam<std::string> {
  protected:
    std::string makeDevice() {
        // Below 13, where the root list still shows the Lock Screen row.
        apptest::initDevice(root, {"--family", GetParam(), "--system-version", "12.4", "--app",
                                   "bitesms", "--app", "ringledger", "--app", "recents"});
        return root;
    }
    std::vector<json> run(std::vector<std::string> steps) {
        steps.insert(steps.begin(), {"--device", root, "--json"});
        const auto result = apptest::runProgram(steps);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.outLines();
    }
    apptest::ScratchFolder scratch;
    std::string root = scratch / "device";
};

TEST_P(SimpleSimulatorTest, LocalCacheSheetCancelsOrRestartsTheInterface) {
    makeDevice();
    const auto shows =
        run({"toggle VeltoEnabled on", "open General", "toggle Local Cache", "show",
             "choose Cancel", "show", "toggle Local Cache", "choose Continue", "show"});
    ASSERT_EQ(shows.size(), 3u);

    const json& sheet = shows[0].at("presented");
    ASSERT_FALSE(sheet.is_null());
    EXPECT_EQ(sheet.at("title"), nullptr);
    EXPECT_EQ(sheet.at("message"),
              "Are you sure you want to continue? Your device will respring once it is done.");
    EXPECT_EQ(sheet.at("actions"), json::array({{{"title", "Continue"}, {"style", "destructive"}},
                                                {{"title", "Cancel"}, {"style", "cancel"}}}));
    EXPECT_EQ(sheet.at("popover"), false);
    // The switch shows the new position while the sheet is up, and nothing is stored.
    EXPECT_EQ(rowWithId(shows[0], "Local Cache").at("value"), true);
    for (const auto& e : shows[0].at("journal"))
        EXPECT_FALSE(e.at("kind") == "preference-write" && e.at("key") == "VeltoEnabledLocalCache");

    // Cancel: the old value written back, announced once, the switch redrawn.
    EXPECT_EQ(shows[1].at("presented"), nullptr);
    EXPECT_EQ(rowWithId(shows[1], "Local Cache").at("value"), false);
    EXPECT_EQ(kinds(shows[1]), (std::vector<std::string>{"preference-write", "notification",
                                                         "synchronize", "reload"}));

    // Continue: stored, then the interface restarts on the root page.
    EXPECT_EQ(shows[2].at("page"), "VeltoSettingsController");
    EXPECT_EQ(shows[2].at("depth"), 1);
    std::vector<std::string> commands;
    for (const auto& e : shows[2].at("journal"))
        if (e.at("kind") == "shell") commands.push_back(e.at("command"));
    EXPECT_EQ(commands, std::vector<std::string>{"killall backboardd"});
    const auto stored = apptest::runProgram(
        {"--device", root, "defaults", "read", "com.norvale.velto", "VeltoEnabledLocalCache"});
    EXPECT_EQ(stored.out, "1\n");
}

TEST_P(SimpleSimulatorTest, EveryLinkRowOfTheRootOpensAPage) {
    makeDevice();
    const auto root = run({"toggle VeltoEnabled on", "show"});
    ASSERT_EQ(root.size(), 1u);
    std::vector<std::string> steps;
    std::vector<std::string> expected;
    for (const auto& row : root[0].at("rows")) {
        if (row.at("detail").is_null()) continue;
        steps.insert(steps.end(), {"open " + row.at("id").get<std::string>(), "show", "back"});
        expected.push_back(row.at("detail"));
    }
    std::set<std::string> required{
        "LockScreenSettingsController",     "NCAppSettingsController",
        "ContactsAppSettingsController",    "BiteSMSAppSettingsController",
        "VeltoNVRecentsSettingsController", "VeltoGeneralSettingsController",
        "MessagesAppSettingsController",    "VeltoMiscController"};
    // The call-log application's row is on the iPhone list only.
    if (GetParam() == "iphone") required.insert("VeltoRingLedgerSettingsController");
    for (const auto& page : expected)
        required.erase(page);
    EXPECT_TRUE(required.empty()) << "not on the root list: " << *required.begin();
    std::vector<std::string> opened;
    for (const auto& show : run(steps)) {
        opened.push_back(show.at("page"));
        if (show.at("page") == "VeltoNVRecentsSettingsController") {
            EXPECT_EQ(show.at("title"), "Recents 2");
            EXPECT_EQ(show.at("rows").at(0).at("label"), "Recents 2");
        }
    }
    EXPECT_EQ(opened, expected);
}

INSTANTIATE_TEST_SUITE_P(Families, SimpleSimulatorTest,
                         ::testing::Values("iphone", "ipad", "ipod"));

}  // namespace
