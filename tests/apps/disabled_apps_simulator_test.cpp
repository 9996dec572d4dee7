// The Excluded applications page through velto-settings --json: the `notify` step reaching an
// open page and only that page. The page's own rules are checked in-process.

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

}  // namespace
