// The session driven through the program's command line, as a script would drive it.

#include <gtest/gtest.h>

#include <fstream>

#include "tests/app/page_fixtures.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

using nlohmann::json;

class NavigationCli : public ::testing::Test {
  protected:
    void SetUp() override { initDevice(device_); }

    ProgramResult run(std::vector<std::string> steps, const std::string& input = "") {
        steps.insert(steps.begin(), {"--device", device_, "--json"});
        return runProgram(steps, input);
    }

    ScratchFolder scratch_;
    std::string device_ = scratch_ / "device";
};

TEST_F(NavigationCli, NewDeviceShowsOnlyTheMasterSwitchAndTheLastTwoRows) {
    const auto result = run({"show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto lines = result.outLines();
    ASSERT_EQ(lines.size(), 1u);
    const json& page = lines[0];
    EXPECT_EQ(page["page"], "VeltoSettingsController");
    EXPECT_EQ(page["depth"], 1);
    EXPECT_EQ(page["presented"], nullptr);
    ASSERT_EQ(page["rows"].size(), 4u);
    EXPECT_EQ(page["rows"][0]["cell"], "PSGroupCell");
    EXPECT_EQ(page["rows"][0]["value"], nullptr);
    const json master = rowWithId(page, "VeltoEnabled");
    EXPECT_EQ(master["cell"], "PSSwitchCell");
    EXPECT_EQ(master["value"], false);
    for (std::size_t i = 0; i < page["rows"].size(); ++i)
        EXPECT_EQ(page["rows"][i]["index"], i);
    // Start-up itself is in the first page's journal: the root page was pushed.
    const auto pushes = journalOf(page, "navigation");
    ASSERT_EQ(pushes.size(), 1u);
    EXPECT_EQ(pushes[0]["class"], "VeltoSettingsController");
}

TEST_F(NavigationCli, MasterSwitchStoresTheValuePostsTheNotificationAndShowsTheRows) {
    const auto result = run({"show", "toggle Enabled", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto lines = result.outLines();
    ASSERT_EQ(lines.size(), 2u);
    const json& after = lines[1];
    EXPECT_EQ(rowWithId(after, "VeltoEnabled")["value"], true);
    EXPECT_GT(after["rows"].size(), lines[0]["rows"].size());

    // The journal of the second page holds only what the switch did.
    EXPECT_TRUE(journalOf(after, "navigation").empty());
    const auto notifications = journalOf(after, "notification");
    ASSERT_EQ(notifications.size(), 1u);
    EXPECT_EQ(notifications[0]["name"], "com.norvale.veltosettingschanged");
    const auto inserts = journalOf(after, "insert");
    ASSERT_FALSE(inserts.empty());
    EXPECT_EQ(inserts.front()["index"], 2);
    EXPECT_EQ(inserts.front()["animated"], true);

    const auto stored = runProgram(
        {"--device", device_, "--json", "defaults", "read", "com.norvale.velto", "VeltoEnabled"});
    ASSERT_EQ(stored.status, 0) << stored.err;
    EXPECT_EQ(stored.outLines().at(0), true);
}

TEST_F(NavigationCli, ToggleWithAStateSetsItAndWithoutOneFlipsWhatTheSwitchShows) {
    auto result = run({"toggle Enabled on", "toggle Enabled on", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(rowWithId(result.outLines().at(0), "VeltoEnabled")["value"], true);

    result = run({"toggle VeltoEnabled", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json page = result.outLines().at(0);
    EXPECT_EQ(rowWithId(page, "VeltoEnabled")["value"], false);
    EXPECT_FALSE(journalOf(page, "remove").empty());
}

TEST_F(NavigationCli, RowsAreNamedByIdentifierLabelOrIndex) {
    for (const std::string name : {"VeltoEnabled", "Enabled", "#1"}) {
        const auto result = run({"toggle " + name + " on", "show"});
        ASSERT_EQ(result.status, 0) << name << ": " << result.err;
        EXPECT_EQ(rowWithId(result.outLines().at(0), "VeltoEnabled")["value"], true) << name;
        ASSERT_EQ(run({"toggle " + name + " off"}).status, 0);
    }
}

TEST_F(NavigationCli, StepsThatCannotBeCarriedOutFailWithStatusTwoAndChangeNothing) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"toggle Nowhere", "no row"},
        {"toggle #99", "no row"},
        {"toggle #0", "not a switch"},
        {"tap Enabled", "not a button"},
        {"open Enabled", "does not lead to a page"},
        {"back", "root page"},
        {"choose OK", "nothing is presented"},
        {"dismiss", "nothing is presented"},
        {"pick /nonexistent.png", "no photo picker"},
        {"cancel", "no photo picker"},
        {"frobnicate", "unknown step"},
        {"show everything", "takes no argument"},
    };
    for (const auto& [step, message] : cases) {
        const auto result = run({step});
        EXPECT_EQ(result.status, 2) << step;
        const auto errors = result.errLines();
        ASSERT_EQ(errors.size(), 1u) << step << ": " << result.err;
        EXPECT_EQ(errors[0]["step"], step);
        EXPECT_NE(errors[0]["error"].get<std::string>().find(message), std::string::npos)
            << step << ": " << errors[0]["error"];
    }
    // None of them touched the settings file.
    EXPECT_EQ(runProgram({"--device", device_, "defaults", "read", "com.norvale.velto"}).status, 1);
}

TEST_F(NavigationCli, EveryStepIsCheckedBeforeTheFirstOneRuns) {
    const auto result = run({"toggle Enabled", "show", "frobnicate"});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(runProgram({"--device", device_, "defaults", "read", "com.norvale.velto"}).status, 1);
}

TEST_F(NavigationCli, TheRunStopsAtTheFirstFailingStep) {
    const auto result = run({"show", "back", "show"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.outLines().size(), 1u);
}

TEST_F(NavigationCli, OpeningAPageWhoseClassDoesNotExistYetFailsCleanly) {
    writeRootList(device_, {{"Someday", "SomedaySettingsController"}});
    const auto result = run({"open Someday"});
    EXPECT_EQ(result.status, 2);
    const auto errors = result.errLines();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0]["error"], "page class SomedaySettingsController is not available yet");
}

TEST_F(NavigationCli, WhatTheBundleRaisesIsAnErrorOfTheStepNotACrash) {
    writeRootList(device_, {{"Again", "VeltoSettingsController"}}, "noSuchSetter:specifier:");
    const auto result = run({"toggle Enabled", "show"});
    EXPECT_EQ(result.status, 2);
    const auto errors = result.errLines();
    ASSERT_EQ(errors.size(), 1u) << result.err;
    EXPECT_EQ(errors[0]["step"], "toggle Enabled");
    EXPECT_NE(errors[0]["error"].get<std::string>().find("noSuchSetter:specifier:"),
              std::string::npos);
}

TEST_F(NavigationCli, OpenPushesTheRowsPageAndBackReturns) {
    // The root class stands in for a detail page: it is a page class that certainly exists.
    writeRootList(device_, {{"Again", "VeltoSettingsController"}});
    const auto result = run({"open Again", "show", "back", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto lines = result.outLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["depth"], 2);
    // The row that opened the page names it.
    EXPECT_EQ(lines[0]["title"], "Again");
    const auto pushed = journalOf(lines[0], "navigation");
    ASSERT_EQ(pushed.size(), 2u);
    EXPECT_EQ(pushed[1]["action"], "push");
    EXPECT_EQ(lines[1]["depth"], 1);
    EXPECT_EQ(lines[1]["title"], nullptr);
    const auto popped = journalOf(lines[1], "navigation");
    ASSERT_EQ(popped.size(), 1u);
    EXPECT_EQ(popped[0]["action"], "pop");
}

TEST_F(NavigationCli, RunReadsStepsFromAFileOrStandardInputSkippingComments) {
    const std::string script = "# switch Velto on\n\n  toggle Enabled  \nshow\n";
    auto result = run({"run", "-"}, script);
    ASSERT_EQ(result.status, 0) << result.err;
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(rowWithId(result.outLines()[0], "VeltoEnabled")["value"], true);

    const std::string file = scratch_ / "steps.txt";
    std::ofstream(file) << "toggle Enabled\nshow\nbogus step\nshow\n";
    result = runProgram({"--device", device_, "--json", "run", file});
    EXPECT_EQ(result.status, 2);
    // The steps before the bad line ran; the one after did not.
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(rowWithId(result.outLines()[0], "VeltoEnabled")["value"], false);
    EXPECT_NE(result.errLines().at(0)["error"].get<std::string>().find("line 3"),
              std::string::npos);
}

TEST_F(NavigationCli, AMissingDeviceOrScriptIsTroubleNotAStepFailure) {
    EXPECT_EQ(runProgram({"--device", scratch_ / "absent", "show"}).status, 1);
    EXPECT_EQ(run({"run", scratch_ / "absent.txt"}).status, 1);
    EXPECT_EQ(runProgram({"--device", device_, "run", "-", "show"}).status, 1);
}

}  // namespace
}  // namespace apptest
