// The interface restart the General page's sheet asks for, driven through velto-settings with
// --json: the simulator's side of it (a fresh Settings application on the root page, the
// command journaled, nothing of the host touched). That every link row of the root lists opens
// a page is `velto-settings check`'s job, on every device it models.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

TEST(GeneralSimulatorTest, ContinuingTheLocalCacheSheetRestartsTheInterfaceOnTheRoot) {
    apptest::ScratchFolder scratch;
    const std::string root = scratch / "device";
    apptest::initDevice(root);
    const auto result =
        apptest::runProgram({"--device", root, "--json", "toggle VeltoEnabled on", "open General",
                             "toggle Local Cache", "choose Continue", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto shows = result.outLines();
    ASSERT_EQ(shows.size(), 1u);
    EXPECT_EQ(shows[0].at("page"), "VeltoSettingsController");
    EXPECT_EQ(shows[0].at("depth"), 1);
    std::vector<std::string> commands;
    for (const auto& e : shows[0].at("journal"))
        if (e.at("kind") == "shell") commands.push_back(e.at("command"));
    EXPECT_EQ(commands, std::vector<std::string>{"killall backboardd"});
}

}  // namespace
