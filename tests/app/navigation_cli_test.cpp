// The session driven through the program's command line, as a script would drive it, and the
// page host underneath it in-process: navigation lifetimes and restarts of the interface.

#include <gtest/gtest.h>

#include <fstream>

#include "app/session/session.h"
#include "app/session/step_error.h"
#include "app/session/ui_restart.h"
#include "platform/system/host_device_root.h"
#include "platform/system/plist_file.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

using nlohmann::json;
using plat::Value;

json rowWithId(const json& page, const std::string& id) {
    for (const auto& row : page.at("rows"))
        if (row.at("id") == id) return row;
    return nullptr;
}

// Points the last row of a device's root list (About, which a new device shows with the master
// switch off) at `pageClass` and, given one, gives the master switch another setter. The list
// loses its title, so a page shows the title of the row that opened it, or none.
void editRootList(const std::string& device, const std::string& pageClass,
                  const std::string& masterSetter = "") {
    const plat::HostDeviceRoot root(device);
    const std::string path = "/System/Library/PreferenceBundles/VeltoSettings.bundle/Velto.plist";
    const Value list = plat::dictionaryWithContentsOfFile(root, path);
    const Value items = list.objectForKey("items");
    items.objectAtIndex(items.count() - 1).setValueForKey("detail", pageClass);
    if (!masterSetter.empty()) items.objectAtIndex(1).setValueForKey("set", masterSetter);
    list.removeObjectForKey("title");
    ASSERT_TRUE(plat::writePropertyListToFile(root, list, path, false));
}

class NavigationCli : public ::testing::Test {
  protected:
    ProgramResult run(std::vector<std::string> steps, const std::string& input = "") {
        steps.insert(steps.begin(), {"--device", device_, "--json"});
        return runProgram(steps, input);
    }

    ScratchDevice scratch_{{"--app", "bitesms"}};
    const std::string& device_ = scratch_.device;
};

TEST_F(NavigationCli, EachShowCarriesThePageAndOnlyTheJournalSinceTheLastShow) {
    const auto result = run({"show", "toggle Enabled", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto pages = result.outLines();
    ASSERT_EQ(pages.size(), 2u);
    const json& before = pages[0];
    EXPECT_EQ(before["page"], "VeltoSettingsController");
    EXPECT_EQ(before["presented"], nullptr);
    EXPECT_EQ(rowWithId(before, "VeltoEnabled")["value"], false);
    // Start-up itself is in the first page's journal: the root page was pushed.
    const auto pushes = journalOf(before, "navigation");
    ASSERT_EQ(pushes.size(), 1u);
    EXPECT_EQ(pushes[0]["class"], "VeltoSettingsController");

    // The second page's journal holds only what the switch did.
    const json& after = pages[1];
    EXPECT_EQ(rowWithId(after, "VeltoEnabled")["value"], true);
    EXPECT_TRUE(journalOf(after, "navigation").empty());
    EXPECT_EQ(journalOf(after, "notification").size(), 1u);
}

TEST_F(NavigationCli, RowsAreNamedByIdentifierLabelOrIndexAndToggleSetsOrFlips) {
    for (const std::string name : {"VeltoEnabled", "Enabled", "#1"}) {
        const auto result = run(
            {"toggle " + name + " on", "toggle " + name + " on", "show", "toggle " + name, "show"});
        ASSERT_EQ(result.status, 0) << name << ": " << result.err;
        const auto lines = result.outLines();
        ASSERT_EQ(lines.size(), 3u);
        // A finger can only flip a switch: "on" for a switch that is on touches nothing.
        EXPECT_EQ(lines[0]["type"], "note") << name;
        EXPECT_NE(lines[0]["note"].get<std::string>().find("already on"), std::string::npos);
        EXPECT_EQ(journalOf(lines[1], "preference-write").size(), 1u) << name;
        EXPECT_EQ(rowWithId(lines[1], "VeltoEnabled")["value"], true) << name;
        EXPECT_EQ(rowWithId(lines[2], "VeltoEnabled")["value"], false) << name;
    }
}

TEST_F(NavigationCli, StepsThatCannotBeCarriedOutOrRaiseFailWithStatusTwoAndChangeNothing) {
    // The bundle raises when the master switch's setter does not exist.
    editRootList(device_, "SomedaySettingsController", "noSuchSetter:specifier:");
    for (const auto& [step, message] : std::vector<std::pair<std::string, std::string>>{
             {"toggle Nowhere", "no row"},
             {"toggle #99", "no row"},
             {"toggle #0", "not a switch"},
             {"tap Enabled", "not a button"},
             {"open Enabled", "does not lead to a page"},
             {"open About", "page class SomedaySettingsController is not available yet"},
             {"toggle Enabled", "noSuchSetter:specifier:"},
             {"back", "root page"},
             {"choose OK", "nothing is presented"},
             {"dismiss", "nothing is presented"},
             {"pick /nonexistent.png", "no photo picker"},
             {"cancel", "no photo picker"},
             {"frobnicate now", "unknown step"},
             {"show everything", "takes no argument"}}) {
        const auto result = run({step});
        // A step that does not parse is a usage error; one that cannot be done failed.
        const bool malformed = step == "frobnicate now" || step == "show everything";
        EXPECT_EQ(result.status, malformed ? 2 : 4) << step;
        const auto errors = result.errLines();
        ASSERT_EQ(errors.size(), 1u) << step << ": " << result.err;
        EXPECT_EQ(errors[0]["step"], step);
        EXPECT_NE(errors[0]["error"].get<std::string>().find(message), std::string::npos)
            << step << ": " << errors[0]["error"];
    }
    // None of them wrote the settings file.
    EXPECT_EQ(run({"defaults", "read", "com.norvale.velto"}).status, 1);
}

TEST_F(NavigationCli, EveryStepIsCheckedBeforeTheFirstRunsAndTheRunStopsAtAFailure) {
    auto result = run({"toggle Enabled", "show", "frobnicate"});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(run({"defaults", "read", "com.norvale.velto"}).status, 1);
    result = run({"show", "back", "show"});
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.outLines().size(), 1u);
}

TEST_F(NavigationCli, OpenPushesTheRowsPageAndBackReturns) {
    // The root class stands in for a detail page: it is a page class that certainly exists.
    editRootList(device_, "VeltoSettingsController");
    const auto result = run({"open About", "show", "back", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto pages = result.outLines();
    ASSERT_EQ(pages.size(), 2u);
    EXPECT_EQ(pages[0]["depth"], 2);
    EXPECT_EQ(pages[0]["title"], "About");  // the row that opened the page names it
    EXPECT_EQ(journalOf(pages[0], "navigation").at(1)["action"], "push");  // after start-up's
    EXPECT_EQ(pages[1]["depth"], 1);
    EXPECT_EQ(pages[1]["title"], nullptr);
    EXPECT_EQ(journalOf(pages[1], "navigation").at(0)["action"], "pop");
}

TEST_F(NavigationCli, RunReadsStepsFromAFileOrStandardInputSkippingComments) {
    auto result = run({"run", "-"}, "# switch Velto on\n\n  toggle Enabled  \nshow\n");
    ASSERT_EQ(result.status, 0) << result.err;
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(rowWithId(result.outLines()[0], "VeltoEnabled")["value"], true);

    const std::string file = scratch_ / "steps.txt";
    std::ofstream(file) << "toggle Enabled\nshow\nbogus step\nshow\n";
    result = run({"run", file});
    EXPECT_EQ(result.status, 2);
    // The steps before the bad line ran; the one after did not.
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(rowWithId(result.outLines()[0], "VeltoEnabled")["value"], false);
    EXPECT_EQ(result.errLines().at(0)["line"], 3);

    // A missing script is a usage error, not a step failure (a missing device has its own
    // test).
    EXPECT_EQ(run({"run", scratch_ / "absent.txt"}).status, 2);
    EXPECT_EQ(run({"run", "-", "show"}).status, 2);
}

TEST_F(NavigationCli, WithoutJsonThePageIsForPeopleAndErrorsNameTheStep) {
    auto result = runProgram({"--device", device_, "toggle Enabled", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    for (const char* text :
         {"Velto  VeltoSettingsController", "OTHER APPLICATIONS", "#1   Enabled", "[ on]",
          "[icon 180x180] >", "notification       com.norvale.veltosettingschanged"})
        EXPECT_NE(result.out.find(text), std::string::npos) << text << " in\n" << result.out;
    EXPECT_EQ(result.out.find('\033'), std::string::npos);  // not a terminal: no colour

    result = runProgram({"--device", device_, "open Nowhere"});
    EXPECT_EQ(result.status, 4);
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(result.err, "error: open Nowhere: no row 'Nowhere' on this page\n");

    // Without steps or a terminal, the root page is printed.
    result = runProgram({"--device", device_});
    EXPECT_NE(result.out.find("VeltoSettingsController"), std::string::npos) << result.out;
    result = run({});
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(result.outLines()[0]["page"], "VeltoSettingsController");
}

TEST(UiRestart, OnlyCommandsThatEndTheInterfaceRestartItAndNoKillallReachesTheHost) {
    int restarts = 0;
    const auto status = [&](const std::string& command) {
        const auto result = velto::app::interceptRestart(command, [&] { ++restarts; });
        return result ? result->status : -1;  // -1: declined, the command runs for real
    };
    for (const char* command : {"killall backboardd", "/usr/bin/killall -9 backboardd",
                                "killall 'SpringBoard'", "sbreload"})
        EXPECT_EQ(status(command), 0) << command;
    EXPECT_EQ(restarts, 4);
    EXPECT_GT(status("killall Preferences"), 0);
    EXPECT_EQ(status("'/usr/bin/dpkg-query' '-Wf' '${Version}' 'com.norvale.velto2'"), -1);
    EXPECT_EQ(restarts, 4);
}

TEST_F(NavigationCli, APoppedPageIsReleasedAFailedOpenPushesNothing) {
    editRootList(device_, "VeltoSettingsController");
    {
        velto::app::Session session(device_);
        session.open(session.topPage()->heldSpecifiers()->objectAtIndex(3));
        ASSERT_EQ(session.depth(), 2u);
        std::weak_ptr<plat::ListController> pushed = session.topPage();
        session.back();
        EXPECT_TRUE(pushed.expired());
        EXPECT_EQ(session.depth(), 1u);
    }
    editRootList(device_, "SomedaySettingsController");
    velto::app::Session session(device_);
    session.takeJournal();
    EXPECT_THROW(session.open(session.topPage()->heldSpecifiers()->objectAtIndex(3)),
                 velto::app::StepError);
    EXPECT_EQ(session.depth(), 1u);
    EXPECT_TRUE(session.takeJournal().empty());
}

}  // namespace
}  // namespace apptest
