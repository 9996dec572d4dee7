// The Excluded applications page through velto-settings --json: the `notify` step reaching an
// open page and only that page, and `device init --user-apps` filling the page. The page's own
// rules are checked in-process.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

std::vector<json> steps(const std::string& root, std::vector<std::string> words) {
    words.insert(words.begin(), {"--device", root, "--json"});
    const auto result = apptest::runProgram(words);
    EXPECT_EQ(result.status, 0) << result.err;
    return result.outLines();
}

int fetches(const json& show) {
    int n = 0;
    for (const auto& e : show.at("journal"))
        n += e.at("kind") == "request" && e.value("name", "") == "com.norvale.velto.apps";
    return n;
}

TEST(DisabledAppsSimulatorTest, NotifyRefreshesTheOpenPageOnly) {
    apptest::ScratchFolder scratch;
    const std::string root = scratch / "demo";
    apptest::initDevice(root, {"--demo", "--family", "ipad", "--scale", "2"});
    const auto shows =
        steps(root, {"open Excluded Applications", "notify com.norvale.veltosettingschanged",
                     "show", "back", "notify com.norvale.veltosettingschanged", "show"});
    ASSERT_EQ(shows.size(), 2u);
    EXPECT_EQ(fetches(shows[0]), 2);  // one when opened, one for the notification
    EXPECT_EQ(shows[1].at("page"), "VeltoSettingsController");
    EXPECT_EQ(fetches(shows[1]), 0);
}

TEST(DisabledAppsSimulatorTest, UserAppsOptionFillsThePage) {
    apptest::ScratchFolder scratch;
    const std::string root = scratch / "many";
    apptest::initDevice(root, {"--user-apps", "30", "--scale", "2"});
    const auto shows =
        steps(root, {"toggle VeltoEnabled on", "open Excluded Applications", "show"});
    ASSERT_EQ(shows.size(), 1u);
    const auto& rows = shows[0].at("rows");
    ASSERT_EQ(rows.size(), 31u);
    EXPECT_EQ(rows.at(0).at("label"), "User Applications");
    bool lower = false, upper = false;  // names of both cases, for the page's sort to fold
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const char first = rows.at(i).at("label").get<std::string>().at(0);
        lower |= first >= 'a' && first <= 'z';
        upper |= first >= 'A' && first <= 'Z';
    }
    EXPECT_TRUE(lower && upper);
}

}  // namespace
