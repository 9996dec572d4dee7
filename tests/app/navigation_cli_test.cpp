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
    ProgramResult run(const std::vector<std::string>& steps, const std::string& input = "") {
        return scratch_.run(joined({"--json"}, steps), input);
    }

    ScratchDevice scratch_{{"--app", "bitesms"}};
    const std::string& device_ = scratch_.device;
};

TEST_F(NavigationCli, EachShowCarriesThePageAndOnlyTheJournalSinceTheLastShow) {
    const auto result = run({"show", "toggle Enabled", "show"});
    ASSERT_TRUE(ended(result, 0));
    const auto pages = result.outLines();
    ASSERT_EQ(pages.size(), 2u);
    EXPECT_EQ(pages[0]["page"], "VeltoSettingsController");
    EXPECT_EQ(pages[0]["presented"], nullptr);
    EXPECT_EQ(rowValue(pages[0], "VeltoEnabled"), false);
    // Start-up itself is in the first page's journal: the root page was pushed.
    EXPECT_EQ(
        journalOf(pages[0], "navigation"),
        std::vector<json>(
            {{{"kind", "navigation"}, {"class", "VeltoSettingsController"}, {"action", "push"}}}));
    // The second page's journal holds only what the switch did.
    EXPECT_EQ(rowValue(pages[1], "VeltoEnabled"), true);
    EXPECT_TRUE(journalOf(pages[1], "navigation").empty());
    EXPECT_EQ(journalOf(pages[1], "notification").size(), 1u);
}

TEST_F(NavigationCli, RowsAreNamedByIdentifierLabelOrIndexAndToggleSetsOrFlips) {
    for (const std::string name : {"VeltoEnabled", "Enabled", "#1"}) {
        const auto result = run(
            {"toggle " + name + " on", "toggle " + name + " on", "show", "toggle " + name, "show"});
        ASSERT_TRUE(ended(result, 0));
        const auto lines = result.outLines();
        ASSERT_EQ(lines.size(), 3u);
        // A finger can only flip a switch: "on" for a switch that is on touches nothing.
        EXPECT_EQ(lines[0]["note"], "row 'Enabled' is already on; nothing changed\n") << name;
        EXPECT_EQ(journalOf(lines[1], "preference-write").size(), 1u) << name;
        EXPECT_EQ(rowValue(lines[1], "VeltoEnabled"), true) << name;
        EXPECT_EQ(rowValue(lines[2], "VeltoEnabled"), false) << name;
    }
}

TEST_F(NavigationCli, StepsThatCannotBeCarriedOutOrRaiseFailWithStatusTwoAndChangeNothing) {
    // The bundle raises when the master switch's setter does not exist.
    editRootList(device_, "SomedaySettingsController", "noSuchSetter:specifier:");
    // A step that does not parse is a usage error; one that cannot be done failed.
    for (const auto& [step, status, message] :
         std::vector<std::tuple<std::string, int, std::string>>{
             {"toggle Nowhere", 4, "no row"},
             {"toggle #99", 4, "no row"},
             {"toggle #0", 4, "not a switch"},
             {"tap Enabled", 4, "not a button"},
             {"open Enabled", 4, "does not lead to a page"},
             {"open About", 4, "page class SomedaySettingsController is not available yet"},
             {"toggle Enabled", 4, "noSuchSetter:specifier:"},
             {"back", 4, "root page"},
             {"choose OK", 4, "nothing is presented"},
             {"dismiss", 4, "nothing is presented"},
             {"pick /nonexistent.png", 4, "no photo picker"},
             {"cancel", 4, "no photo picker"},
             {"frobnicate now", 2, "unknown step"},
             {"show everything", 2, "takes no argument"}}) {
        const auto result = run({step});
        EXPECT_TRUE(ended(result, status, message));
        ASSERT_EQ(result.errLines().size(), 1u) << result.err;
        EXPECT_EQ(result.errLines()[0]["step"], step);
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
    ASSERT_TRUE(ended(result, 0));
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
    ASSERT_TRUE(ended(result, 0));
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(rowValue(result.outLines()[0], "VeltoEnabled"), true);

    const std::string file = scratch_ / "steps.txt";
    std::ofstream(file) << "toggle Enabled\nshow\nbogus step\nshow\n";
    result = run({"run", file});
    EXPECT_EQ(result.status, 2);
    // The steps before the bad line ran; the one after did not.
    ASSERT_EQ(result.outLines().size(), 1u);
    EXPECT_EQ(rowValue(result.outLines()[0], "VeltoEnabled"), false);
    EXPECT_EQ(result.errLines().at(0)["line"], 3);

    // A missing script is a usage error, not a step failure (a missing device has its own
    // test).
    EXPECT_EQ(run({"run", scratch_ / "absent.txt"}).status, 2);
    EXPECT_EQ(run({"run", "-", "show"}).status, 2);
}

TEST_F(NavigationCli, WithoutJsonThePageIsForPeopleAndErrorsNameTheStep) {
    auto result = scratch_.run({"toggle Enabled", "show"});
    ASSERT_TRUE(ended(result, 0));
    for (const char* text :
         {"Velto  VeltoSettingsController", "OTHER APPLICATIONS", "#1   Enabled", "[ on]",
          "[icon 180x180] >", "notification       com.norvale.veltosettingschanged"})
        EXPECT_THAT(result.out, HasSubstr(text));
    EXPECT_EQ(result.out.find('\033'), std::string::npos);  // not a terminal: no colour

    result = scratch_.run({"open Nowhere"});
    EXPECT_EQ(result.status, 4);
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(result.err, "error: open Nowhere: no row 'Nowhere' on this page\n");

    // Without steps or a terminal, the root page is printed.
    EXPECT_THAT(scratch_.run({}).out, HasSubstr("VeltoSettingsController"));
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
